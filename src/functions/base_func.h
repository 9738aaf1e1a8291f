// What answers a function word of the language: all that core sees of functions.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "core/model.h"
#include "core/status.h"
#include "functions/traits.h"

namespace quor {

struct Call;
struct WordRow;

/// A cell that a call fills with the same number at every bar.
struct ConstantCell {
  int32_t column;
  double value;
};

/// One object per function word, shared by all calls of all instances and constant.
class BaseFunc {
 public:
  explicit BaseFunc(const WordRow& row);
  virtual ~BaseFunc() = default;
  BaseFunc(const BaseFunc&) = delete;
  BaseFunc& operator=(const BaseFunc&) = delete;

  /// The value of the call at its row goes into `call.result`. Gives a status.
  virtual Status execute(const Call& call) const = 0;
  /// What a call comes to at every bar of a run that is about to start, if it does no more than
  /// fill one cell: the run then does that in place of `execute`.
  virtual std::optional<ConstantCell> constant_cell(const Variable& call) const;

  const std::string& name() const { return name_; }
  int32_t id() const { return id_; }
  /// False for a word that is written bare, without an argument list.
  bool takes_parentheses() const { return takes_parentheses_; }
  /// Whether the compiler gives every call a column of its own.
  bool uses_result_column() const { return uses_result_column_; }
  /// Bar fields that a call reads without naming them.
  std::span<const std::string_view> required_fields() const { return required_fields_; }
  /// What is known of the word, whatever its arguments; `traits_of` tells it of one call.
  Traits traits() const { return traits_; }

 private:
  std::string name_;
  int32_t id_;
  bool takes_parentheses_;
  bool uses_result_column_;
  std::span<const std::string_view> required_fields_;
  Traits traits_;
};

/// What is known of a call of a word, given its arguments.
Traits traits_of(const Variable& call);

/// How many bars late the call comes to a bar, mostly 0.
int64_t lag_of(const Variable& call);

}  // namespace quor

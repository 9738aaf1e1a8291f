#include "compiler/rewrite_lines.h"

#include <optional>
#include <span>
#include <vector>

#include "tables/style_table.h"
#include "text/strings.h"
#include "vocabulary/function_sets.h"

namespace quor {
namespace {

/// A style word that stands as a whole item behind an expression.
struct StyledExpression {
  std::string_view expression;
  std::vector<std::string_view> items;  ///< the word first
};

/// Looks at the first item that begins with the word; it counts if it is the whole item.
std::optional<StyledExpression> find_style_word(std::string_view slot, std::string_view word) {
  std::string mark = "@";
  mark += word;
  const size_t at = slot.find(mark);
  if (at == std::string_view::npos) return std::nullopt;
  StyledExpression found{slot.substr(0, at), split(slot.substr(at), "@")};
  if (found.items[0] != word) return std::nullopt;
  return found;
}

/// The items of a stick form that count: the last colour, and whether the stick is hollow.
struct StickStyle {
  std::string_view colour;  ///< empty if there is none
  bool is_hollow = true;
};

StickStyle stick_style(std::span<const std::string_view> items) {
  StickStyle style;
  for (const std::string_view item : items) {
    if (item.starts_with("COLOR")) style.colour = item;
    if (item.starts_with("SOLID")) style.is_hollow = false;
    if (item.starts_with("HOLLOW")) style.is_hollow = true;
  }
  return style;
}

std::string stick_call(std::string_view word, const StyledExpression& stick) {
  // Tells the stick call to take the generated title; no number belongs to it.
  constexpr std::string_view auto_title = "@EMPTY_LINE_NAME_RESERVED@TITLEVISIBLE";
  std::string call;
  if (word != "STICK" && word != "COLORSTICK") {
    call.append("STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@").append(stick.expression);
    return call.append("@-1@1)@ISVOLSTICK").append(auto_title);
  }
  const StickStyle style = stick_style(std::span(stick.items).subspan(1));
  call.append("STICKLINE1(1@0@").append(stick.expression);
  call.append(style.is_hollow ? "@1@1)" : "@1@0)");
  if (word == "COLORSTICK") return call.append("@ISCOLORSTICK").append(auto_title);
  if (!style.colour.empty()) call.append("@").append(style.colour);
  return call.append("@TITLEVISIBLE");
}

void put_generated_name(DataPoolCenter& pool, std::string& slot) {
  slot.insert(0, pool.script.auto_line_name() + ":");
}

}  // namespace

Status rewrite_stick_words(std::string& slot, const StatementErrors& errors) {
  if (contains(slot, ":")) return Status::ok;
  for (const std::string_view word : StickWordSet) {
    const auto stick = find_style_word(slot, word);
    if (!stick) continue;
    if (stick->expression.empty()) return errors.fail(Status::subject_missing, "STICK");
    slot = stick_call(word, *stick);
    return Status::ok;
  }
  return Status::ok;
}

Status rewrite_dot_words(DataPoolCenter& pool, std::string& slot, const StatementErrors& errors) {
  if (contains(slot, ":")) return Status::ok;
  for (const std::string_view word : DotWordSet) {
    const auto dots = find_style_word(slot, word);
    if (!dots) continue;
    if (dots->expression.empty()) return errors.fail(Status::subject_missing, word);
    put_generated_name(pool, slot);
    return Status::ok;
  }
  return Status::ok;
}

void name_series_call(DataPoolCenter& pool, std::string& slot) {
  for (const std::string_view word : BranchRangeFunctionSet()) {
    if (!slot.starts_with(word) || slot.substr(word.size(), 1) != "(") continue;
    put_generated_name(pool, slot);
    return;
  }
}

}  // namespace quor

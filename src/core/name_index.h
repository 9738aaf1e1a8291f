// Finds the variables of a list by what they are called.
#pragma once

#include <algorithm>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "core/model.h"

namespace quor {

/// Puts a variable among others in the order of the list.
inline void insert_by_place(std::vector<Variable*>& variables, Variable& variable) {
  variables.insert(std::ranges::upper_bound(variables, variable.place, {}, &Variable::place),
                   &variable);
}

/// The variables of a list under their hidden names and their texts, which must stand before a
/// variable is added. The keys are views of both.
class NameIndex {
 public:
  void add(Variable& variable) {
    variables_[variable.text].push_back(&variable);
    if (!variable.name.empty() && variable.name != variable.text) {
      variables_[variable.name].push_back(&variable);
    }
  }

  /// As `add` by its text alone, for variables that come in another order than that of the list.
  void insert_by_place(Variable& variable) {
    quor::insert_by_place(variables_[variable.text], variable);
  }

  void clear() { variables_.clear(); }

  /// The first variable, in the order of the list, that is called so and that `take` takes; null if
  /// there is none.
  template <typename Take>
  Variable* find(std::string_view word, const Take& take) const {
    const auto called_so = variables_.find(word);
    if (called_so == variables_.end()) return nullptr;
    for (Variable* variable : called_so->second) {
      if (take(*variable)) return variable;
    }
    return nullptr;
  }

 private:
  std::unordered_map<std::string_view, std::vector<Variable*>> variables_;
};

}  // namespace quor

// The names that a script declares, and where it reads them: what leads an editor from one to the
// other.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "reading.h"

namespace quor_advice {

enum class SymbolKind { line, assignment, constant };

struct Symbol {
  std::string name;  ///< in capitals
  SymbolKind kind = SymbolKind::line;
  Place place;  ///< of the name in its declaration
  Place whole;  ///< of the statement with its ";"
  size_t statement = 0;
};

/// In the order of the script; of several declarations of one name each.
std::vector<Symbol> symbols_of(const Reading& reading);

/// The declaration that a name leads to; null if the script has none.
const Symbol* find_symbol(const std::vector<Symbol>& symbols, std::string_view name);

/// The token that touches a place, a word rather than what stands behind it; null for none.
const Token* token_at(const Reading& reading, size_t offset);

/// The number of the statement that a place is in or behind; nothing for a script without one.
std::optional<size_t> statement_at(const Reading& reading, size_t offset);

/// Whether the place is in a comment.
bool is_in_comment(const Reading& reading, size_t offset);

/// A name of the script at a place.
struct NameAt {
  std::string name;  ///< in capitals
  Place place;
};
std::optional<NameAt> name_at(const Reading& reading, size_t offset);

/// Where a name stands, its declarations included, in the order of the script.
std::vector<Place> places_of(const Reading& reading, std::string_view name);

/// Why a name can't become another one: a word of the language, a name that is taken, no name at
/// all; empty if it can.
std::string rename_fault(const Reading& reading, std::string_view name, std::string_view other);

/// Statements and comments of several lines, and runs of lines that are comments.
struct Fold {
  Place place;
  bool is_comment = false;
};
std::vector<Fold> folds_of(const Reading& reading);

}  // namespace quor_advice

#include "compiler/rewrite_lines.h"

#include <optional>
#include <span>
#include <vector>

#include "tables/function_sets.h"
#include "tables/style_table.h"
#include "text/strings.h"

namespace quor {
namespace {

/// A style word that stands as a whole item behind an expression.
struct StyledExpression {
  std::string_view expression;
  std::vector<std::string_view> items;  ///< the word first
};

/// Looks at the first item that begins with the word; it counts if it is the whole item.
std::optional<StyledExpression> find_style_word(std::string_view slot, std::string_view word) {
  const size_t at = slot.find("@" + std::string(word));
  if (at == std::string_view::npos) return std::nullopt;
  StyledExpression found{slot.substr(0, at), split(slot.substr(at), "@")};
  if (found.items[0] != word) return std::nullopt;
  return found;
}

/// The items of a stick form that count: the last colour, and whether the stick is hollow.
struct StickStyle {
  std::string colour;  ///< with its comma, or empty
  std::string hollow = "1";
};

StickStyle stick_style(std::span<const std::string_view> items) {
  StickStyle style;
  for (const std::string_view item : items) {
    if (item.starts_with("COLOR")) style.colour = "@" + std::string(item);
    if (item.starts_with("SOLID")) style.hollow = "0";
    if (item.starts_with("HOLLOW")) style.hollow = "1";
  }
  return style;
}

std::string stick_call(std::string_view word, const StyledExpression& stick) {
  // Tells the stick call to take the generated title; no number belongs to it.
  constexpr std::string_view auto_title = "@EMPTY_LINE_NAME_RESERVED@TITLEVISIBLE";
  const std::string expression(stick.expression);
  const StickStyle style = stick_style(std::span(stick.items).subspan(1));
  if (word != "STICK" && word != "COLORSTICK") {
    return "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@" + expression + "@-1@1)@ISVOLSTICK" +
           std::string(auto_title);
  }
  const std::string call = "STICKLINE1(1@0@" + expression + "@1@" + style.hollow + ")";
  if (word == "STICK") return call + style.colour + "@TITLEVISIBLE";
  return call + "@ISCOLORSTICK" + std::string(auto_title);
}

void put_generated_name(DataPoolCenter& pool, std::string& slot) {
  slot.insert(0, pool.auto_line_name() + ":");
}

}  // namespace

int rewrite_stick_words(std::string& slot, const StatementErrors& errors) {
  if (contains(slot, ":")) return status_ok;
  for (const std::string_view word : StickWordSet) {
    const auto stick = find_style_word(slot, word);
    if (!stick) continue;
    if (stick->expression.empty()) return errors.fail(status_subject_missing, "STICK");
    slot = stick_call(word, *stick);
    return status_ok;
  }
  return status_ok;
}

int rewrite_dot_words(DataPoolCenter& pool, std::string& slot, const StatementErrors& errors) {
  if (contains(slot, ":")) return status_ok;
  for (const std::string_view word : DotWordSet) {
    const auto dots = find_style_word(slot, word);
    if (!dots) continue;
    if (dots->expression.empty()) return errors.fail(status_subject_missing, word);
    put_generated_name(pool, slot);
    return status_ok;
  }
  return status_ok;
}

void name_series_call(DataPoolCenter& pool, std::string& slot) {
  for (const std::string_view word : BranchRangeFunctionSet) {
    if (!slot.starts_with(word) || slot.substr(word.size(), 1) != "(") continue;
    put_generated_name(pool, slot);
    return;
  }
}

}  // namespace quor

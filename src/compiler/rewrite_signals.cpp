#include "compiler/rewrite_signals.h"

#include <algorithm>
#include <optional>

#include "compiler/statement_text.h"
#include "compiler/tokenizer.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "text/utf8.h"
#include "vocabulary/function_sets.h"

namespace quor {
namespace {

constexpr size_t longest_name = 10;  ///< in UTF-16 units

struct FoundWord {
  std::string word;
  size_t position;

  bool behind_comma(std::string_view slot) const {
    return position > 0 && slot[position - 1] == '@';
  }
  bool ends(std::string_view slot) const { return position + word.size() == slot.size(); }
};

/// The first piece of a token that `matches`; a word that is part of a longer one is none.
template <typename Matches>
std::optional<FoundWord> find_word(std::string_view slot, const Matches& matches) {
  for (const Token& token : tokenize(slot)) {
    for (const std::string_view piece : split_in_order(token.text, piece_separators)) {
      if (!matches(piece)) continue;
      return FoundWord{std::string(piece),
                       token.position + static_cast<size_t>(piece.data() - token.text.data())};
    }
  }
  return std::nullopt;
}

/// The statement as a reader knows it, for the record of the notice or signal.
std::string shown(std::string_view source) {
  std::string text(source);
  std::ranges::replace(text, '@', ',');
  std::ranges::replace(text, '?', '-');
  std::ranges::replace(text, '^', '-');
  return text;
}

/// What both kinds of signal do where no condition stands in front: the bare word is an error,
/// anything else is left to the later passes.
Status without_condition(const FoundWord& found, std::string_view written,
                         const StatementErrors& errors) {
  return written == found.word ? errors.fail(Status::subject_missing, found.word) : Status::ok;
}

/// The name between the quotes of `NOTICE('name')`; empty for a text of another form.
std::string_view notice_name(std::string_view written) {
  constexpr std::string_view opening = "NOTICE('";
  if (!equal_ignoring_case(written.substr(0, opening.size()), opening)) return {};
  const size_t last = written.rfind('\'');
  return written.substr(opening.size(), std::max(last, opening.size()) - opening.size());
}

/// The text in the parentheses of `BK(n)`; nothing for a text of another form.
std::optional<std::string_view> quantity_text(std::string_view written, const std::string& word) {
  const size_t last = written.rfind(')');
  if (written.find('(') != word.size() || last == std::string_view::npos) return std::nullopt;
  const size_t first = word.size() + 1;
  return written.substr(first, std::max(last, first) - first);
}

/// The call of the signal; `last_argument` comes with its comma or is empty.
std::string signal_call(std::string_view slot, const FoundWord& found, std::string_view source,
                        const std::string& last_argument) {
  return found.word + "(" + std::string(slot.substr(0, found.position)) + "'" + shown(source) +
         "'" + last_argument + ")";
}

}  // namespace

Status rewrite_notice(std::string& slot, std::string_view source, const StatementErrors& errors) {
  const auto found = find_word(slot, [](std::string_view piece) { return piece == "NOTICE"; });
  if (!found) return Status::ok;
  if (!found->behind_comma(slot)) {
    return errors.fail(Status::bad_constant, "COND, NOTICE('预警名称'); NOTICE");
  }
  if (slot.find(':') < found->position) return Status::signal_with_name;
  const std::string_view written = text_from(source, found->position);
  if (found->position == 1) return without_condition(*found, written, errors);
  const std::string_view name = notice_name(written);
  if (name.empty() || utf16_length(name) > longest_name) {
    return errors.fail(Status::bad_constant, "NOTICE('预警名称'); NOTICE");
  }
  slot = signal_call(slot, *found, source, "@'" + std::string(name) + "'");
  return Status::ok;
}

Status rewrite_trade_word(std::string& slot, std::string_view source,
                          const StatementErrors& errors) {
  const auto found =
      find_word(slot, [](std::string_view piece) { return TradeSignalSet().contains(piece); });
  if (!found) return Status::ok;
  if (!found->behind_comma(slot)) {
    const bool refused = found->position == 0 || found->ends(slot);
    return refused ? errors.fail(Status::bad_constant, "COND, TRADE;" + found->word) : Status::ok;
  }
  if (slot.find(':') < found->position) return Status::signal_with_name;
  const std::string_view written = text_from(source, found->position);
  if (found->position == 1) return without_condition(*found, written, errors);
  if (equal_ignoring_case(written, found->word)) {
    slot = signal_call(slot, *found, source, "");
    return Status::ok;
  }
  const auto quantity = quantity_text(written, found->word);
  if (!quantity || leading_integer(*quantity) <= 0) {
    return errors.fail(Status::bad_constant, "TRADE(NUMBER);" + found->word);
  }
  slot = signal_call(slot, *found, source, "@" + std::string(*quantity));
  return Status::ok;
}

}  // namespace quor

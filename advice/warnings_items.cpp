// What stands behind the commas of a statement: style items and short forms.
#include <algorithm>
#include <array>

#include "elsewhere.h"
#include "letters.h"
#include "vocabulary.h"
#include "warnings.h"

namespace quor_advice {
namespace {

constexpr std::array<std::string_view, 5> first_items = {"COLORSTICK", "VOLSTICK", "VOLUMESTICK",
                                                         "CROSSDOT", "CIRCLEDOT"};

class ItemCheck {
 public:
  ItemCheck(const Reading& reading, const Statement& statement, std::vector<Problem>& out)
      : reading_(reading), statement_(statement), out_(out) {}

  void run() {
    constexpr size_t most = 100;  // nobody reads more
    for (size_t i = 0; i < std::min(statement_.items.size(), most); ++i) check(i);
  }

 private:
  const Token& first(Range item) const { return statement_.tokens[item.begin]; }

  void add(Place place, std::string sentence, std::string suggestion = {}) {
    out_.push_back({place, std::move(sentence), std::move(suggestion)});
  }

  void check(size_t index) {
    const Range item = statement_.items[index];
    if (item.empty()) {
      const Token& comma = statement_.tokens[item.begin - 1];
      add(place_of(comma), "nothing stands behind this ','", "take it away");
      return;
    }
    const Token& word = first(item);
    const bool is_call =
        item.size() > 1 && statement_.tokens[item.begin + 1].kind == TokenKind::open;
    if (is_call) {
      check_call(index, word);
    } else if (is_short_form(word.text) && item.size() == 1) {
      check_place(index, word);
    } else if (is_short_form(word.text)) {
      add(place_of(statement_, item), word.text + " isn't written like this",
          is_trade_word(word.text) ? "write " + word.text + " or " + word.text + "(2)" : "");
    } else {
      check_style(item, index);
    }
  }

  /// Behind a condition a signal or a mark can have been meant, else a style.
  void add_unknown(Place place, size_t index) {
    const std::string shown = reading_.text(place);
    const bool is_condition = statement_.form == Form::expression && index == 0 &&
                              (statement_.calls.empty() || !acts(statement_.tokens[0].text));
    const auto form =
        is_condition ? nearest(to_upper(shown), Vocabulary::short_form) : std::nullopt;
    const auto near = form ? form : nearest(to_upper(shown), Vocabulary::style);
    const std::string bounds = bounds_of_style(to_upper(shown));
    const std::string meant = item_from_elsewhere(to_upper(shown));
    if (!bounds.empty()) {
      add(place, shown + " has no effect", "write " + bounds);
      return;
    }
    add(place,
        shown +
            (is_condition ? " is no signal, mark or style" : " is no style item and has no effect"),
        !meant.empty() ? "did you mean " + meant + "?"
        : near         ? "did you mean " + *near + "?"
                       : "");
  }

  void check_call(size_t index, const Token& word) {
    if (word.text == "RGB") {
      check_rgb(statement_.items[index].begin);
    } else if (word.text == "SETSTYLECOLOR") {
      check_set_style(statement_.items[index].begin);
    } else if (word.text == "WORD") {
      check_word(word);
    } else if (acts(word.text) && !is_short_form(word.text)) {
      add(place_of(word), word.text + " behind a comma does nothing",
          "give it a statement of its own");
    } else if (!is_short_form(word.text)) {
      add_unknown(place_of(word), index);
    } else if (index > 0) {
      add(place_of(word), word.text + " works only behind the first comma");
    }
  }

  /// Only three integers in digits become a colour; larger ones run into each other.
  void check_rgb(size_t word) {
    const auto call = std::ranges::find(statement_.calls, word, &Call::word);
    if (call == statement_.calls.end() || call->close == absent) return;
    const auto is_part = [this](Range argument) {
      if (argument.size() != 1) return false;
      const auto value = to_number(first(argument).text);
      return value && *value >= 0 && *value <= 255 && first(argument).text.find('.') == absent;
    };
    if (call->arguments.size() == 3 && std::ranges::all_of(call->arguments, is_part)) return;
    add(place_of(statement_, {word, call->close + 1}),
        "RGB takes three numbers from 0 to 255, in digits", "write RGB(255,128,0)");
  }

  void check_set_style(size_t word) {
    const auto call = std::ranges::find(statement_.calls, word, &Call::word);
    if (call == statement_.calls.end()) return;
    for (const Range argument : call->arguments) {
      if (!argument.empty()) check_style(argument, 1);
    }
  }

  /// WORD counts the commas of the whole statement, those inside of calls, too.
  void check_word(const Token& word) {
    const auto index = static_cast<size_t>(&word - statement_.tokens.data());
    const auto call = std::ranges::find(statement_.calls, index, &Call::word);
    if (call != statement_.calls.end() && call->arguments.size() < 2) {
      add(place_of(word), "WORD takes a place and a text", "write condition,WORD(1,'text')");
      return;
    }
    const auto end = statement_.tokens.begin() + static_cast<ptrdiff_t>(index);
    if (std::count_if(statement_.tokens.begin(), end,
                      [](const Token& token) { return token.kind == TokenKind::comma; }) == 1)
      return;
    add(place_of(word),
        "WORD draws nothing here: it wants no other ',' in front, and " +
            reading_.text(statement_, statement_.expression) + " has one",
        "write X:=" + reading_.text(statement_, statement_.expression) +
            "; and then X,WORD(1,'text');");
  }

  /// Words that choose the form of a line do so as first items only.
  void check_place(size_t index, const Token& word) {
    if (word.text == "STICK" && statement_.is_named()) {
      add(place_of(word), "STICK has no effect in a statement with a name",
          "write COLORSTICK, or take the name away");
    } else if (index > 0) {
      add(place_of(word), word.text + " works only as the first item, right behind the expression");
    } else if (statement_.is_named() &&
               std::ranges::find(first_items, word.text) == first_items.end()) {
      add(place_of(word), word.text + " is no style item");
    }
  }

  void check_style(Range item, size_t index) {
    std::string text;
    for (size_t i = item.begin; i < item.end; ++i) text += statement_.tokens[i].text;
    if (has_seven_digits(text)) {
      add(place_of(statement_, item), text + " has seven digits, which make no colour",
          "write COLOR and 6 hexadecimal digits");
      return;
    }
    if (is_style(text)) return;
    // Two items with a blank between them are told of by the check of the form.
    const bool parted =
        item.size() > 1 &&
        std::ranges::all_of(statement_.tokens.begin() + static_cast<ptrdiff_t>(item.begin),
                            statement_.tokens.begin() + static_cast<ptrdiff_t>(item.end),
                            [](const Token& token) { return is_style(token.text); });
    if (parted) return;
    add_unknown(place_of(statement_, item), index);
  }

  const Reading& reading_;
  const Statement& statement_;
  std::vector<Problem>& out_;
};

}  // namespace

void warn_of_items(const Reading& reading, const Statement& statement, std::vector<Problem>& out) {
  if (statement.form != Form::constant) ItemCheck(reading, statement, out).run();
}

}  // namespace quor_advice

#include "syntax.h"

#include <algorithm>
#include <utility>

#include "letters.h"
#include "vocabulary.h"
#include "word_help.h"

namespace quor_advice {
namespace {

constexpr int deepest = 100;  ///< calls and parentheses in one another that are looked into

struct StraySign {
  std::string_view sign;
  std::string_view sentence;
  std::string_view suggestion;
};

// Signs that the language lets through though they mean nothing to an author.
constexpr StraySign stray_signs[] = {
    {"^", "'^' is no operator", "write POW(x,y) for a power"},
    {"?", "'?' is no operator", "write IF(condition,a,b) for a choice"},
    {"`", "'`' is no operator", "take it away"},
    {"@", "'@' is no operator", "write ',' between arguments"},
};

std::string in_quotes(std::string_view text) { return "'" + std::string(text) + "'"; }

std::string shown_token(const Reading& reading, const Token& token) {
  const std::string text = reading.text(place_of(token));
  const bool is_mark = token.kind != TokenKind::word && token.kind != TokenKind::number;
  return is_mark && token.kind != TokenKind::text ? in_quotes(text) : text;
}

class FormCheck {
 public:
  FormCheck(const Reading& reading, const Statement& statement)
      : reading_(reading), statement_(statement), tokens_(statement.tokens) {}

  std::vector<Problem> run() {
    if (statement_.form == Form::empty || statement_.form == Form::constant) return {};
    check_name();
    check_expression(statement_.expression, 0);
    for (const Range item : statement_.items) check_item(item);
    return std::move(problems_);
  }

 private:
  void add(Place place, std::string sentence, std::string suggestion = {}) {
    problems_.push_back({place, std::move(sentence), std::move(suggestion)});
  }

  std::string shown(size_t index) const { return shown_token(reading_, tokens_[index]); }

  /// A name that runs over a line end has swallowed the statement above it.
  void check_name() {
    for (size_t i = statement_.name_range.begin + 1; i < statement_.name_range.end; ++i) {
      if (!tokens_[i].gap.has_line_end) continue;
      add_missing_end(i - 1);
      return;
    }
  }

  void add_missing_end(size_t before) {
    problems_.push_back(missing_end(reading_, tokens_[before]));
  }

  /// Style items are words; of calls among them, as in ICON(1,'up'), only the parentheses are
  /// checked.
  void check_item(Range item) {
    for (size_t i = item.begin; i < item.end; ++i) {
      const TokenKind kind = tokens_[i].kind;
      if (kind == TokenKind::colon) {
        if (i == item.begin + 1) {
          add_comma_for_end(item.begin - 1);
        } else {
          add_second_colon(i);
        }
        return;
      }
      if (kind == TokenKind::open || kind == TokenKind::close) {
        if (statement_.partners[i] == absent) add_lone_parenthesis(i);
      }
      if (i == item.begin || kind != TokenKind::word || tokens_[i - 1].kind != TokenKind::word)
        continue;
      if (tokens_[i].gap.has_line_end && !is_style(tokens_[i].text)) {
        add_missing_end(i - 1);
        return;
      }
      if (is_style(tokens_[i].text)) add_missing_comma(i);
    }
  }

  /// A:C,B:O;
  void add_comma_for_end(size_t comma) {
    add(place_of(tokens_[comma]), "a ';' ends a statement, and here is a ','",
        "write ';' in front of " + shown(comma + 1));
  }

  void add_missing_comma(size_t index) {
    add(place_of(tokens_[index]), "a ',' is missing in front of " + shown(index));
  }

  void add_lone_parenthesis(size_t index) {
    const bool opens = tokens_[index].kind == TokenKind::open;
    if (opens && ends_inside_call()) {
      add({statement_end(), statement_end() + 1},
          "this ';' ends the statement inside a parenthesis", "write ',' between arguments");
      return;
    }
    const bool is_call = opens && index > 0 && tokens_[index - 1].kind == TokenKind::word;
    const std::string word = is_call ? " of " + shown(index - 1) : std::string();
    add(place_of(tokens_[index]),
        "this " + in_quotes(opens ? "(" : ")") + word + " has no partner");
  }

  size_t statement_end() const { return reading_.scan.slots[statement_.number].end; }

  /// Whether the next statement goes on as if this one's parenthesis were still open.
  bool ends_inside_call() const {
    const size_t next = statement_.number + 1;
    if (next >= reading_.statements.size()) return false;
    const Statement& other = reading_.statements[next];
    for (size_t i = 0; i < other.tokens.size(); ++i) {
      if (other.tokens[i].kind == TokenKind::colon) return false;
      if (other.tokens[i].kind == TokenKind::close && other.partners[i] == absent) return true;
    }
    return false;
  }

  void add_second_colon(size_t index) {
    const Token& before = tokens_[index - 1];
    const Token* const behind = statement_.token(index + 1);
    const Place place = place_of(tokens_[index]);
    const std::string sentence = "a second " + in_quotes(tokens_[index].text) + " in one statement";
    const bool parted = before.kind == TokenKind::word && before.gap.is_there;
    if (parted && statement_.is_named() && index - 2 > statement_.colon) {
      add_missing_end(index - 2);
    } else if (before.is_sign("=")) {
      add({before.begin, place.end}, "'=:' is no operator", "did you mean ':='?");
    } else if (behind != nullptr && is_style(behind->text)) {
      add(place, sentence, "write ',' in front of " + shown(index + 1));
    } else if (before.kind == TokenKind::number) {
      add(place, sentence, "a time is a number: 930 for 09:30");
    } else {
      const bool names = before.kind == TokenKind::word;
      add(place, sentence, names ? "a ';' may be missing in front of " + shown(index - 1) : "");
    }
  }

  /// Walks operands and operators, which must take turns.
  void check_expression(Range range, int depth) {
    if (range.empty() || depth > deepest) return;
    bool wants_operand = true;
    for (size_t i = range.begin; i < range.end; ++i) {
      const Token& token = tokens_[i];
      if (token.kind == TokenKind::sign) {
        take_sign(i, wants_operand);
        wants_operand = true;
      } else if (is_logic_word(i)) {
        add_logic_word(i, wants_operand, range);
        wants_operand = true;
      } else if (token.kind == TokenKind::colon) {
        add_second_colon(i);
        return;
      } else if (token.kind == TokenKind::comma) {
        add(place_of(token), "a ',' inside parentheses that belong to no word");
        wants_operand = true;
      } else if (token.kind == TokenKind::close) {
        add_lone_parenthesis(i);
      } else {
        if (!wants_operand && !add_neighbours(i, range, depth)) return;
        wants_operand = false;
        i = take_operand(i, range, depth);
      }
    }
    if (wants_operand) add_missing_operand(range.end - 1, true);
  }

  bool is_logic_word(size_t index) const {
    const Token& token = tokens_[index];
    return token.is(TokenKind::word, "AND") || token.is(TokenKind::word, "OR");
  }

  void add_logic_word(size_t index, bool wants_operand, Range range) {
    const bool is_last = index + 1 == range.end;
    const Token* const next = statement_.token(index + 1);
    if (wants_operand && next != nullptr && next->kind == TokenKind::open) {
      add(place_of(tokens_[index]), tokens_[index].text + " stands between two conditions",
          "write A " + tokens_[index].text + " B");
    } else if (!wants_operand && !is_last) {
      add_glued(index);
    } else {
      add(place_of(tokens_[index]), std::string("nothing stands ") +
                                        (wants_operand ? "in front of " : "behind ") +
                                        tokens_[index].text);
    }
  }

  void add_glued(size_t index) {
    const Token* const next = statement_.token(index + 1);
    const bool line_end =
        tokens_[index].gap.has_line_end || (next != nullptr && next->gap.has_line_end);
    const bool tab = tokens_[index].gap.has_tab || (next != nullptr && next->gap.has_tab);
    const std::string word = tokens_[index].text;
    std::string sentence = word + " needs a blank on both sides";
    if (line_end || tab) sentence += line_end ? ", and here is a line end" : ", and here is a tab";
    add(place_of(tokens_[index]), std::move(sentence),
        "write " + std::string(word == "AND" ? "&&" : "||") + ", which needs none");
  }

  void take_sign(size_t index, bool wants_operand) {
    const Token& token = tokens_[index];
    const auto* const stray = std::ranges::find(stray_signs, token.text, &StraySign::sign);
    if (stray != std::end(stray_signs)) {
      add(place_of(token), std::string(stray->sentence), std::string(stray->suggestion));
    } else if (!token.is_unary) {
      if (wants_operand) add_missing_operand(index, false);
    } else if (!wants_operand) {
      add_parted_sign(index);
    }
  }

  void add_parted_sign(size_t index) {
    const Gap gap = tokens_[index].gap;
    const std::string parted = gap.has_tab       ? "the tab in front of "
                               : gap.has_comment ? "the comment in front of "
                                                 : "the text in front of ";
    add(place_of(tokens_[index]),
        parted + in_quotes(tokens_[index].text) + " makes it a sign of what follows",
        gap.has_tab ? "put a blank there" : "");
  }

  void add_missing_operand(size_t index, bool at_end) {
    const Token& token = tokens_[index];
    if (token.kind != TokenKind::sign) return;
    const std::string sign = in_quotes(token.text);
    if (at_end) {
      add(place_of(token), "nothing stands behind " + sign);
    } else if (token.text == "!") {
      add(place_of(token), "'!' stands between two operands", "write NOT(x) for \"not\"");
    } else if (index > 0 && tokens_[index - 1].kind == TokenKind::sign) {
      add_sign_pair(index);
    } else {
      add(place_of(token), "nothing stands in front of " + sign);
    }
  }

  void add_sign_pair(size_t index) {
    const std::string pair = tokens_[index - 1].text + tokens_[index].text;
    struct Pair {
      std::string_view pair;
      std::string_view meant;
    };
    constexpr Pair known[] = {
        {"=>", ">="}, {"=<", "<="}, {"><", "<>"}, {"=!", "!="}, {"**", "POW(x,y)"}};
    const auto* const row = std::ranges::find(known, pair, &Pair::pair);
    const Place place{tokens_[index - 1].begin, tokens_[index].end};
    add(place,
        "no operand stands between " + in_quotes(tokens_[index - 1].text) + " and " +
            in_quotes(tokens_[index].text),
        row == std::end(known) ? std::string() : "did you mean " + std::string(row->meant) + "?");
  }

  /// Two operands in a row. False if the rest of the expression isn't worth a look.
  bool add_neighbours(size_t index, Range range, int depth) {
    const Token& before = tokens_[index - 1];
    const Token& token = tokens_[index];
    const Token* const next = index + 1 < range.end ? &tokens_[index + 1] : nullptr;
    if (next != nullptr && next->kind == TokenKind::colon) {
      add_missing_end(index - 1);
      return false;
    }
    if (before.kind == TokenKind::word && is_function(before.text) && !is_bare_word(before.text)) {
      add_missing_parentheses(index - 1);
      return false;
    }
    if (token.kind == TokenKind::word && (is_style(token.text) || is_short_form(token.text))) {
      add_missing_comma(index);
      return false;
    }
    if (token.gap.has_line_end) {
      add_missing_end(index - 1);
      return false;
    }
    add({before.begin, token.end},
        "no operator stands between " + shown(index - 1) + " and " + shown(index),
        depth > 0 ? "write one, or ','" : "");
    return true;
  }

  void add_missing_parentheses(size_t word) {
    const WordHelp* const help = find_word_help(tokens_[word].text);
    const std::string form(help == nullptr ? std::string_view() : help->form);
    add(place_of(tokens_[word]), tokens_[word].text + " takes its arguments in parentheses",
        form.empty() ? form : "write " + form);
  }

  /// Gives the index of the operand's last token.
  size_t take_operand(size_t index, Range range, int depth) {
    size_t open = index;
    if (tokens_[index].kind == TokenKind::word) {
      const Token* const next = index + 1 < range.end ? &tokens_[index + 1] : nullptr;
      if (next == nullptr || next->kind != TokenKind::open) return index;
      open = index + 1;
    } else if (tokens_[index].kind != TokenKind::open) {
      return index;
    }
    const size_t close = statement_.partners[open];
    if (close == absent || close >= range.end) {
      add_lone_parenthesis(open);
      return range.end;
    }
    if (open == index) {
      check_group(index, close, depth);
    } else {
      check_arguments(index, depth);
    }
    return close;
  }

  void check_group(size_t open, size_t close, int depth) {
    if (close == open + 1) {
      add({tokens_[open].begin, tokens_[close].end}, "nothing stands between these parentheses");
    }
    check_expression({open + 1, close}, depth + 1);
  }

  void check_arguments(size_t word, int depth) {
    const auto call = std::ranges::lower_bound(statement_.calls, word, {}, &Call::word);
    if (call == statement_.calls.end() || call->word != word) return;
    if (is_bare_word(tokens_[word].text) && !call->arguments.empty()) {
      add({tokens_[word].begin, tokens_[call->close].end},
          tokens_[word].text + " takes no arguments", "write " + tokens_[word].text);
      return;
    }
    for (const Range argument : call->arguments) {
      if (argument.empty()) {
        const Token& mark = tokens_[std::min(argument.end, tokens_.size() - 1)];
        const Token& comma = mark.kind == TokenKind::comma ? mark : tokens_[argument.begin - 1];
        add(place_of(comma), "an argument of " + tokens_[word].text + " is empty at this ','");
      }
      check_expression(argument, depth + 1);
    }
  }

  const Reading& reading_;
  const Statement& statement_;
  Tokens tokens_;
  std::vector<Problem> problems_;
};

}  // namespace

Problem missing_end(const Reading& reading, const Token& before) {
  return {
      {before.end, before.end + 1}, "a ';' is missing behind " + shown_token(reading, before), {}};
}

std::vector<Problem> check_form(const Reading& reading, const Statement& statement) {
  return FormCheck(reading, statement).run();
}

}  // namespace quor_advice

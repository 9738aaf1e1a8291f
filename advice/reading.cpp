#include "reading.h"

#include <fast_float/fast_float.h>

#include <algorithm>

#include "letters.h"
#include "parameters.h"

namespace quor_advice {
namespace {

std::vector<size_t> find_partners(Tokens tokens) {
  std::vector<size_t> partners(tokens.size(), absent);
  std::vector<size_t> open;
  for (size_t i = 0; i < tokens.size(); ++i) {
    if (tokens[i].kind == TokenKind::open) open.push_back(i);
    if (tokens[i].kind != TokenKind::close || open.empty()) continue;
    partners[i] = open.back();
    partners[open.back()] = i;
    open.pop_back();
  }
  return partners;
}

/// The pieces of a range between its commas outside inner parentheses.
std::vector<Range> split_at_commas(const Statement& statement, Range range) {
  std::vector<Range> pieces;
  Range piece{range.begin, range.begin};
  for (size_t i = range.begin; i < range.end; ++i) {
    const TokenKind kind = statement.tokens[i].kind;
    if (kind == TokenKind::open) {
      const size_t close = statement.partners[i];
      i = close < range.end ? close : range.end - 1;
    } else if (kind == TokenKind::comma) {
      piece.end = i;
      pieces.push_back(piece);
      piece.begin = i + 1;
    }
  }
  piece.end = range.end;
  pieces.push_back(piece);
  return pieces;
}

std::vector<Call> find_calls(const Statement& statement) {
  std::vector<Call> calls;
  for (size_t i = 0; i + 1 < statement.tokens.size(); ++i) {
    if (statement.tokens[i].kind != TokenKind::word) continue;
    if (statement.tokens[i + 1].kind != TokenKind::open) continue;
    Call call{i, i + 1, statement.partners[i + 1], {}};
    const size_t end = call.close == absent ? statement.tokens.size() : call.close;
    if (end > i + 2) call.arguments = split_at_commas(statement, {i + 2, end});
    calls.push_back(std::move(call));
  }
  return calls;
}

/// The first ":" or "=" outside parentheses, which decides whether the statement declares a name.
size_t find_operator(const Statement& statement) {
  for (size_t i = 0; i < statement.tokens.size(); ++i) {
    const Token& token = statement.tokens[i];
    if (token.kind == TokenKind::open && statement.partners[i] != absent) i = statement.partners[i];
    if (token.kind == TokenKind::colon) return i;
    if (token.kind == TokenKind::sign && token.text.ends_with('=')) return absent;
  }
  return absent;
}

std::string joined_text(const Statement& statement, Range range) {
  std::string text;
  for (size_t i = range.begin; i < range.end; ++i) text += statement.tokens[i].text;
  return text;
}

Statement read_statement(const Slot& slot, size_t number, std::string_view script) {
  Statement statement;
  statement.number = number;
  statement.tokens = tokenize(slot, script);
  if (statement.tokens.empty()) return statement;
  statement.partners = find_partners(statement.tokens);
  statement.calls = find_calls(statement);
  statement.colon = find_operator(statement);
  const bool is_constant = to_upper(slot.text.bytes).starts_with("CONST ");
  size_t begin = 0;
  statement.form = is_constant ? Form::constant : Form::expression;
  if (statement.colon != absent) {
    statement.name_range = {is_constant ? size_t{1} : 0, statement.colon};
    statement.name = joined_text(statement, statement.name_range);
    begin = statement.colon + 1;
    const bool assigns = statement.tokens[statement.colon].text == ":=";
    if (!is_constant) statement.form = assigns ? Form::assignment : Form::line;
  }
  std::vector<Range> pieces = split_at_commas(statement, {begin, statement.tokens.size()});
  statement.expression = pieces.front();
  statement.items.assign(pieces.begin() + 1, pieces.end());
  return statement;
}

/// Reads + - * / with signs and parentheses; the ranks of the language differ between * and / only,
/// which changes no sensible constant.
class Folder {
 public:
  static constexpr int deepest = 50;  ///< parentheses in one another

  Folder(const Reading& reading, const Statement& statement, Range range, int depth)
      : reading_(reading), statement_(statement), range_(range), at_(range.begin), depth_(depth) {}

  std::optional<double> run() {
    const auto value = sum();
    return at_ == range_.end ? value : std::nullopt;
  }

 private:
  const Token* peek() const { return at_ < range_.end ? &statement_.tokens[at_] : nullptr; }
  bool take(std::string_view sign) {
    if (peek() == nullptr || !peek()->is_sign(sign)) return false;
    ++at_;
    return true;
  }

  std::optional<double> sum() {
    auto left = product();
    while (left && peek() != nullptr) {
      const bool plus = take("+");
      if (!plus && !take("-")) break;
      const auto right = product();
      if (!right) return std::nullopt;
      *left += plus ? *right : -*right;
    }
    return left;
  }

  std::optional<double> product() {
    auto left = factor();
    while (left && peek() != nullptr) {
      const bool times = take("*");
      if (!times && !take("/")) break;
      const auto right = factor();
      if (!right) return std::nullopt;
      if (times) {
        *left *= *right;
      } else {
        *left = *right == 0.0 ? 0.0 : *left / *right;
      }
    }
    return left;
  }

  std::optional<double> factor() {
    double sign = 1.0;
    while (peek() != nullptr && peek()->is_unary)
      sign *= statement_.tokens[at_++].text == "-" ? -1 : 1;
    const auto value = operand();
    if (!value) return std::nullopt;
    return sign * *value;
  }

  std::optional<double> operand() {
    const Token* const token = peek();
    if (token == nullptr) return std::nullopt;
    if (token->kind == TokenKind::number) {
      ++at_;
      return to_number(token->text);
    }
    if (token->kind == TokenKind::word) return named(*token);
    if (token->kind != TokenKind::open || statement_.partners[at_] >= range_.end) {
      return std::nullopt;
    }
    const size_t close = statement_.partners[at_];
    if (depth_ == deepest) return std::nullopt;
    const auto value = Folder(reading_, statement_, {at_ + 1, close}, depth_ + 1).run();
    at_ = close + 1;
    return value;
  }

  std::optional<double> named(const Token& token) {
    ++at_;
    const auto constant = reading_.constants.find(token.text);
    if (constant != reading_.constants.end()) return constant->second;
    const auto line = reading_.constant_lines.find(token.text);
    if (line == reading_.constant_lines.end()) return std::nullopt;
    return line->second;
  }

  const Reading& reading_;
  const Statement& statement_;
  Range range_;
  size_t at_;
  int depth_;
};

/// What the language reads of a constant's text: as much as is a number.
double leading_number(std::string_view text) {
  double number = 0.0;
  fast_float::from_chars(text.data(), text.data() + text.size(), number);
  return number;
}

void take_names(Reading& reading) {
  for (const Statement& statement : reading.statements) {
    if (statement.name.empty()) continue;
    if (statement.is_named()) reading.lines.try_emplace(statement.name, statement.number);
    if (statement.form != Form::constant) continue;
    const Range value{statement.colon + 1, statement.tokens.size()};
    reading.constants.insert_or_assign(statement.name,
                                       leading_number(joined_text(statement, value)));
  }
  // A line is declared above its use, so that one walk is enough.
  for (const Statement& statement : reading.statements) {
    if (!statement.is_named() || reading.lines[statement.name] != statement.number) continue;
    const auto value = reading.constant_value(statement, statement.expression);
    if (value) reading.constant_lines.emplace(statement.name, *value);
  }
}

/// The statements of a reading by where they begin, to be taken out in this order.
class Known {
 public:
  Known(Reading& reading, Place changed) : reading_(reading), changed_(changed) {}

  /// The statement that was read from this slot; null if there was another text.
  Statement* find(const Slot& slot) {
    if (slot.text.places.empty()) return nullptr;
    const size_t begin = slot.text.places.front();
    while (next_ < reading_.statements.size() && begin_of(next_) < begin) ++next_;
    if (next_ == reading_.statements.size() || begin_of(next_) != begin) return nullptr;
    const bool is_apart = slot.end < changed_.begin || begin >= changed_.end;
    const bool is_same = slot.text.bytes == reading_.scan.slots[next_].text.bytes;
    return is_apart && is_same ? &reading_.statements[next_] : nullptr;
  }

 private:
  /// 0 for a blank line, which is passed over.
  size_t begin_of(size_t number) const {
    const auto& places = reading_.scan.slots[number].text.places;
    return places.empty() ? 0 : places.front();
  }

  Reading& reading_;
  Place changed_;
  size_t next_ = 0;
};

std::vector<size_t> find_line_starts(std::string_view script) {
  std::vector<size_t> starts = {0};
  for (size_t i = 0; i < script.size(); ++i) {
    if (script[i] == '\n' || (script[i] == '\r' && script.substr(i + 1, 1) != "\n")) {
      starts.push_back(i + 1);
    }
  }
  return starts;
}

}  // namespace

Place place_of(const Token& token) { return {token.begin, token.end}; }

Place place_of(const Statement& statement, Range range) {
  return {statement.tokens[range.begin].begin, statement.tokens[range.end - 1].end};
}

size_t Reading::line_of(size_t offset) const {
  return static_cast<size_t>(std::ranges::upper_bound(line_starts, offset) - line_starts.begin());
}

std::string Reading::text(Place place) const {
  std::string line;
  for (const char c : script.substr(place.begin, place.end - place.begin)) {
    const bool is_blank = c == '\n' || c == '\r' || c == '\t' || c == ' ';
    if (!is_blank) line += c;
    if (is_blank && !line.empty() && line.back() != ' ') line += ' ';
  }
  return line;
}

std::string Reading::text(const Statement& statement, Range range) const {
  return range.empty() ? std::string() : text(place_of(statement, range));
}

std::optional<double> Reading::constant_value(const Statement& statement, Range range) const {
  return Folder(*this, statement, range, 0).run();
}

std::vector<std::string> Reading::names() const {
  std::vector<std::string> names;
  for (const auto& [name, number] : lines) names.push_back(name);
  for (const auto& [name, value] : constants) names.push_back(name);
  return names;
}

Reading read_script(std::string_view script, std::string_view parameters) {
  return read_again({}, script, parameters, {0, script.size()});
}

Reading read_again(Reading before, std::string_view script, std::string_view parameters,
                   Place changed) {
  Reading reading;
  reading.script = script;
  reading.line_starts = find_line_starts(script);
  reading.scan = scan_script(script);
  reading.statements.reserve(reading.scan.slots.size());
  Known known(before, changed);
  for (size_t i = 0; i < reading.scan.slots.size(); ++i) {
    const Slot& slot = reading.scan.slots[i];
    Statement* const same = known.find(slot);
    reading.statements.push_back(same != nullptr ? std::move(*same)
                                                 : read_statement(slot, i, script));
    reading.statements.back().number = i;
  }
  reading.constants = read_parameters(parameters);
  take_names(reading);
  return reading;
}

}  // namespace quor_advice

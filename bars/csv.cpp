#include "csv.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

#include "errors.h"
#include "text.h"

namespace quor_bars {
namespace {

bool is_line_end(char c) { return c == '\n' || c == '\r'; }

/// Blanks around a cell don't belong to it; a tab that parts cells is none.
class Blanks {
 public:
  explicit Blanks(char separator) : separator_(separator) {}
  bool has(char c) const { return c == ' ' || (c == '\t' && separator_ != '\t'); }

  std::string_view trim(std::string_view text) const {
    while (!text.empty() && has(text.front())) text.remove_prefix(1);
    while (!text.empty() && has(text.back())) text.remove_suffix(1);
    return text;
  }

 private:
  char separator_;
};

size_t find(std::string_view text, char c) {
  const void* const place = text.empty() ? nullptr : std::memchr(text.data(), c, text.size());
  if (place == nullptr) return std::string_view::npos;
  return static_cast<size_t>(static_cast<const char*>(place) - text.data());
}

/// Whether the first line with anything in it is complete.
bool has_first_line(std::string_view text) {
  const size_t begin = text.find_first_not_of("\xEF\xBB\xBF \r\n");
  return begin != std::string_view::npos &&
         text.find_first_of("\r\n", begin) != std::string_view::npos;
}

/// One row character by character, with its quotes: inside of them separators and line ends are
/// text, and two stand for one. They stand around a whole cell.
class RowScanner {
 public:
  enum class End : uint8_t { row, cut, fault };

  RowScanner(std::string_view text, char separator, bool is_last, std::vector<std::string>& cells)
      : text_(text), separator_(separator), is_last_(is_last), cells_(cells) {}

  End scan() {
    for (;;) {
      if (count_ == cells_.size()) cells_.emplace_back();
      std::string& cell = cells_[count_++];
      cell.clear();
      skip_blanks();
      const bool is_quoted = at_ < text_.size() && text_[at_] == '"';
      has_quotes_ = has_quotes_ || is_quoted;
      const auto stopped = is_quoted ? take_quoted(cell) : take_bare(cell);
      if (stopped) return *stopped;
      if (at_ == text_.size()) return is_last_ ? End::row : End::cut;
      if (is_line_end(text_[at_])) return End::row;
      if (text_[at_] != separator_) return End::fault;
      ++at_;
    }
  }

  size_t cells() const { return count_; }
  bool is_blank() const { return count_ == 1 && !has_quotes_ && cells_.front().empty(); }
  /// With its line end.
  size_t length() const { return std::min(at_ + 1, text_.size()); }
  size_t lines() const {
    return static_cast<size_t>(std::ranges::count(text_.substr(0, length()), '\n'));
  }

 private:
  void skip_blanks() {
    while (at_ < text_.size() && is_blank(text_[at_])) ++at_;
  }
  bool is_blank(char c) const { return Blanks(separator_).has(c); }

  std::optional<End> take_bare(std::string& cell) {
    const size_t begin = at_;
    for (; at_ < text_.size(); ++at_) {
      if (text_[at_] == separator_ || is_line_end(text_[at_])) break;
      if (text_[at_] == '"') return End::fault;
    }
    cell = Blanks(separator_).trim(text_.substr(begin, at_ - begin));
    return std::nullopt;
  }

  std::optional<End> take_quoted(std::string& cell) {
    for (++at_; at_ < text_.size(); ++at_) {
      if (text_[at_] != '"') {
        cell += text_[at_];
        continue;
      }
      // The quote may be the first of two.
      if (at_ + 1 == text_.size() && !is_last_) return End::cut;
      if (at_ + 1 == text_.size() || text_[at_ + 1] != '"') {
        ++at_;
        skip_blanks();
        return std::nullopt;
      }
      cell += text_[++at_];
    }
    return is_last_ ? End::fault : End::cut;
  }

  std::string_view text_;
  char separator_;
  bool is_last_;
  std::vector<std::string>& cells_;
  size_t at_ = 0;
  size_t count_ = 0;
  bool has_quotes_ = false;
};

}  // namespace

char separator_of(std::string_view text) {
  constexpr std::string_view others = ";\t|";
  std::array<size_t, others.size()> counts{};
  bool is_quoted = false;
  const size_t begin = std::min(text.find_first_not_of(" \r\n"), text.size());
  for (const char c : text.substr(begin)) {
    if (c == '"') is_quoted = !is_quoted;
    if (is_quoted) continue;
    if (c == ',') return c;
    if (is_line_end(c)) break;
    if (const size_t place = others.find(c); place != others.npos) ++counts[place];
  }
  const auto most = std::ranges::max_element(counts);
  return *most == 0 ? ',' : others[static_cast<size_t>(most - counts.begin())];
}

CsvReader::CsvReader(std::string name, std::optional<char> separator, Take take)
    : name_(std::move(name)), separator_(separator), take_(std::move(take)) {}

void CsvReader::feed(std::string_view bytes) {
  std::string_view text = bytes;
  if (!rest_.empty() || !has_begun_) {
    rest_ += bytes;
    if (!has_begun_ && !has_first_line(rest_)) return;
    text = rest_;
  }
  const std::string_view left = take_rows(text, false);
  if (text.data() == rest_.data()) {
    rest_.erase(0, rest_.size() - left.size());
  } else {
    rest_ = left;
  }
}

void CsvReader::finish() {
  const std::string text = std::exchange(rest_, {});
  take_rows(text, true);
}

std::string_view CsvReader::take_rows(std::string_view text, bool is_last) {
  if (!std::exchange(has_begun_, true)) {
    text = beginning_of_text(text, name_);
    if (!separator_) separator_ = separator_of(text);
  }
  const bool has_quotes = find(text, '"') != std::string_view::npos;
  const bool has_returns = find(text, '\r') != std::string_view::npos;
  while (!text.empty()) {
    const size_t end = find(text, '\n');
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    const bool is_plain = !(has_quotes && find(line, '"') != std::string_view::npos) &&
                          !(has_returns && find(line, '\r') != std::string_view::npos);
    if (is_plain && end == std::string_view::npos && !is_last) return text;
    std::optional<size_t> length = std::min(end, text.size() - 1) + 1;
    if (is_plain) {
      take_plain(line);
      ++line_;
    } else {
      length = take_careful(text, is_last);
    }
    if (!length) return text;
    text.remove_prefix(*length);
  }
  return text;
}

void CsvReader::take_plain(std::string_view line) {
  const Blanks blanks(*separator_);
  if (blanks.trim(line).empty() && line.find(*separator_) == std::string_view::npos) return;
  row_.cells.clear();
  for (;;) {
    const size_t end = find(line, *separator_);
    row_.cells.push_back(blanks.trim(line.substr(0, end)));
    if (end == std::string_view::npos) break;
    line.remove_prefix(end + 1);
  }
  hand_on(line_);
}

std::optional<size_t> CsvReader::take_careful(std::string_view text, bool is_last) {
  RowScanner scanner(text, *separator_, is_last, quoted_);
  const RowScanner::End end = scanner.scan();
  if (end == RowScanner::End::cut) return std::nullopt;
  if (end == RowScanner::End::fault) {
    throw ReadError(name_ + ":" + std::to_string(line_) + ": a quote is out of place");
  }
  row_.cells.assign(quoted_.begin(), quoted_.begin() + static_cast<ptrdiff_t>(scanner.cells()));
  if (!scanner.is_blank()) hand_on(line_);
  line_ += scanner.lines();
  return scanner.length();
}

void CsvReader::hand_on(size_t line) {
  row_.line = line;
  take_(row_);
}

void read_csv(std::string_view text, const std::string& name, std::optional<char> separator,
              const CsvReader::Take& take) {
  CsvReader reader(name, separator, take);
  reader.feed(text);
  reader.finish();
}

}  // namespace quor_bars

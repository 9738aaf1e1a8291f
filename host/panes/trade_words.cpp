#include "trade_words.h"

#include <algorithm>
#include <iterator>

#include "../text.h"

namespace quor_host {
namespace {

constexpr TradeWord trade_words[] = {
    {"BK", Side::buy},  {"BP", Side::buy},   {"BPK", Side::buy},      {"SK", Side::sell},
    {"SP", Side::sell}, {"SPK", Side::sell}, {"CLOSEOUT", Side::none}};

}  // namespace

const TradeWord& trade_word(const std::string& statement) {
  std::string piece;
  for (size_t end = statement.size(); end != std::string::npos && end > 0;) {
    const size_t comma = statement.rfind(',', end - 1);
    const size_t begin = comma == std::string::npos ? 0 : comma + 1;
    piece = to_upper(statement.substr(begin, end - begin));
    std::erase(piece, ' ');
    piece.erase(std::min(piece.find('('), piece.size()));
    const auto* const row = std::ranges::find(trade_words, piece, &TradeWord::word);
    if (row != std::end(trade_words)) return *row;
    end = comma;
  }
  return trade_words[std::size(trade_words) - 1];
}

}  // namespace quor_host

// The help of the words, family by family, as the sections of the language reference have them.
#pragma once

#include <span>
#include <string_view>

namespace quor_advice {

struct WordHelp;

/// The parameters of most averages and windows.
inline constexpr std::string_view series_and_period = "X: the series; N: the period";

std::span<const WordHelp> arithmetic_help();
std::span<const WordHelp> average_help();
std::span<const WordHelp> window_help();
std::span<const WordHelp> other_bar_help();
std::span<const WordHelp> date_help();
std::span<const WordHelp> pattern_help();
std::span<const WordHelp> market_help();
std::span<const WordHelp> signal_help();
std::span<const WordHelp> drawing_help();

}  // namespace quor_advice

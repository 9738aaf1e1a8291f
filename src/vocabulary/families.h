// The tables of words, one per source unit.
#pragma once

#include <span>

#include "core/base_func.h"

namespace quor {

using Family = std::span<const WordRow> (*)();

std::span<const WordRow> arithmetic_words();
std::span<const WordRow> comparison_words();
std::span<const WordRow> branching_words();
std::span<const WordRow> moving_average_words();
std::span<const WordRow> windowed_average_words();
std::span<const WordRow> window_statistic_words();
std::span<const WordRow> sample_statistic_words();
std::span<const WordRow> extreme_words();
std::span<const WordRow> reference_words();
std::span<const WordRow> bar_position_words();
std::span<const WordRow> event_distance_words();
std::span<const WordRow> stretch_words();
std::span<const WordRow> signal_mark_words();
std::span<const WordRow> zigzag_words();
std::span<const WordRow> wave_words();
std::span<const WordRow> sar_words();
std::span<const WordRow> divergence_words();
std::span<const WordRow> market_data_words();
std::span<const WordRow> date_words();
std::span<const WordRow> clock_words();
std::span<const WordRow> trade_signal_words();
std::span<const WordRow> notice_words();
std::span<const WordRow> sound_words();
std::span<const WordRow> straight_line_words();
std::span<const WordRow> polyline_words();
std::span<const WordRow> text_words();
std::span<const WordRow> number_words();
std::span<const WordRow> icon_words();
std::span<const WordRow> stick_words();
std::span<const WordRow> candle_words();
std::span<const WordRow> area_words();
std::span<const WordRow> analytical_words();

/// All families of the language.
std::span<const Family> function_families();

}  // namespace quor

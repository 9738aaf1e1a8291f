#include "vocabulary/families.h"

namespace quor {
namespace {

// clang-format off
constexpr Family families[] = {
    arithmetic_words,
    comparison_words,
    branching_words,
    moving_average_words,
    windowed_average_words,
    window_statistic_words,
    sample_statistic_words,
    extreme_words,
    reference_words,
    bar_position_words,
    event_distance_words,
    stretch_words,
    signal_mark_words,
    zigzag_words,
    wave_words,
    sar_words,
    divergence_words,
    market_data_words,
    date_words,
    clock_words,
    trade_signal_words,
    notice_words,
    sound_words,
    straight_line_words,
    polyline_words,
    text_words,
    number_words,
    icon_words,
    stick_words,
    candle_words,
    area_words,
    analytical_words,
};
// clang-format on

}  // namespace

std::span<const Family> function_families() { return families; }

}  // namespace quor

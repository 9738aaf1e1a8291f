// The numbers by which charts are laid out and drawn, the same in pictures and on the page. Lengths
// in pixels.
#pragma once

#include <cstddef>

namespace quor_host {

/// Between the marks of the time axis, at least.
inline constexpr double time_mark_room = 46.0;
/// Between ticks: as much as one likes, and as little as there may be.
inline constexpr double tick_room = 54.0;
inline constexpr double least_tick_room = 18.0;
/// Ticks that are sought for at closer distances than one likes.
inline constexpr size_t enough_ticks = 3;

/// How much is seen of areas, and of lines and letters that mustn't hide others.
inline constexpr double background_alpha = 0.13;
inline constexpr double region_alpha = 0.26;
inline constexpr double volume_alpha = 0.75;
inline constexpr double lead_alpha = 0.55;  ///< from a text to its point
inline constexpr double last_price_alpha = 0.7;
inline constexpr double back_picture_alpha = 0.25;

/// Lengths of a dash and of the gap behind it, in turn, up to the first 0.
struct NamedDashes {
  const char* name;
  double lengths[6];
};
inline constexpr NamedDashes named_dashes[] = {
    {"DASHLINE", {8, 4}},
    {"DASH", {5, 4}},
    {"DOTLINE", {2, 3}},
    {"DOT", {1, 3}},
    {"DASHDOT", {6, 3, 1, 3}},
    {"POINTDOT", {1, 2}},
    {"DASHDOTDOT", {6, 3, 1, 3, 1, 3}},
};
inline constexpr NamedDashes level_dashes = {"", {4, 3}};

/// A level of a golden section, as a share of the swing.
struct GoldenShare {
  double share;
  const char* name;
};
inline constexpr GoldenShare golden_shares[] = {
    {0.0, "0"}, {0.382, "38.2%"}, {0.5, "50%"}, {0.618, "61.8%"}, {1.0, "100%"}};

/// A line is this much broader than its script says.
inline constexpr double line_ease = 0.4;
inline constexpr double broadest_line = 10.0;
/// With fewer pixels for a bar a broad line would hide all others.
inline constexpr double narrow_slot = 3.0;
inline constexpr double broadest_narrow_line = 1.2;
inline constexpr double ring_line = 1.3;

/// The part of its slot that a bar takes, and its width at most.
inline constexpr double bar_share = 0.72;
inline constexpr double broadest_bar = 41.0;

/// Between a bar and a text; from where on a text needs a line to its point; how far it may be from
/// there.
inline constexpr double text_space = 3.0;
inline constexpr double far_text = 11.0;
inline constexpr double farthest_text = 48.0;

/// Half the height of a tag on the value axis.
inline constexpr double half_tag = 8.0;
inline constexpr double tag_radius = 2.5;

}  // namespace quor_host

#include "caption.h"

#include <algorithm>
#include <cmath>

#include "../input/fields.h"
#include "../panes/numbers.h"
#include "time_marks.h"

namespace quor_host {
namespace {

constexpr double legend_text_size = 11.5;
constexpr double legend_line_height = 17.0;
constexpr double title_size = 17.0;

struct NamedPeriod {
  uint32_t code;
  const char* name;
};
constexpr NamedPeriod named_periods[] = {
    {0x303C, "1 hour"},  {0x3078, "2 hours"}, {0x30B4, "3 hours"},   {0x30F0, "4 hours"},
    {0x4000, "Daily"},   {0x4001, "Daily"},   {0x5000, "Weekly"},    {0x5001, "Weekly"},
    {0x6000, "Monthly"}, {0x6001, "Monthly"}, {0x6003, "Quarterly"}, {0x7000, "Yearly"},
    {0x7001, "Yearly"},
};

std::string signed_text(double value, int digits) {
  return (value > 0.0 ? "+" : "") + number_text(value, digits);
}

/// Texts side by side, as far as they have room.
class Line {
 public:
  Line(Canvas& canvas, Point at, double right) : canvas_(canvas), at_(at), right_(right) {}

  void add(const std::string& text, const Lettering& lettering, double space) {
    const double width = canvas_.extent(text, lettering).x;
    if (text.empty() || at_.x + width > right_) return;
    canvas_.text(at_, text, lettering);
    at_.x += width + space;
  }

 private:
  Canvas& canvas_;
  Point at_;
  double right_;
};

std::string legend_text(const View& view, const Record& record, int panel_digits) {
  std::string title = title_of(record);
  if (title.empty()) return title;
  const double last = view.value(record.column("Field1Id"), view.last_row());
  if (!std::isfinite(last)) return title;
  const double digits = record.number("Digit", -1.0);
  if (digits >= 0.0)
    return title + ' ' + grouped_text(last, static_cast<int>(std::min(digits, 6.0)));
  return title + ' ' + short_text(last, panel_digits);
}

/// A record has one of these keys; sticks of two colours have a title of neither.
std::string brush_of(const Record& record) {
  const std::string upper = record.text("UpperShadowColor");
  if (upper != record.text("LowerShadowColor")) return "Theme.Label";
  return record.text("LineColor") + record.text("TextColor") + upper;
}

}  // namespace

std::string period_name(uint32_t code, bool intraday) {
  const auto* const row = std::ranges::find(named_periods, code, &NamedPeriod::code);
  if (row != std::end(named_periods)) return intraday && code >= 0x4000 ? "" : row->name;
  if (code > 0x3100 && code < 0x3200) return std::to_string(code - 0x3100) + " s";
  if (code >= 0x3000 && code < 0x3100) {
    return std::to_string(std::max<uint32_t>(code - 0x3000, 1)) + " min";
  }
  return "";
}

void draw_title(const Sheet& sheet, const std::string& name, uint32_t period, double top,
                double right) {
  const auto& [canvas, view, theme] = sheet;
  const bool intraday = is_intraday(view.keys());
  Line line(canvas, {sheet_margin, top + title_size / 2 + 2}, right);
  line.add(name, {theme.ink, title_size, true}, 12);
  const Lettering plain{theme.label, 13.0};
  line.add(period_name(period, intraday), plain, 12);
  line.add(key_text(view.keys().back(), intraday).substr(0, 16), plain, 16);
  const double close = view.value(field_close, view.last_row());
  if (!std::isfinite(close)) return;
  const int digits = decimals_of(view.series(field_close).values());
  line.add(grouped_text(close, digits), {theme.ink, 13.0, true}, 8);
  if (view.row_count() < 2) return;
  const double before = view.value(field_close, view.last_row() - 1);
  const double change = close - before;
  if (!std::isfinite(change) || before <= 0.0) return;
  line.add(signed_text(change, digits) + " (" + signed_text(change / before * 100, 2) + "%)",
           {change < 0.0 ? theme.fall : theme.rise, 13.0}, 0);
}

Legend lay_out_legend(const Sheet& sheet, const Panel& panel, double width) {
  constexpr double most_lines = 3.0;
  Legend legend;
  Point at;
  for (const Record* record : panel.records) {
    const std::string text = legend_text(sheet.view, *record, panel.digits);
    if (text.empty()) continue;
    const std::string brush = brush_of(*record);
    const double extent = sheet.canvas.extent(text, {{}, legend_text_size}).x;
    if (at.x > 0.0 && at.x + extent > width) at = {0.0, at.y + legend_line_height};
    if (at.y >= most_lines * legend_line_height) break;
    legend.entries.push_back({text, brush, at});
    legend.height = at.y + legend_line_height;
    at.x += extent + 16;
  }
  return legend;
}

void draw_legend(const Sheet& sheet, const Legend& legend, Point corner) {
  for (const auto& [text, brush, at] : legend.entries) {
    sheet.canvas.text({corner.x + at.x, corner.y + at.y + legend_line_height / 2}, text,
                      {sheet.theme.text(brush), legend_text_size});
  }
}

}  // namespace quor_host

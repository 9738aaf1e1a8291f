#include "layout.h"

#include <algorithm>

#include "../input/fields.h"

namespace quor_host {
namespace {

bool has_shape(const Panel& panel, const char* shape_name) {
  return std::ranges::any_of(panel.records,
                             [shape_name](const Record* record) { return record->is(shape_name); });
}

/// How much of the height a lower panel wants: candles more than lines, sticks alone less, lines
/// that only say yes or no the least.
double weight_of(const Panel& panel) {
  if (panel.digits == 0 && panel.range.span() < 1.5) return 0.10;
  if (has_shape(panel, "CandleShape")) return 0.30;
  return has_shape(panel, "PolylineShape") ? 0.22 : 0.16;
}

}  // namespace

std::vector<Panel> panels_of(const View& view, const View& wide, const std::vector<Record>& records,
                             const Record* volume, size_t most) {
  std::vector<Panel> panels = arrange(view, wide, records, most);
  if (panels.size() > 1 || volume == nullptr || !view.has(field_volume)) return panels;
  std::vector<Panel> below = arrange(view, wide, {*volume}, 1);
  below.front().records = {volume};
  panels.push_back(below.front());
  return panels;
}

std::vector<double> shares_of(const std::vector<Panel>& panels) {
  std::vector<double> shares;
  double wanted = 0.0;
  for (size_t i = 0; i < panels.size(); ++i) {
    shares.push_back(i == 0 ? 0.0 : weight_of(panels[i]));
    wanted += shares.back();
  }
  const double scale = std::min(panels.size() == 2 ? 1.3 : 1.0, 0.6 / std::max(wanted, 1e-9));
  for (double& share : shares) share *= scale;
  shares.front() = 1.0 - wanted * scale;
  return shares;
}

/// Regions lie behind the bars, which they would dim. Signals, sounds and pictures at bars lie over
/// lines, and get their places before texts do.
double layer_of(const Record& record) {
  if (record.is("PolygonShape")) return 0.4;
  if (has_no_value(record)) return 2.5;
  if (record.is("ImageShape") && !record.flag("IsLastCandle")) return 2.6;
  return record.number("ZIndex");
}

bool are_own_candles(const Record& record, const Record& bars) {
  return &record != &bars && record.is("CandleShape") && !record.flag("IsColorKLine");
}

std::vector<const Record*> layers_of(const Panel& panel, const Record& bars) {
  std::vector<const Record*> layers = panel.records;
  const auto is_own = [&bars](const Record* record) { return are_own_candles(*record, bars); };
  if (std::ranges::any_of(layers, is_own)) std::erase(layers, &bars);
  std::ranges::stable_sort(layers, {}, [](const Record* record) { return layer_of(*record); });
  return layers;
}

}  // namespace quor_host

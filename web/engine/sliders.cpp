#include "sliders.h"

#include <cmath>

#include "advice/advice.h"
#include "advice/reading.h"
#include "host/text.h"

namespace quor_host {
namespace {

using quor_advice::Statement;

Json slider(const char* kind, const std::string& name, double value) {
  const auto [low, high, step] = slider_range(value);
  return {{"kind", kind}, {"name", name}, {"value", value},  {"low", low},
          {"high", high}, {"step", step}, {"from", nullptr}, {"to", nullptr}};
}

/// The number of a CONST as the script writes it; nothing if anything else stands there.
std::optional<double> written_number(const quor_advice::Reading& reading,
                                     const Statement& statement) {
  if (statement.form != quor_advice::Form::constant || statement.expression.empty()) return {};
  const quor_advice::Place place = place_of(statement, statement.expression);
  std::string text(reading.script.substr(place.begin, place.end - place.begin));
  std::erase(text, ' ');
  return to_number(text);
}

}  // namespace

SliderRange slider_range(double value) {
  const double size = std::abs(value);
  if (value == std::floor(value) && size < 1e6) {
    const double high = size <= 5 ? 20 : std::ceil(size * 4 / 10) * 10;
    return {value < 0 ? -high : value == 0 ? 0.0 : 1.0, value < 0 ? 0.0 : high, 1.0};
  }
  const double unit = std::pow(10.0, std::floor(std::log10(size)));
  const double high = std::ceil(size * 4 / unit) * unit;
  return {value < 0 ? -high : 0.0, value < 0 ? 0.0 : high, unit / 100};
}

Json sliders_of(std::string_view script, const Parameters& parameters, const Places& places) {
  Json sliders = Json::array();
  for (const auto& [name, value] : parameters) {
    const auto faults = quor_advice::parameter_faults(script, {name});
    Json parameter = slider("parameter", name, value);
    parameter["idle"] = !faults.empty() && faults.front().is_idle;
    sliders.push_back(std::move(parameter));
  }
  const quor_advice::Reading reading = quor_advice::read_script(script, {});
  for (const Statement& statement : reading.statements) {
    const auto value = written_number(reading, statement);
    if (!value || statement.name.empty()) continue;
    const quor_advice::Place place = place_of(statement, statement.expression);
    Json constant = slider("const", statement.name, *value);
    constant["from"] = places.of_byte(place.begin);
    constant["to"] = places.of_byte(place.end);
    sliders.push_back(std::move(constant));
  }
  return sliders;
}

}  // namespace quor_host

#include "compiler/settings.h"

#include <simdjson.h>

#include <new>
#include <optional>

#include "text/strings.h"

namespace quor {
namespace {

namespace dom = simdjson::dom;

std::optional<double> number_of(dom::element value) {
  double number = 0;
  if (value.get(number) != simdjson::SUCCESS) return std::nullopt;
  return number;
}

/// The first field of the name, in any case.
std::optional<dom::element> find_key(const dom::object& object, std::string_view name) {
  for (const dom::key_value_pair field : object) {
    if (equal_ignoring_case(field.key, name)) return field.value;
  }
  return std::nullopt;
}

std::string text_of(const std::optional<dom::element>& value) {
  std::string_view text;
  if (value && value->get(text) == simdjson::SUCCESS) return std::string(text);
  return {};
}

/// Calls `take` with every element of an array; nothing for bad JSON or another root. Good JSON
/// that finds no memory throws: a script without its settings would be another script.
template <typename Take>
void for_each_element(std::string_view json, const Take& take) {
  if (json.empty()) return;
  dom::parser parser;
  dom::array elements;
  const simdjson::error_code fault = parser.parse(json.data(), json.size()).get(elements);
  if (fault == simdjson::MEMALLOC) throw std::bad_alloc();
  if (fault != simdjson::SUCCESS) return;
  for (const dom::element element : elements) take(element);
}

void take_parameter(std::map<std::string, double, std::less<>>& constants, dom::element element) {
  std::string_view name;
  double value = 0;
  if (element["PARAM_NAME"].get(name) != simdjson::SUCCESS) return;
  if (element["DEFAULT"].get(value) != simdjson::SUCCESS) return;
  constants.insert_or_assign(std::string(name), value);
}

LineModel line_model_of(const dom::object& object) {
  LineModel model;
  model.line_name = text_of(find_key(object, "LINE_NAME"));
  model.color_key = text_of(find_key(object, "COLOR_KEY"));
  const auto thick = find_key(object, "LINE_THICK");
  if (const auto number = thick ? number_of(*thick) : std::nullopt) {
    model.line_thick = *number >= 1.0 && *number <= 9.0 ? *number : 1.0;
  }
  if (const auto selected = find_key(object, "IS_SELECTED")) {
    int64_t value = 0;
    if (selected->get(value) == simdjson::SUCCESS) model.is_selected = value;
  }
  return model;
}

void take_line(std::unordered_map<std::string, LineModel>& models, dom::element element) {
  dom::object object;
  if (element.get(object) != simdjson::SUCCESS) return;
  LineModel model = line_model_of(object);
  if (model.line_name.empty()) return;
  std::string name = model.line_name;
  models.insert_or_assign(std::move(name), std::move(model));
}

}  // namespace

void load_settings(CompileContext& context, std::string_view parameters, std::string_view lines) {
  for_each_element(
      parameters, [&](dom::element element) { take_parameter(context.script.constants, element); });
  for_each_element(lines,
                   [&](dom::element element) { take_line(context.script.line_models, element); });
}

}  // namespace quor

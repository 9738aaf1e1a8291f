#include "editing.h"

#include <array>
#include <string>

#include "advice/call_forms.h"
#include "advice/colours.h"
#include "advice/completion.h"
#include "advice/fixes.h"
#include "advice/formatting.h"
#include "advice/hover.h"
#include "advice/symbols.h"
#include "advice/vocabulary.h"
#include "host/options/period.h"
#include "host/studio/refusal.h"
#include "host/studio/task.h"
#include "places.h"
#include "run.h"

namespace quor_host {
namespace {

using quor_advice::Place;

constexpr size_t most_findings = 50;
constexpr size_t greatest_period = 0x7FFFFFFF;

/// The parameters as the library takes them.
std::string parameters_text(const Parameters& parameters) {
  Json list = Json::array();
  for (const auto& [name, value] : parameters)
    list.push_back({{"PARAM_NAME", name}, {"DEFAULT", value}});
  return json_text(list);
}

/// A script that a call is about.
struct Asked {
  explicit Asked(const Json& call)
      : task(task_of(call)),
        reading(quor_advice::read_script(task.script, parameters_text(task.parameters))),
        places(task.script),
        offset(places.byte_of(count_of(call, "at", 0, 0, longest_script))) {}

  Json range(Place place) const {
    return {{"from", places.of_byte(place.begin)}, {"to", places.of_byte(place.end)}};
  }

  Task task;
  quor_advice::Reading reading;  ///< of the task's script
  Places places;
  size_t offset;
};

quor_advice::Finding finding_of(const Json& json) {
  if (!json.is_object()) throw Refusal(400, "a finding must be an object");
  quor_advice::Finding finding;
  const bool is_error = text_of(json, "severity") == "error";
  finding.severity = is_error ? quor_advice::Severity::error : quor_advice::Severity::warning;
  finding.line = count_of(json, "line", 0, 0, longest_script + 1);
  finding.column = count_of(json, "column", 0, 0, longest_script + 1);
  finding.length = count_of(json, "length", 0, 0, longest_script);
  finding.code = static_cast<int64_t>(number_of(json, "code").value_or(0));
  finding.sentence = text_of(json, "sentence");
  finding.suggestion = text_of(json, "suggestion");
  return finding;
}

/// The place of the argument in its form, which is plain ASCII.
Json form_json(const quor_advice::CallForm& form, size_t argument) {
  const Place place = argument < form.arguments.size() ? form.arguments[argument] : Place();
  return {{"text", form.text}, {"from", place.begin}, {"to", place.end}};
}

}  // namespace

Json completions(const Json& call) {
  constexpr std::array kinds = {"function", "field", "line",    "constant", "style",
                                "colour",   "text",  "keyword", "form"};
  const Asked asked(call);
  const auto found = quor_advice::complete(asked.reading, asked.offset);
  Json items = Json::array();
  for (const quor_advice::Completion& item : found.items) {
    items.push_back({{"label", item.label},
                     {"kind", kinds.at(static_cast<size_t>(item.kind))},
                     {"rank", quor_advice::rank_of(item.kind)},
                     {"detail", item.detail},
                     {"about", item.about},
                     {"insert", item.insert}});
    if (item.kind != quor_advice::CompletionKind::colour) continue;
    if (const auto code = quor_advice::colour_code(item.label)) items.back()["code"] = *code;
  }
  Json answer = asked.range(found.replaced);
  answer["items"] = std::move(items);
  return answer;
}

Json hover(const Json& call) {
  const Asked asked(call);
  const auto hover = quor_advice::hover_at(asked.reading, asked.offset);
  if (!hover) return nullptr;
  Json answer = asked.range(hover->place);
  answer["markdown"] = hover->markdown;
  const auto name = quor_advice::name_at(asked.reading, asked.offset);
  answer["name"] = name ? Json(name->name) : Json();
  return answer;
}

Json call_hint(const Json& call) {
  const Asked asked(call);
  const auto hint = quor_advice::call_hint_at(asked.reading, asked.offset);
  if (!hint) return nullptr;
  Json answer = form_json(hint->forms[hint->form], hint->argument);
  const std::string_view form = hint->forms[hint->form].text;
  const size_t from = answer["from"];
  const size_t to = answer["to"];
  answer["about"] = quor_advice::argument_help(*hint->help, form.substr(from, to - from));
  answer["summary"] = hint->help->summary;
  answer["at"] = asked.places.of_byte(hint->word.begin);
  return answer;
}

Json word_help(const Json& call) {
  const auto* const help = quor_advice::find_word_help(text_of(call, "word"));
  return help == nullptr ? Json() : Json{{"markdown", quor_advice::help_markdown(*help)}};
}

Json name_at(const Json& call) {
  const Asked asked(call);
  const auto name = quor_advice::name_at(asked.reading, asked.offset);
  if (!name) return nullptr;
  const auto symbols = quor_advice::symbols_of(asked.reading);
  const auto* const symbol = quor_advice::find_symbol(symbols, name->name);
  Json answer = asked.range(name->place);
  answer["name"] = name->name;
  answer["declared"] = symbol == nullptr ? Json() : asked.range(symbol->place);
  Json places = Json::array();
  for (const Place place : quor_advice::places_of(asked.reading, name->name))
    places.push_back(asked.range(place));
  answer["places"] = std::move(places);
  return answer;
}

Json renamed(const Json& call) {
  const std::string other = text_of(call, "to");
  const Json name = name_at(call);
  if (name.is_null() || name["declared"].is_null())
    throw Refusal(409, "there is no name of the script here");
  const Asked asked(call);
  const std::string fault =
      quor_advice::rename_fault(asked.reading, name["name"].get<std::string>(), other);
  if (!fault.empty()) throw Refusal(409, fault);
  return name["places"];
}

Json formatted(const Json& call) {
  const Task task = task_of(call);
  const auto formatted = quor_advice::format_script(task.script);
  const auto at = formatted.unreadable_at;
  return {{"text", formatted.text},
          {"unreadable", at ? Json(Places(task.script).of_byte(*at)) : Json()}};
}

Json colours(const Json& call) {
  const Asked asked(call);
  Json all = Json::array();
  for (const quor_advice::ColourAt& colour : quor_advice::colours_of(asked.reading)) {
    all.push_back(asked.range(colour.place));
    all.back()["code"] = colour.code;
  }
  return all;
}

Json colour_texts(const Json& call) {
  constexpr size_t brightest = 0xFFFFFF;
  const auto code = static_cast<uint32_t>(count_of(call, "code", 0, 0, brightest));
  return quor_advice::colour_texts(code);
}

Json fixes(const Json& call) {
  const auto found = call.find("findings");
  if (found == call.end() || !found->is_array()) throw Refusal(400, "\"findings\" must be a list");
  const Asked asked(call);
  const Surroundings around;
  const auto period =
      static_cast<uint32_t>(count_of(call, "period", period_of_a_day, 0, greatest_period));
  const Run run(asked.task, around, period);
  Json all = Json::array();
  for (const Json& finding : *found) {
    Json of_one = Json::array();
    if (all.size() < most_findings) {
      for (const quor_advice::Fix& fix : run.fixes(finding_of(finding))) {
        of_one.push_back(asked.range(fix.place));
        of_one.back()["text"] = fix.text;
        of_one.back()["title"] = fix.title;
      }
    }
    all.push_back(std::move(of_one));
  }
  return all;
}

}  // namespace quor_host

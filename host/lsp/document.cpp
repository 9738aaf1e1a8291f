#include "document.h"

#include <utility>

#include "advice/advice.h"
#include "advice/parameters.h"
#include "engine/engine.h"

namespace quor_lsp {
namespace {

std::string compile(std::string_view script, const Settings& settings) {
  // A script may read any period that is longer than that of its bars: while nobody has said how
  // long they are, they are as short as can be.
  constexpr int32_t one_second = 0x3101;
  quor::engine::Settings all;
  all.subject.period = static_cast<uint32_t>(settings.period == 0 ? one_second : settings.period);
  for (const auto& [name, value] : quor_advice::read_parameters(settings.parameters)) {
    all.parameters.emplace_back(name, value);
  }
  return quor::engine::Script(std::string(script), all).report().text;
}

}  // namespace

Document::Document(std::string text, Json version, Encoding encoding)
    : text_(std::move(text)),
      version_(std::move(version)),
      encoding_(encoding),
      line_starts_(line_starts_of(text_)) {}

void Document::change(const Json& change) {
  const auto& text = change.at("text").get_ref<const std::string&>();
  if (change.contains("range")) {
    const quor_advice::Place place = positions().place_of(change.at("range"));
    text_.replace(place.begin, place.end - place.begin, text);
  } else {
    text_ = text;
  }
  line_starts_ = line_starts_of(text_);
  forget();
}

void Document::forget() {
  reading_.reset();
  findings_.reset();
  is_published = false;
}

const quor_advice::Reading& Document::reading(const Settings& settings) {
  if (!reading_) reading_ = quor_advice::read_script(text_, settings.parameters);
  return *reading_;
}

quor_advice::Input Document::input(const Settings& settings) const {
  quor_advice::Input input;
  input.script = text_;
  input.parameters = settings.parameters;
  input.report = report_;
  input.period = settings.period;
  input.compile = [&settings](std::string_view script) { return compile(script, settings); };
  return input;
}

const std::vector<quor_advice::Finding>& Document::findings(const Settings& settings) {
  if (!findings_) {
    report_ = compile(text_, settings);
    findings_ = quor_advice::advise(input(settings));
  }
  return *findings_;
}

std::vector<quor_advice::Fix> Document::fixes(const quor_advice::Finding& finding,
                                              const Settings& settings) {
  return quor_advice::fixes_of(input(settings), finding);
}

}  // namespace quor_lsp

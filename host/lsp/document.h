// A script that is open in the editor.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "advice/finding.h"
#include "advice/fixes.h"
#include "advice/reading.h"
#include "positions.h"

namespace quor_lsp {

/// What scripts are compiled with.
struct Settings {
  std::string parameters;  ///< JSON as the library takes it
  int32_t period = 0;      ///< of the bars, a code; 0 if the author hasn't said
};

class Document {
 public:
  Document(std::string text, Json version, Encoding encoding);

  const std::string& text() const { return text_; }
  const Json& version() const { return version_; }

  /// A change of the protocol: a range with its new text, or a whole text. Throws Json::exception
  /// for anything else.
  void change(const Json& change);
  void set_version(Json version) { version_ = std::move(version); }

  Positions positions() const { return {text_, line_starts_, encoding_}; }
  /// With the parameters of the settings, as long as the text stays.
  const quor_advice::Reading& reading(const Settings& settings);
  const std::vector<quor_advice::Finding>& findings(const Settings& settings);
  std::vector<quor_advice::Fix> fixes(const quor_advice::Finding& finding,
                                      const Settings& settings);

  /// What was read and found counts no longer.
  void forget();
  bool is_published = false;  ///< the editor has the findings of this text

 private:
  quor_advice::Input input(const Settings& settings) const;

  std::string text_;
  Json version_;
  Encoding encoding_;
  std::vector<size_t> line_starts_;
  std::optional<quor_advice::Reading> reading_;
  std::optional<std::vector<quor_advice::Finding>> findings_;
  std::string report_;
};

}  // namespace quor_lsp

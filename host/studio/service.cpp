#include "service.h"

#include "../encoding.h"
#include "../errors.h"
#include "calculation.h"
#include "colours.h"
#include "desk_requests.h"
#include "library.h"
#include "player.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

constexpr size_t most_bar_bytes = size_t{64} << 20U;
/// A script with what its text may grow by as JSON.
constexpr size_t most_request_bytes = size_t{2} << 20U;

std::string bars_path(const StudioFiles& files) {
  return files.bars.empty() ? (files.samples / "index-daily.csv").string() : files.bars;
}

/// The folder that a file lies in, or the folder itself.
fs::path folder_of(const std::string& path) {
  if (fs::is_directory(path)) return path;
  const fs::path folder = fs::path(path).parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

/// Scripts belong beside the one that was given, else beside the bars.
std::optional<ScriptFolder> script_folder(const StudioFiles& files) {
  const std::string& path = files.script.empty() ? files.bars : files.script;
  if (path.empty()) return std::nullopt;
  return ScriptFolder(folder_of(path));
}

Json first_script(const std::string& path) {
  if (path.empty()) return {};
  std::string text = read_text(path);
  if (text.size() > longest_script) throw HostError(path + ": the script is too long");
  return {{"name", fs::path(path).filename().string()}, {"text", std::move(text)}};
}

void require_method(const Request& request, const char* method) {
  if (request.method != method) throw Refusal(405, "this wants " + std::string(method));
}

std::string joined(const std::vector<std::string>& pieces, size_t first) {
  std::string path;
  for (size_t i = first; i < pieces.size(); ++i) path += (path.empty() ? "" : "/") + pieces[i];
  return path;
}

}  // namespace

StudioService::StudioService(const StudioFiles& files, std::chrono::seconds idle)
    : files_(files),
      page_(files.page),
      securities_(bars_path(files)),
      scripts_(script_folder(files)),
      script_(first_script(files.script)),
      sessions_(idle) {}

size_t StudioService::body_limit(const std::string& path) {
  return path.ends_with("/bars") ? most_bar_bytes : most_request_bytes;
}

Answer StudioService::answer(const Request& request) {
  const std::vector<std::string> pieces = pieces_of(request.path);
  if (!pieces.empty() && pieces.front() == "api") return answer_api(pieces, request);
  require_method(request, "GET");
  return page_.answer(request.path);
}

Answer StudioService::answer_api(const std::vector<std::string>& pieces, const Request& request) {
  const std::string& what = pieces.size() > 1 ? pieces[1] : pieces[0];
  if (pieces.size() == 2 && what == "start") {
    require_method(request, "GET");
    return start();
  }
  if (pieces.size() == 3 && what == "scripts") return answer_script(pieces[2], request);
  if (what == "sessions") return answer_session(pieces, request);
  throw Refusal(404, "there is no such request");
}

Answer StudioService::answer_session(const std::vector<std::string>& pieces,
                                     const Request& request) {
  if (pieces.size() == 2) {
    require_method(request, "POST");
    return json_answer({{"id", sessions_.open()}}, 201);
  }
  const std::string& id = pieces[2];
  const std::string what = joined(pieces, 3);
  if (what == "close") {
    require_method(request, "POST");
    sessions_.close(id);
    return {204, {}, {}};
  }
  const std::shared_ptr<Desk> desk = sessions_.find(id);
  return answer_at(*desk, what, securities_, request);
}

Answer StudioService::answer_script(const std::string& name, const Request& request) {
  if (!scripts_) {
    throw Refusal(409,
                  "the studio has no folder of scripts; quor studio --bars FOLDER gives it one");
  }
  if (request.method == "GET") {
    return json_answer({{"name", name}, {"text", scripts_->read(name)}});
  }
  const Json json = request.json();
  const std::string text = text_of(json, "text");
  if (text.empty()) throw Refusal(400, "there is no script to save");
  if (text.size() > longest_script) throw Refusal(413, "the script is too long");
  scripts_->save(name, text, flag_of(json, "overwrite"));
  return json_answer({{"name", name}}, 201);
}

Answer StudioService::start() const {
  const char* const origin = files_.bars.empty() ? "sample" : "folder";
  Json securities = Json::array();
  for (const std::string& name : securities_.names()) {
    securities.push_back({{"name", name}, {"origin", origin}});
  }
  return json_answer({{"version", QUOR_VERSION},
                      {"script", script_},
                      {"folder", scripts_ ? Json(scripts_->name()) : Json()},
                      {"can_save", scripts_.has_value()},
                      {"scripts", scripts_ ? Json(scripts_->names()) : Json::array()},
                      {"securities", std::move(securities)},
                      {"samples", samples_json(files_.samples)},
                      {"words", words_json()},
                      {"periods", periods_json()},
                      {"theme", themes_json()},
                      {"limits",
                       {{"script", longest_script},
                        {"bars", most_bar_bytes},
                        {"rows", most_rows},
                        {"sessions", Sessions::most},
                        {"step", most_steps}}}});
}

}  // namespace quor_host

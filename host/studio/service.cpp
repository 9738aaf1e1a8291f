#include "service.h"

#include "../errors.h"
#include "../input/encoding.h"
#include "../text.h"
#include "task.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

/// The folder that a file lies in, or the folder itself.
fs::path folder_of(const std::string& path) {
  if (fs::is_directory(path)) return path;
  const fs::path folder = fs::path(path).parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

std::optional<Securities> securities_of(const StudioFiles& files) {
  if (files.bars.empty()) return std::nullopt;
  return Securities(files.bars);
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

Json files_of(const std::vector<File>& files) {
  Json list = Json::array();
  for (const File& file : files) list.push_back({{"name", file.name}, {"stamp", file.stamp}});
  return list;
}

}  // namespace

StudioService::StudioService(const StudioFiles& files)
    : page_(files.page),
      securities_(securities_of(files)),
      scripts_(script_folder(files)),
      script_(first_script(files.script)) {}

Answer StudioService::answer(const Request& request) {
  const std::vector<std::string> pieces = pieces_of(request.path);
  if (!pieces.empty() && pieces.front() == "api") return answer_api(pieces, request);
  require_method(request, "GET");
  return request.path == "/start.json" ? start() : page_.answer(request);
}

Answer StudioService::answer_api(const std::vector<std::string>& pieces, const Request& request) {
  const std::string& what = pieces.size() > 1 ? pieces[1] : pieces[0];
  if (pieces.size() == 2 && what == "files") {
    require_method(request, "GET");
    return json_answer(files_json());
  }
  if (pieces.size() == 3 && what == "bars" && securities_) {
    require_method(request, "GET");
    return {200, "text/csv", read_file(securities_->path_of(pieces[2]))};
  }
  if (pieces.size() == 3 && what == "scripts") return answer_script(pieces[2], request);
  if (what == "scans") return answer_scan(pieces, request);
  throw Refusal(404, "there is no such request");
}

Answer StudioService::answer_scan(const std::vector<std::string>& pieces, const Request& request) {
  if (pieces.size() == 2) {
    require_method(request, "POST");
    if (!securities_) throw Refusal(409, "quor studio --bars FOLDER gives securities to scan");
    return json_answer(searches_.start(*securities_, request.json()), 201);
  }
  const std::string& id = pieces[2];
  if (pieces.size() == 3) {
    require_method(request, "GET");
    return json_answer(searches_.progress(id, request.number("since", 0)));
  }
  require_method(request, "POST");
  if (pieces[3] == "cancel") return json_answer(searches_.cancel(id));
  if (pieces[3] != "close") throw Refusal(404, "there is no such request");
  searches_.close(id);
  return {204, {}, {}};
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
  std::optional<std::string> before;
  if (json.contains("before")) before = text_of(json, "before");
  const auto other = scripts_->save(name, text, before);
  if (other) {
    return json_answer({{"error", "there is another script of this name"}, {"text", *other}}, 409);
  }
  return json_answer({{"name", name}}, 201);
}

Json StudioService::files_json() const {
  return {{"scripts", files_of(scripts_ ? scripts_->files() : std::vector<File>())},
          {"securities", files_of(securities_ ? securities_->files() : std::vector<File>())}};
}

Answer StudioService::start() const {
  return json_answer({{"script", script_},
                      {"folder", scripts_ ? Json(scripts_->name()) : Json()},
                      {"files", files_json()}});
}

}  // namespace quor_host

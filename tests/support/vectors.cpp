#include "support/vectors.h"

#include <sstream>
#include <stdexcept>

#include "support/files.h"

namespace quor_test {
namespace {

std::string rest_of(std::istringstream& words) {
  std::string rest;
  std::getline(words >> std::ws, rest);
  return rest;
}

std::string without_dash(const std::string& word) { return word == "-" ? std::string() : word; }

template <typename Number>
std::vector<Number> numbers_of(std::istringstream& words) {
  std::vector<Number> numbers;
  for (Number number; words >> number;) numbers.push_back(number);
  return numbers;
}

std::string parameter_json(std::istringstream& words,
                           std::vector<std::pair<std::string, double>>& defaults) {
  std::string json = "[";
  for (std::string word; words >> word;) {
    const size_t sign = word.find('=');
    defaults.emplace_back(word.substr(0, sign), std::stod(word.substr(sign + 1)));
    if (json.size() > 1) json += ',';
    json += R"({"PARAM_NAME":")" + word.substr(0, sign) + R"(","DEFAULT":)" +
            word.substr(sign + 1) + "}";
  }
  return json + "]";
}

void take_info(Vector& vector, std::istringstream& words) {
  std::string period;
  words >> period >> vector.security >> vector.market;
  vector.period = static_cast<uint32_t>(std::stoul(period, nullptr, 0));
  vector.security = without_dash(vector.security);
  vector.market = without_dash(vector.market);
}

void take_failure(Vector& vector, std::istringstream& words, bool& flag) {
  flag = true;
  words >> vector.code >> vector.line;
  vector.message = rest_of(words);
}

void take_series(std::vector<std::pair<std::string, Series>>& list, std::istringstream& words) {
  std::string name;
  words >> name;
  list.emplace_back(name, series(rest_of(words)));
}

void take_line(Vector& vector, const std::string& key, std::istringstream& words) {
  if (key == "script") {
    vector.script += rest_of(words) + "\n";
  } else if (key == "params") {
    vector.parameters = parameter_json(words, vector.defaults);
  } else if (key == "info") {
    take_info(vector, words);
  } else if (key == "keys") {
    vector.keys = numbers_of<int64_t>(words);
  } else if (key == "rows") {
    std::string field;
    words >> field;
    vector.bars[field] = series(rest_of(words));
  } else if (key == "expect") {
    take_series(vector.expected, words);
  } else if (key == "near") {
    take_series(vector.near, words);
  } else if (key == "lookback") {
    words >> vector.look_back;
  } else if (key == "fields") {
    vector.fields = numbers_of<int64_t>(words);
  } else if (key == "fails") {
    take_failure(vector, words, vector.fails);
  } else if (key == "stops") {
    take_failure(vector, words, vector.stops);
  } else if (key == "whole") {
    vector.whole_run_only = true;
  } else {
    throw std::runtime_error(vector.file + ": unknown key " + key);
  }
}

}  // namespace

void PrintTo(const Vector& vector, std::ostream* out) {
  *out << vector.file << ".txt, case " << vector.name << "\n" << vector.script;
}

std::vector<Vector> vectors_of(const std::string& path) {
  const size_t name = path.find_last_of("/\\") + 1;
  std::vector<Vector> vectors;
  std::istringstream file(text_of(path));
  for (std::string line; std::getline(file, line);) {
    std::istringstream words(line);
    std::string key;
    if (!(words >> key) || key[0] == '#') continue;
    if (key == "case") {
      vectors.emplace_back();
      vectors.back().file = path.substr(name, path.rfind('.') - name);
      vectors.back().name = rest_of(words);
    } else {
      take_line(vectors.back(), key, words);
    }
  }
  return vectors;
}

}  // namespace quor_test

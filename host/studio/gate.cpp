#include "gate.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <random>
#include <string_view>

namespace quor_host {
namespace {

/// In the same time wherever the texts differ.
bool equals(std::string_view given, std::string_view secret) {
  if (given.size() != secret.size()) return false;
  unsigned difference = 0;
  for (size_t i = 0; i < secret.size(); ++i) {
    difference |= static_cast<unsigned char>(given[i]) ^ static_cast<unsigned char>(secret[i]);
  }
  return difference == 0;
}

/// The value of a cookie in "a=1; b=2".
std::string_view cookie_of(std::string_view cookies, std::string_view name) {
  while (!cookies.empty()) {
    const size_t end = std::min(cookies.find(';'), cookies.size());
    std::string_view cookie = cookies.substr(0, end);
    cookies.remove_prefix(std::min(end + 1, cookies.size()));
    cookie.remove_prefix(std::min(cookie.find_first_not_of(' '), cookie.size()));
    if (cookie.size() > name.size() && cookie.starts_with(name) && cookie[name.size()] == '=') {
      return cookie.substr(name.size() + 1);
    }
  }
  return {};
}

}  // namespace

std::string random_text() {
  constexpr std::string_view digits = "0123456789abcdef";
  std::random_device system;
  std::uniform_int_distribution<size_t> digit(0, digits.size() - 1);
  std::string text;
  for (int i = 0; i < 32; ++i) text += digits[digit(system)];
  return text;
}

Gate::Gate(int port)
    : hosts_{"127.0.0.1:" + std::to_string(port), "localhost:" + std::to_string(port)},
      cookie_name_("quor_studio_" + std::to_string(port)) {}

bool Gate::take(const std::string& token) {
  return equals(token, token_) && !is_token_used_.exchange(true);
}

std::string Gate::cookie_header() const {
  return cookie_name_ + '=' + secret_ + "; HttpOnly; SameSite=Strict; Path=/";
}

bool Gate::is_at_home(const Visitor& visitor, bool to_front_page) const {
  if (std::ranges::find(hosts_, visitor.host) == std::end(hosts_)) return false;
  if (!visitor.origin.empty() && visitor.origin != "http://" + visitor.host) return false;
  return to_front_page || visitor.fetch_site.empty() || visitor.fetch_site == "same-origin" ||
         visitor.fetch_site == "none";
}

bool Gate::has_cookie(const Visitor& visitor) const {
  return equals(cookie_of(visitor.cookies, cookie_name_), secret_);
}

}  // namespace quor_host

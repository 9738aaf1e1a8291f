// Who may come in: the page that the program itself has handed its secret to.
#pragma once

#include <atomic>
#include <string>

namespace quor_host {

/// A text that nobody guesses: 128 random bits in hexadecimal.
std::string random_text();

/// What a request says of where it comes from; empty where it says nothing.
struct Visitor {
  std::string host;
  std::string origin;
  std::string fetch_site;  ///< the browser's word for how the sender stands to this server
  std::string cookies;
};

/// Each member may be called from any thread.
class Gate {
 public:
  explicit Gate(int port);

  /// What the first visitor shows, once.
  const std::string& token() const { return token_; }
  /// True for the token, but only once.
  bool take(const std::string& token);
  /// The cookie that visitors have from then on, as the header that sets it.
  std::string cookie_header() const;

  /// Whether the request is addressed to this server and sent by its own page. A link from
  /// elsewhere may lead to the front page.
  bool is_at_home(const Visitor& visitor, bool to_front_page) const;
  bool has_cookie(const Visitor& visitor) const;

 private:
  std::string hosts_[2];
  std::string cookie_name_;
  std::string token_ = random_text();
  std::string secret_ = random_text();
  std::atomic<bool> is_token_used_{false};
};

}  // namespace quor_host

// Frames of messages, and what lies between them when something has gone wrong.
#include "host/lsp/wire.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace quor_test {
namespace {

std::vector<std::string> messages_in(const std::string& bytes) {
  std::istringstream in(bytes);
  std::vector<std::string> messages;
  while (auto message = quor_lsp::read_message(in)) messages.push_back(std::move(*message));
  return messages;
}

TEST(LspWire, reads_frames_and_passes_over_the_rest) {
  using Messages = std::vector<std::string>;
  EXPECT_EQ(messages_in("Content-Length: 2\r\n\r\n{}Content-Length: 3\r\n\r\n[1]"),
            (Messages{"{}", "[1]"}));
  EXPECT_EQ(messages_in("Content-Type: x\r\ncontent-length:2 \r\n\r\n{}"), Messages{"{}"});
  EXPECT_EQ(messages_in("Content-Length: 2\n\n{}"), Messages{"{}"});
  EXPECT_EQ(messages_in("garbage\r\n\r\nContent-Length: x\r\n\r\n\n\nContent-Length: 2\r\n\r\n{}"),
            Messages{"{}"});
  EXPECT_EQ(messages_in("Content-Length: -2\r\n\r\nContent-Length: 2\r\n\r\n{}"), Messages{"{}"});
  EXPECT_EQ(messages_in("Content-Length: 0\r\n\r\nContent-Length: 2\r\n\r\n{}"),
            (Messages{"", "{}"}));
  EXPECT_EQ(messages_in("Content-Length: 99999999999999999999\r\n\r\n"), Messages{});
  EXPECT_EQ(messages_in("Content-Length: 9999999999\r\n\r\n{}"), Messages{})
      << "its end never comes";
  EXPECT_EQ(messages_in("Content-Length: 5\r\n\r\n{}"), Messages{}) << "cut off";
  EXPECT_EQ(messages_in(std::string(100000, 'x') + "\nContent-Length: 2\r\n\r\n{}"),
            Messages{"{}"});
}

TEST(LspWire, writes_what_it_reads) {
  std::ostringstream out;
  quor_lsp::write_message(out, "{\"a\":\"均\"}");
  EXPECT_EQ(out.str(), "Content-Length: 11\r\n\r\n{\"a\":\"均\"}");
  EXPECT_EQ(messages_in(out.str()), std::vector<std::string>{"{\"a\":\"均\"}"});
}

}  // namespace
}  // namespace quor_test

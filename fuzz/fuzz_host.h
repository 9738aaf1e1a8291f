// What the fuzz targets share: checks that end the program, a reader of bytes, and an instance.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "quor_parser.h"

namespace quor_fuzz {

/// Ends the program with a message unless the condition holds, so that the input is kept.
void expect(bool holds, const char* what);

/// The text of a buffer that a call returned; gives the buffer back. An expected null is empty.
std::string take_text(char* buffer, uint32_t length);

/// Parts of an input are parted by this sign, which means nothing to the language or to JSON.
inline constexpr char part_mark = '\x1f';
std::vector<std::string_view> parts_of(std::string_view input);

/// Takes the input for a stream of decisions; it is followed by zeros.
class Bytes {
 public:
  explicit Bytes(std::string_view input) : rest_(input) {}

  bool empty() const { return rest_.empty(); }
  uint8_t byte();
  size_t below(size_t limit) { return byte() % limit; }
  uint32_t word();
  double number();
  /// A text of at most 255 bytes.
  std::string_view text();

 private:
  std::string_view rest_;
};

/// The bars over which a script may run so that no honest run is slow: a call whose argument is a
/// call again evaluates it over its own window, so the work grows with a power of the bars, and the
/// depth is the exponent. 100 are enough for blocks. 0 for a script that is better compiled only.
size_t bearable_bars(std::string_view script);

struct Surroundings {
  uint32_t period;
  std::string_view security;
  std::string_view market;
};
/// One of a few securities and periods.
Surroundings surroundings(size_t choice);

/// An instance for the life of the object.
class FuzzHost {
 public:
  FuzzHost() : handle_(create_instance()) {}
  ~FuzzHost() { delete_instance(handle_); }
  FuzzHost(const FuzzHost&) = delete;
  FuzzHost& operator=(const FuzzHost&) = delete;

  int64_t handle() const { return handle_; }
  void set_info(const Surroundings& surroundings) const;
  std::string compile(std::string_view script, std::string_view parameters = {},
                      std::string_view lines = {}) const;
  void feed(std::string_view json) const;
  /// `count` bars with all the usual fields, some values missing.
  void feed_bars(size_t count) const;
  std::string run(uint32_t first_row, bool fire_signals = false) const;
  std::string shapes() const;
  /// Calls every reading call on the columns and arguments that a script of the usual size has.
  void read_everything() const;
  /// All cells as text.
  std::string table() const;

 private:
  int64_t handle_;
};

/// Sets handlers for everything that the library calls; they read what they are given.
void set_quiet_handlers();

}  // namespace quor_fuzz

/// One input; defined by each target.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

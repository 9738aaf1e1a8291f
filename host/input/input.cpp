#include "input.h"

#include <fstream>
#include <iostream>
#include <utility>

#include "../text.h"

#ifdef QUOR_ZLIB
#include <zlib.h>

#include <vector>

#include "../errors.h"
#endif

namespace quor_host {
namespace {

#ifdef QUOR_ZLIB

/// Gives what another stream holds packed. Several packed texts behind one another are one.
class UnpackingBuffer : public std::streambuf {
 public:
  UnpackingBuffer(std::istream& packed, std::string name)
      : packed_(packed), name_(std::move(name)), in_(size), out_(size) {
    constexpr int with_header_of_gzip = 16;
    if (inflateInit2(&state_, with_header_of_gzip + MAX_WBITS) != Z_OK) {
      throw HostError(name_ + ": no memory to unpack it");
    }
  }
  ~UnpackingBuffer() override { inflateEnd(&state_); }
  UnpackingBuffer(const UnpackingBuffer&) = delete;
  UnpackingBuffer& operator=(const UnpackingBuffer&) = delete;

 protected:
  int_type underflow() override {
    size_t count = 0;
    while (count == 0) {
      if (state_.avail_in == 0) fill();
      if (state_.avail_in == 0 && !is_inside_) return traits_type::eof();
      count = unpack();
    }
    char* const begin = out_.data();
    setg(begin, begin, begin + count);
    return traits_type::to_int_type(*begin);
  }

 private:
  static constexpr size_t size = size_t{1} << 17U;

  void fill() {
    packed_.read(in_.data(), static_cast<std::streamsize>(size));
    state_.next_in = reinterpret_cast<Bytef*>(in_.data());
    state_.avail_in = static_cast<uInt>(packed_.gcount());
  }

  size_t unpack() {
    state_.next_out = reinterpret_cast<Bytef*>(out_.data());
    state_.avail_out = static_cast<uInt>(size);
    if (state_.avail_in == 0) throw HostError(name_ + ": ends in the middle of what is packed");
    const int answer = inflate(&state_, Z_NO_FLUSH);
    if (answer != Z_OK && answer != Z_STREAM_END) {
      throw HostError(name_ + ": is packed by gzip and damaged");
    }
    is_inside_ = answer == Z_OK;
    if (!is_inside_) inflateReset(&state_);
    return size - state_.avail_out;
  }

  std::istream& packed_;
  std::string name_;
  std::vector<char> in_;
  std::vector<char> out_;
  z_stream state_{};
  bool is_inside_ = true;  ///< of a packed text
};

class UnpackingStream : public std::istream {
 public:
  UnpackingStream(std::unique_ptr<std::istream> packed, const std::string& name)
      : std::istream(nullptr), packed_(std::move(packed)), buffer_(*packed_, name) {
    rdbuf(&buffer_);
    exceptions(std::ios::badbit);  // so that what the buffer throws comes through
  }

 private:
  std::unique_ptr<std::istream> packed_;
  UnpackingBuffer buffer_;
};

std::unique_ptr<std::istream> unpacked(std::unique_ptr<std::istream> stream,
                                       const std::string& name) {
  constexpr int first_byte = 0x1F;
  if (stream->peek() != first_byte) {
    stream->clear();  // an empty file is at its end
    return stream;
  }
  return std::make_unique<UnpackingStream>(std::move(stream), name);
}

#else

std::unique_ptr<std::istream> unpacked(std::unique_ptr<std::istream> stream,
                                       const std::string& /*name*/) {
  return stream;
}

#endif

}  // namespace

std::unique_ptr<std::istream> open_input(const std::string& path) {
  if (path == "-") {
    return unpacked(std::make_unique<std::istream>(std::cin.rdbuf()), input_name(path));
  }
  return unpacked(std::make_unique<std::ifstream>(quor_bars::open_file(path)), path);
}

}  // namespace quor_host

#include "console.h"

#include <cstdlib>
#include <string_view>

namespace quor_host {
namespace {

/// NO_COLOR counts if it is set to anything but nothing.
bool colours_are_unwanted() {
  const char* const unwanted = std::getenv("NO_COLOR");
  const char* const terminal = std::getenv("TERM");
  return (unwanted != nullptr && *unwanted != '\0') ||
         (terminal != nullptr && std::string_view(terminal) == "dumb");
}

}  // namespace
}  // namespace quor_host

#ifdef _WIN32
#define WIN32_LEAN_AND_MEAN
#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>
// Behind the header that it builds on.
#include <shellapi.h>

#include <memory>

#include "../errors.h"

namespace quor_host {
namespace {

std::string to_utf8(const wchar_t* wide) {
  const int size = WideCharToMultiByte(CP_UTF8, 0, wide, -1, nullptr, 0, nullptr, nullptr);
  if (size <= 0) throw HostError("an argument is no text");
  std::string text(static_cast<size_t>(size), '\0');
  WideCharToMultiByte(CP_UTF8, 0, wide, -1, text.data(), size, nullptr, nullptr);
  text.pop_back();  // the terminating zero
  return text;
}

}  // namespace

std::vector<std::string> utf8_arguments(int /*argc*/, char** /*argv*/) {
  int count = 0;
  const std::unique_ptr<wchar_t*, decltype(&LocalFree)> wide(
      CommandLineToArgvW(GetCommandLineW(), &count), LocalFree);
  if (wide == nullptr) throw HostError("the command line can't be read");
  std::vector<std::string> arguments;
  for (int i = 1; i < count; ++i) arguments.push_back(to_utf8(wide.get()[i]));
  return arguments;
}

void prepare_streams() {
  SetConsoleOutputCP(CP_UTF8);
  _setmode(_fileno(stdin), _O_BINARY);
  _setmode(_fileno(stdout), _O_BINARY);
  _setmode(_fileno(stderr), _O_BINARY);
}

bool is_watched() { return _isatty(_fileno(stderr)) != 0; }

bool is_output_watched() { return _isatty(_fileno(stdout)) != 0; }

bool takes_colours() {
  if (!is_watched() || colours_are_unwanted()) return false;
  // Consoles show colours once they are told to.
  HANDLE const console = GetStdHandle(STD_ERROR_HANDLE);
  constexpr DWORD shows_colours = 0x0004;
  DWORD mode = 0;
  return GetConsoleMode(console, &mode) != 0 && SetConsoleMode(console, mode | shows_colours) != 0;
}

std::optional<size_t> terminal_width() {
  CONSOLE_SCREEN_BUFFER_INFO screen;
  if (!GetConsoleScreenBufferInfo(GetStdHandle(STD_OUTPUT_HANDLE), &screen)) return std::nullopt;
  return static_cast<size_t>(screen.srWindow.Right - screen.srWindow.Left + 1);
}

}  // namespace quor_host

#else

#include <sys/ioctl.h>
#include <unistd.h>

namespace quor_host {

std::vector<std::string> utf8_arguments(int argc, char** argv) {
  return argc > 0 ? std::vector<std::string>(argv + 1, argv + argc) : std::vector<std::string>();
}

void prepare_streams() {}

bool is_watched() { return isatty(STDERR_FILENO) != 0; }

bool is_output_watched() { return isatty(STDOUT_FILENO) != 0; }

bool takes_colours() { return is_watched() && !colours_are_unwanted(); }

std::optional<size_t> terminal_width() {
  winsize size{};
  if (ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return std::nullopt;
  return size.ws_col;
}

}  // namespace quor_host

#endif

#include "format.h"

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <system_error>

#include "advice/formatting.h"
#include "errors.h"
#include "input/encoding.h"
#include "input/paths.h"
#include "text.h"

namespace quor_host {
namespace {

namespace fs = std::filesystem;

constexpr int exit_failure = 1;
constexpr int exit_usage = 2;

constexpr auto examples = R"(
Examples: the scripts of a folder, in place; whether they are in the layout; as a filter.

  quor format scripts/
  quor format --check scripts/
  quor format --stdin <draft.quor

The layout: a statement a line, blanks around ':' and operators and behind ',', long statements
broken at commas and operators. Comments stay, and so does what a script calculates and draws.)";

/// Replaces the file as a whole, so that nobody ever finds half of one.
void replace_file(const std::string& path, const std::string& text) {
  // A link stays one.
  const bool is_link = fs::is_symlink(path_of(path));
  const fs::path target = is_link ? fs::canonical(path_of(path)) : path_of(path);
  fs::path draft = target;
  draft += ".draft";
  std::error_code error;
  {
    std::ofstream file(draft, std::ios::binary | std::ios::trunc);
    file << text;
    file.close();
    if (!file) error = std::make_error_code(std::errc::io_error);
  }
  if (!error) fs::permissions(draft, fs::status(target).permissions(), error);
  if (!error) fs::rename(draft, target, error);
  if (!error) return;
  std::error_code ignored;
  fs::remove(draft, ignored);
  throw HostError(path + " can't be written");
}

/// The script in its layout. Throws HostError for one that can't be read.
std::string formatted(const std::string& script, const std::string& name) {
  quor_advice::Formatted formatted = quor_advice::format_script(script);
  if (!formatted.unreadable_at) return std::move(formatted.text);
  const auto front = script.begin() + static_cast<std::ptrdiff_t>(*formatted.unreadable_at);
  const auto line = std::count(script.begin(), front, '\n') + 1;
  throw HostError(
      name + ':' + std::to_string(line) +
      ": a quote is left open or a comment cuts a statement here; quor check tells more");
}

/// Whether all is as it shall be.
bool format_file(const std::string& path, bool checks) {
  const std::string script = read_text(path);
  const std::string text = formatted(script, path);
  if (text == script) return true;
  std::cout << path << '\n';
  if (!checks) replace_file(path, text);
  return !checks;
}

int filter(bool checks) {
  const std::string script = read_text_input("-");
  const std::string text = formatted(script, input_name("-"));
  if (!checks) std::cout << text;
  return checks && text != script ? exit_failure : 0;
}

}  // namespace

void add_format(CLI::App& app, FormatOptions& options) {
  CLI::App& format = *app.add_subcommand("format", "Write scripts in one layout, in place");
  format.footer(examples);
  format
      .add_option("SCRIPT", options.paths,
                  "Files with scripts, or folders with such files (*.quor); names those it changes")
      ->type_name("");
  format.add_flag("--check", options.checks,
                  "Change nothing, and exit with status 1 if a script isn't in the layout");
  format.add_flag("--stdin", options.is_filter,
                  "Read a script from the standard input and print it");
}

int format_scripts(const FormatOptions& options) {
  if (options.paths.empty() != options.is_filter) {
    std::cerr << "quor: "
              << (options.is_filter ? "--stdin takes no files"
                                    : "no script: give a file, a folder or --stdin")
              << '\n';
    return exit_usage;
  }
  if (options.is_filter) return filter(options.checks);
  int status = 0;
  for (const std::string& path : scripts_under(options.paths)) {
    try {
      if (!format_file(path, options.checks)) status = exit_failure;
    } catch (const HostError& error) {
      std::cerr << "quor: " << error.what() << '\n';
      status = exit_failure;
    }
  }
  return status;
}

}  // namespace quor_host

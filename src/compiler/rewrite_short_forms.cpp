#include "compiler/rewrite_short_forms.h"

#include <charconv>
#include <optional>
#include <span>
#include <vector>

#include "compiler/call_hoisting.h"
#include "tables/function_sets.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace quor {
namespace {

constexpr size_t absent = std::string_view::npos;

/// Where a form such as "SOUND(" stands as an item of its own or opens the slot. Only its first
/// occurrence counts: if that is the tail of a longer word, the slot holds no such form.
size_t find_form(std::string_view slot, std::string_view form) {
  const size_t at = slot.find(form);
  return at == absent || at == 0 || slot[at - 1] == '@' ? at : absent;
}

/// The text from its first to its last single quote, both included.
std::optional<std::string_view> quoted_part(std::string_view text) {
  const size_t first = text.find('\'');
  if (first == absent) return std::nullopt;
  return text.substr(first, text.rfind('\'') - first + 1);
}

/// The call `word(condition,place,text)` with the items behind it.
std::string placed_call(std::string_view word, std::string_view condition, bool high,
                        std::string_view text, std::span<const std::string_view> items) {
  std::string call(word);
  call.append("(").append(condition).append(high ? "@H@" : "@L@").append(text).append(")");
  for (const std::string_view item : items) call.append("@").append(item);
  return call;
}

std::string colour_word(std::span<const std::string_view> components) {
  uint32_t colour = 0;
  for (const std::string_view component : components) {
    colour = (colour << 8) | static_cast<uint32_t>(leading_integer(component));
  }
  char digits[8];
  const char* end = std::to_chars(digits, digits + sizeof digits, colour, 16).ptr;
  const std::string number(static_cast<const char*>(digits), end);
  return "COLOR" + std::string(number.size() < 6 ? 6 - number.size() : 0, '0') + number;
}

}  // namespace

int check_branches(std::string_view slot, const StatementErrors& errors) {
  if (!contains(slot, "@")) return status_ok;
  for (const std::string_view word : BranchFunctionSet) {
    const size_t at = slot.find(std::string(word) + "(");
    if (at == absent || at == 0 || slot[at - 1] != '@') continue;
    return errors.fail(status_branch_as_argument, word);
  }
  return status_ok;
}

void rewrite_rgb(std::string& slot) {
  constexpr std::string_view form = "RGB(";
  size_t start = 0;
  size_t end = 0;
  while (find_call(slot, form, 0, start, end)) {
    const std::string call = slot.substr(start, end + 1 - start);
    const std::string_view inner(call.data() + form.size(), call.size() - form.size() - 1);
    const auto components = split(inner, "@");
    if (components.size() != 3) return;
    replace_all(slot, call, colour_word(components));
  }
}

int rewrite_sound(std::string& slot, const StatementErrors& errors) {
  const size_t at = find_form(slot, "SOUND(");
  if (at == absent) return status_ok;
  if (at <= 1) return errors.fail(status_subject_missing, "SOUND");
  const std::string_view text = slot;
  const auto file = quoted_part(text.substr(at));
  if (!file) return errors.fail(status_bad_constant, "SOUND.NAME");
  slot = "PLAYSOUND(" + std::string(text.substr(0, at)) + std::string(*file) + ")";
  return status_ok;
}

int rewrite_icon(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "ICON(";
  const size_t at = find_form(slot, form);
  if (at == absent) return status_ok;
  if (at <= 1) return errors.fail(status_subject_missing, "ICON");
  const std::string_view text = slot;
  const auto pieces = split(text.substr(at), "@");
  const std::string_view type = pieces[0].substr(form.size(), 1);
  if (type != "1" && type != "0") return errors.fail(status_bad_constant, "ICON.TYPE");
  const auto icon = pieces.size() < 2 ? std::nullopt : quoted_part(pieces[1]);
  if (!icon) refuse_position();
  slot = placed_call("DRAWICON", text.substr(0, at - 1), type == "1", *icon,
                     std::span(pieces).subspan(2));
  return status_ok;
}

int rewrite_word(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "WORD(";
  if (!contains(slot, form)) return status_ok;
  const auto pieces = split(slot, "@");
  if (pieces.size() < 3) {
    const bool opens = !pieces.empty() && pieces[0].starts_with(form);
    return opens ? errors.fail(status_subject_missing, "WORD") : int{status_ok};
  }
  if (!pieces[1].starts_with(form)) return status_ok;
  const auto word = quoted_part(pieces[2]);
  if (!word) return errors.fail(status_short_form_text, "WORD");
  slot = placed_call("DRAWTEXT", pieces[0], pieces[1].substr(form.size(), 1) == "1", *word,
                     std::span(pieces).subspan(3));
  return status_ok;
}

int rewrite_cjlvol(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "CJLVOL(";
  if (!slot.starts_with(form)) return status_ok;
  if (slot.size() != form.size() + 2) return errors.fail(status_short_form_text, "CJLVOL");
  slot = slot[form.size()] == '0'
             ? "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@V@-1@1)@ISVOLSTICK@TITLEVISIBLE"
             : "STICKLINE1(1@0@V@2@0)@COLORGREY@TITLEVISIBLE";
  return status_ok;
}

void rewrite_set_style_color(std::string& slot) {
  constexpr std::string_view form = "SETSTYLECOLOR(";
  if (!contains(slot, form)) return;
  replace_all(slot, form, "");
  replace_all(slot, ")", "");
}

}  // namespace quor

#include "compiler/rewrite_short_forms.h"

#include <algorithm>
#include <charconv>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "compiler/call_hoisting.h"
#include "text/numbers.h"
#include "text/strings.h"
#include "vocabulary/function_sets.h"

namespace quor {
namespace {

constexpr size_t absent = std::string_view::npos;

/// Where a form such as "SOUND(" stands as an item of its own or opens the slot. Only its first
/// occurrence counts: if that is the tail of a longer word, the slot holds no such form.
size_t find_form(std::string_view slot, std::string_view form) {
  const size_t at = slot.find(form);
  return at == absent || at == 0 || slot[at - 1] == '@' ? at : absent;
}

/// Whether nothing stands in front of a form: it opens the slot, or a comma does.
bool lacks_condition(std::string_view slot, size_t form_at) {
  return form_at == 0 || slot.front() == '@';
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

constexpr std::string_view rgb_form = "RGB(";

std::vector<std::string_view> rgb_components(std::string_view call) {
  return split(call.substr(rgb_form.size(), call.size() - rgb_form.size() - 1), "@");
}

/// The text up to the ")" of its first "("; empty if that isn't there.
std::string_view opening_call(std::string_view text) {
  int depth = 0;
  for (size_t at = 0; at < text.size(); ++at) {
    if (text[at] == '(') ++depth;
    if (text[at] == ')' && --depth == 0) return text.substr(0, at + 1);
  }
  return {};
}

/// The calls of RGB that a slot has shown so far, by their text.
class ColourCalls {
 public:
  /// Copies the text to `out` with the known calls replaced. With `learn` set each further call
  /// becomes known, up to the first that doesn't close or hasn't three components. False if a call
  /// may hold a known one, which one walk can't serve.
  bool walk(std::string_view text, bool learn, std::string& out) {
    size_t done = 0;
    size_t at = text.find(rgb_form);
    while (at != absent) {
      const bool is_tail = at > 1 && text[at - 1] >= 'A' && text[at - 1] <= 'Z';
      const bool is_new = learn && !is_tail;
      const std::string_view call = opening_call(text.substr(at, is_new ? absent : longest_));
      if (is_new && !colours_.empty() && call.find(rgb_form, 1) != absent) return false;
      if (is_new) learn = take(call);
      const auto known = colours_.find(call);
      if (known != colours_.end()) {
        out.append(text, done, at - done).append(known->second);
        done = at + call.size();
      }
      at = text.find(rgb_form, std::max(done, at + rgb_form.size()));
    }
    out.append(text, done);
    return true;
  }

 private:
  /// False for a call that ends the learning.
  bool take(std::string_view call) {
    if (call.empty()) return false;
    const auto components = rgb_components(call);
    if (components.size() != 3) return false;
    colours_.try_emplace(std::string(call), colour_word(components));
    longest_ = std::max(longest_, call.size());
    return true;
  }

  std::map<std::string, std::string, std::less<>> colours_;
  size_t longest_ = 0;
};

void rewrite_rgb_one_by_one(std::string& slot) {
  size_t start = 0;
  size_t end = 0;
  while (find_call(slot, rgb_form, 0, start, end)) {
    const std::string call = slot.substr(start, end + 1 - start);
    const auto components = rgb_components(call);
    if (components.size() != 3) return;
    replace_all(slot, call, colour_word(components));
  }
}

}  // namespace

Status check_branches(std::string_view slot, const StatementErrors& errors) {
  if (!contains(slot, "@")) return Status::ok;
  for (const std::string_view word : BranchFunctionSet()) {
    const size_t at = slot.find(std::string(word) + "(");
    if (at == absent || at == 0 || slot[at - 1] != '@') continue;
    return errors.fail(Status::branch_as_argument, word);
  }
  return Status::ok;
}

void rewrite_rgb(std::string& slot) {
  ColourCalls calls;
  std::string out;
  if (!calls.walk(slot, true, out)) {
    rewrite_rgb_one_by_one(slot);
    return;
  }
  // A call counts wherever it stands, also in front of the place that made it known.
  slot.clear();
  calls.walk(out, false, slot);
}

Status rewrite_sound(std::string& slot, const StatementErrors& errors) {
  const size_t at = find_form(slot, "SOUND(");
  if (at == absent) return Status::ok;
  if (lacks_condition(slot, at)) return errors.fail(Status::subject_missing, "SOUND");
  const std::string_view text = slot;
  const auto file = quoted_part(text.substr(at));
  if (!file) return errors.fail(Status::bad_constant, "SOUND.NAME");
  slot = "PLAYSOUND(" + std::string(text.substr(0, at)) + std::string(*file) + ")";
  return Status::ok;
}

Status rewrite_icon(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "ICON(";
  const size_t at = find_form(slot, form);
  if (at == absent) return Status::ok;
  if (lacks_condition(slot, at)) return errors.fail(Status::subject_missing, "ICON");
  const std::string_view text = slot;
  const auto pieces = split(text.substr(at), "@");
  const std::string_view type = pieces[0].substr(form.size(), 1);
  if (type != "1" && type != "0") return errors.fail(Status::bad_constant, "ICON.TYPE");
  const auto icon = pieces.size() < 2 ? std::nullopt : quoted_part(pieces[1]);
  if (!icon) refuse_position();
  slot = placed_call("DRAWICON", text.substr(0, at - 1), type == "1", *icon,
                     std::span(pieces).subspan(2));
  return Status::ok;
}

Status rewrite_word(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "WORD(";
  if (!contains(slot, form)) return Status::ok;
  const auto pieces = split(slot, "@");
  if (pieces.size() < 3) {
    const bool opens = !pieces.empty() && pieces[0].starts_with(form);
    return opens ? errors.fail(Status::subject_missing, "WORD") : Status::ok;
  }
  if (!pieces[1].starts_with(form)) return Status::ok;
  const auto word = quoted_part(pieces[2]);
  if (!word) return errors.fail(Status::short_form_text, "WORD");
  slot = placed_call("DRAWTEXT", pieces[0], pieces[1].substr(form.size(), 1) == "1", *word,
                     std::span(pieces).subspan(3));
  return Status::ok;
}

Status rewrite_cjlvol(std::string& slot, const StatementErrors& errors) {
  constexpr std::string_view form = "CJLVOL(";
  if (!slot.starts_with(form)) return Status::ok;
  if (slot.size() != form.size() + 2) return errors.fail(Status::short_form_text, "CJLVOL");
  slot = slot[form.size()] == '0'
             ? "STICKLINE1(C>O||(C=O&&C>REF(C@1))@0@V@-1@1)@ISVOLSTICK@TITLEVISIBLE"
             : "STICKLINE1(1@0@V@2@0)@COLORGREY@TITLEVISIBLE";
  return Status::ok;
}

void rewrite_set_style_color(std::string& slot) {
  constexpr std::string_view form = "SETSTYLECOLOR(";
  if (!contains(slot, form)) return;
  replace_all(slot, form, "");
  replace_all(slot, ")", "");
}

}  // namespace quor

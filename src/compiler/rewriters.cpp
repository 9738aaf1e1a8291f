#include "compiler/rewriters.h"

#include "compiler/data_references.h"
#include "compiler/rewrite_lines.h"
#include "compiler/rewrite_short_forms.h"
#include "compiler/rewrite_signals.h"
#include "compiler/statement_text.h"
#include "core/status.h"
#include "text/strings.h"

namespace quor {
namespace {

/// One statement on its way through the passes.
struct Statement {
  CompileContext& context;
  std::string& slot;
  const std::string& source;  ///< the slot before it was put in upper case
  StatementErrors errors;
};

using Pass = Status (*)(Statement& statement);

// Each pass relies on what the ones before it have left.
constexpr Pass passes[] = {
    [](Statement& s) { return check_branches(s.slot, s.errors); },
    [](Statement& s) { return rewrite_rgb(s.slot), Status::ok; },
    [](Statement& s) { return rewrite_sound(s.slot, s.errors); },
    [](Statement& s) { return rewrite_icon(s.slot, s.errors); },
    [](Statement& s) { return rewrite_word(s.slot, s.errors); },
    [](Statement& s) { return rewrite_cjlvol(s.slot, s.errors); },
    [](Statement& s) { return rewrite_stick_words(s.slot, s.errors); },
    [](Statement& s) { return rewrite_dot_words(s.context.pool, s.slot, s.errors); },
    [](Statement& s) { return rewrite_notice(s.slot, s.source, s.errors); },
    [](Statement& s) { return rewrite_trade_word(s.slot, s.source, s.errors); },
    [](Statement& s) { return name_series_call(s.context.pool, s.slot), Status::ok; },
    [](Statement& s) { return rewrite_set_style_color(s.slot), Status::ok; },
    [](Statement& s) { return resolve_quoted_reference(s.context, s.slot, s.errors); },
    [](Statement& s) {
      return resolve_realtime_reference(s.context, s.slot, "GETPRICE", s.source, s.errors);
    },
    [](Statement& s) {
      return resolve_realtime_reference(s.context, s.slot, "GETSTOCKPRICE", s.source, s.errors);
    },
};

}  // namespace

Status rewrite_statements(CompileContext& context, std::vector<std::string>& slots,
                          std::string& error) {
  for (size_t i = 0; i < slots.size(); ++i) {
    if (slots[i].empty()) continue;
    const std::string source = slots[i];
    upper_case_outside_quotes(slots[i]);
    Statement statement{context, slots[i], source, {static_cast<int32_t>(i), error}};
    for (const Pass pass : passes) {
      const Status status = pass(statement);
      if (failed(status)) return status;
    }
  }
  return Status::ok;
}

}  // namespace quor

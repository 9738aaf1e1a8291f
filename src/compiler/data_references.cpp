#include "compiler/data_references.h"

#include <map>

#include "compiler/declarations.h"
#include "tables/field_table.h"
#include "tables/period_table.h"
#include "text/numbers.h"
#include "text/strings.h"

namespace quor {
namespace {

/// A reference that has passed its checks: what the host must deliver and where it stood.
struct Reference {
  std::string_view word_prefix;
  std::string source;  ///< the security, or the period as unit and multiple
  int32_t field_id;
  size_t position;
  size_t length;
};

/// Puts the reserved word in the place of the reference and gives it a column; gives the position
/// behind the word. The key under the column's id tells the host what to deliver.
size_t put_reference(CompileContext& context, std::string& slot, const Reference& reference,
                     std::map<int32_t, std::string>& keys) {
  // The name counts whatever the run behind it means.
  const std::string word =
      std::string(reference.word_prefix) + std::string(split_declaration(slot).name);
  slot.replace(reference.position, reference.length, word);
  const uint32_t id = context.pool.table().take_auxiliary_id();
  add_reference(context, word, id);
  keys.insert_or_assign(
      static_cast<int32_t>(id),
      reference.source + "|" + std::to_string(reference.field_id) + "|" + std::to_string(id));
  return reference.position + word.size();
}

/// The scanner takes a sign behind a quote for a unary one, but a reference is an operand.
void make_sign_binary(std::string& slot, size_t position) {
  if (position >= slot.size()) return;
  if (slot[position] == '^') slot[position] = '?';
  if (slot[position] == '`') slot[position] = '+';
}

/// Where the quoted text stands, quotes included.
struct QuotedText {
  size_t position;
  std::string inner;

  size_t length() const { return inner.size() + 2; }
};

Status resolve_security(CompileContext& context, std::string& slot, const QuotedText& quoted,
                        const StatementErrors& errors) {
  const size_t mark = quoted.inner.find('$');
  if (mark == 0) return errors.fail(Status::reference_without_code, {});
  const auto field = reserved_field_id(upper_case(quoted.inner.substr(mark + 1)));
  if (!field) return errors.fail(Status::field_unknown, {});
  const Reference reference{"CROSSSEC", quoted.inner.substr(0, mark), *field, quoted.position,
                            quoted.length()};
  make_sign_binary(slot,
                   put_reference(context, slot, reference, context.script.cross_security_map));
  return Status::ok;
}

/// Whether the period is longer than the instance's own. Between classes an equal rank passes.
bool is_longer_period(int32_t period_class, std::string_view multiple, const Period& own) {
  constexpr int32_t any_period = 9;
  if (own.period_class == any_period) return true;
  if (period_class == own.period_class) return leading_integer(multiple) > own.multiple;
  return period_class_rank(period_class) >= period_class_rank(own.period_class);
}

Status resolve_period(CompileContext& context, std::string& slot, const QuotedText& quoted,
                      const StatementErrors& errors) {
  const size_t first = quoted.inner.find('$');
  const size_t last = quoted.inner.rfind('$');
  const std::string unit = upper_case(quoted.inner.substr(0, first));
  const auto period_class = period_unit_class(unit);
  if (!period_class) return errors.fail(Status::period_unit_unknown, {});
  const std::string multiple = quoted.inner.substr(first + 1, last - first - 1);
  if (!period_unit_allows(unit, multiple)) return errors.fail(Status::period_multiple_refused, {});
  if (!is_longer_period(*period_class, multiple, context.pool.period)) {
    return errors.fail(Status::period_not_longer, {});
  }
  const auto field = reserved_field_id(upper_case(quoted.inner.substr(last + 1)));
  if (!field) return errors.fail(Status::field_unknown, {});
  const Reference reference{"CROSSPERIOD", unit + multiple, *field, quoted.position,
                            quoted.length()};
  make_sign_binary(slot, put_reference(context, slot, reference, context.script.cross_period_map));
  return Status::ok;
}

}  // namespace

Status resolve_quoted_reference(CompileContext& context, std::string& slot,
                                const StatementErrors& errors) {
  const size_t first = slot.find('"');
  if (first == std::string::npos) return Status::ok;
  const size_t last = slot.rfind('"');
  if (first == last) return errors.fail(Status::quote_open, {});
  if (first == 0 || (slot[first - 1] != ':' && slot[first - 1] != '=')) {
    return errors.fail(Status::reference_place, {});
  }
  const QuotedText quoted{first, slot.substr(first + 1, last - first - 1)};
  const size_t mark = quoted.inner.find('$');
  if (mark == std::string::npos) return errors.fail(Status::reference_without_mark, "$");
  return mark == quoted.inner.rfind('$') ? resolve_security(context, slot, quoted, errors)
                                         : resolve_period(context, slot, quoted, errors);
}

Status resolve_realtime_reference(CompileContext& context, std::string& slot, std::string_view word,
                                  std::string_view source, const StatementErrors& errors) {
  const size_t position = slot.find(word);
  if (position == std::string::npos) return Status::ok;
  const std::string_view written = text_from(source, position + word.size());
  const size_t open = written.find('(');
  const size_t close = written.rfind(')');
  if (open == std::string_view::npos || close == std::string_view::npos || close < open) {
    return errors.fail(Status::parentheses_missing, word);
  }
  const auto pieces = split(written.substr(open + 1, close - open - 1), "@");
  if (pieces.empty() || pieces.size() > 2) return errors.fail(Status::argument_count, word);
  const std::string field(trim(upper_case(pieces.back()), '\''));
  const std::string_view code =
      pieces.size() == 2 ? trim(pieces[0], '\'') : std::string_view(context.pool.security);
  const auto field_id = realtime_field_id(field);
  if (!field_id) {
    return errors.fail(Status::realtime_field_unknown, std::string(word) + "." + field);
  }
  const size_t end = slot.find(')', position);
  const size_t length = end == std::string::npos ? slot.size() - position : end + 1 - position;
  put_reference(context, slot, {"REALTIMEFLAG", std::string(code), *field_id, position, length},
                context.script.realtime_map);
  return Status::ok;
}

}  // namespace quor

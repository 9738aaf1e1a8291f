// The words that play one of the host's alarm sounds.
#include "core/call.h"
#include "core/column_owners.h"
#include "drawing/shapes.h"
#include "text/strings.h"
#include "vocabulary/families.h"

namespace quor {
namespace {

/// The file of a letter from A to J; any other text gives the first alarm with a "$".
std::string sound_file(std::string_view text) {
  if (text.size() != 1 || text[0] < 'A' || text[0] > 'J') return "$Alarm01.wav";
  return "Alarm0" + std::to_string(text[0] - 'A' + 1) + ".wav";
}

void make_sound(const Call& call, std::string_view sound) {
  auto record = std::make_shared<SoundShape>();
  record->Field1Text = sound_file(sound);
  reserve_columns(call.variable, 1);
  record->Field1VisibleId = static_cast<int32_t>(call.variable.aux_column_ids[0]);
  record->TitleVisible = 0;
  call.script().shapes.add(record);
  call.variable.shape = std::move(record);
}

void set_mark(const Call& call, double mark) {
  call.table().set_cell(call.row, call.variable.aux_column_indexes[0], mark);
}

/// SOUNDNAME, in either case: the sound at every bar.
class SOUND final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 1) return call.wrong_count();
    if (call.variable.shape == nullptr) make_sound(call, upper_case(call.argument_text(0)));
    if (!call.scan) set_mark(call, shown_mark);
    return Status::ok;
  }
};

/// COND, SOUNDNAME in capitals: the sound where the condition isn't 0. A null isn't 0.
class PLAYSOUND final : public BaseFunc {
 public:
  using BaseFunc::BaseFunc;

  Status execute(const Call& call) const override {
    if (call.scan && call.argument_count() != 2) return call.wrong_count();
    if (call.variable.shape == nullptr) make_sound(call, call.argument_text(1));
    if (call.scan || call.argument(0).text.empty()) return Status::ok;
    double condition = null_value;
    const Status status = call.evaluate(0, condition);
    if (failed(status)) return status;
    set_mark(call, condition == 0.0 ? hidden_mark : shown_mark);
    return Status::ok;
  }
  ColumnTraits column_traits() const override { return only_a_condition; }
};

constexpr WordRow sound_rows[] = {word_row<SOUND>("SOUND", 80, draws | steady),
                                  word_row<PLAYSOUND>("PLAYSOUND", 81, draws | steady)};

}  // namespace

std::span<const WordRow> sound_words() { return sound_rows; }

}  // namespace quor

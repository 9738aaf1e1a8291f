// What the words along the row axis share: the walk back to an event, and what a call remembers of
// it.
#pragma once

#include <algorithm>
#include <limits>

#include "core/call.h"
#include "functions/call_memory.h"
#include "functions/word_steps.h"

namespace quor {

/// Where a walk found nothing; no row has this number.
inline constexpr int32_t no_row = std::numeric_limits<int32_t>::min();

/// What walks over the rows before a bar have found: which of the rows from `low` up to but without
/// `end` is the newest hit.
struct KnownRows {
  int32_t end = 0;
  int32_t low = 0;
  bool hit_at_low = false;  ///< else none of the rows is one

  bool contain(int64_t row) const { return row >= low && row < end; }
};

/// A call's memory of its walks. They start one bar later each time and mostly go over rows that
/// are known; only the newest ones are evaluated then.
struct WalkMemory final : CallMemory {
  static constexpr size_t most_walks = 2;

  Dependencies dependencies;
  KnownRows known[most_walks];

  void forget() { std::ranges::fill(known, KnownRows{}); }
};

/// One use of a call's memory: if cells have changed in the meantime it is forgotten. The given row
/// and those that it is the first to reach may change until the next use, as the bar that forms
/// does.
class WalkSession {
 public:
  /// With the first `arguments` arguments of the call.
  WalkSession(const Call& call, size_t arguments, int32_t row) : call_(call), end_(row) {
    const bool inside = row >= 0 && call.row < call.table().row_count();
    memory_ = &memory_of<WalkMemory>(call);
    remembers_ = inside && memory_->dependencies.can_be_remembered(call, arguments);
    if (!remembers_) return;
    if (memory_->dependencies.have_changed(call.table())) memory_->forget();
    end_ = memory_->dependencies.settled_end(row);
    memory_->dependencies.watch(call.table(), end_);
  }
  /// A walk that changes what it reads proves nothing.
  ~WalkSession() {
    if (remembers_ && have_changed()) memory_->forget();
  }
  WalkSession(const WalkSession&) = delete;
  WalkSession& operator=(const WalkSession&) = delete;

  bool remembers() const { return remembers_; }

  /// A walk for the newest hit from `row` down to `lowest`. `place` tells walks with different
  /// tests apart.
  class Walk {
   public:
    Walk(WalkSession& session, int32_t row, int64_t lowest, size_t place = 0)
        : session_(session), place_(place), lowest_(lowest), at_(row) {
      if (session.remembers_) known_ = session.memory_->known[place];
      // A run that starts over.
      if (row < known_.low) known_ = {};
      seen_ = {session.end_, session.end_, false};
    }

    bool goes_on() const { return at_ >= lowest_; }
    /// The row to look at next.
    int32_t row() const { return static_cast<int32_t>(at_); }
    /// The newest hit or `no_row`.
    int32_t found() const { return found_; }

    /// Passes over the rows that are known at this one; false if there are none.
    bool skip() {
      if (!known_.contain(at_) || session_.have_changed()) return false;
      seen_.low = known_.low;
      seen_.hit_at_low = known_.hit_at_low;
      if (known_.hit_at_low && known_.low >= lowest_) found_ = known_.low;
      at_ = known_.hit_at_low ? lowest_ - 1 : int64_t{known_.low} - 1;
      return true;
    }

    void take(bool hit) {
      if (at_ < session_.end_) seen_.low = row();
      seen_.hit_at_low = hit;
      if (hit) found_ = row();
      at_ = hit ? lowest_ - 1 : at_ - 1;
    }

    void remember() const {
      const bool is_news = seen_.end > known_.end && seen_.low < session_.end_;
      if (session_.remembers_) session_.memory_->known[place_] = is_news ? seen_ : known_;
    }

   private:
    WalkSession& session_;
    const size_t place_;
    const int64_t lowest_;
    int64_t at_;
    int32_t found_ = no_row;
    KnownRows known_;
    KnownRows seen_;
  };

  /// The newest row from `row` down to `lowest` at which `is_hit` holds, or `no_row`. `is_hit`
  /// takes a row and a flag to set and gives a status, which ends the walk unless it is 0.
  template <typename IsHit>
  Status newest(int32_t row, int64_t lowest, const IsHit& is_hit, int32_t& found) {
    Walk walk(*this, row, lowest);
    while (walk.goes_on()) {
      if (walk.skip()) continue;
      bool hit = false;
      if (const Status status = is_hit(walk.row(), hit); failed(status)) return status;
      walk.take(hit);
    }
    found = walk.found();
    walk.remember();
    return Status::ok;
  }

 private:
  bool have_changed() const { return memory_->dependencies.have_changed(call_.table()); }

  const Call& call_;
  WalkMemory* memory_;
  bool remembers_;
  int32_t end_;  ///< the rows below are watched
};

/// The newest row up to this one at which the argument truncates to 1, whatever its statuses, or
/// `no_row`.
inline int32_t newest_hit(const Call& call, size_t position) {
  WalkSession session(call, position + 1, call.row);
  int32_t found = no_row;
  const auto is_one = [&call, position](int32_t row, bool& hit) {
    double value = null_value;
    ignore_status(call.evaluate_at(position, row, value));
    hit = to_int(value) == 1;
    return Status::ok;
  };
  ignore_status(session.newest(call.row, 0, is_one, found));
  return found;
}

}  // namespace quor

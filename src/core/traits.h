// What is known of a word by those who compile and run its calls or remember what they gave.
#pragma once

#include <cstdint>

namespace quor {

/// A set of traits, joined by "|". A trait that a word lacks without need makes its calls slow, one
/// that it has wrongly gives wrong values.
struct Traits {
  static constexpr uint8_t none = UINT8_MAX;

  uint32_t set = 0;
  /// The position of the first argument that is a period, counted from 0. Unless they are numbers
  /// and not negative, the call has the traits of `with_other_periods`, too.
  uint8_t first_period = none;
  uint32_t with_other_periods = 0;

  constexpr bool has(Traits wanted) const { return (set & wanted.set) == wanted.set; }
  constexpr bool has_any(Traits wanted) const { return (set & wanted.set) != 0; }
};

constexpr Traits operator|(Traits a, Traits b) {
  const auto either = [](uint8_t one, uint8_t other) { return one == Traits::none ? other : one; };
  return {a.set | b.set, either(a.first_period, b.first_period),
          a.with_other_periods | b.with_other_periods};
}

/// Evaluated again at a bar, in whatever order, a call gives the same value as long as its
/// arguments and fields do: what it keeps lies in columns of its own and of its arguments.
inline constexpr Traits repeatable{1 << 0};
/// The value at a bar comes from that bar and those before it alone.
inline constexpr Traits looks_back{1 << 1};
/// What most words are.
inline constexpr Traits steady = repeatable | looks_back;

/// Reads bars that come after the one that it is evaluated at.
inline constexpr Traits reads_forward{1 << 2};
/// The value follows the number of rows.
inline constexpr Traits follows_rows{1 << 3};
/// The value follows the security, the market or the period of the instance: it may be another in
/// the next run.
inline constexpr Traits follows_settings{1 << 4};
/// Asks or tells the host or the machine: callbacks, signals, notices, the calendar, the clock,
/// lots.
inline constexpr Traits acts{1 << 5};
/// Has a record, whose columns it fills; the caller's start value stands.
inline constexpr Traits draws{1 << 6};
/// Keeps a state outside of columns, from one evaluation to the next, or changes that of others.
inline constexpr Traits hides_state{1 << 7};
/// Reads the column of the statement that holds the call.
inline constexpr Traits reads_statement{1 << 8};
/// Refuses some values of its arguments, by a status or an exception. Words that can't fail still
/// hand up the failures of their arguments.
inline constexpr Traits can_fail{1 << 9};
/// Writes what its first, third, ... arguments name.
inline constexpr Traits sets_arguments{1 << 10};

/// Is written without an argument list.
inline constexpr Traits bare{1 << 11};
/// Every call gets a data column of its own from the compiler.
inline constexpr Traits has_result_column{1 << 12};
/// Has the statement that uses it calculated from row 0 on every run.
inline constexpr Traits in_full{1 << 13};
/// The report tells hosts that scripts with it look ahead.
inline constexpr Traits told_ahead{1 << 14};
/// Chooses one of its arguments, and may not stand as an argument behind another one.
inline constexpr Traits branches{1 << 15};
/// Makes a nameless statement that it opens an output line.
inline constexpr Traits opens_line{1 << 16};
/// Gives a trade signal.
inline constexpr Traits trades{1 << 17};
/// Is the function where a field has the same word.
inline constexpr Traits hides_field{1 << 18};

/// The argument at a position is a period.
constexpr Traits period_at(uint8_t position) { return {.first_period = position}; }

/// The arguments from `first` on are periods; the call has `otherwise` unless they are fixed.
constexpr Traits periods_from(uint8_t first, Traits otherwise) {
  return {.first_period = first, .with_other_periods = otherwise.set};
}

}  // namespace quor

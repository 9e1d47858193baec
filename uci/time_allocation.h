// Thinking time from the clock: a pure function of the clock values and the period bookkeeping.
#pragma once

#include <cstdint>

namespace tavrin {

// What the allocation reads. Times in microseconds.
struct ClockState {
  std::int64_t wtime = 0, btime = 0;   // both clocks (the one not given may hold the no-limit value)
  std::int64_t winc = 0, binc = 0;
  std::int32_t movesToGo = 0;          // 0: the rest of the game
  bool whiteToMove = true;
  bool firstSearch = false;            // first go of the game
  std::int32_t previousMovesToGo = 0;  // movestogo stored by the last allocation that had one
  // Carried from the last allocation (kept unless a new period starts).
  std::int32_t periodMovesToGo = 0;
  std::int64_t periodClockWhite = 0, periodClockBlack = 0;
};

// What it decides.
struct TimeBudget {
  std::int64_t softTarget = 0;         // do not start another iteration after this
  std::int64_t hardLimit = 0;          // the search is ended by the poll after this
  std::int64_t quarterTarget = 0;
  std::int64_t threeQuarterTarget = 0;
  std::int64_t increment = 0;          // the side to move's increment, never negative
  std::int64_t incrementClass = 2500;  // 500 with an increment of at least 0.45 s
  std::int32_t periodMovesToGo = 0, previousMovesToGo = 0;
  std::int64_t periodClockWhite = 0, periodClockBlack = 0, periodClockToMove = 0;
};

// Clocks beyond this (about 12.7 days) either way count as this, and movestogo beyond MaxMovesToGo as that,
// so that no product of the allocation can overflow 64 bits; a negative movestogo counts as 0.
constexpr std::int64_t MaxClockMicros = std::int64_t(1) << 40;
constexpr std::int32_t MaxMovesToGo = 1 << 20;

TimeBudget allocateTime(const ClockState& clock);

}  // namespace tavrin

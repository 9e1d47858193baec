// Thinking time from the clock: a pure function of the clock values.
#pragma once

#include <cstdint>

namespace tavrin {

// What the allocation reads. Times in microseconds.
struct ClockState {
  std::int64_t wtime = 0, btime = 0;   // both clocks (the one not given may hold the no-limit value)
  std::int64_t winc = 0, binc = 0;
  std::int32_t movesToGo = 0;          // 0: the rest of the game
  bool whiteToMove = true;
};

// What it decides.
struct TimeBudget {
  std::int64_t softTarget = 0;         // do not start another iteration after this
  std::int64_t hardLimit = 0;          // the search is ended by the poll after this
  std::int64_t quarterTarget = 0;
  std::int64_t threeQuarterTarget = 0;
};

// Clocks beyond this (about 12.7 days) either way count as this, and movestogo beyond MaxMovesToGo as that,
// so that no product of the allocation can overflow 64 bits; a negative movestogo counts as 0.
constexpr std::int64_t MaxClockMicros = std::int64_t(1) << 40;
constexpr std::int32_t MaxMovesToGo = 1 << 20;

TimeBudget allocateTime(const ClockState& clock);

}  // namespace tavrin

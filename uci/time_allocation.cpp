// Soft target and hard limit of one move from the clock, the increment and movestogo.
#include "uci/time_allocation.h"

#include <algorithm>

namespace tavrin {

TimeBudget allocateTime(const ClockState& clock) {
  TimeBudget b;
  auto clamp = [](std::int64_t t) { return std::clamp(t, -MaxClockMicros, MaxClockMicros); };
  const std::int64_t ownClock = clamp(clock.whiteToMove ? clock.wtime : clock.btime);
  const std::int64_t mtg = std::clamp(clock.movesToGo, 0, MaxMovesToGo);

  // Keep a tenth of the clock in reserve.
  std::int64_t t = ownClock * 9 / 10;
  if (t <= 0) t = 1;

  std::int64_t inc = clock.whiteToMove ? clock.winc : clock.binc;
  if (inc < 0) inc = 0;

  if (mtg != 0) {
    b.softTarget = t / (mtg + 3);
    b.hardLimit = (mtg + 1) * t / (8 * mtg);
  } else {
    const std::int64_t q = t / 40;
    if (q > inc) {
      // Divisors: with no increment T/6 and T/64; an increment shortens both denominators.
      b.hardLimit = t / ((6 * t / 40 - 3 * inc) / q);
      b.softTarget = t / ((64 * t / 40 - 18 * inc) / q) + inc;
    } else {
      b.hardLimit = t / 4;
      b.softTarget = t / 30 / 2 + inc;
    }
    // Short clocks.
    if (t < 500000) {
      b.softTarget = 5000;
      b.hardLimit = 10500;
    } else if (t < 1000000 && inc < 500000) {
      b.softTarget = t / 80;
      b.hardLimit = t / 24;
    } else if (t < 2000000 && inc < 500000) {
      b.hardLimit = t / 16;
    }
  }

  if (b.softTarget < 4000) b.softTarget = 4000;
  b.quarterTarget = b.softTarget / 4;
  b.threeQuarterTarget = b.softTarget * 3 / 4;
  return b;
}

}  // namespace tavrin

// Time allocation: soft targets and hard limits from the clock.
#include <gtest/gtest.h>

#include "common/globals.h"
#include "uci/time_allocation.h"

using namespace tavrin;

namespace {

ClockState clockOf(std::int64_t wtimeMs, std::int64_t btimeMs, std::int64_t incMs, int movesToGo, bool white) {
  ClockState c;
  c.wtime = wtimeMs * 1000;
  c.btime = btimeMs * 1000;
  c.winc = c.binc = incMs * 1000;
  c.movesToGo = movesToGo;
  c.whiteToMove = white;
  return c;
}

}  // namespace

TEST(TimeAllocation, TableOfClocks) {
  struct Case {
    std::int64_t wtimeMs, btimeMs, incMs;
    int movesToGo;
    bool white;
    std::int64_t soft, hard;
  };
  const Case cases[] = {
      {60000, 60000, 0, 0, true, 843750, 9000000},       // T = 54 s: T / 64 and T / 6
      {300000, 300000, 0, 40, true, 6279069, 34593750},  // T / 43 and 41 T / 320
      {400, 400, 0, 0, true, 5000, 10500},               // under half a second
      {60000, 700, 0, 0, false, 7875, 26250},            // Black: T = 0.63 s -> T / 80, T / 24
      {1500, 1500, 0, 0, true, 21093, 84375},            // T = 1.35 s: hard T / 16, soft T / 64
      {10000, 10000, 2000, 0, true, 150000 + 2000000, 2250000},  // increment above T / 40: T / 60 + inc, T / 4
      {-5000, 0, 0, 0, true, 5000, 10500},              // negative clock: T = 1
      {60000, 60000, 0, 1, true, 13500000, 13500000},   // one move to go: T / 4 and 2 T / 8
      // inc = 1 s, q = 1.35 s: hard T / ((8.1 - 3) / 1.35) = T / 3, soft T / ((86.4 - 18) / 1.35) + inc.
      {60000, 60000, 1000, 0, true, 54000000 / 50 + 1000000, 54000000 / 3},
      {60000, 60000, -700, 0, true, 843750, 9000000},   // a negative increment counts as none
      {3000, 3000, 0, 1000, true, 4000, 337837},         // T / (mtg + 3) below the 4 ms floor
  };
  for (const Case& c : cases) {
    TimeBudget b = allocateTime(clockOf(c.wtimeMs, c.btimeMs, c.incMs, c.movesToGo, c.white));
    EXPECT_EQ(b.softTarget, c.soft) << c.wtimeMs << " " << c.btimeMs << " " << c.incMs << " " << c.movesToGo;
    EXPECT_EQ(b.hardLimit, c.hard) << c.wtimeMs << " " << c.btimeMs << " " << c.incMs << " " << c.movesToGo;
  }
}

TEST(TimeAllocation, AbsurdInputsStayFinite) {
  const std::int64_t huge[] = {NoLimit, std::int64_t(1) << 62, -(std::int64_t(1) << 62), 0, 1};
  const int movesToGo[] = {0, 1, -1, -3, -4, 2147483647, -2147483647 - 1};
  for (std::int64_t clock : huge)
    for (int mtg : movesToGo)
      for (std::int64_t inc : {std::int64_t(0), std::int64_t(-1), std::int64_t(1) << 40}) {
        ClockState c;
        c.wtime = c.btime = clock;
        c.winc = c.binc = inc;
        c.movesToGo = mtg;
        TimeBudget b = allocateTime(c);
        EXPECT_GE(b.softTarget, 4000);
        EXPECT_GE(b.hardLimit, 0);
      }
}

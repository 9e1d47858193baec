// Packed scores and shifts at the board edge.
#include <gtest/gtest.h>

#include "board/bitboard.h"
#include "board/types.h"

using namespace tavrin;

TEST(PackedScore, RoundTripsSignedHalves) {
  const int values[] = {0, 1, -1, 7, -7, 120, -120, 32767, -32768, 15000, -15000};
  for (int mg : values)
    for (int eg : values) {
      // mg * 65536 + eg must fit 32 bits: the lowest middlegame value needs a non-negative endgame.
      if (mg == -32768 && eg < 0) continue;
      Packed p = pack(mg, eg);
      EXPECT_EQ(middlegameOf(p), mg) << mg << " " << eg;
      EXPECT_EQ(endgameOf(p), eg) << mg << " " << eg;
    }
}

TEST(PackedScore, SumsAddComponentwise) {
  Packed a = pack(30, -12), b = pack(-45, 7);
  EXPECT_EQ(middlegameOf(a + b), -15);
  EXPECT_EQ(endgameOf(a + b), -5);
  EXPECT_EQ(middlegameOf(a - b), 75);
  EXPECT_EQ(endgameOf(a - b), -19);
}

TEST(BitOps, ShiftsNeverWrapAcrossFiles) {
  EXPECT_EQ(shift<9>(bit(H2)), 0u);
  EXPECT_EQ(shift<7>(bit(A2)), 0u);
  EXPECT_EQ(pawnAttacks<White>(bit(A2)), bit(B3));
  EXPECT_EQ(pawnAttacks<Black>(bit(H7)), bit(G6));
  EXPECT_EQ(pawnAttacks<White>(bit(E4)), bit(D5) | bit(F5));
}

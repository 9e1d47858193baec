// Start-up tables: slider lookups against a slow reference, set-up keys and material.
#include <gtest/gtest.h>

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/make_move.h"
#include "eval/psq_tables.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

// A position record with only the given occupancy (for slider lookups).
Position& withOccupancy(Position& pos, Bitboard occupied) {
  pos.occupied = occupied;
  pos.occupiedFileMajor = pos.occupiedAntiDiag = pos.occupiedDiag = 0;
  for (Bitboard b = occupied; b;) {
    int sq = popLowest(b);
    pos.occupiedFileMajor |= Rot.setFileMajor[sq];
    pos.occupiedAntiDiag |= Rot.setAntiDiag[sq];
    pos.occupiedDiag |= Rot.setDiag[sq];
  }
  return pos;
}

TEST(AttackTables, LookupsAgreeWithSlowSlidersOnRandomBoards) {
  BoardFixture f;
  std::uint64_t x = 0x9E3779B97F4A7C15ULL;
  for (int i = 0; i < 2000; ++i) {
    x ^= x << 13, x ^= x >> 7, x ^= x << 17;
    const Bitboard occ = i == 0 ? 0 : x & (x >> 3) & (x >> 5);  // the empty board, then sparse ones
    withOccupancy(f.pos, occ);
    for (int sq = 0; sq < 64; ++sq) {
      ASSERT_EQ(rookAttacks(sq, f.pos), slowRookAttacks(sq, occ)) << sq << " " << occ;
      ASSERT_EQ(bishopAttacks(sq, f.pos), slowBishopAttacks(sq, occ)) << sq << " " << occ;
    }
  }
}

TEST(ZobristKeys, SetUpDetailsTableDriven) {
  struct Case {
    const char* fen;
    bool unusual;
  };
  const Case cases[] = {
      {"4k3/8/8/8/8/8/8/QQ2K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/NN2K3 w - - 0 1", false},
      {"4k3/8/8/8/8/8/8/NNN1K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/RRR1K3 w - - 0 1", true},
      {"4k3/8/8/8/8/8/8/B1B1K3 w - - 0 1", true},   // two dark-squared bishops
      {"4k3/8/8/8/8/8/8/BB2K3 w - - 0 1", false},   // one of each colour
      {"4k3/8/8/8/8/8/8/qq2K3 w - - 0 1", true},
  };
  BoardFixture f;
  for (const Case& c : cases) {
    f.set(c.fen);
    EXPECT_EQ((f.pos.state->materialKey & 0x80000000u) != 0, c.unusual) << c.fen;
  }
  // Positions that differ only by the en-passant square differ in key.
  f.set("4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2");
  const Key withEp = f.pos.state->key;
  f.set("4k3/8/8/3pP3/8/8/8/4K3 w - - 0 2");
  EXPECT_NE(withEp, f.pos.state->key);
}

}  // namespace
}  // namespace tavrin::test

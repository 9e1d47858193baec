// The small FEN reader: round trips, rejected texts, and mutated texts that must never crash.
#include <gtest/gtest.h>

#include <random>

#include "board/perft.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

TEST(Fen, RoundTripsAndNormalisesRights) {
  BoardFixture f;
  struct Case {
    const char* in;
    const char* out;
  };
  const Case cases[] = {
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1"},
      // No pawn to take en passant: the square is dropped, as a move would not have set it.
      {"4k3/8/8/3p4/8/8/8/4K3 w - d6 0 2", "4k3/8/8/3p4/8/8/8/4K3 w - - 0 1"},
      // Rights without their rook are dropped.
      {"4k3/8/8/8/8/8/8/4K2R w KQ - 0 1", "4k3/8/8/8/8/8/8/4K2R w K - 0 1"},
      {"4k3/8/8/8/8/8/8/4K2R w K -", "4k3/8/8/8/8/8/8/4K2R w K - 0 1"},
  };
  for (const Case& c : cases) {
    f.set(c.in);
    EXPECT_EQ(toFen(f.pos), c.out);
  }
}

TEST(Fen, RejectsWhatCannotBePlayed) {
  BoardFixture f;
  const char* bad[] = {
      "",
      "garbage",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR x KQkq - 0 1",
      "rnbqkbnr/pppppppp/9/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQxq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq z9 0 1",
      "8/8/8/8/8/8/8/4K3 w - - 0 1",             // no black king
      "4k3/8/8/8/8/8/8/4KK2 w - - 0 1",          // two white kings
      "P3k3/8/8/8/8/8/8/4K3 w - - 0 1",          // pawn on the last rank
      "4k3/8/8/8/8/8/8/4K2R b - - 0 1",  // a control: this one is fine
  };
  for (std::size_t i = 0; i + 1 < std::size(bad); ++i) EXPECT_FALSE(setFromFen(f.pos, bad[i])) << bad[i];
  EXPECT_TRUE(setFromFen(f.pos, bad[std::size(bad) - 1]));
  EXPECT_FALSE(setFromFen(f.pos, "4k3/8/8/8/8/8/8/4R1K1 w - - 0 1")) << "the side not to move is in check";
  EXPECT_FALSE(setFromFen(f.pos, nullptr));
}

TEST(Fen, MutatedTextsNeverBreakTheBoard) {
  BoardFixture f;
  std::mt19937 rng(99);
  const std::string seeds[] = {"r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
                               "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2"};
  const std::string alphabet = "pnbrqkPNBRQK12345678/ wb-KQkqabcdefgh09";
  const int tries = scaled(4000, 400);
  for (int i = 0; i < tries; ++i) {
    std::string s = seeds[i % 2];
    for (int edits = 1 + int(rng() % 4); edits > 0; --edits) {
      std::size_t at = rng() % s.size();
      switch (rng() % 3) {
        case 0: s[at] = alphabet[rng() % alphabet.size()]; break;
        case 1: s.erase(at, 1); break;
        default: s.insert(at, 1, alphabet[rng() % alphabet.size()]); break;
      }
    }
    if (!setFromFen(f.pos, s.c_str())) continue;
    f.pos.recordIndex = 1;
    perft(f.pos, 2, false);  // playable: moves made and taken back without harm
    EXPECT_EQ(f.pos.historyCount, 0u) << s;
  }
}

}  // namespace
}  // namespace tavrin::test

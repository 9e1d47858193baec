// The static exchange test on hand-checked exchanges.
#include <gtest/gtest.h>

#include "board/legality.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

struct ExchangeCase {
  const char* fen;
  Move move;
  bool loses;
  const char* why;
};

TEST(ExchangeTest, HandCheckedExchanges) {
  const ExchangeCase cases[] = {
      {"4k3/8/8/3p4/4P3/8/8/4K3 w - - 0 1", makeMove(E4, D5), false, "pawn takes pawn"},
      {"4k3/2p5/3p4/8/8/8/3R4/4K3 w - - 0 1", makeMove(D2, D6), true, "rook takes a pawn defended by a pawn"},
      {"4k3/8/3p4/8/8/8/3R4/4K3 w - - 0 1", makeMove(D2, D6), false, "rook takes an undefended pawn"},
      {"4k3/8/3r4/8/3p4/8/3R4/3RK3 w - - 0 1", makeMove(D2, D4), false, "the rook behind wins the exchange back"},
      {"4k3/8/3r4/8/3p4/8/3R4/4K3 w - - 0 1", makeMove(D2, D4), true, "no rook behind: the rook is lost for a pawn"},
      {"4k3/8/5p2/4p3/3Q4/8/8/4K3 w - - 0 1", makeMove(D4, E5), true, "queen takes a defended pawn"},
      {"4k3/8/8/8/8/2b5/1N6/5K2 b - - 0 1", makeMove(C3, B2), false, "bishop takes an undefended knight"},
      {"4k3/8/8/4p3/8/8/8/3QK3 w - - 0 1", makeMove(D1, D4), true, "queen steps onto a square a pawn attacks"},
      {"1n2k3/P7/8/8/8/8/8/4K3 w - - 0 1", makeMove(A7, B8, PromoteQueen), false, "promotion with capture, safe"},
      {"r3k3/1P6/8/8/8/8/8/4K3 w - - 0 1", makeMove(B7, B8, PromoteQueen), true, "promoted queen is taken"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 2", makeMove(E5, D6, EnPassantMove), false, "en passant"},
      {"4k3/8/8/8/5b2/8/3p4/4K3 w - - 0 1", makeMove(E1, D2), true, "the king cannot take a defended pawn"},
      {"4k3/8/8/8/8/8/3p4/4K3 w - - 0 1", makeMove(E1, D2), false, "the king takes an undefended pawn"},
      {"4k3/8/8/2b5/3r4/8/5N2/4K3 w - - 0 1", makeMove(F2, D4), false, "knight takes a rook defended by a bishop"},
      {"4k3/8/8/2q5/3n4/8/8/3RK3 w - - 0 1", makeMove(D1, D4), true, "rook takes a knight defended by a queen"},
      {"4k3/8/8/2q5/3n4/4P3/8/3RK3 w - - 0 1", makeMove(D1, D4), false, "the pawn behind takes the queen back"},
      {"3rk3/8/8/8/3p4/2B5/8/3RK3 w - - 0 1", makeMove(C3, D4), false, "two attackers against one defender"},
      {"3rk3/8/8/8/3p4/2B5/8/4K3 w - - 0 1", makeMove(C3, D4), true, "bishop for a pawn"},
  };
  BoardFixture f;
  for (const ExchangeCase& c : cases) {
    Position& pos = f.set(c.fen);
    EXPECT_EQ(exchangeLoses(pos, c.move), c.loses) << c.why << ": " << c.fen;
  }
}

}  // namespace
}  // namespace tavrin::test

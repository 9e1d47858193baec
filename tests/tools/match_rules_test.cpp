// Game endings decided by the match runner's board: mate, stalemate, repetition (with and
// without an en-passant right), the fifty-move rule and insufficient material; FEN checking.
#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tools/match/rules.h"

using namespace tavrin;
using namespace tavrin::match;

namespace {

// Plays blank-separated coordinate moves; fails the test on an illegal one.
void playMoves(GameBoard& b, const std::string& moves) {
  std::istringstream in(moves);
  for (std::string w; in >> w;) {
    Move m = b.parseUci(w);
    ASSERT_NE(m, NoMove) << "illegal move " << w << " in " << b.fen();
    b.play(m);
  }
}

Outcome outcomeAfter(const std::string& fen, const std::string& moves) {
  GameBoard b;
  EXPECT_TRUE(b.setFen(fen)) << fen;
  playMoves(b, moves);
  return b.outcome();
}

}  // namespace

TEST(MatchRules, EndingsOnConstructedPositions) {
  struct Case {
    const char* name;
    const char* fen;
    std::string moves;
    GameResult result;
    const char* reason;
  };
  const std::string kingCycle = " a4a3 e1d1 a3a4 d1e1";
  const Case cases[] = {
      {"fool's mate", StartFen, "f2f3 e7e5 g2g4 d8h4", GameResult::BlackWins, "Black mates"},
      {"stalemate", "7k/5Q2/6K1/8/8/8/8/8 b - - 0 1", "", GameResult::Draw, "Draw by stalemate"},
      {"start position twice more", StartFen, "g1f3 g8f6 f3g1 f6g8 g1f3 g8f6 f3g1 f6g8",
       GameResult::Draw, "Draw by threefold repetition"},
      // After e2e4 Black may take en passant: that position differs from the later ones.
      {"en-passant right counts, two more", "8/8/8/8/k2p4/8/4P3/4K3 w - - 0 1",
       "e2e4" + kingCycle + kingCycle, GameResult::None, ""},
      {"en-passant right counts, three more", "8/8/8/8/k2p4/8/4P3/4K3 w - - 0 1",
       "e2e4" + kingCycle + kingCycle + kingCycle, GameResult::Draw,
       "Draw by threefold repetition"},
      // Here the capture would expose the black king to the rook: no right, so it repeats.
      {"en-passant capture illegal", "8/8/8/8/k2p3R/8/4P3/4K3 w - - 0 1",
       "e2e4" + kingCycle + kingCycle, GameResult::Draw, "Draw by threefold repetition"},
      {"fifty moves at exactly 100 half-moves", "4k3/8/8/8/8/8/8/R3K3 w - - 99 80", "a1a2",
       GameResult::Draw, "Draw by fifty-move rule"},
      {"99 half-moves is not yet a draw", "4k3/8/8/8/8/8/8/R3K3 w - - 98 80", "a1a2",
       GameResult::None, ""},
      {"a capture resets the count", "4k3/8/8/8/8/8/r7/R3K3 w - - 99 80", "a1a2", GameResult::None, ""},
      {"mate on the hundredth half-move wins", "7k/8/6K1/8/8/8/8/R7 w - - 99 80", "a1a8",
       GameResult::WhiteWins, "White mates"},
      {"bare kings", "8/8/4k3/8/8/3K4/8/8 w - - 0 1", "", GameResult::Draw,
       "Draw by insufficient material"},
      {"king and knight", "8/8/4k3/8/8/3K4/5N2/8 b - - 0 1", "", GameResult::Draw,
       "Draw by insufficient material"},
      {"bishops on squares of one colour", "8/8/4k3/2b5/8/3K4/8/2B5 w - - 0 1", "",
       GameResult::Draw, "Draw by insufficient material"},
      {"bishops on squares of both colours", "8/8/4k3/2b5/8/3K4/8/1B6 w - - 0 1", "",
       GameResult::None, ""},
      {"king and two knights is no draw", "8/8/4k3/8/8/3K4/3NN3/8 w - - 0 1", "",
       GameResult::None, ""},
      {"capture into bare kings", "8/8/4k3/8/8/3K4/3n4/8 w - - 0 1", "d3d2", GameResult::Draw,
       "Draw by insufficient material"},
  };
  for (const Case& c : cases) {
    Outcome o = outcomeAfter(c.fen, c.moves);
    EXPECT_EQ(o.result, c.result) << c.name;
    EXPECT_EQ(o.reason, c.reason) << c.name;
  }
}

TEST(MatchRules, RepetitionKeyIgnoresAnUnusableEnPassantRight) {
  GameBoard withRight, without;
  ASSERT_TRUE(withRight.setFen("8/8/8/8/k2pP2R/8/8/4K3 b - e3 0 1"));
  ASSERT_TRUE(without.setFen("8/8/8/8/k2pP2R/8/8/4K3 b - - 0 1"));
  EXPECT_EQ(withRight.repetitionKey(), without.repetitionKey());
  ASSERT_TRUE(withRight.setFen("8/8/8/8/k2pP3/8/8/4K3 b - e3 0 1"));
  ASSERT_TRUE(without.setFen("8/8/8/8/k2pP3/8/8/4K3 b - - 0 1"));
  EXPECT_NE(withRight.repetitionKey(), without.repetitionKey());
}

TEST(MatchRules, FenIsCheckedStrictly) {
  const char* bad[] = {
      "",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP w KQkq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR x KQkq - 0 1",
      "rnbqkbnr/pppppppp/9/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkqq - 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq e9 0 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - -1 1",
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 0",
      "rnbq1bnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQ - 0 1",     // no black king
      "rnbqkbnP/pppppppp/8/8/8/8/PPPPPPP1/RNBQKBNR w KQ - 0 1",     // pawn on the last rank
      "4k3/8/8/8/8/8/8/4K2r b - - 0 1",                            // a king in check...
      "4k3/4R3/8/8/8/8/8/4K3 w - - 0 1",                           // ...with the wrong side to move
  };
  GameBoard b;
  for (const char* fen : bad) EXPECT_FALSE(b.setFen(fen)) << fen;
  EXPECT_EQ(b.fen(), StartFen);   // a rejected position leaves a usable board

  struct RoundTrip {
    const char* in;
    const char* out;
  };
  const RoundTrip good[] = {
      {StartFen, StartFen},
      {"r3k2r/8/8/8/8/8/8/R3K2R w qkQK - 0 1", "r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1"},
      {"4k3/8/8/8/8/8/8/R3K3 w KQkq - 0 1", "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1"},   // unsupported rights dropped
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 9", "4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 9"},
      {"4k3/8/8/3p4/8/8/8/4K3 w - d6 0 9", "4k3/8/8/3p4/8/8/8/4K3 w - - 0 9"},   // nothing can take
      {"8/8/8/8/8/8/8/k1K5 b - -", "8/8/8/8/8/8/8/k1K5 b - - 0 1"},
  };
  for (const RoundTrip& r : good) {
    ASSERT_TRUE(b.setFen(r.in)) << r.in;
    EXPECT_EQ(b.fen(), r.out);
  }
}

TEST(MatchRules, MovesUpdateCountersAndFen) {
  GameBoard b;
  playMoves(b, "e2e4 c7c5 g1f3");
  EXPECT_EQ(b.fen(), "rnbqkbnr/pp1ppppp/8/2p5/4P3/5N2/PPPP1PPP/RNBQKB1R b KQkq - 1 2");
  EXPECT_EQ(b.parseUci("e7e5x"), NoMove);
  EXPECT_EQ(b.parseUci("e7e4"), NoMove);
  EXPECT_EQ(b.parseUci(""), NoMove);
  EXPECT_EQ(b.parseUci("0000"), NoMove);
  EXPECT_EQ(b.legalMoves().size(), 22u);   // Black after 1. e4 c5 2. Nf3
}

TEST(MatchRules, LongGamesOutliveTheStateStack) {
  // A thousand-move shuffle rebuilds the position several times; the counters run on.
  GameBoard b;
  ASSERT_TRUE(b.setFen("4k3/8/8/8/8/8/8/R3K3 w - - 0 1"));
  const char* moves[4] = {"a1a2", "e8d8", "a2a1", "d8e8"};
  for (int i = 0; i < 2400; ++i) {
    Move m = b.parseUci(moves[i % 4]);
    ASSERT_NE(m, NoMove) << i;
    b.play(m);
  }
  EXPECT_EQ(b.halfmoveClock(), 2400);
  EXPECT_EQ(b.fullmoveNumber(), 1201);
  EXPECT_EQ(b.outcome().reason, "Draw by fifty-move rule");
}

// Standard algebraic notation written and read by the match runner.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/test_support.h"
#include "tools/match/rules.h"

using namespace tavrin;
using namespace tavrin::match;

TEST(MatchSan, AwkwardMoves) {
  struct Case {
    const char* fen;
    const char* uci;
    const char* san;
  };
  const Case cases[] = {
      {StartFen, "e2e4", "e4"},
      {"4k3/8/8/8/8/8/8/1N3N1K w - - 0 1", "b1d2", "Nbd2"},           // by file
      {"4k3/8/8/R7/8/8/8/R3K3 w - - 0 1", "a1a3", "R1a3"},             // by rank
      {"4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1", "a1b2", "Qa1b2"},          // by both
      {"4k3/8/8/8/8/Q7/8/Q1Q1K3 w - - 0 1", "c1d2", "Qd2"},            // no other queen reaches d2
      // The knight on e2 is pinned, so only one knight can go to c3: no disambiguation.
      {"4k3/4r3/8/8/8/8/4N3/1N2K3 w - - 0 1", "b1c3", "Nc3"},
      {"8/4P3/8/7k/8/8/8/4K3 w - - 0 1", "e7e8q", "e8=Q+"},            // promotion with check
      {"r5k1/1P3ppp/8/8/8/8/8/6K1 w - - 0 1", "b7a8q", "bxa8=Q#"},     // capture, promotion, mate
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "e1g1", "O-O"},
      {"r3k2r/8/8/8/8/8/8/R3K2R b KQkq - 0 1", "e8c8", "O-O-O"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "e5d6", "exd6"},           // en passant
      {"r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4", "h5f7", "Qxf7#"},
  };
  GameBoard b;
  for (const Case& c : cases) {
    ASSERT_TRUE(b.setFen(c.fen)) << c.fen;
    Move m = b.parseUci(c.uci);
    ASSERT_NE(m, NoMove) << c.fen << " " << c.uci;
    std::string before = b.fen();
    EXPECT_EQ(b.san(m), c.san) << c.fen << " " << c.uci;
    EXPECT_EQ(b.parseSan(c.san), m) << c.san;
    EXPECT_EQ(b.fen(), before);   // writing a move leaves the board as it was
  }
}

TEST(MatchSan, EveryLegalMoveReadsBack) {
  std::vector<std::string> fens(std::begin(test::RandomGameStarts), std::end(test::RandomGameStarts));
  fens.push_back("4k3/1P6/8/8/8/8/6p1/4K2R b K - 0 1");
  GameBoard b;
  for (const std::string& fen : fens) {
    ASSERT_TRUE(b.setFen(fen)) << fen;
    std::string before = b.fen();
    for (Move m : b.legalMoves()) {
      std::string s = b.san(m);
      EXPECT_EQ(b.parseSan(s), m) << fen << " " << s;
      EXPECT_EQ(b.fen(), before);
    }
  }
}

TEST(MatchSan, ReadsCommonVariants) {
  GameBoard b;
  struct Case {
    const char* fen;
    const char* text;
    const char* uci;
  };
  const Case cases[] = {
      {StartFen, "Nf3!", "g1f3"},
      {StartFen, "Ngf3", "g1f3"},           // over-specified
      {StartFen, "e4?!", "e2e4"},
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "0-0", "e1g1"},
      {"r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1", "O-O-O+", "e1c1"},
      {"8/4P3/8/7k/8/8/8/4K3 w - - 0 1", "e8Q", "e7e8q"},
      {"8/4P3/8/7k/8/8/8/4K3 w - - 0 1", "e8=q", "e7e8q"},
      {"4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1", "ed6", "e5d6"},
  };
  for (const Case& c : cases) {
    ASSERT_TRUE(b.setFen(c.fen));
    EXPECT_EQ(GameBoard::uci(b.parseSan(c.text)), c.uci) << c.text;
  }
  ASSERT_TRUE(b.setFen(StartFen));
  const char* bad[] = {"", "Nf4", "e5", "Ke2", "O-O", "Qxh7", "Nbd2", "xx", "e4e5e6", "="};
  for (const char* text : bad) EXPECT_EQ(b.parseSan(text), NoMove) << text;
}

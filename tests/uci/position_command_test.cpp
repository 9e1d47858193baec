// The position command: the FEN reader, move text and the move list player.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "app/startup.h"
#include "board/position.h"
#include "common/globals.h"
#include "uci/position_command.h"

using namespace tavrin;

namespace {

class PositionCommand : public testing::Test {
 protected:
  static void SetUpTestSuite() { initializeEngine(); }
  Position& pos = RootPosition;

  void load(const std::string& text) { positionCommand(pos, text.c_str()); }
  int stackIndex() const { return int(pos.state - pos.stateStack); }
  std::string boardText() const {
    std::string s;
    for (int sq = 0; sq < 64; ++sq) s += PieceLetters[pos.board[sq]];
    return s;
  }
};

const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";

}  // namespace

TEST_F(PositionCommand, CastlingFieldMatchedWhole) {
  const struct {
    const char* field;
    int rights;
  } cases[] = {
      {"KQkq", 15}, {"KQq", 11}, {"Qk", 6}, {"Kq", 9}, {"q", 8}, {"-", 0},
      {"qkQK", 16}, {"HAha", 16}, {"KQkqK", 16}, {"KkQq", 16},
  };
  for (const auto& c : cases) {
    load(std::string("fen r3k2r/8/8/8/8/8/8/R3K2R w ") + c.field + " - 0 1");
    // 16 has none of the four rights; the board's set-up keeps only those four bits.
    EXPECT_EQ(pos.st().castle & 15, c.rights & 15) << c.field;
  }
}

TEST_F(PositionCommand, EnPassantOnlyWhenAPawnCanTake) {
  const struct {
    const char* fen;
    int square;
  } cases[] = {
      {"rnbqkbnr/ppp1pppp/8/8/3pP3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 3", E3},   // d4 takes
      {"rnbqkbnr/pppp1ppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 2", 0},      // nobody can take
      {"rnbqkbnr/ppp1p1pp/8/3pPp2/8/8/PPPP1PPP/RNBQKBNR w KQkq f6 0 3", F6},   // e5 takes
      {"rnbqkbnr/1pppppp1/8/pP5p/8/8/P1PPPPPP/RNBQKBNR w KQkq a6 0 3", A6},    // from the b-file
      {"rnbqkbnr/ppppppp1/8/6Pp/8/8/PPPPPP1P/RNBQKBNR w KQkq h6 0 3", H6},     // from the g-file
      {"rnbqkbnr/ppppppp1/8/P6p/8/8/1PPPPPPP/RNBQKBNR w KQkq h6 0 3", 0},      // a5 does not wrap to h6
      {"4k3/8/8/8/8/8/8/4K3 w - e3 0 1", 0},
      {"4k3/8/8/8/8/8/8/4K3 w - zz 0 1", 0},
  };
  for (const auto& c : cases) {
    load(std::string("fen ") + c.fen);
    EXPECT_EQ(pos.st().epSquare, c.square) << c.fen;
  }
}

TEST_F(PositionCommand, FieldsAndCounters) {
  load("fen 4k3/8/8/8/8/8/8/4K3 b - - 17 40");
  EXPECT_EQ(pos.sideToMove, Black);
  EXPECT_EQ(pos.st().rule50, 17);
  EXPECT_EQ(stackIndex(), 0);   // a FEN makes the first entry current
  load("fen 4k3/8/8/8/8/8/8/4K3 x - - 300 1");
  EXPECT_EQ(pos.sideToMove, Black);   // another side letter keeps the side as it was
  EXPECT_EQ(pos.st().rule50, 300 & 255);
  const struct {
    const char* field;
    int value;
  } counters[] = {{"-1", 255}, {"abc", 0}, {"+5", 5}, {"12x", 12}, {"256", 0}};
  for (const auto& c : counters) {
    load(std::string("fen 4k3/8/8/8/8/8/8/4K3 w - - ") + c.field + " 1");
    EXPECT_EQ(pos.st().rule50, c.value) << c.field;
  }
}

TEST_F(PositionCommand, MoveLists) {
  const struct {
    const char* command;
    const char* fen;   // the expected position, read the same way
  } cases[] = {
      {"startpos", StartFen},
      {"startpos moves e2e4 e7e5", "rnbqkbnr/pppp1ppp/8/4p3/4P3/8/PPPP1PPP/RNBQKBNR w KQkq e6 0 2"},
      // An illegal or mistyped move is skipped; the moves around it are played.
      {"startpos moves e2e4 e2e4 zz e7e5 g1f3", "rnbqkbnr/pppp1ppp/8/4p3/4P3/5N2/PPPP1PPP/RNBQKB1R b KQkq - 1 2"},
      {"startpos   moves    e2e4   ", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"},
      // A square off the board names no move (i1 and m3 are not read as a2 and e4).
      {"startpos moves i1a4", StartFen},
      {"startpos moves e2m3", StartFen},
      {"startpos moves a9a8 a0a1 i0e4 e2e4", "rnbqkbnr/pppppppp/8/8/4P3/8/PPPP1PPP/RNBQKBNR b KQkq e3 0 1"},
      // Four FEN fields: "moves" becomes the half-move field and the first move the full-move one.
      {"fen 4k3/8/8/8/8/8/8/4K3 w - - moves e1e2 e8e7", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
      // A word other than startpos or fen leaves the position and plays nothing.
      {"nonsense moves e2e4", "4k3/8/8/8/8/8/8/4K3 w - - 0 1"},
      // Castling, en passant and promotion from move text.
      {"fen r3k2r/8/8/8/8/8/8/R3K2R w KQkq - 0 1 moves e1g1 e8c8", "2kr3r/8/8/8/8/8/8/R4RK1 w - - 2 2"},
      {"fen 4k3/8/8/3pP3/8/8/8/4K3 w - d6 0 1 moves e5d6", "4k3/8/3P4/8/8/8/8/4K3 b - - 0 1"},
      {"fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1 moves a7a8n", "N3k3/8/8/8/8/8/8/4K3 b - - 0 1"},
      {"fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1 moves a7a8Q", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1"},
      {"fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1 moves a7a8qq", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1"},
      {"fen 4k3/P7/8/8/8/8/8/4K3 w - - 0 1 moves a7a8", "4k3/P7/8/8/8/8/8/4K3 w - - 0 1"},
  };
  static Position expected;
  static bool prepared = false;
  if (!prepared) initPosition(expected), prepared = true;
  for (const auto& c : cases) {
    load(std::string("fen ") + "4k3/8/8/8/8/8/8/4K3 w - - 0 1");
    load(c.command);
    readFen(expected, c.fen);
    EXPECT_EQ(std::memcmp(pos.board, expected.board, 64), 0) << c.command;
    EXPECT_EQ(pos.sideToMove, expected.sideToMove) << c.command;
    EXPECT_EQ(pos.st().castle, expected.st().castle) << c.command;
    EXPECT_EQ(pos.ply, 0) << c.command;
  }
}

TEST_F(PositionCommand, GarbageStaysOnTheBoard) {
  const char* fens[] = {
      "pppppppppppppppppppppppppp/8/8/8/8/8/8/8 w - - 0 1",
      "8/8/8/8/8/8/8/8/8/8/8/8/kK w - - 0 1",
      "99999999/88888888/k/K w - - 0 1",
      "////////////////////////////////////////////////////////////////////////////////////////////Kk",
      "",
  };
  for (const char* fen : fens) {
    load(std::string("fen ") + fen + " moves e2e4 a1a2");
    EXPECT_FALSE(positionPlayable(pos)) << fen;
  }
  load("fen 4k3/8/8/8/8/8/8/4K3 w - - 0 1");
  EXPECT_TRUE(positionPlayable(pos));
  load("fen 4k3/8/8/8/8/8/4R3/4K3 w - - 0 1");   // Black, not to move, is in check
  EXPECT_FALSE(positionPlayable(pos));
  load("fen 4k3/8/8/8/8/8/4r3/4K3 w - - 0 1");   // White, to move, is in check: fine
  EXPECT_TRUE(positionPlayable(pos));
}

TEST_F(PositionCommand, LongMoveListsStopAtTheGameLimit) {
  std::string moves;
  for (int i = 0; i < 1300; ++i) moves += " g1f3 g8f6 f3g1 f6g8";
  load("startpos moves" + moves);
  EXPECT_EQ(stackIndex(), MaxGamePlies);
  EXPECT_EQ(pos.historyCount, std::uint64_t(MaxGamePlies));
  load("startpos moves" + moves);   // again: the history starts over with the game
  EXPECT_EQ(pos.historyCount, std::uint64_t(MaxGamePlies));
  load("startpos");
  EXPECT_EQ(stackIndex(), 0);
}

// Endgame knowledge: exact pawn-ending draws and wins, minor-piece draws, mating a bare king, rook
// or queen against a pawn, rook endings, scaled-down material, and the material table's flags.
#include <cstdlib>

#include "eval/material.h"
#include "eval/weights.h"
#include "eval_test_support.h"

namespace tavrin::test {
namespace {

enum Expect { Draw, WhiteWins, BlackWins };

struct EndgameCase {
  const char* fen;
  Expect expect;
  bool exact;   // the evaluation-is-final flag must be set
  const char* what;
};

const EndgameCase EndgameCases[] = {
    {"4k3/8/8/8/8/8/8/4K3 w - - 0 1", Draw, true, "bare kings"},
    {"4k3/8/4K3/4P3/8/8/8/8 w - - 0 1", WhiteWins, false, "king in front on the sixth, White to move"},
    {"4k3/8/4K3/4P3/8/8/8/8 b - - 0 1", WhiteWins, false, "king in front on the sixth, Black to move"},
    {"4k3/4P3/4K3/8/8/8/8/8 b - - 0 1", Draw, true, "stalemate in front of the pawn"},
    {"7k/8/8/7P/8/8/8/6K1 w - - 0 1", Draw, true, "rook pawn with the king in the corner"},
    {"8/8/8/8/P7/8/8/k6K b - - 0 1", WhiteWins, false, "the king is outside the square"},
    {"8/8/8/8/8/8/p7/K5k1 w - - 0 1", Draw, true, "Black rook pawn, White king in the corner"},
    {"7k/8/8/8/7P/3B4/8/6K1 w - - 0 1", Draw, false, "bishop of the wrong colour with a rook pawn"},
    {"k7/8/8/8/P7/8/8/1N4K1 w - - 0 1", Draw, false, "knight and rook pawn, king in the corner"},
    {"4k3/8/8/8/8/8/8/3NK3 w - - 0 1", Draw, false, "a lone knight cannot win"},
    {"4k3/8/8/8/8/8/8/2B1K3 b - - 0 1", Draw, false, "a lone bishop cannot win"},
    {"7k/8/8/8/7P/4B3/8/6K1 w - - 0 1", WhiteWins, false, "bishop of the right colour"},
    {"8/8/4k3/8/8/8/8/R3K3 w - - 0 1", WhiteWins, false, "rook against a bare king"},
    {"4k3/8/8/8/8/8/q7/4K3 b - - 0 1", BlackWins, false, "queen against a bare king"},
    {"R7/8/8/8/8/3p4/8/3K2k1 w - - 0 1", WhiteWins, false, "rook against pawn, the king in the pawn's path"},
    {"7k/8/8/3p4/8/8/8/R3K3 w - - 0 1", WhiteWins, false, "rook against pawn, the pawn's king far away"},
    {"7K/8/8/7Q/8/8/2kp4/8 w - - 0 1", WhiteWins, false, "queen against a centre pawn on the seventh"},
    {"3k4/r7/8/8/3P4/8/8/6K1 b - - 0 1", BlackWins, false, "rook against pawn for Black, its king in front"},
};

TEST(EvalEndgames, SanityTable) {
  EvalFixture f;
  for (const EndgameCase& c : EndgameCases) {
    Position& pos = f.set(c.fen);
    int v = whiteEval(pos);
    switch (c.expect) {
      case Draw: EXPECT_EQ(v, 0) << c.what << ": " << c.fen; break;
      case WhiteWins: EXPECT_GT(v, 300) << c.what << ": " << c.fen; break;
      case BlackWins: EXPECT_LT(v, -300) << c.what << ": " << c.fen; break;
    }
    if (c.exact) {
      EXPECT_EQ(pos.st().evalFinal, 1) << c.what;
    }
    if (c.expect != Draw) {
      EXPECT_EQ(pos.st().evalFinal, 0) << c.what;
    }
  }
}

TEST(EvalEndgames, BishopAndKnightDriveToTheBishopsCorner) {
  EvalFixture f;
  // Dark-squared bishop on c1: a1 and h8 are its corners.
  int right = whiteEval(f.set("7k/8/5K2/8/4N3/8/8/2B5 w - - 0 1"));
  int wrong = whiteEval(f.set("k7/8/2K5/8/4N3/8/8/2B5 w - - 0 1"));
  EXPECT_GT(right, wrong + 60);
  int centre = whiteEval(f.set("8/8/8/4k3/8/2K1N3/8/2B5 w - - 0 1"));
  EXPECT_GT(wrong, centre) << "any edge is better than the centre";
  EXPECT_GT(centre, 500);
}

TEST(EvalEndgames, OppositeColouredBishopsScaleTowardsADraw) {
  EvalFixture f;
  // White has an extra pawn; Black's bishop on f7 (light) or e7 (dark), White's on f2 (dark).
  int opposite = whiteEval(f.set("4k3/pp3b2/8/8/8/8/PPP2B2/4K3 w - - 0 1"));
  int same = whiteEval(f.set("4k3/pp2b3/8/8/8/8/PPP2B2/4K3 w - - 0 1"));
  EXPECT_GT(same, 0);
  EXPECT_GT(opposite, 0);
  EXPECT_LT(opposite * 5, same * 3);
}

TEST(EvalEndgames, RookOrQueenAgainstAnAdvancedPawnBesideItsKing) {
  EvalFixture f;
  struct Pair {
    const char* drawish;   // the pawn's king holds it, the stronger king is far
    const char* won;
    const char* what;
  };
  const Pair pairs[] = {
      {"7K/8/8/8/8/8/1kp5/7R w - - 0 1", "8/8/8/8/8/3K4/1kp5/7R w - - 0 1", "rook, the king near or far"},
      {"7K/8/8/7Q/8/8/1kp5/8 w - - 0 1", "8/8/8/7Q/8/3K4/1kp5/8 w - - 0 1", "queen against a bishop pawn"},
      {"7K/8/8/7Q/8/8/pk6/8 w - - 0 1", "7K/8/8/7Q/8/8/1p6/k7 w - - 0 1", "queen against a rook pawn"},
  };
  for (const Pair& p : pairs) {
    const int drawish = whiteEval(f.set(p.drawish)), won = whiteEval(f.set(p.won));
    EXPECT_GE(drawish, 0) << p.what;
    EXPECT_LT(drawish, 150) << p.what;
    EXPECT_GT(won, drawish + 100) << p.what;
    expectHalfTurnSymmetric(p.drawish);
    expectHalfTurnSymmetric(p.won);
  }
}

// Rook endings: the scale weight must reach exactly the positions it is meant for.
TEST(EvalEndgames, RookEndingScales) {
  EvalFixture f;
  struct Case {
    const char* fen;
    int EvalWeights::*weight;
    bool scaled;
    const char* what;
  };
  const Case cases[] = {
      {"3r2k1/5pp1/7p/8/8/6PP/4PP2/3R2K1 w - - 0 1", &EvalWeights::ScaleRookEndingOneWing, true,
       "four against three on the king's wing"},
      {"3r2k1/5pp1/7p/8/8/6PP/P4P2/3R2K1 w - - 0 1", &EvalWeights::ScaleRookEndingOneWing, false,
       "a pawn on the other wing"},
      {"k2r4/5pp1/7p/8/8/6PP/4PP2/3R2K1 w - - 0 1", &EvalWeights::ScaleRookEndingOneWing, false,
       "the defending king far from the pawns"},
      {"1k1r4/pp6/8/8/8/P7/1PP5/2KR4 b - - 0 1", &EvalWeights::ScaleRookEndingOneWing, true,
       "three against two on the queen's wing, Black to move"},
      {"4k3/8/8/4P3/8/8/r7/1R2K3 w - - 0 1", &EvalWeights::ScaleRookPawnKingInFront, true,
       "the defending king in front of the pawn"},
      {"8/8/7k/4P3/8/8/r7/1R2K3 w - - 0 1", &EvalWeights::ScaleRookPawnKingInFront, false,
       "the defending king cut off"},
  };
  for (const Case& c : cases) {
    const int saved = Weights.*c.weight;
    const int scaledEval = whiteEval(f.set(c.fen));
    Weights.*c.weight = 128;
    const int full = whiteEval(f.set(c.fen));
    Weights.*c.weight = saved;
    EXPECT_GT(full, 0) << c.what;
    if (c.scaled) EXPECT_EQ(scaledEval, full * saved / 128) << c.what;
    else EXPECT_EQ(scaledEval, full) << c.what;
    expectHalfTurnSymmetric(c.fen);
  }
}

struct MaterialCase {
  const char* fen;
  int scaleAtMost;
  std::uint8_t flags;
};

TEST(EvalEndgames, MaterialTableEntries) {
  EvalFixture f;
  const MaterialCase cases[] = {
      {"rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1", 128, FlagWhitePieces | FlagBlackPieces},
      {"4k3/8/8/8/8/8/8/3NK3 w - - 0 1", 0, FlagWhitePieces | FlagWhiteMinorOnly},
      {"4k3/8/8/8/8/8/8/R3K3 w - - 0 1", 128, FlagWhitePieces | FlagSpecialEnding},
      {"4k3/8/8/3n4/8/8/8/R3K3 w - - 0 1", 24, FlagWhitePieces | FlagBlackPieces | FlagBlackMinorOnly},
      {"4kb2/8/8/8/8/8/8/3NKB2 w - - 0 1", 16, FlagWhitePieces | FlagBlackPieces | FlagBlackMinorOnly},
      {"4k3/8/8/8/8/8/8/2BNK3 w - - 0 1", 128, FlagWhitePieces | FlagSpecialEnding},
      {"4k3/8/8/8/8/8/8/1NN1K3 w - - 0 1", 0, FlagWhitePieces},
      {"4k3/8/8/8/8/3p4/8/R3K3 w - - 0 1", 128, FlagWhitePieces | FlagSpecialEnding},
      {"4k3/8/8/8/8/3p4/8/Q3K3 w - - 0 1", 128, FlagWhitePieces | FlagSpecialEnding},
      {"r3k3/8/8/8/8/3P4/8/R3K3 w - - 0 1", 128, FlagWhitePieces | FlagBlackPieces | FlagSpecialEnding},
      {"r3k3/8/8/8/8/2PP4/8/R3K3 w - - 0 1", 128, FlagWhitePieces | FlagBlackPieces},
      {"4k3/8/8/8/8/3p4/8/RN2K3 w - - 0 1", 128, FlagWhitePieces},
  };
  for (const MaterialCase& c : cases) {
    Position& pos = f.set(c.fen);
    const MaterialEntry& e = MaterialTable[materialIndex(pos.st().materialKey)];
    EXPECT_LE(e.scale, c.scaleAtMost) << c.fen;
    EXPECT_EQ(e.flags, c.flags) << c.fen;
  }
}

TEST(EvalEndgames, MaterialFollowsThePieceValues) {
  EvalFixture f;
  Position& pos = f.set("4k3/8/8/8/8/8/8/3QK3 w - - 0 1");
  int before = MaterialTable[materialIndex(pos.st().materialKey)].value;
  EngineGlobals saved = Engine;
  Engine.queenValue = 1000;
  refreshMaterialTable();
  EXPECT_EQ(MaterialTable[materialIndex(pos.st().materialKey)].value, before + 25);
  Engine = saved;
  refreshMaterialTable();
  EXPECT_EQ(MaterialTable[materialIndex(pos.st().materialKey)].value, before);
}

}  // namespace
}  // namespace tavrin::test

// The pawn-structure evaluator and its table entry: file masks, counts, pulls and the XOR check.
#include <cstring>

#include "eval/pawns.h"
#include "eval/trace.h"
#include "eval_test_support.h"

namespace tavrin::test {
namespace {

PawnEntry entryOf(Position& pos) {
  PawnEntry e;
  evaluatePawns(pos, e);
  return e;
}

struct PawnCase {
  const char* fen;
  std::uint8_t passed[2];       // [Black, White]
  std::uint8_t candidates[2];
  std::uint8_t count[2];
};

TEST(EvalPawns, EntryFields) {
  EvalFixture f;
  const PawnCase cases[] = {
      // d5 is passed; the a- and b-pawns face each other.
      {"4k3/p7/8/1P1P4/8/8/8/4K3 w - - 0 1", {0x00, 0x08}, {0x00, 0x00}, {1, 2}},
      // Doubled c-pawns: only the front one counts as passed.
      {"4k3/8/8/2P5/8/2P5/8/4K3 w - - 0 1", {0x00, 0x04}, {0x00, 0x00}, {0, 2}},
      // b4 with c4 beside it outnumbers a7: a candidate; c4 is passed, and so is h7.
      {"4k3/p6p/8/8/1PP5/8/8/4K3 b - - 0 1", {0x80, 0x04}, {0x00, 0x02}, {2, 2}},
  };
  for (const PawnCase& c : cases) {
    PawnEntry e = entryOf(f.set(c.fen));
    for (int side : {Black, White}) {
      EXPECT_EQ(e.passedFiles[side], c.passed[side]) << c.fen << " side " << side;
      EXPECT_EQ(e.candidateFiles[side], c.candidates[side]) << c.fen << " side " << side;
      EXPECT_EQ(e.count[side], c.count[side]) << c.fen << " side " << side;
    }
  }
}

// How often the pawn evaluation counted a weight, White's count less Black's.
int counted(Position& pos, const Packed& weight) {
  EvalTrace trace;
  ActiveTrace = &trace;
  entryOf(pos);
  ActiveTrace = nullptr;
  int n = 0;
  for (const TraceNote& note : trace.notes)
    if (note.slot == slotOf(weight) && note.channel == PositionalChannel) n += note.count;
  return n;
}

// The weaknesses are found where they are (their values are the tuner's business).
TEST(EvalPawns, WeaknessesAreFound) {
  EvalFixture f;
  struct Row {
    const char* fen;
    const Packed& weight;
    int count;
  };
  const Row rows[] = {
      {"4k3/ppp5/8/8/8/8/PPP5/4K3 w - - 0 1", Weights.Doubled, 0},
      {"4k3/ppp5/8/8/8/1P6/PP6/4K3 w - - 0 1", Weights.Doubled, 1},       // b2 behind b3
      {"4k3/ppp5/8/8/8/8/P1P4P/4K3 w - - 0 1", Weights.Isolated, 3},      // a2, c2, h2
      {"4k3/p1p4p/8/8/8/8/PPP5/4K3 w - - 0 1", Weights.Isolated, -3},
      {"4k3/8/3P4/8/8/8/8/4K3 w - - 0 1", Weights.PassedRank[5], 1},      // d6: rank 6 for White
      {"4k3/8/8/8/8/3p4/8/4K3 w - - 0 1", Weights.PassedRank[5], -1},     // d3: rank 6 for Black
  };
  for (const Row& r : rows) EXPECT_EQ(counted(f.set(r.fen), r.weight), r.count) << r.fen;
}

TEST(EvalPawns, XorCheckRejectsTornEntries) {
  EvalFixture f;
  Position& pos = f.set("r1bqkbnr/pp1ppppp/2n5/2p5/4P3/5N2/PPPP1PPP/RNBQKB1R w KQkq - 2 3");
  PawnEntry e = entryOf(pos);
  EXPECT_EQ(e.storedKey(), pos.st().pawnKey);
  EXPECT_EQ(pawnSlot(pos.st().pawnKey)->storedKey(), pos.st().pawnKey);
  for (int word = 0; word < 8; ++word) {
    PawnEntry torn = e;
    std::uint32_t w[8];
    std::memcpy(w, &torn, sizeof w);
    w[word] ^= 0x00010000u;
    std::memcpy(&torn, w, sizeof w);
    EXPECT_NE(torn.storedKey(), pos.st().pawnKey) << "word " << word;
  }
}

TEST(EvalPawns, DrawishPullForSymmetricStructures) {
  EvalFixture f;
  PawnEntry symmetric = entryOf(f.set("4k3/pp3ppp/8/8/8/8/PP3PPP/4K3 w - - 0 1"));
  EXPECT_GT(symmetric.pull[White], 0);
  EXPECT_EQ(symmetric.pull[White], symmetric.pull[Black]);
  PawnEntry extra = entryOf(f.set("4k3/pp3ppp/8/8/8/8/PP2PPPP/4K3 w - - 0 1"));
  EXPECT_EQ(extra.pull[White], 0);
}

}  // namespace
}  // namespace tavrin::test

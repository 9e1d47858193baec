// Rules of the evaluation driver: cache, decisive flag, lazy estimate bounds, gain table, pawn
// table independence, pawn endings, unusual material and the noise generator.
#include <cstring>
#include <vector>

#include "eval/material.h"
#include "eval/pawns.h"
#include "eval_test_support.h"

namespace tavrin::test {
namespace {

constexpr const char* StartFen = "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1";
constexpr const char* MiddleFen = "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/2N2N2/PPPP1PPP/R1BQK2R w KQkq - 4 5";

std::uint64_t& cacheSlot(const Position& pos) { return EvalCache[pos.st().key & (EvalCacheSize - 1)]; }

TEST(EvalDriver, SecondEvaluationHitsTheCache) {
  EvalFixture f;
  Position& pos = f.set(MiddleFen);
  whiteEval(pos);
  int first = pos.st().staticEval;
  std::uint64_t noise = pos.noiseState;
  pos.st().lazyCount = 7;
  evaluate(pos, -32767, 32767, NoMove);
  EXPECT_EQ(pos.st().staticEval, first);
  EXPECT_EQ(pos.st().lazyCount, 0);
  EXPECT_EQ(pos.noiseState, noise) << "a cache hit is not a full evaluation";

  // A stored word whose key differs makes it a miss (the table below reads hits).
  cacheSlot(pos) = ((pos.st().key ^ 0x10000) & ~std::uint64_t(0xFFFF)) | 77;
  evaluate(pos, -32767, 32767, NoMove);
  EXPECT_EQ(pos.st().staticEval, first);
}

TEST(EvalDriver, DecisiveOnlyFromTheCache) {
  EvalFixture f;
  Position& pos = f.set(MiddleFen);
  const struct {
    int stored;
    int decisive;
  } cases[] = {{15001, 1}, {-15001, 1}, {15000, 0}, {-15000, 0}, {0, 0}};
  for (const auto& c : cases) {
    cacheSlot(pos) = (pos.st().key & ~std::uint64_t(0xFFFF)) | std::uint16_t(std::int16_t(c.stored));
    evaluate(pos, -32767, 32767, NoMove);
    EXPECT_EQ(pos.st().staticEval, c.stored);
    EXPECT_EQ(pos.st().decisiveEval, c.decisive) << c.stored;
  }
  // A fresh score beyond 15000 is not flagged.
  EngineGlobals saved = Engine;
  Engine.materialWeight = 4000;
  Position& up = f.set("4k3/8/8/8/8/8/8/R3K3 w - - 0 1");
  whiteEval(up);
  EXPECT_GT(up.st().staticEval, DecisiveEval);
  EXPECT_EQ(up.st().decisiveEval, 0);
  Engine = saved;
}

// The mover's view of the lazy estimate after m, found by forcing the lazy path.
int lazyView(Position& pos, Move m) {
  forgetCached(pos);
  evaluate(pos, 32767, 32767, m);
  EXPECT_GT(pos.st().lazyCount, 0);
  return -pos.st().staticEval;
}

bool lazyTaken(Position& pos, int lower, int upper, Move m) {
  forgetCached(pos);
  evaluate(pos, lower, upper, m);
  return pos.st().lazyCount != 0;
}

TEST(EvalDriver, LazyEstimateOnlyOutsideTheWidenedWindow) {
  EvalFixture f;
  for (const char* fen : {StartFen, MiddleFen}) {
    Position& pos = f.set(fen);
    Move m = findMove(pos, std::string(fen) == StartFen ? "e2e4" : "c3d5");
    makeMoveAny(pos, m);
    int v = lazyView(pos, m);
    EXPECT_FALSE(lazyTaken(pos, v, 32767, m)) << "exactly on lower is not lazy";
    EXPECT_TRUE(lazyTaken(pos, v + 1, 32767, m));
    EXPECT_FALSE(lazyTaken(pos, -32767, v, m)) << "exactly on upper is not lazy";
    EXPECT_TRUE(lazyTaken(pos, -32767, v - 1, m));
    EXPECT_EQ(pos.st().lazyCount, 1);

    // Each lazy step in a row widens the margin by 16.
    pos.previous().lazyCount = 2;
    EXPECT_FALSE(lazyTaken(pos, v + 32, 32767, m));
    EXPECT_TRUE(lazyTaken(pos, v + 33, 32767, m));
    EXPECT_EQ(pos.st().lazyCount, 3);
    pos.previous().lazyCount = 0;
  }
}

TEST(EvalDriver, LazyEstimateForbiddenBySpecialMaterial) {
  EvalFixture f;
  const char* fens[] = {
      "8/8/4k3/8/8/8/8/R3K3 w - - 0 1",      // rook against a bare king: special ending rules
      "8/8/4k3/8/8/8/4P3/3NK3 w - - 0 1",    // one knight and one pawn: minor-piece draw test
  };
  for (const char* fen : fens) {
    Position& pos = f.set(fen);
    Move m = findMove(pos, "e1f2");
    makeMoveAny(pos, m);
    EXPECT_FALSE(lazyTaken(pos, 32767, 32767, m)) << fen;
  }
}

TEST(EvalDriver, CapturesAndNullMovesLeaveTheGainTable) {
  EvalFixture f;
  std::vector<std::int16_t> before(GainTable, GainTable + 16 * 4096);
  Position& pos = f.set("r1bqkbnr/pppp1ppp/2n5/4p3/3PP3/5N2/PPP2PPP/RNBQKB1R b KQkq - 0 3");
  whiteEval(pos);
  Move capture = findMove(pos, "e5d4");
  makeMoveAny(pos, capture);
  whiteEval(pos);
  forgetCached(pos);
  evaluate(pos, -32767, 32767, capture);
  unmakeMove(pos, capture);
  makeNullMove(pos);
  forgetCached(pos);
  evaluate(pos, -32767, 32767, NoMove);
  unmakeNullMove(pos);
  EXPECT_TRUE(std::equal(before.begin(), before.end(), GainTable));

  // A quiet move after an exact evaluation does write its cell.
  Move quiet = findMove(pos, "g8f6");
  int cell = gainCell(BlackKnight, quiet);
  GainTable[cell] = -30000;
  makeMoveAny(pos, quiet);
  forgetCached(pos);
  evaluate(pos, -32767, 32767, quiet);
  int gain = pos.previous().positionalEval - pos.st().positionalEval;
  EXPECT_EQ(GainTable[cell], gain);
  // A smaller gain only lets the cell decay by one.
  GainTable[cell] = std::int16_t(gain + 50);
  forgetCached(pos);
  evaluate(pos, -32767, 32767, quiet);
  EXPECT_EQ(GainTable[cell], gain + 49);
  unmakeMove(pos, quiet);
  clearGainTable();
}

TEST(EvalDriver, PawnTableContentsDoNotChangeTheScore) {
  EvalFixture f;
  for (const char* fen : {MiddleFen, "8/5pk1/6p1/3P4/8/5PK1/8/8 w - - 0 1", "4k3/2p5/8/1P6/8/8/5N2/4K3 b - - 0 1"}) {
    Position& pos = f.set(fen);
    int a = whiteEval(pos);
    clearPawnTable();
    EXPECT_EQ(whiteEval(pos), a) << fen;
    resizePawnTable(0);
    EXPECT_EQ(whiteEval(pos), a) << fen;
  }
  resizePawnTable(1);
}

TEST(EvalDriver, PawnEndingsGoToThePawnEvaluator) {
  EvalFixture f;
  Position& pos = f.set("8/5pk1/6p1/3P4/8/5PK1/8/8 w - - 0 1");
  whiteEval(pos);
  EXPECT_EQ(pos.st().lazyCount, 1);
  EXPECT_EQ(pos.st().positionalEval, 0);
  // And the score went into the cache.
  EXPECT_EQ(std::int16_t(std::uint16_t(cacheSlot(pos))), pos.st().staticEval);
}

TEST(EvalDriver, UnusualMaterialFallsBackAndClearsItsFlag) {
  EvalFixture f;
  Position& pos = f.set("4k3/8/8/8/8/8/1r6/QQ2K3 b - - 0 1");
  ASSERT_TRUE(pos.st().materialKey & UnusualMaterial);
  whiteEval(pos);
  EXPECT_EQ(pos.st().evalFlags, FlagWhitePieces | FlagBlackPieces);
  EXPECT_GT(-pos.st().staticEval, 1000);
  Move m = findMove(pos, "b2b1");
  makeMoveAny(pos, m);
  ASSERT_TRUE(pos.st().materialKey & UnusualMaterial);
  forgetCached(pos);
  evaluate(pos, -32767, 32767, m);
  EXPECT_FALSE(pos.st().materialKey & UnusualMaterial);
}

TEST(EvalDriver, NoiseGeneratorAdvancesOnEveryFullEvaluation) {
  EvalFixture f;
  Position& pos = f.set(MiddleFen);
  seedEvaluationNoise(pos);
  std::uint64_t state = pos.noiseState;
  int quiet = whiteEval(pos);
  EXPECT_NE(pos.noiseState, state);

  EngineGlobals saved = Engine;
  Engine.noiseTerms = 3;
  Engine.noiseBits = 2;
  bool differs = false;
  for (int i = 0; i < 20; ++i) {
    int noisy = whiteEval(pos);
    EXPECT_LE(std::abs(noisy - quiet), 9);
    differs |= noisy != quiet;
  }
  EXPECT_TRUE(differs);
  Engine = saved;
}

// The attack summary and the check-move sets are left on every exit: a full evaluation, then a
// cache hit on a fresh state entry. First White in check from the b4 bishop, with e5 attacked by d4
// and not defended; then the e4 knight checks from d6 or f6 and, moving anywhere, uncovers the e1
// rook, while the d3 bishop gives no check but is hit by c4.
TEST(EvalDriver, AttackSummaryAndCheckSetsOnEveryExit) {
  EvalFixture f;
  const struct {
    const char* fen;
    Bitboard whiteKingAttackers, attacked, exchangeExclusion, exclusionShown, checkCandidates, quietExemptions;
  } cases[] = {
      {"rnbqk1nr/pppp1ppp/8/4p3/1b1P4/8/PPP1PPPP/RNBQKBNR w KQkq - 1 3", bit(B4), bit(E5), bit(D4), bit(D4), 0, 0},
      {"4k3/8/8/8/2p1N3/3B4/P7/4R1K1 w - - 0 1", 0, 0, bit(A2) | bit(G1), ~Bitboard(0), bit(E4), bit(E4) | bit(D3)},
  };
  for (const auto& c : cases)
    for (bool cached : {false, true}) {
      Position& pos = f.set(c.fen);
      if (!cached) forgetCached(pos);
      evaluate(pos, -32767, 32767, NoMove);
      const StateEntry& st = pos.st();
      SCOPED_TRACE(std::string(c.fen) + (cached ? " cached" : ""));
      EXPECT_EQ(st.whiteKingAttackers, c.whiteKingAttackers);
      EXPECT_EQ(st.blackKingAttackers, 0u);
      EXPECT_EQ(st.attackedByBlack & bit(E1), c.whiteKingAttackers ? bit(E1) : 0);
      EXPECT_EQ(st.attackedByWhite & c.attacked, c.attacked);
      EXPECT_EQ(st.pawnThreats & c.attacked, c.attacked);
      EXPECT_EQ(st.exchangeExclusion & c.exclusionShown, c.exchangeExclusion);
      EXPECT_EQ(st.checkCandidates, c.checkCandidates);
      EXPECT_EQ(st.quietExemptions, c.quietExemptions);
      EXPECT_EQ(st.pinned, 0u);
    }
}

}  // namespace
}  // namespace tavrin::test

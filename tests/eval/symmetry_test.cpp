// Colour symmetry of the evaluation over the perft suite and over random games. Black's
// piece-square table is White's turned by half a turn, so the vertical mirror is compared with the
// piece-square sum left out, and the half-turn (without castling) with everything in.
#include <random>

#include "eval_test_support.h"

namespace tavrin::test {
namespace {

// Positions along seeded random games from the suite positions.
std::vector<std::string> randomGameFens(int games, int plies) {
  std::vector<std::string> fens;
  const std::vector<EpdLine> starts = readPerftEpd();
  std::mt19937_64 rng(20261122);
  EvalFixture f;
  for (int g = 0; g < games; ++g) {
    Position& pos = f.set(starts[std::size_t(g) % starts.size()].fen);
    for (int ply = 0; ply < plies; ++ply) {
      MoveWord list[MaxMoves];
      MoveWord* end = generateLegalMoves(pos, list);
      if (end == list || pos.state - pos.stateStack > 200) break;
      makeMoveAny(pos, Move(list[rng() % std::size_t(end - list)]));
      fens.push_back(toFen(pos));
    }
  }
  return fens;
}

void expectSymmetric(const std::string& fen) {
  EvalFixture a, b;
  Position& p = a.set(fen);
  std::string mirror = mirrorFen(fen);
  Position& m = b.set(mirror);
  p.st().psqScore = 0;
  m.st().psqScore = 0;
  ASSERT_EQ(whiteEval(p), -whiteEval(m)) << fen << "\nmirror " << mirror;
  expectHalfTurnSymmetric(fen);
}

TEST(EvalSymmetry, SuitePositions) {
  const std::vector<EpdLine> suite = readPerftEpd();
  ASSERT_GT(suite.size(), 100u);
  for (const EpdLine& line : suite) expectSymmetric(line.fen);
}

TEST(EvalSymmetry, RandomGamePositions) {
  const int games = scaled(60, 6);
  const std::vector<std::string> fens = randomGameFens(games, 120);
  EXPECT_GT(int(fens.size()), games * 20);
  for (const std::string& fen : fens) expectSymmetric(fen);
}

}  // namespace
}  // namespace tavrin::test

// Colour symmetry of the evaluation over the perft suite and over random games. The piece-square
// table is turned by half a turn for Black by design, so the vertical mirror is compared with the
// piece-square sum left out, and the half-turn (without castling) with everything in.
#include <fstream>
#include <random>

#include "eval_test_support.h"

namespace tavrin::test {
namespace {

std::vector<std::string> suiteFens() {
  std::vector<std::string> fens;
  std::ifstream in(std::string(TAVRIN_DATA_DIR) + "/perft.epd");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    fens.push_back(line.substr(0, line.find(';')));
  }
  return fens;
}

// Positions along seeded random games from the suite positions.
std::vector<std::string> randomGameFens(int games, int plies) {
  std::vector<std::string> fens;
  std::vector<std::string> starts = suiteFens();
  std::mt19937_64 rng(20261122);
  EvalFixture f;
  for (int g = 0; g < games; ++g) {
    Position& pos = f.set(starts[std::size_t(g) % starts.size()]);
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

struct SymmetryCounts {
  int checked = 0;
};

void expectSymmetric(const std::string& fen, SymmetryCounts& counts) {
  EvalFixture a, b;
  Position& p = a.set(fen);
  std::string mirror = mirrorFen(fen);
  Position& m = b.set(mirror);
  p.st().psqScore = 0;
  m.st().psqScore = 0;
  ASSERT_EQ(whiteEval(p), -whiteEval(m)) << fen << "\nmirror " << mirror;

  std::string noCastle = splitFields(fen)[0] + " " + splitFields(fen)[1] + " - " + splitFields(fen)[3] + " 0 1";
  std::string turned = halfTurn(fen);
  Position& q = a.set(noCastle);
  Position& t = b.set(turned);
  ASSERT_EQ(whiteEval(q), -whiteEval(t)) << noCastle << "\nturned " << turned;
  counts.checked++;
}

TEST(EvalSymmetry, SuitePositions) {
  SymmetryCounts counts;
  for (const std::string& fen : suiteFens()) expectSymmetric(fen, counts);
  EXPECT_GT(counts.checked, 0);
}

TEST(EvalSymmetry, RandomGamePositions) {
#ifdef TAVRIN_SANITIZED
  const int games = 6;
#else
  const int games = 60;
#endif
  SymmetryCounts counts;
  for (const std::string& fen : randomGameFens(games, 120)) expectSymmetric(fen, counts);
  EXPECT_GT(counts.checked, games * 20);
}

}  // namespace
}  // namespace tavrin::test

// Colour symmetry where a static test does not look: the positions a real search meets deep in its
// tree. (Whole searches of a position and its half-turn do not count the same nodes: moves with
// equal sort keys are ordered by their squares, and the hash tables place the two differently.)
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "board/make_move.h"
#include "tests/eval/eval_test_support.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

// The input poll, re-armed to come every SampleGap white moves, notes the position it is called in.
constexpr std::uint64_t SampleGap = 61;
std::vector<std::string> Sampled;

void samplePosition(Position& pos) {
  Sampled.push_back(toFen(pos));
  PollCounter = (PollCounter & ~PollPhaseBits) + PollPeriod - SampleGap;
}

std::vector<std::string> positionsSearched(int positions, int depth) {
  initEngineForTests();
  void (*const poll)(Position&) = InputPoll;
  InputPoll = samplePosition;
  PollCounter = PollPeriod - SampleGap;
  Sampled.clear();
  for (int i = 0; i < positions && i < BenchPositionCount; ++i) searchFen(BenchPositions[i], depth);
  InputPoll = poll;
  return Sampled;
}

// Every bench position searched, the positions of its tree sampled: each evaluates as its
// half-turn. Search trees reach what random games rarely do (a rook hemmed in on its king's file,
// pieces pinned against a castled king, blocked pawn chains).
TEST(SearchSymmetry, PositionsOfSearchTreesEvaluateAsTheirHalfTurns) {
  const std::vector<std::string> fens = positionsSearched(BenchPositionCount, scaled(6, 4));
  EXPECT_GT(fens.size(), std::size_t(scaled(1000, 50)));
  for (const std::string& fen : fens) expectHalfTurnSymmetric(fen);
}

}  // namespace
}  // namespace tavrin::test

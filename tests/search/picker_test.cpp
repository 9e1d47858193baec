// The staged move picker and the node family's draw and mate-distance returns.
#include <algorithm>
#include <vector>

#include "search/move_picker.h"
#include "search/node.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

Position& setUp(const char* fen) {
  initEngineForTests();
  Position& pos = SearchRecords[0];
  EXPECT_TRUE(setFromFen(pos, fen));
  evaluateFull(pos);
  return pos;
}

// Every move the picker hands out, with the stage it was handed out from.
std::vector<std::pair<Move, int>> drain(Position& pos, MovePicker& mp) {
  std::vector<std::pair<Move, int>> out;
  while (MoveWord w = pos.sideToMove == White ? nextMove<White>(pos, mp) : nextMove<Black>(pos, mp))
    out.emplace_back(moveOf(w), mp.stage);
  return out;
}

int indexOf(const std::vector<std::pair<Move, int>>& v, Move m) {
  for (std::size_t i = 0; i < v.size(); ++i)
    if (v[i].first == m) return int(i);
  return -1;
}

// Qxd7+ takes a pawn defended by queen and king: the only capture, and a losing one.
constexpr const char* Middlegame = "3qk3/3p4/8/8/3Q4/8/4P3/4K1N1 w - - 0 1";

TEST(MovePicker, NormalSequenceHandsOutEveryMoveOnceInStageOrder) {
  Position& pos = setUp(Middlegame);
  const Move tt = makeMove(G1, F3), killer1 = makeMove(E2, E4), killer2 = makeMove(G1, F3);
  pos.st().killer1 = killer1;
  pos.st().killer2 = killer2;   // also the table move: handed out once only
  MovePicker mp;
  mp.init(StageTtMove, tt);
  auto moves = drain(pos, mp);

  MoveWord legal[MaxMoves];
  MoveWord* end = generateLegalMoves(pos, legal);
  EXPECT_EQ(moves.size(), std::size_t(end - legal));   // no king in check: every move pseudo-legal
  for (MoveWord* p = legal; p < end; ++p) {
    const Move m = moveOf(*p);
    EXPECT_EQ(std::count_if(moves.begin(), moves.end(), [m](auto& x) { return x.first == m; }), 1) << text(m);
  }
  EXPECT_EQ(moves[0].first, tt);
  EXPECT_EQ(moves[1].first, killer1);   // no capture wins: the killer comes next
  EXPECT_NE(moves[1].second, StageQuiet);
  EXPECT_EQ(moves.back().first, makeMove(D4, D7));
}

TEST(MovePicker, UnplayableTableMoveAndCapturingKillerAreNotHandedOutEarly) {
  Position& pos = setUp("3qk3/3p4/8/8/3Q4/8/8/4K3 w - - 0 1");
  pos.st().killer1 = makeMove(D4, D7);   // a capture here: not a killer
  pos.st().killer2 = makeMove(E1, E2);
  MovePicker mp;
  mp.init(StageTtMove, makeMove(A2, A4));   // no pawn on a2: dropped
  auto moves = drain(pos, mp);
  EXPECT_EQ(indexOf(moves, makeMove(A2, A4)), -1);
  EXPECT_EQ(moves[0].first, makeMove(E1, E2));   // killer 2 first: no capture passes the exchange test
  EXPECT_EQ(moves[0].second, StageKiller2);
  // The losing capture comes after every quiet move.
  EXPECT_EQ(indexOf(moves, makeMove(D4, D7)), int(moves.size()) - 1);
  EXPECT_EQ(moves.back().second, StageLosingCaptures);
}

TEST(MovePicker, ReducedSequenceOnlyCapturesAndChecks) {
  Position& pos = setUp("3qk3/3p4/8/8/3Q4/8/4P3/4K1N1 w - - 0 1");
  MovePicker mp;
  mp.init(StageReducedTtMove, 0, captureTargets<White>(pos));
  auto moves = drain(pos, mp);
  for (auto& [m, stage] : moves) {
    makeMoveWhite(pos, m);
    evaluateFull(pos);
    const bool check = pos.st().blackKingAttackers != 0;
    const bool capture = pos.st().capturedPiece != 0;
    unmakeMoveWhite(pos, m);
    EXPECT_TRUE(check || capture) << text(m);
  }
  EXPECT_NE(indexOf(moves, makeMove(D4, D7)), -1);
}

TEST(NodeRules, DrawsAndMateDistanceBeforeAnything) {
  // White mates in one (Rd8), but the fifty-move counter stands at 100.
  Position& pos = setUp("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 100 80");
  pos.ply = 3;
  pos.st().nullBits = 3;
  EXPECT_EQ(quiesceWhite(pos, 50, 0), 0);
  EXPECT_EQ(shallowSearchWhite(pos, 50, 5), 0);
  EXPECT_EQ(cutSearchWhite(pos, 50, 9), 0);
  EXPECT_EQ(allSearchWhite(pos, 50, 9), 0);
  EXPECT_EQ(pvSearchWhite(pos, -100, 100, 9), 0);
  // Mate-distance pruning: a beta no result at this ply can reach.
  Position& p2 = setUp("6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1");
  p2.ply = 4;
  EXPECT_EQ(cutSearchWhite(p2, 4 - MateScore, 9), 4 - MateScore);
  EXPECT_EQ(shallowSearchWhite(p2, MateScore, 5), MateScore - 1);
}

}  // namespace
}  // namespace tavrin::test

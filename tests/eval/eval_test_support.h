// Shared set-up for the evaluation tests: evaluation tables built once, evaluation with the cache
// out of the way, half-turn rotations of FEN strings.
#pragma once

#include <gtest/gtest.h>

#include <cctype>
#include <new>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/position.h"
#include "common/globals.h"
#include "eval/eval_internal.h"
#include "eval/evaluate.h"
#include "eval/psq_tables.h"
#include "tests/test_support.h"

namespace tavrin::test {

inline void ensureEvalTables() {
  static bool built = false;
  if (built) return;
  ensureBoardTables();
  initEvaluation();
  resizePawnTable(1);
  built = true;
}

// A board fixture whose tables include the evaluation's.
struct EvalFixture : BoardFixture {
  EvalFixture() { ensureEvalTables(); }
};

inline void forgetCached(const Position& pos) {
  EvalCache[pos.st().key & (EvalCacheSize - 1)] = 0;
}

// The full evaluation from White's point of view: no cache hit, no lazy estimate.
inline int whiteEval(Position& pos) {
  forgetCached(pos);
  evaluate(pos, -32767, 32767, NoMove);
  return pos.sideToMove == White ? pos.st().staticEval : -pos.st().staticEval;
}

// The move with the given coordinates in the position (castling and en passant completed).
inline Move findMove(const Position& pos, const std::string& moveText) {
  MoveWord list[MaxMoves];
  for (Move m : movesOf(list, generateLegalMoves(pos, list)))
    if (text(m) == moveText) return m;
  ADD_FAILURE() << "no move " << moveText;
  return NoMove;
}

// Board turned by half a turn (ranks and files reversed), colours and side swapped, no castling.
inline std::string halfTurn(const std::string& fen) {
  std::vector<std::string> f = splitFields(fen);
  std::string board(f[0].rbegin(), f[0].rend());
  std::string ep = f[3];
  if (ep != "-") {
    ep[0] = char('h' - (ep[0] - 'a'));
    ep[1] = char('1' + ('8' - ep[1]));
  }
  return swapCase(board) + " " + (f[1] == "w" ? "b" : "w") + " - " + ep + " 0 1";
}

// The position without castling rights and its half-turn evaluate alike (from each one's White).
inline void expectHalfTurnSymmetric(const std::string& fen) {
  EvalFixture a, b;
  const std::vector<std::string> f = splitFields(fen);
  const std::string noCastle = f[0] + " " + f[1] + " - " + f[3] + " 0 1";
  const std::string turned = halfTurn(fen);
  Position& q = a.set(noCastle);
  Position& t = b.set(turned);
  ASSERT_EQ(whiteEval(q), -whiteEval(t)) << noCastle << "\nturned " << turned;
}

}  // namespace tavrin::test

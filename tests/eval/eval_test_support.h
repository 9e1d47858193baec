// Shared set-up for the evaluation tests: tables built once, positions from FEN, evaluation with
// the cache out of the way, colour mirrors and half-turn rotations of FEN strings.
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
#include "eval/eval_internal.h"
#include "eval/evaluate.h"
#include "eval/psq_tables.h"
#include "uci/globals.h"

namespace tavrin::test {

inline void ensureEvalTables() {
  static bool built = false;
  if (built) return;
  initCaptureKeys();
  initBoardTables();
  initPieceSquareTables();
  initEvaluation();
  resizePawnTable(1);
  built = true;
}

// A Position with its own state stack that does not poll input.
struct EvalFixture {
  Position pos;
  EvalFixture() {
    ensureEvalTables();
    pos.stateStack = nullptr;
    initPosition(pos);
    pos.recordIndex = 1;
  }
  ~EvalFixture() { releasePosition(pos); }
  EvalFixture(const EvalFixture&) = delete;
  EvalFixture& operator=(const EvalFixture&) = delete;

  Position& set(const std::string& fen) {
    EXPECT_TRUE(setFromFen(pos, fen.c_str())) << fen;
    pos.recordIndex = 1;
    return pos;
  }
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
inline Move findMove(const Position& pos, const std::string& text) {
  MoveWord list[MaxMoves];
  MoveWord* end = generateLegalMoves(pos, list);
  for (MoveWord* w = list; w != end; ++w) {
    Move m = Move(*w);
    std::string t;
    t += char('a' + fileOf(moveFrom(m)));
    t += char('1' + rankOf(moveFrom(m)));
    t += char('a' + fileOf(moveTo(m)));
    t += char('1' + rankOf(moveTo(m)));
    if (isPromotion(m)) t += "nbrq"[moveKind(m) - PromoteKnight];
    if (t == text) return m;
  }
  ADD_FAILURE() << "no move " << text;
  return NoMove;
}

inline std::vector<std::string> splitFields(const std::string& fen) {
  std::vector<std::string> fields;
  std::string field;
  for (char c : fen) {
    if (c == ' ') {
      if (!field.empty()) fields.push_back(field), field.clear();
    } else {
      field += c;
    }
  }
  if (!field.empty()) fields.push_back(field);
  return fields;
}

inline std::string swapCase(std::string s) {
  for (char& c : s) c = char(std::islower(static_cast<unsigned char>(c)) ? std::toupper(c) : std::tolower(c));
  return s;
}

// Board flipped top to bottom, colours, side to move, castling rights and en-passant square swapped.
inline std::string verticalMirror(const std::string& fen) {
  std::vector<std::string> f = splitFields(fen);
  std::vector<std::string> ranks{""};
  for (char c : f[0]) c == '/' ? ranks.push_back("") : void(ranks.back() += c);
  std::string board;
  for (auto it = ranks.rbegin(); it != ranks.rend(); ++it) board += (board.empty() ? "" : "/") + swapCase(*it);
  std::string castle = "-";
  if (f[2] != "-") {
    castle.clear();
    for (char c : std::string("KQkq"))
      if (f[2].find(swapCase(std::string(1, c))[0]) != std::string::npos) castle += c;
  }
  std::string ep = f[3];
  if (ep != "-") ep[1] = char('1' + ('8' - ep[1]));
  return board + " " + (f[1] == "w" ? "b" : "w") + " " + castle + " " + ep + " 0 1";
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

}  // namespace tavrin::test

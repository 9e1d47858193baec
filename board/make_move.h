// Making and unmaking moves, the null move, and completing a move from its squares.
#pragma once

#include "board/material.h"
#include "board/position.h"
#include "board/zobrist.h"

namespace tavrin {

// The make and unmake of a colour: `makeMove<Us>(...)` where the colour is known at compile time
// (the search), the named instances where a caller picks by sideToMove.
template <Color Us> void makeMove(Position& pos, Move m);
template <Color Us> void unmakeMove(Position& pos, Move m);

void makeMoveWhite(Position& pos, Move m);
void makeMoveBlack(Position& pos, Move m);
void unmakeMoveWhite(Position& pos, Move m);
void unmakeMoveBlack(Position& pos, Move m);

// Makes a move of the side to move (run-time dispatch; root and protocol layer only).
void makeMoveAny(Position& pos, Move m);
// Takes back the last move: the black twin when White is to move again, else the white one.
void unmakeMove(Position& pos, Move m);
// The make used for moves of the position command: it does not count toward input polling.
void makeRootMove(Position& pos, Move m);

// The keys of the position a move leads to, for early memory requests: exact for ordinary moves
// and captures; what castling, promotions, lost castling rights and new en-passant squares change
// is left out.
struct ChildKeys {
  Key key, pawnKey;
  std::uint32_t materialKey;
};
inline ChildKeys childKeys(const Position& pos, Move m) {
  const StateEntry& st = *pos.state;
  const int from = moveFrom(m), to = moveTo(m);
  const int piece = pos.board[from], captured = pos.board[to];
  const Key delta = Zobrist.pieceSquare[piece][from] ^ Zobrist.pieceSquare[piece][to];
  ChildKeys next{st.key ^ delta ^ Zobrist.side, st.pawnKey, st.materialKey};
  if (st.epSquare) next.key ^= Zobrist.enPassant[st.epSquare & 7];
  if (kindOf(piece) == Pawn || kindOf(piece) == King) next.pawnKey ^= delta;
  if (captured) {
    const Key victim = Zobrist.pieceSquare[captured][to];
    next.key ^= victim;
    if (kindOf(captured) == Pawn) next.pawnKey ^= victim;
    next.materialKey -= MaterialConstant[captured];
  }
  return next;
}

// Passes the turn. Taken back by unmakeNullMove.
void makeNullMove(Position& pos);
void unmakeNullMove(Position& pos);

// Adds the castling or en-passant kind to a move that carries only its squares: a king moving two
// squares castles, a pawn moving onto the en-passant square takes en passant.
Move moveFromSquares(const Position& pos, Move m);

// Global count of white moves made by the main record; every PollPeriod the input poll runs.
extern std::uint64_t PollCounter;
constexpr std::uint64_t PollPeriod = 4096;
constexpr std::uint64_t PollPhaseBits = PollPeriod - 1;   // the counter's place within a period
// The input poll that the count calls: installed by the protocol layer at start-up (until then
// it does nothing).
extern void (*InputPoll)(Position& pos);

}  // namespace tavrin

// Making and unmaking moves, the null move, and completing a move from its squares.
#pragma once

#include "board/position.h"

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

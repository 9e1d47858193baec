// Protocol text of search results: scores, moves, PV info lines and the best-move line.
#pragma once

#include <cstdint>

#include "board/position.h"

namespace tavrin {

// "cp N" or "mate N"; the text lives in a static buffer overwritten by the next call.
const char* scoreText(int score);
// Coordinate text of a move ("e2e4", "a7a8n"; "NULL" for move 0); writes buf and returns it.
char* moveText(Move m, char* buf);

// The principal-variation info line(s) after an iteration or at the finish.
void printPvLine(Position& pos, std::int64_t elapsedMicros, int score);
// "bestmove ... ponder ..." (or "bestmove 0000").
void printBestMove(Position& pos);
// Iteration depth (half-plies) of the last PV line printed in this search.
int lastPrintedDepth();

}  // namespace tavrin

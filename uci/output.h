// Protocol text of search results: scores, moves, PV info lines and the best-move line.
#pragma once

#include <cstddef>
#include <cstdint>

#include "board/position.h"

namespace tavrin {

// "cp N" or "mate N"; the text lives in a static buffer overwritten by the next call.
const char* scoreText(int score);
// Coordinate text of a move ("e2e4", "a7a8n"; "NULL" for move 0); writes buf and returns it.
char* moveText(Move m, char* buf);

// The principal-variation info line(s) after an iteration or at the finish.
void printPvLine(Position& pos, std::int64_t elapsedMicros, int score);
// "bestmove ... ponder ...\n" for the search's best move ("bestmove 0000\n" when there is none or
// the position could not be searched), written into out; printBestMove prints it.
void bestMoveLine(Position& pos, bool playable, char* out, std::size_t size);
void printBestMove(Position& pos, bool playable = true);
// Iteration depth (half-plies) of the last PV line printed or suppressed. The record is kept
// across searches, so a repeat of the last line of the previous search is suppressed too.
int lastPrintedDepth();
// Forgets the last printed line; the engine never does, tests start from a clean record.
void forgetLastPvLine();

// "info depth N" and "info currmove M currmovenumber K" of the root search.
void printInfoDepth(int plies);
void printCurrMove(Move m, int number);

// The principal variation as text (moves separated by blanks, at most 250), walked from the
// move through the PV table and the main table; for tests and tools.
void pvText(Position& pos, Move first, char* out, std::size_t size);

}  // namespace tavrin

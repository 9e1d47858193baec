// The go command: its limits, and the search starter with its finish step.
#pragma once

#include "board/position.h"

namespace tavrin {

// Fills Limits from a go line (starting at "go") for the side to move of pos.
void parseGo(const char* line, const Position& pos);
// Runs the search on a copy of pos and prints the result; returns after "bestmove".
// A go that arrives while an infinite or pondering search waits for "stop" is run by the waiting
// starter after this call returns (searches never nest).
void startSearch(Position& pos);
// True while a finished search waits for "stop" (or "ponderhit") before its best move.
bool searchWaiting();

}  // namespace tavrin

// The periodic check run from inside the search: limits, progress line, waiting input.
#pragma once

#include "board/position.h"

namespace tavrin {

// Called with depth 0 from White's make every 4096 moves of the main record, and with the
// iteration depth in plies from the root search between iterations. May leave the search by
// throwing SearchAborted (through the dispatcher's stop handler).
void periodicCheck(Position& pos, int depth);

// Connects the board and the search to the protocol layer (start-up): the make-move counter's
// input poll, and the root search's reports and poll between iterations.
void connectSearchToProtocol();

}  // namespace tavrin

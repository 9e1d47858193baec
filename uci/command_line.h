// The command line from standard input: read by the command loop, the polling inside a search and
// the waits after an infinite or pondering search, and handed to the dispatcher.
#pragma once

#include "board/position.h"

namespace tavrin {

// Reads one line from standard input and dispatches it with pos. At the end of input a running
// or waiting search is stopped (its best move is printed); otherwise the process ends with exit
// status 0 (output flushed first).
void readCommandLine(Position& pos);
// True when a command line is waiting on standard input (for the polling inside a search).
bool commandLineWaiting();

}  // namespace tavrin

// Program start-up: every step before the command loop.
#pragma once

#include "board/position.h"

namespace tavrin {

// The game position owned by the command interface.
extern Position RootPosition;

// Sets the engine globals, prepares the search records, allocates the hash tables, builds every
// constant table and sets up the start position. Does not print the banner. Safe to call once.
// The developer tool's commands may start with a smaller main table than the engine's default.
void initializeEngine();
void initializeEngine(int tableMegabytes);

}  // namespace tavrin

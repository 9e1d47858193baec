// The transposition table and the small table of exact principal-variation results.
#pragma once

#include <cstdint>

#include "board/types.h"

namespace tavrin {

// (Re)allocates the main table with the given megabytes and clears it; returns the megabytes.
int resizeTable(int megabytes);
// Clears the main table (every age set to 128) and the PV table.
void clearTables();
// Advances the search generation; once per go.
void newSearch();

}  // namespace tavrin

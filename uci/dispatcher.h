// The command dispatcher: one input line in, the matching command carried out.
#pragma once

#include "board/position.h"

namespace tavrin {

// The author credit of the banner and of the "id author" line.
inline constexpr const char* AuthorCredit = "Tavrin developers";

// Acts on one input line (without its newline). pos is RootPosition, or the search's own record
// when called from the polling inside a search (no command that uses it is acted on then).
void dispatchCommand(Position& pos, const char* line);
// Sets up the start position and clears every table that a game leaves behind.
void startNewGame(Position& pos);
// The stop handler of "stop" and "ucinewgame" (and of the end of input): sets stopRequested and,
// while a search runs, leaves it by throwing SearchAborted.
void stopSearch();
// A spent limit (depth, time, nodes) leaves a running search the same way but is no "stop": an
// infinite or pondering search still holds its best move until one arrives.
void stopSearchAtLimit();

}  // namespace tavrin

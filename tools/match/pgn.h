// PGN text of a finished game.
#pragma once

#include <string>

#include "tools/match/game.h"

namespace tavrin::match {

struct PgnContext {
  std::string event = "Tavrin match";
  std::string site = "?";
};

std::string formatPgn(const GameRecord& game, const PgnContext& context);
// The move comment of an engine move: "{+0.25/12 0.105s}" without braces.
std::string moveComment(const MoveRecord& move);

}  // namespace tavrin::match

// Perft: counting the leaves of the legal-move tree, for the tool and the tests.
#pragma once

#include <cstdint>

#include "board/position.h"

namespace tavrin {

// Leaves of the legal-move tree depth plies deep. With bulk, the last ply is counted from the
// length of the legal list instead of being made and unmade.
std::uint64_t perft(Position& pos, int depth, bool bulk);

}  // namespace tavrin

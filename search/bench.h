// A fixed search of a list of positions from cleared tables: the engine's node-count signature.
#pragma once

#include <cstdint>

namespace tavrin {

// The bench's own table size: the signature does not depend on the Hash option.
constexpr int BenchHashMegabytes = 16;

struct BenchResult {
  std::uint64_t nodes = 0;
  std::int64_t micros = 0;
};

// Positions of the bench list.
extern const char* const BenchPositions[];
extern const int BenchPositionCount;

// Searches one FEN to the given depth (plies) from cleared tables, silently. Returns false when
// the FEN is not playable. bestMove receives the move found.
bool benchSearch(const char* fen, int depth, std::uint64_t& nodes, std::uint16_t& bestMove);

// Runs the whole list; perPosition (when given) is called after each position.
BenchResult runBench(int depth, void (*perPosition)(int index, const char* fen, std::uint64_t nodes,
                                                    std::uint16_t bestMove) = nullptr);

}  // namespace tavrin

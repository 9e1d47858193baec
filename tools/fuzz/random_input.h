// Random material for fuzz sessions: a seeded generator, positions from random legal games and
// random set-ups, broken FENs, and words that can never be read as a legal move.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/match/rules.h"

namespace tavrin::fuzz {

// A small generator with fixed arithmetic, so that a seed means the same session everywhere.
class Rng {
 public:
  explicit Rng(std::uint64_t seed) : state_(seed) {}
  std::uint64_t next();
  // Uniform in [lo, hi].
  std::int64_t range(std::int64_t lo, std::int64_t hi);
  bool chance(double p);
  template <typename T>
  const T& pick(const std::vector<T>& items) {
    return items[std::size_t(range(0, std::int64_t(items.size()) - 1))];
  }

 private:
  std::uint64_t state_;
};

// The generator of one session: sessions of one seed are independent of each other.
std::uint64_t sessionSeed(std::uint64_t seed, std::uint64_t session);

// Plays up to `plies` random legal moves on the board (fewer when the game reaches mate or
// stalemate) and returns their text. With `seekMate`, a mating move is preferred when one exists.
std::vector<std::string> playRandomMoves(Rng& rng, match::GameBoard& board, int plies, bool seekMate);

// A legal position with few men placed at random, pawns often one step from promotion.
std::string randomSetupFen(Rng& rng);
// A legal position in which the side to move has no legal move (mate or stalemate).
std::string terminalFen(Rng& rng);
// A legal position with the side to move changed so that the side not to move is in check, or
// an empty string when the position gives no such case.
std::string sideNotToMoveInCheckFen(match::GameBoard& board);

// The FEN with a few random corruptions (characters, fields, ranks or counters).
std::string brokenFen(Rng& rng, const std::string& fen);

// A word that no reading can take for a legal move of the board: its first four characters are
// not the squares of a legal move, and it is no keyword of the go command.
std::string junkWord(Rng& rng, match::GameBoard& board);
// A coordinate move text that is well formed but not legal on the board.
std::string illegalMoveText(Rng& rng, match::GameBoard& board);
// A line that is no command, nor the beginning of one, of the given length at least.
std::string junkLine(Rng& rng, std::size_t length);

}  // namespace tavrin::fuzz

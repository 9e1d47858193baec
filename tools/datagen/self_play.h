// Self-play for training data: games of the engine against itself inside this process, every move
// a node-limited search, and the quiet positions of each game with their search scores.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/match/game.h"

namespace tavrin::datagen {

// Adjudication and the choice of positions. A score at or beyond DecisiveScore (centipawns, mate
// scores included) is decisive: such positions are not written, and a game whose scores stay
// decisive for the same side for WinPlies plies in a row is given to that side.
constexpr int DecisiveScore = 1000;
constexpr int WinPlies = 6;
// From ply DrawFromPly on, DrawPlies plies in a row within DrawScore of equality end in a draw.
constexpr int DrawFromPly = 80;
constexpr int DrawPlies = 10;
constexpr int DrawScore = 10;
// A game still running after this many plies is stopped and counted as a draw.
constexpr int LengthLimitPlies = 600;

struct SelfPlaySettings {
  std::int64_t nodes = 8000;   // node budget of every move's search
  int randomPlies = 4;         // uniformly random moves after the opening
  int skipPlies = 12;          // plies from the opening position on which nothing is written
};

// A written position: its FEN and the search score from White's point of view (centipawns).
struct KeptPosition {
  std::string fen;
  int score;
};

enum class GameEnd { Rules, Adjudicated, Length, Dropped };

struct SelfPlayGame {
  match::GameResult result = match::GameResult::None;
  GameEnd end = GameEnd::Dropped;   // Dropped: the random plies ended the game before a search
  int plies = 0;
  int searches = 0;
  std::uint64_t nodes = 0;   // of all searches of the game
  std::vector<KeptPosition> positions;
};

// Prepares the engine for self-play: start-up, a transposition table of the given size, silent
// searches and the node-budget stop. Call once before playGame.
void prepareSelfPlay(int hashMegabytes);

// Plays one game from the opening, the random plies drawn from gameSeed. The engine's tables are
// cleared first, so that a game depends only on its opening, its seed and the settings.
SelfPlayGame playGame(const match::Opening& opening, std::uint64_t gameSeed, const SelfPlaySettings& settings);

// 1.0, 0.5 or 0.0: the result from White's point of view as written in the data.
const char* resultValue(match::GameResult r);

// One line of the data: "FEN | result | score".
std::string dataLine(const KeptPosition& p, match::GameResult r);

}  // namespace tavrin::datagen

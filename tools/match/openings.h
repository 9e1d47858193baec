// Opening sets: positions from EPD files or move lines from PGN files, and their order.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tools/match/game.h"

namespace tavrin::match {

struct OpeningSettings {
  std::string file;
  std::string format;       // "epd" or "pgn"; empty: from the file name
  bool random = false;
  std::uint64_t seed = 0;
  int plies = 0;            // 0: every move of a PGN line
};

// Reads and checks the openings; lines that are not valid positions or moves are skipped and
// counted. False (with a message) when the file cannot be read or holds no opening.
bool readOpenings(const OpeningSettings& s, std::vector<Opening>& out, std::string& message);

// Readers of text already in memory (for the tests).
std::vector<Opening> parseEpd(const std::string& text, int& skipped);
std::vector<Opening> parsePgn(const std::string& text, int plies, int& skipped);

// The order in which the openings are used: sequential, or shuffled from the seed.
std::vector<std::size_t> openingOrder(std::size_t count, bool random, std::uint64_t seed);

}  // namespace tavrin::match

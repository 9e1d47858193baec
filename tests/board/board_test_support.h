// Shared set-up for the board tests: tables built once, positions from FEN, colour mirrors.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <string>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "board/position.h"
#include "eval/psq_tables.h"

namespace tavrin::test {

inline void ensureBoardTables() {
  static bool built = false;
  if (built) return;
  initCaptureKeys();
  initBoardTables();
  initPieceSquareTables();
  built = true;
}

// A Position with its own state stack that does not poll input.
struct BoardFixture {
  Position pos;
  BoardFixture() {
    ensureBoardTables();
    pos.stateStack = nullptr;
    initPosition(pos);
    pos.recordIndex = 1;
  }
  ~BoardFixture() { releasePosition(pos); }
  BoardFixture(const BoardFixture&) = delete;
  BoardFixture& operator=(const BoardFixture&) = delete;

  Position& set(const std::string& fen) {
    EXPECT_TRUE(setFromFen(pos, fen.c_str())) << fen;
    pos.recordIndex = 1;
    return pos;
  }
};

// The colour mirror of a FEN: board flipped top to bottom, colours, side, rights and en-passant
// square swapped.
inline std::string mirrorFen(const std::string& fen) {
  std::vector<std::string> fields;
  std::string field;
  for (char c : fen) {
    if (c == ' ') {
      if (!field.empty()) fields.push_back(field), field.clear();
    } else {
      field += c;
    }
  }
  if (!field.empty()) fields.push_back(field);
  auto swapCase = [](std::string s) {
    for (char& c : s) c = char(std::islower(static_cast<unsigned char>(c)) ? std::toupper(c) : std::tolower(c));
    return s;
  };
  std::vector<std::string> ranks;
  std::string rank;
  for (char c : fields[0]) {
    if (c == '/') ranks.push_back(rank), rank.clear();
    else rank += c;
  }
  ranks.push_back(rank);
  std::string board;
  for (auto it = ranks.rbegin(); it != ranks.rend(); ++it) board += (board.empty() ? "" : "/") + swapCase(*it);
  std::string side = fields[1] == "w" ? "b" : "w";
  std::string castle = "-";
  if (fields[2] != "-") {
    castle.clear();
    for (char c : std::string("KQkq"))
      if (fields[2].find(char(std::islower(c) ? std::toupper(c) : std::tolower(c))) != std::string::npos) castle += c;
  }
  std::string ep = fields[3];
  if (ep != "-") ep[1] = char('1' + ('8' - ep[1]));
  std::string rest;
  for (std::size_t i = 4; i < fields.size(); ++i) rest += " " + fields[i];
  return board + " " + side + " " + castle + " " + ep + rest;
}

struct EpdLine {
  std::string fen;
  std::vector<std::pair<int, std::uint64_t>> counts;  // depth, leaves
};

inline std::vector<EpdLine> readPerftEpd() {
  std::vector<EpdLine> lines;
  std::ifstream in(std::string(TAVRIN_DATA_DIR) + "/perft.epd");
  std::string line;
  while (std::getline(in, line)) {
    if (line.empty() || line[0] == '#') continue;
    EpdLine e;
    std::size_t semi = line.find(';');
    e.fen = line.substr(0, semi);
    for (std::size_t at = semi; at != std::string::npos; at = line.find(';', at + 1)) {
      int depth;
      unsigned long long n;
      if (std::sscanf(line.c_str() + at + 1, " D%d %llu", &depth, &n) == 2) e.counts.push_back({depth, n});
    }
    lines.push_back(e);
  }
  return lines;
}

inline std::vector<Move> movesOf(const MoveWord* begin, const MoveWord* end) {
  std::vector<Move> moves;
  for (const MoveWord* w = begin; w != end; ++w) moves.push_back(moveOf(*w));
  return moves;
}

}  // namespace tavrin::test

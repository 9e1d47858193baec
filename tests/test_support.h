// Set-up shared by the test folders: workloads scaled for the sanitizer build, board tables built
// once, positions with their own state stack, FEN colour mirrors, the perft suite, move lists.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/movegen.h"
#include "board/position.h"
#include "eval/evaluate.h"
#include "eval/psq_tables.h"
#include "uci/output.h"

namespace tavrin::test {

// The size of a heavy test's workload: the full one in the optimised build, the reduced one
// under the sanitizers, which run every test far slower.
template <typename N>
constexpr N scaled(N full, N sanitized) {
#ifdef TAVRIN_SANITIZED
  (void)full;
  return sanitized;
#else
  (void)sanitized;
  return full;
#endif
}

inline void ensureBoardTables() {
  static bool built = false;
  if (built) return;
  initCaptureKeys();
  initBoardTables();
  initPieceSquareTables();
  EvaluatePosition = evaluateFull;
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

// The blank-separated fields of a FEN.
inline std::vector<std::string> splitFields(const std::string& fen) {
  std::istringstream in(fen);
  return {std::istream_iterator<std::string>(in), std::istream_iterator<std::string>()};
}

inline std::string swapCase(std::string s) {
  for (char& c : s) c = char(std::islower(static_cast<unsigned char>(c)) ? std::toupper(c) : std::tolower(c));
  return s;
}

// The colour mirror of a FEN: board flipped top to bottom, colours, side, rights and en-passant
// square swapped; the move counters kept.
inline std::string mirrorFen(const std::string& fen) {
  std::vector<std::string> f = splitFields(fen);
  std::string slashes = f[0];
  std::replace(slashes.begin(), slashes.end(), '/', ' ');
  const std::vector<std::string> ranks = splitFields(slashes);
  std::string board, castle;
  for (auto it = ranks.rbegin(); it != ranks.rend(); ++it) {
    if (!board.empty()) board += '/';
    board += swapCase(*it);
  }
  for (char c : std::string("KQkq"))
    if (f[2].find(swapCase(std::string(1, c))) != std::string::npos) castle += c;
  if (f[3] != "-") f[3][1] = char('1' + ('8' - f[3][1]));
  f[0] = board;
  f[1][0] = f[1] == "w" ? 'b' : 'w';
  f[2] = castle.empty() ? std::string("-") : castle;
  std::string out = f[0];
  for (std::size_t i = 1; i < f.size(); ++i) out.append(1, ' ').append(f[i]);
  return out;
}

struct EpdLine {
  std::string fen;
  std::vector<std::pair<int, std::uint64_t>> counts;  // depth, leaves
};

// The perft suite: each line a FEN followed by ";D<depth> <leaves>" fields.
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

// Everything the built tool writes (standard output and error) for the given arguments.
inline std::string toolOutput(const std::string& arguments) {
  const std::string command = std::string(TAVRIN_TOOL_PATH) + " " + arguments + " 2>&1";
  std::string out;
  if (FILE* pipe = popen(command.c_str(), "r")) {
    char buffer[4096];
    while (std::size_t n = std::fread(buffer, 1, sizeof buffer, pipe)) out.append(buffer, n);
    pclose(pipe);
  }
  return out;
}

// Start positions for random games: the opening, and positions rich in castling, en passant,
// promotions and checks.
inline const char* const RandomGameStarts[] = {
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
};

inline std::vector<Move> movesOf(const MoveWord* begin, const MoveWord* end) {
  std::vector<Move> moves;
  for (const MoveWord* w = begin; w != end; ++w) moves.push_back(moveOf(*w));
  return moves;
}

// A move in coordinate notation, as the engine prints it.
inline std::string text(Move m) {
  char buf[8];
  return moveText(m, buf);
}

}  // namespace tavrin::test

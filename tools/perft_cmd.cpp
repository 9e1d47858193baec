// tavrin-tool perft: move-generator counts for one position or a whole EPD suite.
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>

#include "board/attacks.h"
#include "board/fen.h"
#include "board/make_move.h"
#include "board/movegen.h"
#include "board/perft.h"
#include "eval/psq_tables.h"
#include "tools/commands.h"
#include "uci/output.h"

namespace tavrin::tool {

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

void printRate(std::uint64_t nodes, double seconds) {
  const double nps = seconds > 0 ? double(nodes) / seconds : 0.0;
  std::printf("Nodes per second: %.0f (%" PRIu64 " nodes in %.3f s)\n", nps, nodes, seconds);
}

Position& toolPosition() {
  static Position pos;
  static bool ready = false;
  if (!ready) {
    initBoardTables();
    initCaptureKeys();
    initPieceSquareTables();
    initPosition(pos);
    pos.recordIndex = 1;  // not the main search record: makes never poll the input
    ready = true;
  }
  return pos;
}

bool readDepth(const char* text, int& depth) {
  char* end = nullptr;
  long value = std::strtol(text, &end, 10);
  if (end == text || *end || value < 0 || value > 20) return false;
  depth = int(value);
  return true;
}

int perftOne(const char* fen, int depth, bool bulk) {
  Position& pos = toolPosition();
  if (!setFromFen(pos, fen)) {
    std::fprintf(stderr, "perft: bad FEN: %s\n", fen);
    return 1;
  }
  pos.recordIndex = 1;
  const auto start = Clock::now();
  std::uint64_t total = 0;
  if (depth == 0) {
    total = 1;
  } else {
    MoveWord list[MaxMoves];
    MoveWord* end = generateLegalMoves(pos, list);
    for (MoveWord* w = list; w != end; ++w) {
      const Move m = moveOf(*w);
      makeMoveAny(pos, m);
      const std::uint64_t n = perft(pos, depth - 1, bulk);
      unmakeMove(pos, m);
      char text[8];
      std::printf("%s: %" PRIu64 "\n", moveText(m, text), n);
      total += n;
    }
  }
  const double seconds = secondsSince(start);
  std::printf("Total: %" PRIu64 "\n", total);
  printRate(total, seconds);
  return 0;
}

int perftEpd(const char* path, int maxDepth, bool bulk) {
  std::ifstream in(path);
  if (!in) {
    std::fprintf(stderr, "perft: cannot read %s\n", path);
    return 1;
  }
  Position& pos = toolPosition();
  int passed = 0, failed = 0, lineNumber = 0;
  std::uint64_t nodes = 0;
  const auto start = Clock::now();
  std::string line;
  while (std::getline(in, line)) {
    ++lineNumber;
    if (line.empty() || line[0] == '#' || line.find_first_not_of(" \t\r") == std::string::npos) continue;
    const std::size_t semi = line.find(';');
    const std::string fen = line.substr(0, semi);
    if (!setFromFen(pos, fen.c_str())) {
      std::printf("line %d: bad FEN: %s\n", lineNumber, fen.c_str());
      ++failed;
      continue;
    }
    pos.recordIndex = 1;
    bool ok = true;
    for (std::size_t at = semi; at != std::string::npos; at = line.find(';', at + 1)) {
      int depth = 0;
      unsigned long long expected = 0;
      if (std::sscanf(line.c_str() + at + 1, " D%d %llu", &depth, &expected) != 2) continue;
      if (depth < 1 || depth > 20 || (maxDepth >= 0 && depth > maxDepth)) continue;
      const std::uint64_t got = perft(pos, depth, bulk);
      nodes += got;
      if (got != expected) {
        ok = false;
        std::printf("line %d depth %d: expected %llu, got %" PRIu64 ": %s\n", lineNumber, depth, expected, got,
                    fen.c_str());
      }
    }
    ok ? ++passed : ++failed;
  }
  std::printf("%d passed, %d failed\n", passed, failed);
  printRate(nodes, secondsSince(start));
  return failed ? 1 : 0;
}

int usage() {
  std::fprintf(stderr, "usage: perft [--bulk] FEN DEPTH | perft [--bulk] --epd FILE [--max-depth N]\n");
  return 2;
}

}  // namespace

int perftCommand(int argc, char** argv) {
  bool bulk = false;
  const char* epd = nullptr;
  int maxDepth = -1;
  // The FEN may come as one quoted argument or as its separate fields; the depth is last.
  std::string fen;
  const char* last = nullptr;
  int count = 0;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--bulk") == 0) {
      bulk = true;
    } else if (std::strcmp(argv[i], "--epd") == 0 && i + 1 < argc) {
      epd = argv[++i];
    } else if (std::strcmp(argv[i], "--max-depth") == 0 && i + 1 < argc) {
      if (!readDepth(argv[++i], maxDepth)) return usage();
    } else {
      if (last) fen += fen.empty() ? last : std::string(" ") + last;
      last = argv[i];
      ++count;
    }
  }
  if (epd) return count == 0 ? perftEpd(epd, maxDepth, bulk) : usage();
  int depth = 0;
  if (count < 2 || !readDepth(last, depth)) return usage();
  return perftOne(fen.c_str(), depth, bulk);
}

}  // namespace tavrin::tool

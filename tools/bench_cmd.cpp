// tavrin-tool bench [DEPTH]: the fixed search whose node count is the engine's signature.
#include <cstdio>
#include <cstdlib>

#include "app/startup.h"
#include "search/bench.h"
#include "tools/commands.h"
#include "uci/output.h"

namespace tavrin::tool {

namespace {

constexpr int DefaultBenchDepth = 12;

void printPosition(int index, const char* fen, std::uint64_t nodes, std::uint16_t bestMove) {
  char buf[8];
  std::printf("position %2d/%d  nodes %10llu  bestmove %-5s  %s\n", index + 1, BenchPositionCount,
              static_cast<unsigned long long>(nodes), moveText(bestMove, buf), fen);
  std::fflush(stdout);
}

}  // namespace

int benchCommand(int argc, char** argv) {
  int depth = DefaultBenchDepth;
  if (argc > 1) {
    depth = std::atoi(argv[1]);
    if (depth < 1 || depth > 60) {
      std::fprintf(stderr, "bench: depth must be 1 to 60\n");
      return 2;
    }
  }
  initializeEngine(BenchHashMegabytes);   // not the engine's 126 MB, which the bench would replace
  const BenchResult r = runBench(depth, printPosition);
  const long long ms = r.micros / 1000;
  std::printf("time %lld ms\nnodes %llu\nnps %llu\n", ms, static_cast<unsigned long long>(r.nodes),
              static_cast<unsigned long long>(ms > 0 ? r.nodes * 1000 / std::uint64_t(ms) : 0));
  return 0;
}

}  // namespace tavrin::tool

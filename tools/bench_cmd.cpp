// tavrin-tool bench [DEPTH] [--threads N]: the fixed search whose node count is the engine's
// signature. Given a thread count, each position's time is printed too; with more than one thread
// the counts vary from run to run, and the parallel search's statistics close the report.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "app/startup.h"
#include "common/platform.h"
#include "search/bench.h"
#include "search/split_point.h"
#include "tools/commands.h"
#include "uci/output.h"

namespace tavrin::tool {

namespace {

constexpr int DefaultBenchDepth = 12;

std::int64_t LastFinished = 0;   // when the previous position's search ended (threads > 1)

void printPosition(int index, const char* fen, std::uint64_t nodes, std::uint16_t bestMove) {
  char buf[8];
  std::printf("position %2d/%d  nodes %10llu  bestmove %-5s  %s\n", index + 1, BenchPositionCount,
              static_cast<unsigned long long>(nodes), moveText(bestMove, buf), fen);
  std::fflush(stdout);
}

void printTimedPosition(int index, const char* fen, std::uint64_t nodes, std::uint16_t bestMove) {
  const std::int64_t now = wallClockMicros();
  char buf[8];
  std::printf("position %2d/%d  nodes %10llu  time %7.1f ms  bestmove %-5s  %s\n", index + 1, BenchPositionCount,
              static_cast<unsigned long long>(nodes), double(now - LastFinished) / 1000, moveText(bestMove, buf), fen);
  std::fflush(stdout);
  LastFinished = now;
}

}  // namespace

int benchCommand(int argc, char** argv) {
  int depth = DefaultBenchDepth;
  int threads = 1;
  bool timed = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--threads") == 0 && i + 1 < argc) {
      threads = std::atoi(argv[++i]);
      timed = true;
      if (threads < 1 || threads > MaxThreads) {
        std::fprintf(stderr, "bench: threads must be 1 to %d\n", MaxThreads);
        return 2;
      }
      continue;
    }
    depth = std::atoi(argv[i]);
    if (depth < 1 || depth > 60) {
      std::fprintf(stderr, "bench: depth must be 1 to 60\n");
      return 2;
    }
  }
  initializeEngine(BenchHashMegabytes);   // not the engine's 126 MB, which the bench would replace
  setThreadCount(threads);
  resetSplitStatistics();
  LastFinished = wallClockMicros();
  const BenchResult r = runBench(depth, timed ? printTimedPosition : printPosition);
  const long long ms = r.micros / 1000;
  std::printf("time %lld ms\nnodes %llu\nnps %llu\n", ms, static_cast<unsigned long long>(r.nodes),
              static_cast<unsigned long long>(ms > 0 ? r.nodes * 1000 / std::uint64_t(ms) : 0));
  if (threads > 1) {
    const SplitStatistics s = splitStatistics();
    const double seconds = double(r.micros) / 1e6;
    std::printf("threads %d\nsplits %llu (%.0f per second)\nmoves per split %.2f\nidle %.1f%% of the threads' time\n",
                threads, static_cast<unsigned long long>(s.splits), seconds > 0 ? double(s.splits) / seconds : 0.0,
                s.splits ? double(s.movesSearched) / double(s.splits) : 0.0,
                r.micros > 0 ? 100.0 * double(s.idleMicros) / (double(r.micros) * threads) : 0.0);
  }
  setThreadCount(1);
  return 0;
}

}  // namespace tavrin::tool

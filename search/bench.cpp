// The bench: about forty varied positions searched to a fixed depth, each from cleared tables,
// so that the total node count is deterministic and changes only with the search's behaviour.
#include "search/bench.h"


#include "board/fen.h"
#include "common/globals.h"
#include "common/platform.h"
#include "eval/evaluate.h"
#include "search/search.h"
#include "search/split_point.h"
#include "search/tt.h"

namespace tavrin {

const char* const BenchPositions[] = {
    // Openings and early middlegames.
    "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
    "rnbqkb1r/pppp1ppp/5n2/4p3/2B1P3/8/PPPP1PPP/RNBQK1NR w KQkq - 2 3",
    "r1bqkbnr/pppp1ppp/2n5/4p3/3PP3/5N2/PPP2PPP/RNBQKB1R b KQkq d3 0 3",
    "rnbqkb1r/pp2pppp/3p1n2/8/3NP3/2N5/PPP2PPP/R1BQKB1R b KQkq - 2 5",
    "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/3P1N2/PPP2PPP/RNBQK2R w KQkq - 1 5",
    "rnbqk2r/ppp1bppp/4pn2/3p4/2PP4/2N2N2/PP2PPPP/R1BQKB1R w KQkq - 4 5",
    "r1bqkb1r/pppp1ppp/2n2n2/4p3/4P3/2N2N2/PPPP1PPP/R1BQKB1R w KQkq - 4 4",
    "rnbqkbnr/pp1ppppp/8/2p5/4P3/5N2/PPPP1PPP/RNBQKB1R b KQkq - 1 2",
    // Middlegames.
    "r3k2r/p1ppqpb1/bn2pnp1/3PN3/1p2P3/2N2Q1p/PPPBBPPP/R3K2R w KQkq - 0 1",
    "r4rk1/1pp1qppp/p1np1n2/2b1p1B1/2B1P1b1/P1NP1N2/1PP1QPPP/R4RK1 w - - 0 10",
    "r2q1rk1/pp2bppp/2n1pn2/3p4/2PP4/2N1PN2/PP1B1PPP/R2QKB1R w KQ - 0 9",
    "2r2rk1/1bqnbppp/p2ppn2/1p6/3NP3/1BN1BP2/PPPQ2PP/2KR3R w - - 0 13",
    "r1b2rk1/2q1b1pp/p2ppn2/1p6/3QP3/1BN1B3/PPP3PP/R4RK1 w - - 0 14",
    "3r1rk1/p1q2ppp/1pn1p3/2b5/2P1N3/1P2BP2/P3Q1PP/3R1RK1 b - - 2 19",
    "r1bq1rk1/ppp2ppp/2np1n2/2b1p3/2B1P3/2PP1N2/PP3PPP/RNBQ1RK1 w - - 1 7",
    "rnb2rk1/pp3ppp/2pbpn2/q7/2BP4/2N1PN2/PP3PPP/R2QK2R w KQ - 4 9",
    "r2qr1k1/1b1nbppp/p2p1n2/1p2p3/3PP3/1BN1BN1P/PP3PP1/R2QR1K1 w - - 0 13",
    "2kr3r/ppp2ppp/2n1bn2/2b1p3/4P3/2NP1N2/PPPB1PPP/2KR1B1R w - - 4 10",
    // Tactics and mates.
    "6k1/5ppp/8/8/8/8/5PPP/3R2K1 w - - 0 1",
    "r1bqkb1r/pppp1ppp/2n2n2/4p2Q/2B1P3/8/PPPP1PPP/RNB1K1NR w KQkq - 4 4",
    "2rr3k/pp3pp1/1nnqbN1p/3pN3/2pP4/2P3Q1/PPB4P/R4RK1 w - - 0 1",
    "r1b1kb1r/pppp1ppp/5q2/4n3/3KP3/2N3PN/PPP4P/R1BQ1B1R b kq - 0 1",
    "5rk1/1ppb3p/p1pb4/6q1/3P1p1r/2P1R2P/PP1BQ1P1/5RKN w - - 0 1",
    "r5rk/5p1p/5R2/4B3/8/8/7P/7K w - - 0 1",
    "1k1r4/pp1b1R2/3q2pp/4p3/2B5/4Q3/PPP2B2/2K5 b - - 0 1",
    // Endgames.
    "8/2p5/3p4/KP5r/1R3p1k/8/4P1P1/8 w - - 0 1",
    "8/8/8/8/5k2/8/4PK2/8 w - - 0 1",
    "8/8/1p1k4/p1p5/P1P5/1P1K4/8/8 w - - 0 1",
    "8/5pk1/6p1/8/8/6P1/5PK1/3R4 w - - 0 1",
    "4k3/8/8/8/8/8/8/R3K3 w Q - 0 1",
    "8/8/4k3/8/2KB4/8/3N4/8 w - - 0 1",
    "6k1/8/6PP/8/8/8/5K2/8 w - - 0 1",
    "8/2k5/8/2q5/8/8/3Q4/3K4 w - - 0 1",
    "8/p4pk1/1p4p1/4P3/2r5/5PK1/P5RP/8 b - - 1 35",
    "8/8/2k5/5q2/5n2/8/5K2/8 b - - 0 1",
    // Promotions and special moves.
    "8/P7/8/8/8/8/6k1/K7 w - - 0 1",
    "n1n5/PPPk4/8/8/8/8/4Kppp/5N1N b - - 0 1",
    "r3k2r/Pppp1ppp/1b3nbN/nP6/BBP1P3/q4N2/Pp1P2PP/R2Q1RK1 w kq - 0 1",
    "rnbq1k1r/pp1Pbppp/2p5/8/2B5/8/PPP1NnPP/RNBQK2R w KQ - 1 8",
    "4k3/1P6/8/8/8/8/6p1/4K3 b - - 0 1",
};
const int BenchPositionCount = int(sizeof BenchPositions / sizeof BenchPositions[0]);

namespace {
constexpr std::uint64_t BenchTableEntries = (std::uint64_t(BenchHashMegabytes) << 20) / sizeof(TtEntry);
}  // namespace

bool benchSearch(const char* fen, int depth, std::uint64_t& nodes, std::uint16_t& bestMove) {
  Position& rec = SearchRecords[0];
  nodes = 0;
  bestMove = 0;
  if (!setFromFen(rec, fen)) return false;
  // A fixed table size keeps the signature independent of the Hash option.
  if (Tt.entries != BenchTableEntries) resizeTable(BenchHashMegabytes);
  clearTables();
  clearHistory();
  clearKillers();   // nothing of an earlier search may stay
  clearEvaluationTables();

  const bool quiet = Settings.quiet;
  Settings.quiet = true;
  Engine.searchRunning = 0;   // the input poll stays out of the way
  Engine.infiniteMode = Engine.ponderMode = 0;
  Limits = SearchLimits{};
  Limits.depthLimit = depth;
  Limits.startTime = wallClockMicros();
  newSearch();
  rec.nodes = 0;
  rec.stopFlag = 0;
  evaluateFull(rec);
  try {
    runRootSearch(rec);
  } catch (const SearchAborted&) {
  }
  Settings.quiet = quiet;
  nodes = searchNodeCount();
  bestMove = Root.bestMove;
  return true;
}

BenchResult runBench(int depth, void (*perPosition)(int, const char*, std::uint64_t, std::uint16_t)) {
  BenchResult result;
  const std::int64_t start = wallClockMicros();
  for (int i = 0; i < BenchPositionCount; ++i) {
    std::uint64_t nodes;
    std::uint16_t best;
    benchSearch(BenchPositions[i], depth, nodes, best);
    result.nodes += nodes;
    if (perPosition) perPosition(i, BenchPositions[i], nodes, best);
  }
  result.micros = wallClockMicros() - start;
  return result;
}

}  // namespace tavrin

// Perft counts of the suite, in both colours: the legal generator and make/unmake end to end.
#include <gtest/gtest.h>

#include "board/perft.h"
#include "tests/test_support.h"

namespace tavrin::test {
namespace {

constexpr std::uint64_t BulkLeafBudget = scaled(~std::uint64_t(0), std::uint64_t(200000));   // largest count checked per depth
constexpr int MadeDepth = scaled(4, 2);
constexpr int MirrorDepth = scaled(4, 3);

// The suite three ways: bulk-counted leaves, every leaf made, and the colour mirror (bulk at odd
// depths, made at even ones).
TEST(Perft, SuiteCountsBulkMadeAndMirrored) {
  BoardFixture f;
  const std::vector<EpdLine> lines = readPerftEpd();
  ASSERT_GT(lines.size(), 100u);
  for (const EpdLine& line : lines)
    for (const bool mirrored : {false, true}) {
      const std::string fen = mirrored ? mirrorFen(line.fen) : line.fen;
      f.set(fen);
      for (auto [depth, expected] : line.counts) {
        if (!mirrored && expected <= BulkLeafBudget) {
          EXPECT_EQ(perft(f.pos, depth, true), expected) << fen << " depth " << depth << " bulk";
        }
        if (depth <= (mirrored ? MirrorDepth : MadeDepth)) {
          EXPECT_EQ(perft(f.pos, depth, mirrored && depth % 2 == 1), expected) << fen << " depth " << depth;
        }
      }
    }
}

}  // namespace
}  // namespace tavrin::test

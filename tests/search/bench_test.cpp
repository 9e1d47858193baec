// The bench signature of the built tool: the recorded node count, the same on two runs.
#include <string>

#include "tests/test_support.h"

namespace {

// Depth of the test bench and its recorded signature. A change of search behaviour changes the
// signature: record the new one (and quote it as "Bench: N" in the commit message).
constexpr int BenchTestDepth = 6;
constexpr unsigned long long BenchSignature = 191531;

// The number after "nodes" in the output of "tavrin-tool bench DEPTH" (0 when missing).
unsigned long long benchNodes(int depth) {
  const std::string out = tavrin::test::toolOutput("bench " + std::to_string(depth));
  const std::size_t at = out.rfind("\nnodes ");
  return at == std::string::npos ? 0 : std::stoull(out.substr(at + 7));
}

TEST(Bench, SignatureIsRecordedAndRepeatable) {
  const unsigned long long first = benchNodes(BenchTestDepth);
  EXPECT_EQ(first, BenchSignature);
  EXPECT_EQ(benchNodes(BenchTestDepth), first);
}

}  // namespace

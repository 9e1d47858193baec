// The bench signature of the built tool: the recorded node count, the same on two runs.
#include <cstdio>
#include <string>

#include <gtest/gtest.h>

namespace {

// Depth of the test bench and its recorded signature. A change of search behaviour changes the
// signature: record the new one (and quote it as "Bench: N" in the commit message).
constexpr int BenchTestDepth = 6;
constexpr unsigned long long BenchSignature = 148532;

// Runs "tavrin-tool bench DEPTH" and returns the number after "nodes" (0 when missing).
unsigned long long benchNodes(int depth) {
  const std::string command = std::string(TAVRIN_TOOL_PATH) + " bench " + std::to_string(depth);
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return 0;
  char line[1024];
  unsigned long long nodes = 0;
  while (std::fgets(line, sizeof line, pipe)) std::sscanf(line, "nodes %llu", &nodes);
  pclose(pipe);
  return nodes;
}

TEST(Bench, SignatureIsRecordedAndRepeatable) {
  const unsigned long long first = benchNodes(BenchTestDepth);
  EXPECT_EQ(first, BenchSignature);
  EXPECT_EQ(benchNodes(BenchTestDepth), first);
}

}  // namespace

// The perft subcommand of the built tool, through a pipe.
#include <gtest/gtest.h>

#include <string>

#include "tests/test_support.h"

namespace tavrin::test {
namespace {

std::string run(const std::string& arguments) { return toolOutput("perft " + arguments); }

TEST(PerftTool, OnePositionListsRootMovesAndTotal) {
  std::string out = run("'rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1' 3");
  EXPECT_NE(out.find("e2e4: 600\n"), std::string::npos) << out;
  EXPECT_NE(out.find("g1f3: 440\n"), std::string::npos) << out;
  EXPECT_NE(out.find("Total: 8902\n"), std::string::npos) << out;
  EXPECT_NE(out.find("Nodes per second: "), std::string::npos) << out;
  // The FEN may also come as separate fields; --bulk gives the same counts.
  std::string bulk = run("--bulk 4k3/1P6/8/8/8/8/8/4K3 w - - 0 1 1");
  EXPECT_NE(bulk.find("b7b8q: 1\n"), std::string::npos) << bulk;
  EXPECT_NE(bulk.find("b7b8n: 1\n"), std::string::npos) << bulk;
  EXPECT_NE(bulk.find("Total: 9\n"), std::string::npos) << bulk;
}

TEST(PerftTool, SuiteModeEndsWithTheTally) {
  std::string out = run(std::string("--bulk --epd ") + TAVRIN_DATA_DIR + "/perft.epd --max-depth 2");
  EXPECT_NE(("\n" + out).find("\n205 passed, 0 failed\n"), std::string::npos) << out;
  EXPECT_NE(out.find("Nodes per second: "), std::string::npos) << out;
}

TEST(PerftTool, BadInputIsRefusedWithoutCrashing) {
  EXPECT_NE(run("'not a fen' 3").find("bad FEN"), std::string::npos);
  EXPECT_NE(run("").find("usage"), std::string::npos);
  EXPECT_NE(run("--epd /nonexistent/file.epd").find("cannot read"), std::string::npos);
}

}  // namespace
}  // namespace tavrin::test

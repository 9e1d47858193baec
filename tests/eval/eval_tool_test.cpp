// The eval subcommand of tavrin-tool ends with the full evaluation.
#include <string>

#include "eval_test_support.h"

namespace tavrin::test {
namespace {

TEST(EvalTool, TotalIsTheFullEvaluation) {
  const char* fens[] = {
      "rnbqkbnr/pppppppp/8/8/8/8/PPPPPPPP/RNBQKBNR w KQkq - 0 1",
      "r1bqk2r/pppp1ppp/2n2n2/2b1p3/2B1P3/2N2N2/PPPP1PPP/R1BQK2R b KQkq - 5 5",
      "8/5pk1/6p1/3P4/8/5PK1/8/8 w - - 0 1",
  };
  EvalFixture f;
  for (const char* fen : fens) {
    std::string out = toolOutput("eval " + std::string(fen));
    std::size_t at = out.rfind("total ");
    ASSERT_NE(at, std::string::npos) << out;
    EXPECT_EQ(out.substr(at), "total " + std::to_string(whiteEval(f.set(fen))) + "\n") << fen;
  }
}

TEST(EvalTool, BadPositionIsRefused) {
  std::string out = toolOutput("eval not a fen");
  EXPECT_EQ(out.find("total "), std::string::npos);
}

}  // namespace
}  // namespace tavrin::test

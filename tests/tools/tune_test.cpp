// The tuner: its model of the evaluation follows the engine's when the weights change (a weight
// the evaluation uses without noting it shows up here), the fit recovers weights that labelled the
// positions, the weights file reads and writes back exactly, and datagen files are read whole.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "board/fen.h"
#include "board/legality.h"
#include "eval/material.h"
#include "tests/eval/eval_test_support.h"
#include "tools/tune/dataset.h"
#include "tools/tune/model.h"
#include "tools/tune/tuner.h"
#include "tools/tune/weights_file.h"

namespace tavrin::test {
namespace {

using namespace tavrin::tool;

std::string readFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::ostringstream s;
  s << in.rdbuf();
  return s.str();
}

// Positions along seeded random games, as FENs.
std::vector<std::string> randomPositions(int count, unsigned seed) {
  BoardFixture board;
  std::mt19937 rng(seed);
  std::vector<std::string> fens;
  while (int(fens.size()) < count) {
    board.set(RandomGameStarts[rng() % std::size(RandomGameStarts)]);
    for (int ply = 0; ply < 80 && int(fens.size()) < count; ++ply) {
      MoveWord list[MaxMoves];
      MoveWord* end = generateLegalMoves(board.pos, list);
      if (end == list) break;
      makeMoveAny(board.pos, moveOf(list[rng() % unsigned(end - list)]));
      if (ply >= 4 && !inCheck(board.pos)) fens.push_back(toFen(board.pos));
    }
  }
  return fens;
}

// Restores the default weights (and the material table built from them) after each test.
struct TuneFixture : ::testing::Test {
  EvalFixture tables;
  TuneFixture() { reset(); }
  ~TuneFixture() override { reset(); }
  static void reset() {
    Weights = EvalWeights{};
    buildMaterialTable();
  }
  TuneSet traced(const std::vector<std::string>& fens) {
    TuneSet set;
    const TuneParams current = paramsFromWeights();
    for (const std::string& fen : fens) {
      LabelledLine line;
      line.fen = fen;
      addPosition(line, false, set, current);
    }
    return set;
  }
};

TEST_F(TuneFixture, ModelFollowsTheEngineWhenEveryWeightMoves) {
  const std::vector<std::string> fens = randomPositions(scaled(1500, 300), 11);
  TuneSet set = traced(fens);
  ASSERT_GT(set.positions.size(), fens.size() / 2);

  // Every weight the positions count, moved at random; the bases stay those of the defaults.
  TuneParams moved = paramsFromWeights();
  const TunedMask mask = tunedMask(set);
  std::mt19937 rng(5);
  for (int s = 0; s < WeightSlots; ++s) {
    if (mask.mg[s]) moved.mg[s] += double(int(rng() % 17) - 8);
    if (mask.eg[s]) moved.eg[s] += double(int(rng() % 17) - 8);
  }
  applyParams(moved);

  // Up to rounding, except where the moved shelter weights make a king prefer another of the
  // places it can still castle to: the model keeps the place chosen when it was traced.
  BoardFixture board;
  EvalTrace trace;
  std::size_t at = 0, strays = 0;
  for (const std::string& fen : fens) {
    board.set(fen);
    const int engine = traceEvaluation(board.pos, trace);
    if (!trace.modelled) continue;
    ASSERT_LT(at, set.positions.size());
    const double model = modelScore(set.positions[at++], set.notes.data(), moved);
    if (std::fabs(model - engine) > 4.0) {
      ++strays;
      EXPECT_TRUE(board.pos.st().castle) << fen << ": model " << model << ", engine " << engine;
    }
    // The traced path scores as the engine's driver does.
    EXPECT_EQ(whiteEval(board.pos), engine) << fen;
  }
  EXPECT_EQ(at, set.positions.size());
  EXPECT_LE(strays, at / 100);
}

// The derivatives the fit follows are those of the model's score: the king-danger square, the
// shelter's share of the danger sum, the scale and the pull included.
TEST_F(TuneFixture, GradientMatchesTheModelsSlopes) {
  TuneSet set = traced(randomPositions(scaled(400, 100), 17));
  TuneParams w = paramsFromWeights();
  for (const TunePosition& p : set.positions) {
    TuneParams g;
    addGradient(p, set.notes.data(), w, 1.0, g);
    for (int s = 0; s < WeightSlots; ++s) {
      for (std::vector<double>* half : {&w.mg, &w.eg}) {
        const double saved = (*half)[s];
        (*half)[s] = saved + 0.5;
        const double up = modelScore(p, set.notes.data(), w);
        (*half)[s] = saved - 0.5;
        const double down = modelScore(p, set.notes.data(), w);
        (*half)[s] = saved;
        const double analytic = half == &w.mg ? g.mg[s] : g.eg[s];
        // Kinks (the danger threshold, the pull's cap) can fall inside the step.
        if (std::fabs(up - down - analytic) > 0.05 + 0.02 * std::fabs(analytic))
          ADD_FAILURE() << "slot " << s << (half == &w.mg ? " mg" : " eg") << ": numeric " << up - down
                        << ", analytic " << analytic;
      }
    }
  }
}

TEST_F(TuneFixture, FitRecoversTheWeightsThatLabelledThePositions) {
  const std::vector<std::string> fens = randomPositions(3000, 23);
  TuneSet set = traced(fens);
  const TuneParams defaults = paramsFromWeights();

  // The five positional weights counted in the most positions get other values; the
  // positions are labelled by the engine's evaluation with them.
  std::vector<int> uses(WeightSlots, 0);
  for (const TraceNote& n : set.notes)
    if (n.channel == PositionalChannel) ++uses[n.slot];
  std::vector<int> slots(WeightSlots);
  for (int s = 0; s < WeightSlots; ++s) slots[s] = s;
  std::partial_sort(slots.begin(), slots.begin() + 5, slots.end(), [&](int a, int b) { return uses[a] > uses[b]; });
  TuneParams truth = defaults;
  for (int i = 0; i < 5; ++i) {
    truth.mg[slots[i]] += 20;
    truth.eg[slots[i]] -= 15;
  }
  applyParams(truth);
  BoardFixture board;
  EvalTrace trace;
  const double k = 1.0;
  std::size_t at = 0;
  for (const std::string& fen : fens) {
    board.set(fen);
    const int score = traceEvaluation(board.pos, trace);
    if (trace.modelled) set.positions[at++].label = float(winChance(score, k));
  }
  applyParams(defaults);

  TuneParams fitted = defaults;
  const double before = meanLoss(set, fitted, k, false);
  TuneOptions options;
  options.epochs = 150;   // cheap enough for the sanitizer build too; fewer positions would
  options.batch = 256;    // leave the other weights room to fit them instead
  options.rate = 1.0;
  fitWeights(set, fitted, k, options, nullptr);
  EXPECT_LT(meanLoss(set, fitted, k, false), before / 20);
  for (int i = 0; i < 5; ++i) {
    EXPECT_NEAR(fitted.mg[slots[i]], truth.mg[slots[i]], 5.0) << "slot " << slots[i];
    EXPECT_NEAR(fitted.eg[slots[i]], truth.eg[slots[i]], 5.0) << "slot " << slots[i];
  }
}

TEST_F(TuneFixture, WeightsFileReadsAsCompiledAndWritesBackExactly) {
  const std::string text = readFile(std::string(TAVRIN_SOURCE_DIR) + "/eval/weights.h");
  EvalWeights fromFile;
  std::fill_n(reinterpret_cast<std::int32_t*>(&fromFile), WeightSlots, 0x5555);
  std::string error;
  ASSERT_TRUE(readWeightsText(text, fromFile, error)) << error;
  const EvalWeights compiled{};
  EXPECT_EQ(std::memcmp(&fromFile, &compiled, sizeof compiled), 0);
  EXPECT_EQ(writeWeightsText(text, compiled), text);

  // Every word of EvalWeights belongs to exactly one listed weight.
  std::vector<int> owners(WeightSlots, 0);
  for (const WeightInfo& info : weightList())
    for (int s = info.slot; s < info.slot + info.length; ++s) ++owners[s];
  EXPECT_EQ(std::count(owners.begin(), owners.end(), 1), WeightSlots);

  // Other values: the written text reads back as them, and the engine scores alike.
  TuneParams params = paramsFromWeights();
  std::mt19937 rng(3);
  for (int s = 0; s < WeightSlots; ++s) {
    params.mg[s] += double(int(rng() % 41) - 20);
    params.eg[s] += double(int(rng() % 41) - 20);
  }
  applyParams(params);
  const EvalWeights inMemory = Weights;
  const std::string written = writeWeightsText(text, inMemory);
  EvalWeights readBack;
  ASSERT_TRUE(readWeightsText(written, readBack, error)) << error;
  EXPECT_EQ(std::memcmp(&readBack, &inMemory, sizeof inMemory), 0);
  EXPECT_EQ(writeWeightsText(written, inMemory), written);

  BoardFixture board;
  EvalTrace trace;
  for (const std::string& fen : randomPositions(50, 9)) {
    Weights = inMemory;
    buildMaterialTable();
    board.set(fen);
    const int expected = traceEvaluation(board.pos, trace);
    Weights = readBack;
    buildMaterialTable();
    EXPECT_EQ(traceEvaluation(board.pos, trace), expected) << fen;
  }
}

TEST(TuneData, LabelledLinesOfEachKind) {
  struct Row {
    const char* line;
    bool ok;
    double result;
    bool hasScore;
    double score;
  };
  const Row rows[] = {
      {"8/8/8/4k3/8/8/4P3/4K3 w - - 0 1 | 1.0 | 250", true, 1.0, true, 250},
      {"8/8/8/4k3/8/8/4P3/4K3 b - - 3 9 | 0.5 | -12", true, 0.5, true, -12},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - c9 \"0-1\";", true, 0.0, false, 0},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - 0 1 [0.5]", true, 0.5, false, 0},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - \"1/2-1/2\"", true, 0.5, false, 0},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - 0 1 | 2.0 | 1", false, 0, false, 0},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - 0 1 | 1.0 | x", false, 0, false, 0},
      {"8/8/8/4k3/8/8/4P3/4K3 w - - 0 1", false, 0, false, 0},
      {"", false, 0, false, 0},
  };
  for (const Row& r : rows) {
    LabelledLine out;
    ASSERT_EQ(parseLabelledLine(r.line, out), r.ok) << r.line;
    if (!r.ok) continue;
    EXPECT_EQ(out.result, r.result) << r.line;
    EXPECT_EQ(out.hasScore, r.hasScore) << r.line;
    EXPECT_EQ(out.score, r.score) << r.line;
    EXPECT_EQ(out.fen.rfind("8/8/8/4k3/8/8/4P3/4K3 ", 0), 0u) << r.line;
  }
}

TEST_F(TuneFixture, DatagenFileIsReadBackWhole) {
  const std::string path =
      (std::filesystem::temp_directory_path() / ("tavrin-tune-" + std::to_string(std::random_device{}()))).string();
  toolOutput("datagen --output " + path + " --games 2 --nodes 1000 --seed 3");
  const std::string text = readFile(path);
  const long long lines = std::count(text.begin(), text.end(), '\n');
  ASSERT_GT(lines, 0);

  TuneSet set;
  std::string error;
  ASSERT_TRUE(loadPositions(path, set, 0, paramsFromWeights(), error)) << error;
  std::filesystem::remove(path);
  EXPECT_EQ(set.linesRead, lines);
  EXPECT_EQ(set.skipped, set.notModelled);   // no line was unreadable
  EXPECT_EQ((long long)set.positions.size() + set.notModelled, lines);
  for (const TunePosition& p : set.positions) EXPECT_TRUE(p.hasScore);

  EXPECT_FALSE(loadPositions(path, set, 0, paramsFromWeights(), error));
  EXPECT_NE(error.find(path), std::string::npos);
}

}  // namespace
}  // namespace tavrin::test

// tavrin-tool tune: fits the evaluation's weights to labelled positions and writes them back
// into the weights file.
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "app/startup.h"
#include "eval/evaluate.h"
#include "tools/commands.h"
#include "tools/tune/dataset.h"
#include "tools/tune/tuner.h"
#include "tools/tune/weights_file.h"

namespace tavrin::tool {

namespace {

using Clock = std::chrono::steady_clock;

struct Options {
  std::vector<std::string> data;
  std::string weights = "eval/weights.h";
  std::string output;          // default: the weights file itself
  long long limit = 0;
  TuneOptions fit;
};

void usage() {
  std::fprintf(stderr,
               "usage: tune --data FILE [--data FILE ...] [--lambda L] [--epochs N] [--batch N] [--rate R]\n"
               "            [--l2 X] [--k K] [--limit N] [--seed S] [--only NAME,NAME...] [--weights FILE] [--output FILE]\n"
               "  Fits the weights of the evaluation to the positions of datagen files (\"FEN | result |\n"
               "  score\") or EPD lines with a result. The label is L * result + (1 - L) * the search\n"
               "  score's winning chance (default L 0.5); K is fitted to the results first unless given.\n"
               "  Every tenth block of 64 lines is held out. Writes the weights into --output (default: the\n"
               "  weights file, eval/weights.h), changing only the values. --only fits just the named weights.\n"
               "  --l2 adds X * (weight - its starting value)^2 to the loss for every weight.\n");
}

bool parse(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--help" || i + 1 >= argc) return false;
    const std::string value = argv[++i];
    char* end = nullptr;
    const double number = std::strtod(value.c_str(), &end);
    const bool numeric = end != value.c_str() && *end == 0 && std::isfinite(number);
    auto need = [&](double lo, double hi) {
      if (numeric && number >= lo && number <= hi) return true;
      std::fprintf(stderr, "tune: %s needs a number from %g to %g, not '%s'\n", a.c_str(), lo, hi, value.c_str());
      return false;
    };
    if (a == "--data") o.data.push_back(value);
    else if (a == "--weights") o.weights = value;
    else if (a == "--only") {
      std::istringstream names(value);
      for (std::string name; std::getline(names, name, ',');) {
        bool known = false;
        for (const WeightInfo& info : weightList()) known = known || name == info.name;
        if (!known) {
          std::fprintf(stderr, "tune: --only: no weight named '%s'\n", name.c_str());
          return false;
        }
        o.fit.only.push_back(name);
      }
    }
    else if (a == "--output") o.output = value;
    else if (a == "--lambda") { if (!need(0, 1)) return false; o.fit.lambda = number; }
    else if (a == "--k") { if (!need(0.01, 10)) return false; o.fit.k = number; }
    else if (a == "--epochs") { if (!need(0, 100000)) return false; o.fit.epochs = int(number); }
    else if (a == "--batch") { if (!need(1, 1e8)) return false; o.fit.batch = int(number); }
    else if (a == "--rate") { if (!need(1e-6, 1000)) return false; o.fit.rate = number; }
    else if (a == "--limit") { if (!need(0, 1e12)) return false; o.limit = (long long)number; }
    else if (a == "--l2") { if (!need(0, 1)) return false; o.fit.l2 = number; }
    else if (a == "--seed") { if (!need(0, 1e18)) return false; o.fit.seed = std::uint64_t(number); }
    else {
      std::fprintf(stderr, "tune: unknown option %s\n", a.c_str());
      return false;
    }
  }
  if (o.data.empty()) {
    std::fprintf(stderr, "tune: --data FILE is required\n");
    return false;
  }
  if (o.output.empty()) o.output = o.weights;
  return true;
}

double secondsSince(Clock::time_point start) { return std::chrono::duration<double>(Clock::now() - start).count(); }

// How far the model strays from the engine: over the training positions with the weights traced,
// and the largest difference.
void reportFidelity(const TuneSet& set, const TuneParams& params) {
  double sum = 0, worst = 0;
  for (const TunePosition& p : set.positions) {
    const double d = std::fabs(modelScore(p, set.notes.data(), params) - p.engineTotal);
    sum += d;
    worst = d > worst ? d : worst;
  }
  std::printf("model against the engine: mean difference %.3f, largest %.2f centipawns\n",
              set.positions.empty() ? 0.0 : sum / double(set.positions.size()), worst);
}

}  // namespace

int tuneCommand(int argc, char** argv) {
  Options o;
  if (!parse(argc, argv, o)) {
    usage();
    return 2;
  }
  std::string weightsText;
  {
    std::ifstream in(o.weights);
    if (!in) {
      std::fprintf(stderr, "tune: cannot read the weights file %s (run from the source folder or give --weights)\n",
                   o.weights.c_str());
      return 1;
    }
    std::ostringstream text;
    text << in.rdbuf();
    weightsText = text.str();
  }
  EvalWeights fileWeights;
  std::string error;
  if (!readWeightsText(weightsText, fileWeights, error)) {
    std::fprintf(stderr, "tune: %s: %s\n", o.weights.c_str(), error.c_str());
    return 1;
  }
  initializeEngine();
  initEvaluation();
  // Start from the file's weights: they are what gets written back.
  Weights = fileWeights;
  const TuneParams start = paramsFromWeights();
  applyParams(start);

  const auto began = Clock::now();
  TuneSet set;
  for (const std::string& path : o.data) {
    if (!loadPositions(path, set, o.limit, start, error)) {
      std::fprintf(stderr, "tune: %s\n", error.c_str());
      return 1;
    }
  }
  long long held = 0;
  for (const TunePosition& p : set.positions) held += p.validation;
  std::printf("positions: %zu (%lld held out), %lld lines, %lld skipped (%lld not modelled), %zu notes, %.1f s\n",
              set.positions.size(), held, set.linesRead, set.skipped, set.notModelled, set.notes.size(),
              secondsSince(began));
  if (set.positions.size() == std::size_t(held)) {
    std::fprintf(stderr, "tune: no training positions\n");
    return 1;
  }
  reportFidelity(set, start);

  const double k = o.fit.k > 0 ? o.fit.k : fitK(set);
  setLabels(set, k, o.fit.lambda);
  std::printf("K %.4f, lambda %.2f\n", k, o.fit.lambda);
  const double trainBefore = meanLoss(set, start, k, false), heldBefore = meanLoss(set, start, k, true);
  std::printf("loss before: training %.6f, held out %.6f\n", trainBefore, heldBefore);
  std::fflush(stdout);

  TuneParams params = start;
  const auto fitStart = Clock::now();
  fitWeights(set, params, k, o.fit, [&](int epoch, double train, double heldOut) {
    std::printf("epoch %d: training %.6f, held out %.6f, %.1f s\n", epoch, train, heldOut, secondsSince(fitStart));
    std::fflush(stdout);
  });

  // The rounded weights go into the engine, and the model is checked against it once more.
  applyParams(params);
  const TuneParams rounded = paramsFromWeights();
  std::printf("loss after (rounded weights): training %.6f, held out %.6f\n", meanLoss(set, rounded, k, false),
              meanLoss(set, rounded, k, true));

  const std::string written = writeWeightsText(weightsText, Weights);
  EvalWeights readBack;
  if (!readWeightsText(written, readBack, error) || std::memcmp(&readBack, &Weights, sizeof Weights) != 0) {
    std::fprintf(stderr, "tune: the weights file would not read back as written (%s)\n", error.c_str());
    return 1;
  }
  std::ofstream out(o.output, std::ios::trunc);
  out << written;
  out.close();
  if (!out) {
    std::fprintf(stderr, "tune: cannot write %s\n", o.output.c_str());
    return 1;
  }
  std::printf("weights written to %s (%.1f s in all)\n", o.output.c_str(), secondsSince(began));
  return 0;
}

}  // namespace tavrin::tool

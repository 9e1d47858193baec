// The tuner's model of the evaluation: the engine's traced counts times the weights, through the
// driver's final combination (taper, material, scale, drawish pull) and the king-danger square.
// It reproduces the engine's score with the weights a position was traced with, up to rounding.
#pragma once

#include <vector>

#include "eval/trace.h"
#include "tools/tune/dataset.h"

namespace tavrin::tool {

// Weights as real numbers, by slot: both halves of a packed weight, the value of a plain one in mg.
struct TuneParams {
  std::vector<double> mg = std::vector<double>(WeightSlots, 0.0);
  std::vector<double> eg = std::vector<double>(WeightSlots, 0.0);
};

// The weights in use, and back: rounded into Weights (with the material table rebuilt).
TuneParams paramsFromWeights();
void applyParams(const TuneParams& params);

// The sums of one position before the final combination.
struct ModelParts {
  double mg = 0, eg = 0, material = 0;
  double shelter[2] = {0, 0}, danger[2] = {0, 0}, pull[2] = {0, 0};
  double tapered = 0, beforePull = 0, scale = 128;
  double score = 0;
};

// The positional and material parts the notes of a trace explain, with the given weights: what
// the bases of a position are measured against.
ModelParts explainedParts(const TraceNote* notes, int count, std::uint8_t dangerScored, const TuneParams& params);

// The model's score of a position, White's point of view.
double modelScore(const TunePosition& p, const TraceNote* notes, const TuneParams& params, ModelParts* parts = nullptr);

// Adds weight * dLoss/dScore times the score's derivative by every weight to gradient.
void addGradient(const TunePosition& p, const TraceNote* notes, const TuneParams& params, double weight,
                 TuneParams& gradient);

// The winning chance a score stands for: 1 / (1 + 10^(-k * score / 400)).
double winChance(double score, double k);

}  // namespace tavrin::tool

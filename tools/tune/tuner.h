// The fit: K first, then the weights by mini-batch gradient descent (Adam) on the mean squared
// error between the model's winning chance and the label.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "tools/tune/model.h"

namespace tavrin::tool {

struct TuneOptions {
  double lambda = 0.5;        // weight of the game result in the label, the rest the search score
  double k = 0;               // 0: fit K to the results first
  int epochs = 40;
  int batch = 16384;
  double rate = 1.0;          // Adam step, falling linearly to a tenth over the epochs
  std::uint64_t seed = 1;
  // Pull of every weight back to its starting value: l2 * (weight - start)^2 is added to the
  // loss, so that weights few positions count do not wander off on noise.
  double l2 = 0;
  std::vector<std::string> only;   // when not empty: fit just the weights of these names
};

// The K that makes today's scores best predict the results of the training positions.
double fitK(const TuneSet& set);

// Sets every position's label from its result and search score.
void setLabels(TuneSet& set, double k, double lambda);

// Mean squared error over the training or the held-out positions, with labels set.
double meanLoss(const TuneSet& set, const TuneParams& params, double k, bool validation);

// Fits params (starting from their values) on the training positions; calls progress after every
// epoch with its number and the two losses.
void fitWeights(const TuneSet& set, TuneParams& params, double k, const TuneOptions& options,
                const std::function<void(int, double, double)>& progress);

// The slots the fit may change: the tuned weights' halves that any position counts, of the
// named weights only when names are given.
struct TunedMask {
  std::vector<bool> mg, eg;
};
TunedMask tunedMask(const TuneSet& set, const std::vector<std::string>& only = {});

}  // namespace tavrin::tool

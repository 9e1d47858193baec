// The fit of K and of the weights.
#include "tools/tune/tuner.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>

namespace tavrin::tool {

namespace {

double lossAt(const TuneSet& set, const TuneParams& params, double k, bool validation, bool resultsOnly) {
  double sum = 0;
  long long n = 0;
  for (const TunePosition& p : set.positions) {
    if (p.validation != validation) continue;
    const double e = winChance(modelScore(p, set.notes.data(), params), k) - (resultsOnly ? p.result : p.label);
    sum += e * e;
    ++n;
  }
  return n ? sum / double(n) : 0.0;
}

}  // namespace

double fitK(const TuneSet& set) {
  // The engine's own scores: with today's weights the model gives the same up to rounding.
  auto loss = [&](double k) {
    double sum = 0;
    long long n = 0;
    for (const TunePosition& p : set.positions) {
      if (p.validation) continue;
      const double e = winChance(p.engineTotal, k) - p.result;
      sum += e * e;
      ++n;
    }
    return n ? sum / double(n) : 0.0;
  };
  // Golden-section search: the loss is unimodal in K.
  double lo = 0.05, hi = 4.0;
  const double g = (std::sqrt(5.0) - 1) / 2;
  double a = hi - g * (hi - lo), b = lo + g * (hi - lo);
  double fa = loss(a), fb = loss(b);
  for (int i = 0; i < 60; ++i) {
    if (fa < fb) hi = b, b = a, fb = fa, a = hi - g * (hi - lo), fa = loss(a);
    else lo = a, a = b, fa = fb, b = lo + g * (hi - lo), fb = loss(b);
  }
  return (lo + hi) / 2;
}

void setLabels(TuneSet& set, double k, double lambda) {
  for (TunePosition& p : set.positions)
    p.label = p.hasScore ? float(lambda * p.result + (1 - lambda) * winChance(p.score, k)) : p.result;
}

double meanLoss(const TuneSet& set, const TuneParams& params, double k, bool validation) {
  return lossAt(set, params, k, validation, false);
}

TunedMask tunedMask(const TuneSet& set, const std::vector<std::string>& only) {
  TunedMask mask{std::vector<bool>(WeightSlots, false), std::vector<bool>(WeightSlots, false)};
  std::vector<bool> counted(WeightSlots, false), positional(WeightSlots, false);
  for (const TraceNote& n : set.notes) {
    counted[n.slot] = true;
    if (n.channel == PositionalChannel) positional[n.slot] = true;
  }
  for (const TunePosition& p : set.positions)
    if (p.scaleSlot >= 0) counted[p.scaleSlot] = true;
  counted[slotOf(Weights.ShelterRelief)] = true;
  for (const WeightInfo& info : weightList()) {
    if (!info.tuned) continue;
    if (!only.empty() && std::find(only.begin(), only.end(), info.name) == only.end()) continue;
    for (int s = info.slot; s < info.slot + info.length; ++s) {
      mask.mg[s] = counted[s];
      mask.eg[s] = info.packed && positional[s];
    }
  }
  return mask;
}

void fitWeights(const TuneSet& set, TuneParams& params, double k, const TuneOptions& options,
                const std::function<void(int, double, double)>& progress) {
  const TunedMask mask = tunedMask(set, options.only);
  std::vector<std::uint32_t> order;
  for (std::uint32_t i = 0; i < set.positions.size(); ++i)
    if (!set.positions[i].validation) order.push_back(i);
  if (order.empty()) return;
  std::mt19937_64 rng(options.seed);
  const TuneParams initial = params;

  // Adam's running moments, per half of each slot.
  TuneParams m, v, gradient;
  const double beta1 = 0.9, beta2 = 0.999, epsilon = 1e-8;
  const double scoreScale = k * std::log(10.0) / 400;
  long long step = 0;
  for (int epoch = 1; epoch <= options.epochs; ++epoch) {
    std::shuffle(order.begin(), order.end(), rng);
    const double rate = options.rate * (1 - 0.9 * double(epoch - 1) / std::max(1, options.epochs - 1));
    for (std::size_t start = 0; start < order.size(); start += std::size_t(options.batch)) {
      const std::size_t end = std::min(order.size(), start + std::size_t(options.batch));
      std::fill(gradient.mg.begin(), gradient.mg.end(), 0.0);
      std::fill(gradient.eg.begin(), gradient.eg.end(), 0.0);
      for (std::size_t i = start; i < end; ++i) {
        const TunePosition& p = set.positions[order[i]];
        const double s = winChance(modelScore(p, set.notes.data(), params), k);
        const double dLoss = 2 * (s - p.label) * s * (1 - s) * scoreScale / double(end - start);
        addGradient(p, set.notes.data(), params, dLoss, gradient);
      }
      ++step;
      const double c1 = 1 - std::pow(beta1, double(step)), c2 = 1 - std::pow(beta2, double(step));
      auto update = [&](std::vector<double>& w, std::vector<double>& mm, std::vector<double>& vv,
                        const std::vector<double>& data, const std::vector<double>& w0,
                        const std::vector<bool>& tuned) {
        for (int s = 0; s < WeightSlots; ++s) {
          if (!tuned[std::size_t(s)]) continue;
          const double g = data[s] + 2 * options.l2 * (w[s] - w0[s]);
          mm[s] = beta1 * mm[s] + (1 - beta1) * g;
          vv[s] = beta2 * vv[s] + (1 - beta2) * g * g;
          w[s] -= rate * (mm[s] / c1) / (std::sqrt(vv[s] / c2) + epsilon);
        }
      };
      update(params.mg, m.mg, v.mg, gradient.mg, initial.mg, mask.mg);
      update(params.eg, m.eg, v.eg, gradient.eg, initial.eg, mask.eg);
    }
    if (progress) progress(epoch, meanLoss(set, params, k, false), meanLoss(set, params, k, true));
  }
}

}  // namespace tavrin::tool

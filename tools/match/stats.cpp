// Elo, its interval and the SPRT log-likelihood ratio from match tallies.
#include "tools/match/stats.h"

#include <cmath>
#include <cstdio>
#include <limits>

namespace tavrin::match {

namespace {

constexpr double Z95 = 1.959963984540054;   // two-sided 95% quantile of the normal law

struct Moments {
  double mean = 0, variance = 0, count = 0;
};

// Mean and variance of the pair score (0, 1/4, 1/2, 3/4, 1 per pair).
Moments pairMoments(const Tally& t) {
  Moments m;
  m.count = t.pairs();
  if (m.count == 0) return m;
  for (int i = 0; i < 5; ++i) m.mean += t.penta[i] * (i / 4.0);
  m.mean /= m.count;
  for (int i = 0; i < 5; ++i) m.variance += t.penta[i] * std::pow(i / 4.0 - m.mean, 2);
  m.variance /= m.count;
  return m;
}

}  // namespace

double Tally::score() const {
  int n = games();
  return n ? (wins + 0.5 * draws) / n : 0.5;
}

double eloFromScore(double score) {
  if (score <= 0) return -std::numeric_limits<double>::infinity();
  if (score >= 1) return std::numeric_limits<double>::infinity();
  return -400.0 * std::log10(1.0 / score - 1.0);
}

double scoreFromElo(double elo) { return 1.0 / (1.0 + std::pow(10.0, -elo / 400.0)); }

EloEstimate estimateElo(const Tally& t) {
  EloEstimate e;
  int n = t.games();
  if (n == 0) return e;
  double s = t.score();
  double stderrScore;
  Moments m = pairMoments(t);
  if (m.count > 0) {
    stderrScore = std::sqrt(m.variance / m.count);
  } else {
    double w = double(t.wins) / n, d = double(t.draws) / n, l = double(t.losses) / n;
    double var = w * std::pow(1 - s, 2) + d * std::pow(0.5 - s, 2) + l * std::pow(0 - s, 2);
    stderrScore = std::sqrt(var / n);
  }
  e.elo = eloFromScore(s);
  e.lower = eloFromScore(s - Z95 * stderrScore);
  e.upper = eloFromScore(s + Z95 * stderrScore);
  return e;
}

double SprtSettings::lowerBound() const { return std::log(beta / (1 - alpha)); }
double SprtSettings::upperBound() const { return std::log((1 - beta) / alpha); }

double sprtLlr(const Tally& t, double elo0, double elo1) {
  Moments m = pairMoments(t);
  if (m.count == 0 || m.variance <= 0) return 0;
  double s0 = scoreFromElo(elo0), s1 = scoreFromElo(elo1);
  return m.count * (s1 - s0) * (2 * m.mean - s0 - s1) / (2 * m.variance);
}

std::string formatElo(double elo) {
  if (std::isinf(elo)) return elo > 0 ? "+inf" : "-inf";
  if (std::fabs(elo) < 0.05) elo = 0;   // no "-0.0"
  char buf[32];
  std::snprintf(buf, sizeof buf, "%+.1f", elo);
  return buf;
}

}  // namespace tavrin::match

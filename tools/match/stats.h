// Match statistics: win/draw/loss and pentanomial tallies, Elo with its interval, and the
// log-likelihood ratio of a generalised SPRT over game pairs.
#pragma once

#include <array>
#include <string>

namespace tavrin::match {

// Counts from the first engine's point of view. penta[i] counts game pairs (same opening,
// colours swapped) in which it scored i half-points out of 4: LL, LD, DD or WL, WD, WW.
struct Tally {
  int wins = 0, losses = 0, draws = 0;
  std::array<int, 5> penta{};
  int games() const { return wins + losses + draws; }
  int pairs() const { return penta[0] + penta[1] + penta[2] + penta[3] + penta[4]; }
  double score() const;   // points per game, 0..1
};

// Logistic Elo difference of an expected score, and its inverse.
double eloFromScore(double score);
double scoreFromElo(double elo);

struct EloEstimate {
  double elo = 0, lower = 0, upper = 0;   // 95% interval; may be infinite
};
// Point estimate from the games; interval from the variance of pair scores when there are
// complete pairs (games of a pair are correlated through their opening), else per game.
EloEstimate estimateElo(const Tally& t);

struct SprtSettings {
  bool enabled = false;
  double elo0 = 0, elo1 = 5, alpha = 0.05, beta = 0.05;
  double lowerBound() const;   // log(beta / (1 - alpha))
  double upperBound() const;   // log((1 - beta) / alpha)
};
// Generalised SPRT log-likelihood ratio of elo1 against elo0 over the pentanomial counts
// (normal approximation): pairs * (s1 - s0) * (2 m - s0 - s1) / (2 v), with m and v the mean and
// variance of the pair score. 0 while there is no spread to measure.
double sprtLlr(const Tally& t, double elo0, double elo1);

std::string formatElo(double elo);

}  // namespace tavrin::match

// Command line of the match runner.
#pragma once

#include <string>
#include <vector>

#include "tools/match/game.h"
#include "tools/match/openings.h"
#include "tools/match/stats.h"

namespace tavrin::match {

struct MatchOptions {
  std::vector<EngineConfig> engines;
  OpeningSettings openings;
  bool haveOpenings = false;
  int games = 2;              // per pairing (the first engine against each other one)
  int concurrency = 0;        // 0: number of cores
  std::string pgnOut;
  bool fresh = false;         // new engine processes for every game
  GameSettings game;
  SprtSettings sprt;
  std::string event = "Tavrin match";
  std::string site = "?";
  int ratingInterval = 10;    // print the Elo estimate every this many games
  bool help = false;
};

// Parses the arguments after "match". Empty on success, else the complaint.
std::string parseMatchOptions(const std::vector<std::string>& args, MatchOptions& out);

extern const char* MatchHelp;

}  // namespace tavrin::match

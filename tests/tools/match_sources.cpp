// The match runner is part of tavrin-tool, not of the engine library; its sources are compiled
// into the test binary here so that its pieces can be tested directly.
#include "tools/match/engine_process.cpp"
#include "tools/match/game.cpp"
#include "tools/match/openings.cpp"
#include "tools/match/options.cpp"
#include "tools/match/pgn.cpp"
#include "tools/match/rules.cpp"
#include "tools/match/san.cpp"
#include "tools/match/stats.cpp"
#include "tools/match/time_control.cpp"

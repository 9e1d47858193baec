// Process-wide engine variables (options, evaluation weights, search control) and search limits.
#pragma once

#include <cstdint>

namespace tavrin {

struct EngineGlobals {
  std::int32_t hashMegabytes = 126;
  std::int32_t pawnHashMegabytes = 8;
  std::int32_t multiPV = 1;
  // Evaluation weights; reduced strength rewrites them at every go.
  std::int32_t materialWeight = 100;
  std::int32_t positionalWeight = 102;
  std::int32_t pawnValue = 100, knightValue = 325, bishopValue = 325, rookValue = 500, queenValue = 975;
  std::int32_t bishopPairBonus = 55;
  std::int32_t materialOnly = 0;
  std::int32_t drawPullDivisor = 56;
  std::int32_t noiseTerms = 0;
  std::int32_t noiseBits = 1;
  // Search control flags.
  std::uint8_t stopRequested = 0, searchRunning = 0, ponderMode = 0, ponderHit = 0, infiniteMode = 0;
  std::uint8_t ponderHitTimeReset = 0;
  std::uint8_t positionReady = 0;
  std::uint8_t progressLines = 1;
  std::uint8_t firstSearch = 1;        // the next go is the first of the game
  std::int32_t limitStrength = 0;
  std::int32_t limitElo = 0;           // the advertised default is never stored
};
extern EngineGlobals Engine;

constexpr std::int64_t NoLimit = 0x07FFFFFFFFFFFFFFLL;

// The limits of one go; times in microseconds.
struct SearchLimits {
  std::int32_t depthLimit = 192;
  std::int32_t depthGiven = 0;
  std::int64_t nodeLimit = 0;
  std::int32_t nodeLimitFlag = 0;
  std::int64_t softTarget = NoLimit;
  std::int64_t hardLimit = NoLimit;
  std::int64_t quarterTarget = NoLimit;
  std::int64_t threeQuarterTarget = NoLimit;       // first copy: MAX while pondering
  std::int64_t threeQuarterTargetPoll = NoLimit;   // second copy, read by the input poll
  std::int64_t lastProgressTime = 0;
  std::int64_t startTime = 0;                      // wall clock at search start
  std::int64_t wtime = NoLimit, btime = NoLimit;
  std::int64_t winc = 0, binc = 0;
  std::int32_t movesToGo = 0;
  std::uint8_t searchMovesFlag = 0;
  std::uint16_t searchMoves[256] = {};             // moves, ended by 0
  std::uint8_t analysis = 0;                       // no hard time limit was set
};
extern SearchLimits Limits;

}  // namespace tavrin

// One game between two UCI engines: the players, the settings and the record of the game.
#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tools/match/engine_process.h"
#include "tools/match/rules.h"
#include "tools/match/time_control.h"

namespace tavrin::match {

struct EngineConfig {
  std::string name;
  std::string command;
  std::vector<std::string> args;
  std::string workDir;
  std::vector<std::pair<std::string, std::string>> options;   // UCI options, in order
  TimeControl tc;
  bool ponder = false;
};

// An engine process as a game sees it: started and initialised on demand, reused between
// games unless it misbehaved.
struct EnginePlayer {
  EngineConfig config;
  EngineProcess process;
  bool initialised = false;
  bool thinking = false;    // a go (or go ponder) is outstanding
  bool pondering = false;
  Move ponderMove = NoMove;
  std::string ponderPosition;   // the position command sent with the go ponder
};

struct Adjudication {
  int resignMoveCount = 0;   // 0: off
  int resignScore = 0;
  int drawMoveNumber = 0;
  int drawMoveCount = 0;     // 0: off
  int drawScore = 0;
};

struct GameSettings {
  std::int64_t timeMarginMs = 50;
  std::int64_t replyTimeoutMs = 10000;   // handshakes, stop requests and untimed searches
  Adjudication adjudication;
};

struct Opening {
  std::string fen = StartFen;
  std::vector<std::string> moves;   // coordinate moves played from the FEN as book moves
};

enum class Fault { None, IllegalMove, Crash, NoReply, TimeLoss, StartFailure };
const char* faultName(Fault f);

struct MoveRecord {
  Move move = NoMove;
  std::string san;
  bool book = false;
  bool hasScore = false;
  int scoreCp = 0;
  int mate = 0;             // moves to mate (negative: being mated), 0 when a plain score
  int depth = 0;
  std::int64_t timeMs = 0;
};

struct GameRecord {
  std::string white, black;
  std::string startFen;
  std::string whiteTc, blackTc;
  std::vector<MoveRecord> moves;
  int firstMoveNumber = 1;
  Color firstMover = White;
  GameResult result = GameResult::None;
  std::string reason;        // "White mates", "Black loses on time", ...
  std::string termination;   // PGN Termination tag: normal, time forfeit, rules infraction, ...
  Fault fault = Fault::None;
  Color faultSide = White;
  std::string date;          // YYYY.MM.DD
  std::string round;
};

// Plays one game. Players that crashed or stalled are left stopped, to be restarted by the
// next game; the others stay ready for a new game.
GameRecord playGame(EnginePlayer& white, EnginePlayer& black, const Opening& opening,
                    const GameSettings& settings);

// Starts and initialises an engine when needed (uci, options, isready). Empty on success,
// else the reason.
std::string ensureEngineReady(EnginePlayer& player, const GameSettings& settings);

}  // namespace tavrin::match

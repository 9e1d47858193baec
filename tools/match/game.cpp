// The game loop: engines are asked for moves as a GUI asks them, the runner keeps the clocks,
// checks every move on its own board and ends the game by the rules, by adjudication or by
// the fault of an engine.
#include "tools/match/game.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <ctime>
#include <sstream>
#include <thread>

namespace tavrin::match {

namespace {

using std::chrono::milliseconds;

const char* colorName(Color c) { return c == White ? "White" : "Black"; }

std::int64_t millisSince(SteadyClock::time_point start) {
  return std::chrono::duration_cast<milliseconds>(SteadyClock::now() - start).count();
}

std::vector<std::string> words(const std::string& line) {
  std::istringstream in(line);
  std::vector<std::string> w;
  for (std::string s; in >> s;) w.push_back(s);
  return w;
}

bool readInt(const std::string& s, long long& out) {
  char* end = nullptr;
  errno = 0;
  long long v = std::strtoll(s.c_str(), &end, 10);
  if (s.empty() || *end != '\0' || errno) return false;
  out = v;
  return true;
}

// The score and depth of the last "info" line that carried a score (first PV line only).
void readInfo(const std::string& line, MoveRecord& rec) {
  std::vector<std::string> w = words(line);
  if (w.empty() || w[0] != "info") return;
  long long depth = -1, value = 0, multipv = 1;
  bool score = false, mate = false;
  for (std::size_t i = 1; i < w.size(); ++i) {
    if (w[i] == "string" || w[i] == "pv") break;
    if (i + 1 >= w.size()) break;
    if (w[i] == "depth") readInt(w[i + 1], depth);
    else if (w[i] == "multipv") readInt(w[i + 1], multipv);
    else if (w[i] == "score" && i + 2 < w.size()) {
      mate = w[i + 1] == "mate";
      score = (mate || w[i + 1] == "cp") && readInt(w[i + 2], value);
    }
  }
  if (!score || multipv != 1) return;
  rec.hasScore = true;
  rec.mate = mate ? int(std::clamp<long long>(value, -100000, 100000)) : 0;
  rec.scoreCp = mate ? (value > 0 ? 100000 - int(value) : -100000 - int(value))
                     : int(std::clamp<long long>(value, -100000, 100000));
  if (depth >= 0) rec.depth = int(std::min<long long>(depth, 10000));
}

std::string today() {
  std::time_t t = std::time(nullptr);
  std::tm tm{};
#ifdef _WIN32
  localtime_s(&tm, &t);
#else
  localtime_r(&t, &tm);
#endif
  char buf[16];
  std::strftime(buf, sizeof buf, "%Y.%m.%d", &tm);
  return buf;
}

// Waits for a line that starts with the given word; other lines are passed to the sink.
enum class Wait { Found, Timeout, Closed };
template <typename Sink>
Wait waitFor(EngineProcess& p, const std::string& word, SteadyClock::time_point deadline,
             std::string& line, Sink sink) {
  for (;;) {
    switch (p.readLine(line, deadline)) {
      case EngineProcess::ReadStatus::Timeout: return Wait::Timeout;
      case EngineProcess::ReadStatus::Closed: return Wait::Closed;
      case EngineProcess::ReadStatus::Line: break;
    }
    if (line == word || line.rfind(word + " ", 0) == 0) return Wait::Found;
    sink(line);
  }
}

std::string exitText(EngineProcess& p) {
  auto until = SteadyClock::now() + milliseconds(300);
  while (!p.exited() && SteadyClock::now() < until) std::this_thread::sleep_for(milliseconds(5));
  std::string text = p.exitDescription();
  p.kill();
  return text.empty() ? "" : " (" + text + ")";
}

// Brings a player back to a quiet state after a search was cut short; kills it if it will not.
void quieten(EnginePlayer& player, const GameSettings& settings) {
  if (!player.thinking) return;
  player.thinking = player.pondering = false;
  if (!player.process.running()) return;
  std::string line;
  auto deadline = SteadyClock::now() + milliseconds(std::min<std::int64_t>(settings.replyTimeoutMs, 2000));
  if (!player.process.send("stop") ||
      waitFor(player.process, "bestmove", deadline, line, [](const std::string&) {}) != Wait::Found) {
    player.process.kill();
    player.initialised = false;
  }
}

}  // namespace

const char* faultName(Fault f) {
  switch (f) {
    case Fault::IllegalMove: return "illegal move";
    case Fault::Crash: return "crash";
    case Fault::NoReply: return "no reply";
    case Fault::TimeLoss: return "time loss";
    case Fault::StartFailure: return "start failure";
    default: return "none";
  }
}

std::string ensureEngineReady(EnginePlayer& player, const GameSettings& settings) {
  EngineProcess& p = player.process;
  if (!p.running() || p.exited()) player.initialised = false;
  std::string line;
  if (!player.initialised) {
    if (!p.start(player.config.command, player.config.args, player.config.workDir))
      return "cannot start " + player.config.command + (p.exitDescription().empty() ? "" : ": " + p.exitDescription());
    auto deadline = SteadyClock::now() + milliseconds(settings.replyTimeoutMs);
    if (!p.send("uci")) return "disconnects at start-up";
    Wait w = waitFor(p, "uciok", deadline, line, [](const std::string&) {});
    if (w != Wait::Found) {
      std::string why = w == Wait::Closed ? "disconnects at start-up" + exitText(p) : "does not answer uci";
      p.kill();
      return why;
    }
    for (const auto& [name, value] : player.config.options)
      p.send("setoption name " + name + " value " + value);
    if (player.config.ponder) p.send("setoption name Ponder value true");
    player.initialised = true;
  }
  player.thinking = player.pondering = false;
  auto deadline = SteadyClock::now() + milliseconds(settings.replyTimeoutMs);
  if (!p.send("ucinewgame") || !p.send("isready")) {
    player.initialised = false;
    return "disconnects" + exitText(p);
  }
  Wait w = waitFor(p, "readyok", deadline, line, [](const std::string&) {});
  if (w != Wait::Found) {
    player.initialised = false;
    std::string why = w == Wait::Closed ? "disconnects" + exitText(p) : "does not answer isready";
    p.kill();
    return why;
  }
  return "";
}

namespace {

class Game {
 public:
  Game(EnginePlayer& white, EnginePlayer& black, const Opening& opening, const GameSettings& s)
      : players_{&black, &white}, opening_(opening), settings_(s) {}

  GameRecord run();

 private:
  EnginePlayer& player(Color c) { return *players_[c]; }
  void finish(GameResult r, const std::string& reason, const std::string& termination) {
    rec_.result = r;
    rec_.reason = reason;
    rec_.termination = termination;
  }
  void fault(Color side, Fault f, const std::string& reason, const std::string& termination) {
    rec_.fault = f;
    rec_.faultSide = side;
    finish(side == White ? GameResult::BlackWins : GameResult::WhiteWins, reason, termination);
  }
  std::string positionCommand(const std::string& extraMove) const;
  std::string goCommand(Color side, bool ponder) const;
  bool playOpening();
  bool engineMove();
  void startPondering(Color side, const std::string& ponderText);
  bool adjudicate();

  EnginePlayer* players_[2];
  const Opening& opening_;
  const GameSettings& settings_;
  GameBoard board_;
  GameClock clocks_[2];
  std::string startFen_;
  std::string moveList_;   // " e2e4 e7e5 ..."
  GameRecord rec_;
  int resignCount_[2] = {0, 0};   // consecutive own moves scored as lost (by each side)
  int winCount_[2] = {0, 0};      // consecutive own moves scored as won
  int drawCount_[2] = {0, 0};     // consecutive own moves scored near zero
};

std::string Game::positionCommand(const std::string& extraMove) const {
  std::string cmd = startFen_ == StartFen ? "position startpos" : "position fen " + startFen_;
  if (!moveList_.empty() || !extraMove.empty()) cmd += " moves" + moveList_ + extraMove;
  return cmd;
}

std::string Game::goCommand(Color side, bool ponder) const {
  const TimeControl& tc = players_[side]->config.tc;
  std::string cmd = ponder ? "go ponder" : "go";
  if (tc.hasClock) {
    const TimeControl& wtc = players_[White]->config.tc;
    const TimeControl& btc = players_[Black]->config.tc;
    cmd += " wtime " + std::to_string(clocks_[White].remainingMs());
    cmd += " btime " + std::to_string(clocks_[Black].remainingMs());
    if (wtc.incMs) cmd += " winc " + std::to_string(wtc.incMs);
    if (btc.incMs) cmd += " binc " + std::to_string(btc.incMs);
    if (clocks_[side].movesToGo()) cmd += " movestogo " + std::to_string(clocks_[side].movesToGo());
  }
  if (tc.moveTimeMs) cmd += " movetime " + std::to_string(tc.moveTimeMs);
  if (tc.nodes) cmd += " nodes " + std::to_string(tc.nodes);
  if (tc.depth) cmd += " depth " + std::to_string(tc.depth);
  return cmd;
}

bool Game::playOpening() {
  std::string error;
  if (!board_.setFen(opening_.fen, &error)) {
    finish(GameResult::None, "Bad opening position: " + error, "unterminated");
    return false;
  }
  startFen_ = board_.fen();
  rec_.startFen = startFen_;
  rec_.firstMover = board_.sideToMove();
  rec_.firstMoveNumber = board_.fullmoveNumber();
  for (const std::string& text : opening_.moves) {
    Move m = board_.parseUci(text);
    if (m == NoMove) break;   // the rest of a broken opening line is dropped
    MoveRecord mr;
    mr.move = m;
    mr.book = true;
    mr.san = board_.san(m);
    board_.play(m);
    rec_.moves.push_back(mr);
    moveList_ += " " + text;
    Outcome o = board_.outcome();
    if (o.result != GameResult::None) {
      finish(o.result, o.reason, "normal");
      return false;
    }
  }
  return true;
}

void Game::startPondering(Color side, const std::string& ponderText) {
  EnginePlayer& p = player(side);
  // The expected reply must be legal after the move just played (the board is now at the
  // opponent's turn).
  Move expected = board_.parseUci(ponderText);
  if (expected == NoMove) return;
  p.ponderPosition = positionCommand(" " + ponderText);
  if (!p.process.send(p.ponderPosition) || !p.process.send(goCommand(side, true))) return;
  p.thinking = p.pondering = true;
  p.ponderMove = expected;
}

// Asks the side to move for its move; false when the game ended on a fault.
bool Game::engineMove() {
  Color side = board_.sideToMove();
  EnginePlayer& p = player(side);
  EngineProcess& proc = p.process;
  const char* name = colorName(side);
  std::int64_t allowance = clocks_[side].allowanceMs();

  bool ponderHit = false;
  if (p.pondering) {
    Move last = rec_.moves.back().move;
    if (last == p.ponderMove) {
      ponderHit = proc.send("ponderhit");
      if (!ponderHit) {
        fault(side, Fault::Crash, std::string(name) + " disconnects" + exitText(proc), "abandoned");
        return false;
      }
      p.pondering = false;
    } else {
      std::string line;
      p.pondering = p.thinking = false;
      auto deadline = SteadyClock::now() + milliseconds(settings_.replyTimeoutMs);
      Wait w = proc.send("stop") ? waitFor(proc, "bestmove", deadline, line, [](const std::string&) {})
                                 : Wait::Closed;
      if (w == Wait::Closed) {
        fault(side, Fault::Crash, std::string(name) + " disconnects" + exitText(proc), "abandoned");
        return false;
      }
      if (w == Wait::Timeout) {
        fault(side, Fault::NoReply, std::string(name) + "'s connection stalls", "stalled connection");
        proc.kill();
        p.initialised = false;
        return false;
      }
    }
  }

  auto start = SteadyClock::now();
  if (!ponderHit) {
    if (!proc.send(positionCommand("")) || !proc.send(goCommand(side, false))) {
      fault(side, Fault::Crash, std::string(name) + " disconnects" + exitText(proc), "abandoned");
      return false;
    }
    start = SteadyClock::now();
  }
  p.thinking = true;

  bool timed = allowance > 0;
  auto deadline = start + milliseconds(timed ? allowance + settings_.timeMarginMs + 1
                                             : settings_.replyTimeoutMs);
  MoveRecord mr;
  std::string line;
  Wait w = waitFor(proc, "bestmove", deadline, line, [&](const std::string& l) { readInfo(l, mr); });
  std::int64_t elapsed = millisSince(start);
  if (w == Wait::Closed) {
    p.thinking = false;
    fault(side, Fault::Crash, std::string(name) + " disconnects" + exitText(proc), "abandoned");
    return false;
  }
  if (w == Wait::Timeout) {
    if (timed) fault(side, Fault::TimeLoss, std::string(name) + " loses on time", "time forfeit");
    else fault(side, Fault::NoReply, std::string(name) + "'s connection stalls", "stalled connection");
    return false;   // still thinking: quietened when the game is wound up
  }
  p.thinking = false;
  std::vector<std::string> w2 = words(line);
  std::string moveText = w2.size() >= 2 ? w2[1] : "";
  Move m = board_.parseUci(moveText);
  if (m == NoMove) {
    fault(side, Fault::IllegalMove,
          std::string(name) + " makes an illegal move: " + (moveText.empty() ? "(none)" : moveText),
          "rules infraction");
    return false;
  }
  if (!clocks_[side].charge(elapsed, settings_.timeMarginMs)) {
    fault(side, Fault::TimeLoss, std::string(name) + " loses on time", "time forfeit");
    return false;
  }
  mr.move = m;
  mr.timeMs = elapsed;
  mr.san = board_.san(m);
  board_.play(m);
  moveList_ += " " + moveText;
  rec_.moves.push_back(mr);

  if (p.config.ponder && w2.size() >= 4 && w2[2] == "ponder" && board_.outcome().result == GameResult::None)
    startPondering(side, w2[3]);
  return true;
}

// Resignation needs both engines to agree for the given number of their moves; so does a draw.
bool Game::adjudicate() {
  const Adjudication& a = settings_.adjudication;
  const MoveRecord& mr = rec_.moves.back();
  Color mover = ~board_.sideToMove();
  int score = mr.hasScore ? mr.scoreCp : 0;
  resignCount_[mover] = mr.hasScore && score <= -a.resignScore ? resignCount_[mover] + 1 : 0;
  winCount_[mover] = mr.hasScore && score >= a.resignScore ? winCount_[mover] + 1 : 0;
  drawCount_[mover] = mr.hasScore && std::abs(score) <= a.drawScore ? drawCount_[mover] + 1 : 0;
  if (a.resignMoveCount > 0) {
    for (Color c : {White, Black}) {
      if (resignCount_[c] >= a.resignMoveCount && winCount_[~c] >= a.resignMoveCount) {
        finish(c == White ? GameResult::BlackWins : GameResult::WhiteWins,
               std::string(colorName(~c)) + " wins by adjudication", "adjudication");
        return true;
      }
    }
  }
  if (a.drawMoveCount > 0 && board_.fullmoveNumber() > a.drawMoveNumber &&
      drawCount_[White] >= a.drawMoveCount && drawCount_[Black] >= a.drawMoveCount) {
    finish(GameResult::Draw, "Draw by adjudication", "adjudication");
    return true;
  }
  return false;
}

GameRecord Game::run() {
  rec_.white = player(White).config.name;
  rec_.black = player(Black).config.name;
  rec_.whiteTc = player(White).config.tc.pgnText();
  rec_.blackTc = player(Black).config.tc.pgnText();
  rec_.date = today();
  clocks_[White].reset(player(White).config.tc);
  clocks_[Black].reset(player(Black).config.tc);

  for (Color c : {White, Black}) {
    std::string why = ensureEngineReady(player(c), settings_);
    if (!why.empty()) {
      fault(c, Fault::StartFailure, std::string(colorName(c)) + " " + why, "abandoned");
      return rec_;
    }
  }
  if (playOpening()) {
    while (engineMove()) {
      Outcome o = board_.outcome();
      if (o.result != GameResult::None) {
        finish(o.result, o.reason, "normal");
        break;
      }
      if (adjudicate()) break;
    }
  }
  for (Color c : {White, Black}) quieten(player(c), settings_);
  return rec_;
}

}  // namespace

GameRecord playGame(EnginePlayer& white, EnginePlayer& black, const Opening& opening,
                    const GameSettings& settings) {
  Game game(white, black, opening, settings);
  return game.run();
}

}  // namespace tavrin::match

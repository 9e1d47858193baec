// The fuzz session runner: sends a plan's lines, reads the engine's output at every wait and
// checks it as it comes: form, legality, one bestmove per go at the right moment, a readyok for
// each isready, and at the end a clean exit with nothing on standard error.
#include "tools/fuzz/session_run.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <deque>
#include <fstream>
#include <functional>
#include <thread>

#include "tools/match/engine_process.h"

namespace tavrin::fuzz {

namespace {

using match::EngineProcess;
using match::SteadyClock;
using Kind = Step::Kind;

constexpr int StopMillis = 2000;   // a stop (or ponderhit with spent time) is answered within this
constexpr int ExitMillis = 5000;   // the process ends within this after quit or end of input
constexpr std::size_t StderrLinesShown = 25;

std::chrono::milliseconds ms(std::int64_t n) { return std::chrono::milliseconds(n); }

struct SearchState {
  bool sent = false, released = false, hit = false, closed = false;
  SteadyClock::time_point sentAt, releasedAt, hitAt;
  int bestMoves = 0;
};

class Runner {
 public:
  Runner(const SessionPlan& plan, const RunSettings& settings)
      : plan_(plan), settings_(settings), searches_(plan.goes.size()) {}
  SessionReport run();

 private:
  bool failed() const { return !report_.failure.empty(); }
  void fail(const std::string& why) {
    if (!failed()) report_.failure = why;
  }
  void record(char direction, const std::string& line);
  void send(const std::string& line);
  // Reads and checks output until done() holds or the deadline passes; true when done() held.
  bool pumpUntil(SteadyClock::time_point deadline, const std::function<bool()>& done);
  void onLine(const std::string& line);
  void step(const Step& s);
  SteadyClock::time_point bestMoveDeadline(int go) const;
  void finish(SteadyClock::time_point deadline, const char* how);
  void afterExit();
  std::string stderrText();

  const SessionPlan& plan_;
  const RunSettings& settings_;
  SessionReport report_;
  EngineProcess engine_;
  SteadyClock::time_point start_;
  std::vector<SearchState> searches_;
  int current_ = -1;                                 // the search whose output comes now
  std::deque<SteadyClock::time_point> readyDue_;     // deadlines of unanswered isready lines
  int uciSent_ = 0, uciOkSeen_ = 0;
  bool inBanner_ = true;
  bool gone_ = false;                                // the engine's output has ended
  bool ended_ = false;                               // quit or end of input was sent
  bool inputClosed_ = false;                         // ... and it was the end of input
};

void Runner::record(char direction, const std::string& line) {
  const auto t = std::chrono::duration_cast<std::chrono::milliseconds>(SteadyClock::now() - start_).count();
  char stamp[32];
  std::snprintf(stamp, sizeof stamp, "[%6lld] %c ", static_cast<long long>(t), direction);
  report_.transcript.push_back(stamp + line);
  if (settings_.verbose) {
    const std::string& shown = report_.transcript.back();
    std::printf("%s\n", shown.size() > 300 ? (shown.substr(0, 300) + "...").c_str() : shown.c_str());
  }
}

void Runner::send(const std::string& line) {
  record('>', line);
  ++report_.commands;
  if (!engine_.send(line)) fail("the engine stopped reading its input (" + engine_.exitDescription() + ")");
}

bool Runner::pumpUntil(SteadyClock::time_point deadline, const std::function<bool()>& done) {
  for (;;) {
    if (failed()) return false;
    if (done()) return true;
    const auto now = SteadyClock::now();
    if (!readyDue_.empty() && now > readyDue_.front()) {
      fail("no readyok for an isready within its allowance");
      return false;
    }
    if (now >= deadline || gone_) return false;
    std::string line;
    auto until = deadline;
    if (!readyDue_.empty()) until = std::min(until, readyDue_.front() + ms(1));
    switch (engine_.readLine(line, until)) {
      case EngineProcess::ReadStatus::Line: onLine(line); break;
      case EngineProcess::ReadStatus::Timeout: break;
      case EngineProcess::ReadStatus::Closed:
        gone_ = true;
        if (!ended_) {
          for (int i = 0; i < 200 && !engine_.exited(); ++i) std::this_thread::sleep_for(ms(10));
          fail("the engine ended unexpectedly (" + engine_.exitDescription() + ")");
        }
        break;
    }
  }
}

void Runner::onLine(const std::string& line) {
  record('<', line);
  const OutputLine out = readOutputLine(line, inBanner_);
  if (out.kind != LineKind::Banner) inBanner_ = false;
  const bool searching = current_ >= 0 && !searches_[std::size_t(current_)].closed;
  switch (out.kind) {
    case LineKind::Malformed: fail("malformed output line, " + out.problem + ": \"" + line + "\""); return;
    case LineKind::ReadyOk:
      if (readyDue_.empty()) fail("readyok without an isready");
      else readyDue_.pop_front();
      return;
    case LineKind::UciOk:
      if (++uciOkSeen_ > uciSent_) fail("uciok without a uci");
      return;
    case LineKind::Info:
      if (!searching) {
        fail("info line outside a search: \"" + line + "\"");
        return;
      }
      break;
    case LineKind::BestMove: {
      if (!searching) {
        fail("bestmove without a go: \"" + line + "\"");
        return;
      }
      SearchState& s = searches_[std::size_t(current_)];
      const GoExpectation& e = plan_.goes[std::size_t(current_)];
      ++s.bestMoves;
      if (e.mode == SearchMode::Infinite && !s.released) {
        fail("bestmove before stop in infinite mode: \"" + line + "\"");
        return;
      }
      if (e.mode == SearchMode::Ponder && !s.released && !s.hit) {
        fail("bestmove before stop or ponderhit in ponder mode: \"" + line + "\"");
        return;
      }
      if (s.bestMoves == 1 + e.repeats) s.closed = true;
      break;
    }
    default: return;
  }
  const std::string problem = checkMoves(out, plan_.goes[std::size_t(current_)].root);
  if (!problem.empty()) fail(problem + (problem.find(':') == std::string::npos ? ": \"" : ", in \"") + line + "\"");
}

SteadyClock::time_point Runner::bestMoveDeadline(int go) const {
  const SearchState& s = searches_[std::size_t(go)];
  const GoExpectation& e = plan_.goes[std::size_t(go)];
  auto deadline = SteadyClock::time_point::max();
  if (e.mode == SearchMode::Bounded) deadline = s.sentAt + ms(e.allowanceMillis);
  if (e.mode == SearchMode::Ponder && s.hit) deadline = s.hitAt + ms(e.allowanceMillis);
  if (s.released) deadline = std::min(deadline, s.releasedAt + ms(StopMillis));
  return deadline;
}

void Runner::step(const Step& s) {
  const auto now = SteadyClock::now();
  SearchState* pending = current_ >= 0 && !searches_[std::size_t(current_)].closed ? &searches_[std::size_t(current_)] : nullptr;
  switch (s.kind) {
    case Kind::Send: send(s.line); break;
    case Kind::Go:
      if (pending) pending->closed = true;
      current_ = s.go;
      searches_[std::size_t(s.go)].sent = true;
      searches_[std::size_t(s.go)].sentAt = now;
      send(s.line);
      break;
    case Kind::GoAgain: send(s.line); break;
    case Kind::Stop:
      if (pending && !pending->released) pending->released = true, pending->releasedAt = now;
      send(s.line);
      break;
    case Kind::PonderHit:
      if (pending && !pending->hit) pending->hit = true, pending->hitAt = now;
      send(s.line);
      break;
    case Kind::IsReady:
      readyDue_.push_back(now + ms(s.millis));
      send(s.line);
      break;
    case Kind::Uci:
      ++uciSent_;
      send(s.line);
      break;
    case Kind::Pause: pumpUntil(now + ms(s.millis), [] { return false; }); break;
    case Kind::AwaitBestMove: {
      const SearchState& search = searches_[std::size_t(s.go)];
      const auto deadline = bestMoveDeadline(s.go);
      if (!pumpUntil(deadline, [&] { return search.bestMoves > 0; }) && !failed()) {
        const GoExpectation& e = plan_.goes[std::size_t(s.go)];
        const auto allowed = std::chrono::duration_cast<std::chrono::milliseconds>(
            deadline - (search.released ? search.releasedAt : search.hit ? search.hitAt : search.sentAt));
        fail(std::string("no bestmove within ") + std::to_string(allowed.count()) + " ms of " +
             (search.released ? "stop" : search.hit ? "ponderhit" : "go") +
             (e.mode == SearchMode::Bounded ? " (limited search)" : ""));
      }
      break;
    }
    case Kind::AwaitReady: {
      const auto last = readyDue_.empty() ? now : readyDue_.back();
      pumpUntil(last + ms(1), [&] { return readyDue_.empty(); });
      break;
    }
    case Kind::AwaitUciOk:
      if (!pumpUntil(now + ms(s.millis), [&] { return uciOkSeen_ == uciSent_; }) && !failed())
        fail("no uciok within " + std::to_string(s.millis) + " ms of uci");
      break;
    case Kind::Quit:
      send(s.line);
      ended_ = true;
      finish(now + ms(ExitMillis), "quit");
      break;
    case Kind::Close: {
      record('>', "(end of input)");
      engine_.closeInput();
      ended_ = inputClosed_ = true;
      // The end of input stops a running search and releases a waiting one: each owes its bestmove.
      for (SearchState& open : searches_)
        if (open.sent && !open.closed && !open.released) open.released = true, open.releasedAt = now;
      // A limited search may finish first; anything else must end at once.
      auto deadline = now + ms(ExitMillis);
      if (pending && !pending->released) {
        const auto searchDeadline = bestMoveDeadline(current_);
        if (searchDeadline != SteadyClock::time_point::max()) deadline = std::max(deadline, searchDeadline + ms(ExitMillis));
      }
      finish(deadline, "the end of input");
      break;
    }
  }
}

void Runner::finish(SteadyClock::time_point deadline, const char* how) {
  const auto begun = SteadyClock::now();
  pumpUntil(deadline, [] { return false; });
  if (failed()) return;
  if (!gone_) {
    const auto allowed = std::chrono::duration_cast<std::chrono::milliseconds>(deadline - begun).count();
    fail("the engine did not exit within " + std::to_string(allowed) + " ms of " + how);
    return;
  }
  for (int i = 0; i < 200 && !engine_.exited(); ++i) std::this_thread::sleep_for(ms(10));
  if (!engine_.exited()) {
    fail(std::string("the engine closed its output but did not exit after ") + how);
    return;
  }
  if (engine_.exitDescription() != "exit status 0")
    fail(std::string("the engine ended with ") + engine_.exitDescription() + " after " + how);
  afterExit();
}

void Runner::afterExit() {
  if (!readyDue_.empty()) fail("isready without readyok before the engine ended");
  if (uciOkSeen_ != uciSent_) fail("uci without uciok before the engine ended");
  for (std::size_t i = 0; i < searches_.size(); ++i) {
    // The last search may have been cut short by quit (the end of input still owes its answer).
    const bool last = int(i) == current_ && !inputClosed_;
    if (searches_[i].sent && !last && searches_[i].bestMoves == 0) fail("a go without bestmove");
  }
}

// " [AddressSanitizer stack-overflow]" and the like, from the first report on standard error.
std::string sanitizerFinding(const std::string& errors) {
  for (const char* tool : {"AddressSanitizer", "UndefinedBehaviorSanitizer", "LeakSanitizer"}) {
    const std::size_t at = errors.find(std::string("ERROR: ") + tool + ": ");
    if (at == std::string::npos) continue;
    const std::size_t from = at + std::strlen(tool) + 9;
    return std::string(" [") + tool + " " + errors.substr(from, errors.find_first_of(" \n", from) - from) + "]";
  }
  if (errors.find("runtime error") != std::string::npos) return " [UndefinedBehaviorSanitizer runtime error]";
  return {};
}

std::string Runner::stderrText() {
  std::ifstream in(settings_.stderrPath);
  std::string text, line;
  for (std::size_t n = 0; std::getline(in, line); ++n) {
    if (n == StderrLinesShown) {
      text += "    ...\n";
      break;
    }
    text += "    " + line + "\n";
  }
  return text;
}

SessionReport Runner::run() {
  start_ = SteadyClock::now();
  if (!engine_.start(settings_.engine, {}, "", settings_.stderrPath)) {
    report_.failure = "cannot start the engine: " + engine_.exitDescription();
    return report_;
  }
  for (const Step& s : plan_.steps) {
    if (failed() || ended_) break;
    step(s);
  }
  if (!ended_ && !failed()) fail("the plan ended without quit or end of input");
  if (failed() && !engine_.exited()) {
    // Give a dying engine a moment to finish its sanitizer report, then stop it.
    std::this_thread::sleep_for(ms(200));
    engine_.kill();
  }
  const std::string errors = stderrText();
  if (!errors.empty()) {
    if (!failed()) report_.failure = "the engine wrote to standard error";
    report_.failure += sanitizerFinding(errors) + "\n  standard error:\n" + errors;
  }
  std::remove(settings_.stderrPath.c_str());
  return report_;
}

}  // namespace

SessionReport runSession(const SessionPlan& plan, const RunSettings& settings) {
  Runner runner(plan, settings);
  return runner.run();
}

}  // namespace tavrin::fuzz

// The planner of fuzz sessions: random but plausible command sequences, with the position the
// engine holds followed along as long as the commands sent make it certain.
#include "tools/fuzz/session_plan.h"

#include <algorithm>

#include "tools/fuzz/random_input.h"

namespace tavrin::fuzz {

namespace {

using Kind = Step::Kind;

constexpr int ReadyMillis = 5000;         // an isready is answered within this
constexpr int BurstReadyMillis = 30000;   // ... or this after a burst of lines read one per poll
constexpr int RepeatedSearchMillis = 1000;   // ... and this for each repeated go of the burst
constexpr int UciMillis = 5000;
constexpr int BoundedBaseMillis = 8000;   // a bounded search's allowance beyond its own limits

std::string join(const std::vector<std::string>& words) {
  std::string s;
  for (const std::string& w : words) s += (s.empty() ? "" : " ") + w;
  return s;
}

// Picks an index by weight.
int weighted(Rng& rng, std::initializer_list<int> weights) {
  int total = 0;
  for (int w : weights) total += w;
  int r = int(rng.range(0, total - 1)), i = 0;
  for (int w : weights) {
    if (r < w) return i;
    r -= w;
    ++i;
  }
  return i - 1;
}

class Planner {
 public:
  explicit Planner(std::uint64_t seed) : rng_(seed) {}
  SessionPlan run();

 private:
  void add(Kind kind, std::string line = {}, int millis = 0, int go = -1) {
    plan_.steps.push_back(Step{kind, std::move(line), millis, go});
  }
  void send(std::string line) { add(Kind::Send, std::move(line)); }
  void pause(int millis) { add(Kind::Pause, {}, millis); }
  void isready(int millis = ReadyMillis) { add(Kind::IsReady, "isready", millis); }

  void positionAction();
  void setoptionAction();
  std::string threadsLine();
  void goAction(bool quick);
  void idleAction();
  void whileSearching(int go);
  void end();

  int gameLength();
  std::string playList(int plies, bool withJunk, bool seekMate);
  std::vector<std::string> legalTexts();
  std::string boundedLimits(int& allowance);
  std::string searchMovesPart(std::vector<std::string>& named);
  std::string tabbed(const std::string& line);

  Rng rng_;
  SessionPlan plan_;
  match::GameBoard board_;   // the engine's position, while known_
  bool known_ = false;
  bool ended_ = false;
};

std::vector<std::string> Planner::legalTexts() {
  std::vector<std::string> texts;
  for (Move m : board_.legalMoves()) texts.push_back(match::GameBoard::uci(m));
  return texts;
}

int Planner::gameLength() {
  if (rng_.chance(0.6)) return int(rng_.range(1, 40));
  if (rng_.chance(0.6)) return int(rng_.range(40, 200));
  return int(rng_.range(200, 1000));
}

// Random legal moves played on board_, as the text of a move list (with a leading blank);
// words that cannot be legal moves are mixed in on request, and the engine skips them.
std::string Planner::playList(int plies, bool withJunk, bool seekMate) {
  std::string text;
  auto junk = [&] { return rng_.chance(0.5) ? junkWord(rng_, board_) : illegalMoveText(rng_, board_); };
  for (int i = 0; i < plies; ++i) {
    if (withJunk && rng_.chance(0.1)) text.append(" ").append(junk());
    const std::vector<std::string> m = playRandomMoves(rng_, board_, 1, seekMate);
    if (m.empty()) break;
    text.append(" ").append(m[0]);
  }
  if (withJunk && rng_.chance(0.3)) text.append(" ").append(junk());
  return text;
}

std::string Planner::tabbed(const std::string& line) {
  std::string s = line;
  const bool all = rng_.chance(0.5);
  for (char& c : s)
    if (c == ' ' && (all || rng_.chance(0.5))) c = '\t';
  return s;
}

void Planner::positionAction() {
  const bool junkInList = rng_.chance(0.12);
  const bool seekMate = rng_.chance(0.1);
  switch (weighted(rng_, {6, 30, 18, 14, 4, 10, 4, 2, 3, 2, 1, 3})) {
    case 0:
      board_.setFen(match::StartFen);
      send("position startpos");
      known_ = true;
      return;
    case 1: {
      board_.setFen(match::StartFen);
      const int plies = gameLength();
      send("position startpos moves" + playList(plies, junkInList, seekMate && plies < 200));
      known_ = true;
      return;
    }
    case 2:
    case 3:
    case 4: {
      std::string fen;
      if (rng_.chance(0.5)) {  // the position after a random game, given as a FEN
        board_.setFen(match::StartFen);
        playRandomMoves(rng_, board_, gameLength(), false);
        fen = board_.fen();
      }
      if (fen.empty()) fen = randomSetupFen(rng_);
      std::string line = "position fen " + fen;
      if (rng_.chance(0.4)) {
        board_.setFen(fen);
        line += " moves" + playList(int(rng_.range(0, 30)), junkInList, seekMate);
      } else {
        board_.setFen(fen);
      }
      send(line);
      known_ = true;
      return;
    }
    case 5: {
      board_.setFen(match::StartFen);
      playRandomMoves(rng_, board_, gameLength(), false);
      std::string line = "position fen " + brokenFen(rng_, board_.fen());
      if (rng_.chance(0.3)) line += " moves e2e4 e7e5 g1f3";
      send(line);
      known_ = false;
      return;
    }
    case 6: {
      static const std::vector<std::string> Wrong = {
          "position", "position fen", "position startpos moves e2e4 e7e5 junk", "position xyz",
          "position startposmoves e2e4", "positionstartpos", "position  startpos", "position fen moves e2e4",
          "position startpos e2e4 e7e5", "position moves e2e4", "position fen 8/8/8/8/8/8/8/8 w - - 0 1",
          "position fen " + std::string(2000, 'p')};
      send(rng_.pick(Wrong));
      known_ = false;
      return;
    }
    case 7: {   // a legal-looking FEN whose side not to move stands in check
      board_.setFen(match::StartFen);
      std::string fen;
      for (int i = 0; i < 300 && fen.empty(); ++i) {
        if (playRandomMoves(rng_, board_, 1, false).empty()) break;
        fen = sideNotToMoveInCheckFen(board_);
      }
      send("position fen " + (fen.empty() ? brokenFen(rng_, board_.fen()) : fen));
      known_ = false;
      return;
    }
    case 8: {
      board_.setFen(match::StartFen);
      send(tabbed("position startpos moves" + playList(int(rng_.range(1, 20)), false, false)));
      known_ = false;
      return;
    }
    case 9: {   // a FEN of four fields followed by moves
      const std::string fen = randomSetupFen(rng_);
      board_.setFen(fen);
      const std::string fourFields = fen.substr(0, fen.rfind(' ', fen.rfind(' ') - 1));
      send("position fen " + fourFields + " moves" + playList(int(rng_.range(1, 6)), false, false));
      known_ = false;
      return;
    }
    case 10: {   // longer than the engine's line: the rest arrives as a line of its own
      board_.setFen(match::StartFen);
      std::string line = "position startpos moves" + playList(int(rng_.range(1, 30)), false, false);
      send(line + " " + junkLine(rng_, std::size_t(rng_.range(70000, 100000))));
      known_ = false;
      return;
    }
    default: {   // no legal move at all: mate or stalemate
      const std::string fen = terminalFen(rng_);
      board_.setFen(fen);
      send("position fen " + fen);
      known_ = true;
      return;
    }
  }
}

void Planner::setoptionAction() {
  static const std::vector<std::string> OddValues = {"0", "-5", "abc", "", "-2147483649", "99999999999", "1e3"};
  std::string line;
  switch (rng_.range(0, 7)) {
    case 0:   // small tables only: a fuzz session should start and clear them quickly
      line = "setoption name Hash value " +
             (rng_.chance(0.8) ? std::to_string(rng_.range(1, 64)) : std::string(rng_.chance(0.5) ? "-5" : "abc"));
      break;
    case 1:
      line = "setoption name MultiPV value " +
             (rng_.chance(0.7) ? std::to_string(rng_.range(1, 8)) : rng_.pick(OddValues));
      break;
    case 2:
      line = std::string("setoption name UCI_LimitStrength value ") +
             (rng_.chance(0.45) ? "true" : rng_.chance(0.8) ? "false" : "maybe");
      break;
    case 3:
      line = "setoption name UCI_Elo value " +
             (rng_.chance(0.7) ? std::to_string(rng_.range(850, 2500)) : rng_.pick(OddValues));
      break;
    case 4:
      line = std::string("setoption name Ponder value ") + (rng_.chance(0.45) ? "true" : rng_.chance(0.8) ? "false" : "1");
      break;
    case 5:
      line = threadsLine();
      break;
    default: {
      static const std::vector<std::string> Odd = {
          "setoption name Foo value 3", "setoption name Hash", "setoption name", "setoption",
          "setoption name MultiPV", "setoption name UCI_Elo value", "setoption name  Hash value 8",
          "setoption name Clear Hash", "setoption name Threads value 4", "setoption name Hash value 16 extra"};
      line = rng_.pick(Odd);
    }
  }
  send(line);
}

// One to two limits that end a search in the sanitizer build within seconds; a node limit comes
// last, since any valued keyword after it would take its effect away.
std::string Planner::boundedLimits(int& allowance) {
  std::vector<std::string> parts;
  std::string nodes;
  const int count = rng_.chance(0.7) ? 1 : 2;
  const bool crowded = !known_ || legalTexts().size() > 50;
  for (int i = 0; i < count; ++i) {
    switch (rng_.range(0, 3)) {
      case 0: {
        const std::int64_t d = rng_.chance(0.9) ? rng_.range(1, crowded ? 3 : 6) : rng_.range(-3, 0);
        parts.push_back("depth " + std::to_string(d));
        break;
      }
      case 1: {
        const std::int64_t t = rng_.chance(0.85) ? rng_.range(0, 300) : rng_.range(-100000, -1);
        allowance += int(std::max<std::int64_t>(t, 0));
        parts.push_back("movetime " + std::to_string(t));
        break;
      }
      case 2: {
        const std::int64_t w = rng_.chance(0.9) ? rng_.range(0, 10000) : rng_.range(-1000, -1);
        const std::int64_t b = rng_.chance(0.9) ? rng_.range(0, 10000) : rng_.range(-1000, -1);
        allowance += int(std::max<std::int64_t>({w, b, 0}));
        parts.push_back("wtime " + std::to_string(w));
        parts.push_back("btime " + std::to_string(b));
        if (rng_.chance(0.3)) {
          parts.push_back("winc " + std::to_string(rng_.range(-500, 2000)));
          parts.push_back("binc " + std::to_string(rng_.range(-500, 2000)));
        }
        if (rng_.chance(0.3)) parts.push_back("movestogo " + std::to_string(rng_.range(-3, 40)));
        break;
      }
      default:
        nodes = "nodes " + std::to_string(rng_.chance(0.3)   ? rng_.range(0, 10)
                                          : rng_.chance(0.05) ? rng_.range(-100, -1)
                                                              : rng_.range(10, crowded ? 20000 : 200000));
    }
  }
  for (std::size_t i = parts.size(); i > 1; --i) std::swap(parts[i - 1], parts[std::size_t(rng_.range(0, std::int64_t(i) - 1))]);
  if (!nodes.empty()) parts.push_back(nodes);
  return join(parts);
}

// " searchmoves ..." naming some legal moves (returned in `named`), with junk now and then.
std::string Planner::searchMovesPart(std::vector<std::string>& named) {
  std::vector<std::string> words;
  if (known_) {
    const std::vector<std::string> legal = legalTexts();
    if (!legal.empty())
      for (int n = int(rng_.range(1, std::min<std::int64_t>(4, std::int64_t(legal.size())))); n > 0; --n) {
        named.push_back(rng_.pick(legal));
        words.push_back(named.back());
      }
    if (rng_.chance(0.3) || words.empty()) {
      const std::string junk = rng_.chance(0.5) ? junkWord(rng_, board_) : illegalMoveText(rng_, board_);
      words.insert(words.begin() + rng_.range(0, std::int64_t(words.size())), junk);
    }
  } else {
    words = {"e2e4", "zzzz", "g1f3"};
  }
  return " searchmoves " + join(words);
}

// The Threads option, mostly 1 to 4, sometimes out of range or no number.
std::string Planner::threadsLine() {
  static const std::vector<std::string> Odd = {"0", "65", "-3", "abc", "", "100000000000"};
  return "setoption name Threads value " + (rng_.chance(0.85) ? std::to_string(rng_.range(1, 4)) : rng_.pick(Odd));
}

void Planner::whileSearching(int go) {
  // Options changed during a search wait for the next one (or are ignored).
  if (rng_.chance(0.1)) send(threadsLine());
  if (rng_.chance(0.3)) {
    pause(int(rng_.range(0, 100)));
    isready();
  }
  if (rng_.chance(0.1)) send(junkLine(rng_, rng_.chance(0.5) ? 0 : std::size_t(rng_.range(1, 200))));
  if (rng_.chance(0.03) && plan_.goes[std::size_t(go)].mode != SearchMode::Ponder) send("ponderhit");
  if (rng_.chance(0.04) && plan_.goes[std::size_t(go)].mode != SearchMode::Bounded) {
    // A position command during the search: whether it counts is the engine's affair, so the
    // position is not known afterwards; the search itself keeps its root.
    send("position startpos moves e2e4");
    known_ = false;
    // A search that has already ended waits for stop, and then the position does count: go lines
    // repeated after it may search the new position.
    if (plan_.goes[std::size_t(go)].repeats) plan_.goes[std::size_t(go)].root = SearchRoot{};
  }
}

void Planner::goAction(bool quick) {
  const int go = int(plan_.goes.size());
  plan_.goes.emplace_back();
  GoExpectation e;
  std::vector<std::string> named;
  std::string line;
  int mode = quick ? 0 : weighted(rng_, {55, 10, 18, 12, 4});
  const bool burst = mode == 2 && rng_.chance(0.25);
  const int repeats = !burst ? 0 : rng_.chance(0.6) ? int(rng_.range(1, 5)) : int(rng_.range(100, 200));
  if (burst && repeats > 50 && rng_.chance(0.6)) {
    // Repeated go lines in a position without moves are where nested searches pile up.
    const std::string fen = terminalFen(rng_);
    board_.setFen(fen);
    send("position fen " + fen);
    known_ = true;
  }
  const bool terminal = known_ && board_.legalMoves().empty();

  if (mode == 0) {
    e.mode = SearchMode::Bounded;
    e.allowanceMillis = BoundedBaseMillis;
    if (quick) {
      static const std::vector<std::string> Quick = {"go nodes 1", "go nodes 2", "go nodes 5", "go depth 1",
                                                     "go depth 2", "go movetime 1", "go movetime 5",
                                                     "go wtime 100 btime 100", "go nodes 1", "go depth 1"};
      line = rng_.pick(Quick);
    } else {
      line = "go " + boundedLimits(e.allowanceMillis);
      if (!terminal && rng_.chance(0.2)) line += searchMovesPart(named);
    }
  } else if (mode == 1 || mode == 4) {
    e.mode = SearchMode::Unbounded;
    static const std::vector<std::string> Unlimited = {
        "go", "go movestogo 30", "go winc 1000 binc 1000", "go wtime 2147483647 btime 2147483647",
        "go wtime 99999999999 btime 99999999999", "go movetime 99999999999", "go movetime 2147483647",
        "go nodes 99999999999", "go depth 99999999999", "go btime 1000 wtime 1000 movestogo 99999999999"};
    line = rng_.pick(Unlimited);
    if (known_ && rng_.chance(0.2)) line = board_.sideToMove() == White ? "go btime 1000" : "go wtime 1000";
    if (!terminal && rng_.chance(0.2)) line += searchMovesPart(named);
    if (mode == 4) {   // limits that only count if a tab separates words
      int unused = 0;
      named.clear();
      line = tabbed("go " + boundedLimits(unused));
    }
  } else if (mode == 2) {
    e.mode = SearchMode::Infinite;
    line = "go infinite";
    if (!terminal && rng_.chance(0.2)) line += searchMovesPart(named);
  } else {
    e.mode = SearchMode::Ponder;
    const std::int64_t w = rng_.range(100, 10000), b = rng_.range(100, 10000);
    e.allowanceMillis = BoundedBaseMillis + int(std::max(w, b));
    std::vector<std::string> parts = {"ponder", "wtime " + std::to_string(w), "btime " + std::to_string(b)};
    if (rng_.chance(0.3)) parts.push_back("winc " + std::to_string(rng_.range(0, 1000)));
    std::swap(parts[0], parts[std::size_t(rng_.range(0, 2))]);
    line = "go " + join(parts);
  }
  e.root = known_ ? rootOf(board_.fen(), named) : SearchRoot{};
  e.repeats = repeats;
  plan_.goes[std::size_t(go)] = e;

  add(Kind::Go, line, 0, go);
  if (quick) {
    add(Kind::AwaitBestMove, {}, 0, go);
    return;
  }
  if (e.mode == SearchMode::Bounded) {
    if (rng_.chance(0.2)) isready();
    if (rng_.chance(0.15)) {
      pause(int(rng_.range(0, 100)));
      add(Kind::Stop, "stop");
    }
  } else {
    pause(int(rng_.range(0, 400)));
    whileSearching(go);
    for (int i = 0; i < repeats; ++i) add(Kind::GoAgain, line, 0, go);
    if (repeats) {
      // A search that ends by itself (a forced mate reaches the last iteration quickly) waits, and
      // then every repeated go runs a whole search of its own before the isready is read.
      isready(BurstReadyMillis + RepeatedSearchMillis * repeats);
      add(Kind::AwaitReady);
    }
  }
  if (rng_.chance(0.06)) {   // the session ends while the engine searches
    end();
    return;
  }
  if (e.mode == SearchMode::Ponder && rng_.chance(0.5)) add(Kind::PonderHit, "ponderhit");
  else if (e.mode != SearchMode::Bounded) add(Kind::Stop, "stop");
  add(Kind::AwaitBestMove, {}, 0, go);
  if (repeats) {
    isready();
    add(Kind::AwaitReady);
  }
}

void Planner::idleAction() {
  switch (weighted(rng_, {22, 35, 7, 8, 4, 5, 2, 2, 2, 1, 1, 1})) {
    case 0: positionAction(); break;
    case 1: goAction(false); break;
    case 2: setoptionAction(); break;
    case 3: isready(); add(Kind::AwaitReady); break;
    case 4:
      // A new game leaves the position to the next position command.
      send("ucinewgame");
      known_ = false;
      break;
    case 5: send(junkLine(rng_, rng_.chance(0.7) ? 0 : std::size_t(rng_.range(1, 300)))); break;
    case 6:
      send(junkLine(rng_, std::size_t(rng_.range(10000, 100000))));
      if (rng_.chance(0.5)) {
        isready();
        add(Kind::AwaitReady);
      }
      break;
    case 7: add(Kind::Uci, "uci"); add(Kind::AwaitUciOk, {}, UciMillis); break;
    case 8: send("stop"); break;
    case 9: send("ponderhit"); break;
    case 10: send(""); break;
    default: send(junkLine(rng_, 0) + "\t" + junkLine(rng_, 0)); break;
  }
}

void Planner::end() {
  if (rng_.chance(0.5)) add(Kind::Quit, "quit");
  else add(Kind::Close);
  ended_ = true;
}

SessionPlan Planner::run() {
  if (rng_.chance(0.85)) {
    add(Kind::Uci, "uci");
    add(Kind::AwaitUciOk, {}, UciMillis);
  }
  for (int n = int(rng_.range(0, 3)); n > 0; --n) setoptionAction();
  if (rng_.chance(0.7)) {
    isready();
    add(Kind::AwaitReady);
  }
  if (rng_.chance(0.15)) {
    // Many short searches in a row from one position: faults that need a hundred searches to show.
    positionAction();
    for (int n = int(rng_.range(60, 300)); n > 0; --n) {
      if (rng_.chance(0.005)) positionAction();
      if (rng_.chance(0.03)) isready();
      goAction(true);
    }
  } else {
    if (rng_.chance(0.8)) positionAction();
    for (int n = int(rng_.range(1, 40)); n > 0 && !ended_; --n) idleAction();
  }
  if (!ended_) end();
  return std::move(plan_);
}

}  // namespace

int SessionPlan::commandCount() const {
  int n = 0;
  for (const Step& s : steps)
    if (s.kind != Kind::Pause && s.kind != Kind::AwaitBestMove && s.kind != Kind::AwaitReady && s.kind != Kind::AwaitUciOk)
      ++n;
  return n;
}

SessionPlan planSession(std::uint64_t seed) { return Planner(seed).run(); }

}  // namespace tavrin::fuzz

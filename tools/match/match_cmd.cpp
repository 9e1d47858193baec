// tavrin-tool match: schedules the games over worker threads, keeps the tallies, prints the
// running results and the final statistics, and writes the PGN.
#include <atomic>
#include <cstdio>
#include <fstream>
#include <memory>
#include <mutex>
#include <thread>

#include "tools/commands.h"
#include "tools/match/options.h"
#include "tools/match/pgn.h"

namespace tavrin::tool {

namespace {

using namespace tavrin::match;

// Results of the first engine against one opponent.
struct Pairing {
  int opponent = 0;
  Tally tally;
  std::vector<int> pairPoints;   // half-points of the first engine per opening pair, -1 unknown
  std::vector<int> pairGames;    // games of the pair finished so far
  int faults[2][6] = {};         // [0] the first engine, [1] the opponent; by Fault
  int unfinished = 0;
  int finished = 0;
  bool stopped = false;
  std::string sprtVerdict;
};

class Match {
 public:
  explicit Match(const MatchOptions& o) : opt_(o) {}
  int run();

 private:
  void worker();
  void record(int pairingIndex, int game, const GameRecord& g, bool firstIsWhite);
  void report(const Pairing& p, bool final) const;
  const std::string& name(int engine) const { return opt_.engines[std::size_t(engine)].name; }

  const MatchOptions& opt_;
  std::vector<Opening> openings_;
  std::vector<std::size_t> order_;
  std::vector<Pairing> pairings_;
  std::atomic<int> nextJob_{0};
  int totalJobs_ = 0;
  std::mutex mutex_;
  std::ofstream pgn_;
  int gamesFinished_ = 0;
};

void Match::report(const Pairing& p, bool final) const {
  const Tally& t = p.tally;
  EloEstimate e = estimateElo(t);
  std::printf("%s %s vs %s: %d games, +%d -%d =%d, score %.3f\n", final ? "Result of" : "Standing of",
              name(0).c_str(), name(p.opponent).c_str(), t.games(), t.wins, t.losses, t.draws, t.score());
  std::printf("Elo difference: %s, 95%% interval [%s, %s]\n", formatElo(e.elo).c_str(),
              formatElo(e.lower).c_str(), formatElo(e.upper).c_str());
  std::printf("Pentanomial pairs [LL LD DD/WL WD WW]: [%d %d %d %d %d]\n", t.penta[0], t.penta[1],
              t.penta[2], t.penta[3], t.penta[4]);
  if (opt_.sprt.enabled)
    std::printf("SPRT elo0=%g elo1=%g alpha=%g beta=%g: LLR %.3f [%.3f, %.3f]%s%s\n", opt_.sprt.elo0,
                opt_.sprt.elo1, opt_.sprt.alpha, opt_.sprt.beta,
                sprtLlr(t, opt_.sprt.elo0, opt_.sprt.elo1), opt_.sprt.lowerBound(),
                opt_.sprt.upperBound(), p.sprtVerdict.empty() ? "" : ", ", p.sprtVerdict.c_str());
  int faultCount[2] = {0, 0};
  for (int side = 0; side < 2; ++side) {
    std::string text;
    for (int f = 1; f < 6; ++f) {
      if (!p.faults[side][f]) continue;
      faultCount[side] += p.faults[side][f];
      text += (text.empty() ? "" : ", ") + std::to_string(p.faults[side][f]) + " " + faultName(Fault(f));
    }
    std::printf("Faults of %s: %s\n", name(side ? p.opponent : 0).c_str(), text.empty() ? "none" : text.c_str());
  }
  if (p.unfinished) std::printf("Games not played to an end: %d\n", p.unfinished);
  if (final)
    std::printf("Summary: engine=%s opponent=%s games=%d wins=%d losses=%d draws=%d score=%.3f elo=%s "
                "lower=%s upper=%s faults=%d/%d\n",
                name(0).c_str(), name(p.opponent).c_str(), t.games(), t.wins, t.losses, t.draws,
                t.score(), formatElo(e.elo).c_str(), formatElo(e.lower).c_str(),
                formatElo(e.upper).c_str(), faultCount[0], faultCount[1]);
  std::fflush(stdout);
}

void Match::record(int pi, int game, const GameRecord& g, bool firstIsWhite) {
  std::lock_guard<std::mutex> lock(mutex_);
  Pairing& p = pairings_[std::size_t(pi)];
  ++gamesFinished_;
  ++p.finished;
  std::printf("Finished game %d (%s vs %s): %s {%s}\n", game + 1, g.white.c_str(), g.black.c_str(),
              resultText(g.result), g.reason.c_str());
  if (g.fault != Fault::None) {
    bool firstFaulted = (g.faultSide == White) == firstIsWhite;
    ++p.faults[firstFaulted ? 0 : 1][int(g.fault)];
  }
  if (pgn_.is_open()) {
    PgnContext ctx;
    ctx.event = opt_.event;
    ctx.site = opt_.site;
    pgn_ << formatPgn(g, ctx);
    pgn_.flush();
  }
  if (g.result == GameResult::None) {
    ++p.unfinished;
  } else {
    int points = g.result == GameResult::Draw ? 1
                 : (g.result == GameResult::WhiteWins) == firstIsWhite ? 2 : 0;
    if (points == 2) ++p.tally.wins;
    else if (points == 1) ++p.tally.draws;
    else ++p.tally.losses;
    std::size_t pair = std::size_t(game / 2);
    p.pairPoints[pair] += points;
    if (++p.pairGames[pair] == 2) ++p.tally.penta[std::size_t(p.pairPoints[pair])];
  }
  const Tally& t = p.tally;
  std::printf("Score of %s vs %s: %d - %d - %d  [%.3f] %d\n", name(0).c_str(), name(p.opponent).c_str(),
              t.wins, t.losses, t.draws, t.score(), t.games());
  if (opt_.sprt.enabled && !p.stopped) {
    double llr = sprtLlr(t, opt_.sprt.elo0, opt_.sprt.elo1);
    if (llr >= opt_.sprt.upperBound()) p.sprtVerdict = "H1 accepted";
    if (llr <= opt_.sprt.lowerBound()) p.sprtVerdict = "H0 accepted";
    if (!p.sprtVerdict.empty()) {
      p.stopped = true;
      std::printf("SPRT: %s (LLR %.3f)\n", p.sprtVerdict.c_str(), llr);
    }
  }
  if (opt_.ratingInterval > 0 && gamesFinished_ % opt_.ratingInterval == 0) report(p, false);
  std::fflush(stdout);
}

void Match::worker() {
  std::vector<std::unique_ptr<EnginePlayer>> players(opt_.engines.size());
  auto get = [&](int i) -> EnginePlayer& {
    if (!players[std::size_t(i)]) {
      players[std::size_t(i)] = std::make_unique<EnginePlayer>();
      players[std::size_t(i)]->config = opt_.engines[std::size_t(i)];
    }
    return *players[std::size_t(i)];
  };
  int currentOpponent = -1;
  for (;;) {
    int job = nextJob_++;
    if (job >= totalJobs_) break;
    int pi = job / opt_.games, game = job % opt_.games;
    {
      std::lock_guard<std::mutex> lock(mutex_);
      if (pairings_[std::size_t(pi)].stopped) continue;
    }
    int opp = pairings_[std::size_t(pi)].opponent;
    if (currentOpponent != opp && currentOpponent > 0) players[std::size_t(currentOpponent)].reset();
    currentOpponent = opp;
    // Each opening is played twice in a row, colours swapped.
    const Opening& opening = openings_[order_[std::size_t(game / 2) % order_.size()]];
    bool firstIsWhite = game % 2 == 0;
    EnginePlayer& first = get(0);
    EnginePlayer& second = get(opp);
    GameRecord g = firstIsWhite ? playGame(first, second, opening, opt_.game)
                                : playGame(second, first, opening, opt_.game);
    g.round = opt_.engines.size() > 2 ? std::to_string(pi + 1) + "." + std::to_string(game + 1)
                                      : std::to_string(game + 1);
    record(pi, game, g, firstIsWhite);
    if (opt_.fresh) {
      first.process.stop();
      first.initialised = false;
      second.process.stop();
      second.initialised = false;
    }
  }
}

int Match::run() {
  ignoreBrokenPipes();
  initBoardOnce();
  if (opt_.haveOpenings) {
    std::string message;
    bool ok = readOpenings(opt_.openings, openings_, message);
    std::printf("%s\n", message.c_str());
    if (!ok) return 1;
  } else {
    openings_.push_back(Opening());
  }
  order_ = openingOrder(openings_.size(), opt_.openings.random, opt_.openings.seed);
  if (!opt_.pgnOut.empty()) {
    pgn_.open(opt_.pgnOut, std::ios::app);
    if (!pgn_) {
      std::fprintf(stderr, "match: cannot write %s\n", opt_.pgnOut.c_str());
      return 1;
    }
  }
  for (std::size_t i = 1; i < opt_.engines.size(); ++i) {
    Pairing p;
    p.opponent = int(i);
    p.pairPoints.assign(std::size_t(opt_.games + 1) / 2, 0);
    p.pairGames.assign(std::size_t(opt_.games + 1) / 2, 0);
    pairings_.push_back(p);
  }
  totalJobs_ = int(pairings_.size()) * opt_.games;
  int threads = opt_.concurrency ? opt_.concurrency : int(std::max(1u, std::thread::hardware_concurrency()));
  threads = std::min(threads, totalJobs_);
  std::printf("Playing %d games on %d thread%s\n", totalJobs_, threads, threads == 1 ? "" : "s");
  std::fflush(stdout);
  std::vector<std::thread> pool;
  for (int i = 0; i < threads; ++i) pool.emplace_back([this] { worker(); });
  for (std::thread& t : pool) t.join();
  for (const Pairing& p : pairings_) report(p, true);
  return 0;
}

}  // namespace

int matchCommand(int argc, char** argv) {
  std::vector<std::string> args(argv + 1, argv + argc);
  MatchOptions options;
  std::string error = parseMatchOptions(args, options);
  if (options.help) {
    std::fputs(MatchHelp, stdout);
    return 0;
  }
  if (!error.empty()) {
    std::fprintf(stderr, "match: %s\n(see tavrin-tool match --help)\n", error.c_str());
    return 2;
  }
  Match match(options);
  return match.run();
}

}  // namespace tavrin::tool

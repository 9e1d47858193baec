// tavrin-tool datagen: self-play games written as training data, one quiet position a line with
// the game's result and the search score; several processes can share one run.
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <string>
#include <vector>

#include "tools/commands.h"
#include "tools/datagen/self_play.h"
#include "tools/fuzz/random_input.h"
#include "tools/match/openings.h"

namespace tavrin::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr double ProgressSeconds = 10;
constexpr std::size_t OutputBufferBytes = 1 << 20;   // a whole game always fits: one write each

struct Options {
  std::string output;
  std::string book;
  long long games = 100;
  long long nodes = 8000;
  long long randomPlies = 4;
  long long skipPlies = 12;
  long long seed = 1;
  long long index = 0;
  long long count = 1;
  long long hash = 16;
};

void usage() {
  std::fprintf(stderr,
               "usage: datagen --output FILE [--games N] [--nodes N] [--book FILE] [--random-plies N]\n"
               "               [--skip-plies N] [--seed S] [--index K --count N] [--hash MB]\n"
               "  Plays N games (default 100) of the engine against itself, every move a search of\n"
               "  --nodes nodes (default 8000), from the openings of an EPD or PGN file (default: the start\n"
               "  position) and --random-plies random moves (default 4). Writes one quiet position a line:\n"
               "  \"FEN | result | score\", result 1.0/0.5/0.0 and score in centipawns, both for White.\n"
               "  Processes K = 0 .. N-1 of --count N play every N-th game of the same run.\n");
}

bool readNumber(const char* text, long long lo, long long hi, long long& value) {
  char* end = nullptr;
  errno = 0;
  const long long v = std::strtoll(text, &end, 10);
  if (end == text || *end != 0 || errno == ERANGE || v < lo || v > hi) return false;
  value = v;
  return true;
}

// Reads the arguments; false after printing what is wrong.
bool parse(int argc, char** argv, Options& o) {
  struct NumberOption {
    const char* name;
    long long* value;
    long long lo, hi;
  };
  const NumberOption numbers[] = {
      {"--games", &o.games, 1, 1000000000},       {"--nodes", &o.nodes, 100, 1000000000},
      {"--random-plies", &o.randomPlies, 0, 100}, {"--skip-plies", &o.skipPlies, 0, 1000},
      {"--seed", &o.seed, 0, 0x7FFFFFFFFFFFFFFF}, {"--index", &o.index, 0, 1000000},
      {"--count", &o.count, 1, 1000000},          {"--hash", &o.hash, 1, 4096},
  };
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--help") return false;
    if (i + 1 >= argc) {
      std::fprintf(stderr, "datagen: %s: unknown option or missing value\n", a.c_str());
      return false;
    }
    const char* value = argv[++i];
    if (a == "--output") {
      o.output = value;
      continue;
    }
    if (a == "--book") {
      o.book = value;
      continue;
    }
    bool known = false;
    for (const NumberOption& n : numbers) {
      if (a != n.name) continue;
      known = true;
      if (!readNumber(value, n.lo, n.hi, *n.value)) {
        std::fprintf(stderr, "datagen: %s needs a whole number from %lld to %lld, not '%s'\n", n.name, n.lo, n.hi,
                     value);
        return false;
      }
    }
    if (!known) {
      std::fprintf(stderr, "datagen: unknown option %s\n", a.c_str());
      return false;
    }
  }
  if (o.output.empty()) {
    std::fprintf(stderr, "datagen: --output FILE is required\n");
    return false;
  }
  if (o.index >= o.count) {
    std::fprintf(stderr, "datagen: --index %lld must be below --count %lld\n", o.index, o.count);
    return false;
  }
  return true;
}

struct Tally {
  long long games = 0, dropped = 0, positions = 0;
  long long searches = 0, nodes = 0;
  long long wins = 0, draws = 0, losses = 0;   // White's results
};

void printProgress(const Tally& t, long long games, Clock::time_point start) {
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  const double rate = seconds > 0 ? 1 / seconds : 0;
  std::fprintf(stderr,
               "datagen: %lld of %lld games, %lld positions (%.1f positions/s, %.2f games/s), "
               "+%lld =%lld -%lld, %lld dropped, %.0f s\n",
               t.games, games, t.positions, double(t.positions) * rate, double(t.games) * rate, t.wins, t.draws,
               t.losses, t.dropped, seconds);
}

}  // namespace

int datagenCommand(int argc, char** argv) {
  Options o;
  if (argc < 2) {
    usage();
    return 2;
  }
  if (!parse(argc, argv, o)) {
    usage();
    return 2;
  }

  std::vector<match::Opening> openings(1);   // the start position
  std::vector<std::size_t> order(1, 0);
  if (!o.book.empty()) {
    match::OpeningSettings s;
    s.file = o.book;
    std::string message;
    if (!match::readOpenings(s, openings, message)) {
      std::fprintf(stderr, "datagen: %s\n", message.c_str());
      return 1;
    }
    order = match::openingOrder(openings.size(), true, std::uint64_t(o.seed));
  }

  std::FILE* out = std::fopen(o.output.c_str(), "w");
  if (!out) {
    std::fprintf(stderr, "datagen: cannot write %s: %s\n", o.output.c_str(), std::strerror(errno));
    return 1;
  }
  std::setvbuf(out, nullptr, _IOFBF, OutputBufferBytes);

  datagen::SelfPlaySettings settings;
  settings.nodes = o.nodes;
  settings.randomPlies = int(o.randomPlies);
  settings.skipPlies = int(o.skipPlies);
  datagen::prepareSelfPlay(int(o.hash));

  // This process plays games index, index + count, ... of the run.
  const long long ownGames = (o.games - o.index + o.count - 1) / o.count;
  std::fprintf(stderr, "datagen: seed %lld, process %lld of %lld, %lld games of %lld nodes a move, %s, to %s\n",
               o.seed, o.index + 1, o.count, ownGames, o.nodes,
               o.book.empty() ? "from the start position" : (std::to_string(openings.size()) + " openings").c_str(),
               o.output.c_str());

  Tally tally;
  const Clock::time_point start = Clock::now();
  Clock::time_point lastReport = start;
  int status = 0;
  for (long long g = o.index; g < o.games; g += o.count) {
    datagen::SelfPlayGame game;
    try {
      game = datagen::playGame(openings[order[std::size_t(g) % order.size()]],
                               fuzz::sessionSeed(std::uint64_t(o.seed), std::uint64_t(g)), settings);
    } catch (const std::exception& e) {
      std::fprintf(stderr, "datagen: game %lld: %s\n", g, e.what());
      status = 1;
      break;
    }
    ++tally.games;
    tally.searches += game.searches;
    tally.nodes += (long long)game.nodes;
    if (game.end == datagen::GameEnd::Dropped) {
      ++tally.dropped;
    } else {
      tally.wins += game.result == match::GameResult::WhiteWins;
      tally.draws += game.result == match::GameResult::Draw;
      tally.losses += game.result == match::GameResult::BlackWins;
    }

    // Whole games only: a run stopped at any moment leaves a file of complete lines.
    std::string text;
    for (const datagen::KeptPosition& p : game.positions) text += datagen::dataLine(p, game.result);
    if (std::fwrite(text.data(), 1, text.size(), out) != text.size() || std::fflush(out) != 0) {
      std::fprintf(stderr, "datagen: writing %s failed: %s\n", o.output.c_str(), std::strerror(errno));
      status = 1;
      break;
    }
    tally.positions += (long long)game.positions.size();

    if (std::chrono::duration<double>(Clock::now() - lastReport).count() >= ProgressSeconds) {
      printProgress(tally, ownGames, start);
      lastReport = Clock::now();
    }
  }
  printProgress(tally, ownGames, start);
  if (tally.searches)
    std::fprintf(stderr, "datagen: %lld searches, %lld nodes each on average\n", tally.searches,
                 tally.nodes / tally.searches);
  if (std::fclose(out) != 0 && status == 0) {
    std::fprintf(stderr, "datagen: writing %s failed: %s\n", o.output.c_str(), std::strerror(errno));
    status = 1;
  }
  return status;
}

}  // namespace tavrin::tool

// tavrin-tool fuzz: random but plausible protocol sessions against an engine, each judged line
// by line; every failure is printed with its replay command and the commands it was sent.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <string>

#include "tools/commands.h"
#include "tools/fuzz/random_input.h"
#include "tools/fuzz/session_plan.h"
#include "tools/fuzz/session_run.h"
#include "tools/match/engine_process.h"

namespace tavrin::tool {

namespace {

using Clock = std::chrono::steady_clock;

constexpr int DefaultSeconds = 60;
constexpr int FullReports = 3;            // failures printed with their transcript
constexpr std::size_t ShownLineChars = 160;
constexpr std::size_t OutputLinesShown = 15;

struct Options {
  std::string engine;
  double seconds = -1;
  long long sessions = -1;
  std::uint64_t seed = 0;
  bool seedGiven = false;
  long long firstSession = 0;
  bool verbose = false;
  std::string saveDir;
};

int usage() {
  std::fprintf(stderr,
               "usage: fuzz --engine PATH [--seconds N] [--sessions N] [--seed S] [--first-session K]\n"
               "            [--verbose] [--save DIR]\n"
               "  Runs random protocol sessions against the engine (for %d s when no limit is given).\n"
               "  --save DIR writes the exact input of each failing session to DIR.\n",
               DefaultSeconds);
  return 2;
}

bool readNumber(const char* text, long long& value) {
  char* end = nullptr;
  value = std::strtoll(text, &end, 10);
  return end != text && *end == 0 && value >= 0;
}

bool parse(int argc, char** argv, Options& o) {
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    const bool hasValue = i + 1 < argc;
    long long n = 0;
    if (a == "--engine" && hasValue) o.engine = argv[++i];
    else if (a == "--seconds" && hasValue && readNumber(argv[++i], n)) o.seconds = double(n);
    else if (a == "--sessions" && hasValue && readNumber(argv[++i], n)) o.sessions = n;
    else if (a == "--seed" && hasValue && readNumber(argv[++i], n)) o.seed = std::uint64_t(n), o.seedGiven = true;
    else if (a == "--first-session" && hasValue && readNumber(argv[++i], n)) o.firstSession = n;
    else if (a == "--save" && hasValue) o.saveDir = argv[++i];
    else if (a == "--verbose") o.verbose = true;
    else return false;
  }
  if (o.seconds < 0 && o.sessions < 0) o.seconds = DefaultSeconds;
  return !o.engine.empty();
}

// The failure's first line with its numbers and quoted text taken out: failures of one kind
// are counted together in the summary.
std::string kindOf(const std::string& failure) {
  std::string kind;
  for (char c : failure.substr(0, failure.find('\n'))) {
    if (c == '"' || c == ':') break;
    if (c >= '0' && c <= '9') {
      if (kind.empty() || kind.back() != 'N') kind += 'N';
    } else {
      kind += c;
    }
  }
  while (!kind.empty() && kind.back() == ' ') kind.pop_back();
  return kind;
}

std::string shown(const std::string& entry) {
  if (entry.size() <= ShownLineChars) return entry;
  return entry.substr(0, ShownLineChars) + "... (" + std::to_string(entry.size()) + " characters)";
}

// Transcript entries read "[    ms] > line" for lines sent and "[    ms] < line" for lines received.
bool isSent(const std::string& entry) { return entry.compare(8, 3, " > ") == 0; }
bool isReceived(const std::string& entry) { return entry.compare(8, 3, " < ") == 0; }

void printFailure(const Options& o, long long session, const fuzz::SessionReport& r, bool full) {
  std::printf("FAIL session %lld: %s\n", session, r.failure.c_str());
  std::printf("  replay: tavrin-tool fuzz --engine %s --seed %llu --first-session %lld --sessions 1\n",
              o.engine.c_str(), static_cast<unsigned long long>(o.seed), session);
  if (!full) return;
  std::printf("  commands sent:\n");
  std::size_t received = 0;
  for (const std::string& t : r.transcript) {
    if (isSent(t)) std::printf("    %s\n", shown(t).c_str());
    received += isReceived(t);
  }
  std::printf("  last engine output:\n");
  std::size_t skip = received > OutputLinesShown ? received - OutputLinesShown : 0;
  for (const std::string& t : r.transcript) {
    if (!isReceived(t)) continue;
    if (skip) --skip;
    else std::printf("    %s\n", shown(t).c_str());
  }
}

void saveInput(const Options& o, long long session, const fuzz::SessionReport& r) {
  std::filesystem::create_directories(o.saveDir);
  const std::string path = o.saveDir + "/seed-" + std::to_string(o.seed) + "-session-" + std::to_string(session) + ".txt";
  std::ofstream out(path);
  for (const std::string& t : r.transcript)
    if (isSent(t) && t.compare(11, std::string::npos, "(end of input)") != 0) out << t.substr(11) << '\n';
  std::printf("  input saved to %s\n", path.c_str());
}

}  // namespace

int fuzzCommand(int argc, char** argv) {
  Options o;
  if (!parse(argc, argv, o)) return usage();
  if (!o.seedGiven) o.seed = std::random_device{}() % 1000000000u;
  match::ignoreBrokenPipes();

  std::random_device device;
  fuzz::RunSettings settings;
  settings.engine = o.engine;
  settings.verbose = o.verbose;
  settings.stderrPath = (std::filesystem::temp_directory_path() /
                         ("tavrin-fuzz-" + std::to_string(o.seed) + "-" + std::to_string(device()) + ".stderr"))
                            .string();

  std::printf("fuzz: seed %llu, engine %s\n", static_cast<unsigned long long>(o.seed), o.engine.c_str());
  std::fflush(stdout);
  const auto start = Clock::now();
  long long sessions = 0, commands = 0, failures = 0;
  std::map<std::string, int> kinds;
  for (long long k = o.firstSession;; ++k) {
    if (o.sessions >= 0 && sessions >= o.sessions) break;
    if (o.seconds >= 0 && std::chrono::duration<double>(Clock::now() - start).count() >= o.seconds) break;
    const fuzz::SessionPlan plan = fuzz::planSession(fuzz::sessionSeed(o.seed, std::uint64_t(k)));
    if (o.verbose) std::printf("session %lld\n", k);
    const fuzz::SessionReport report = fuzz::runSession(plan, settings);
    ++sessions;
    commands += report.commands;
    if (!report.failure.empty()) {
      ++failures;
      ++kinds[kindOf(report.failure)];
      printFailure(o, k, report, o.verbose || failures <= FullReports);
      if (!o.saveDir.empty()) saveInput(o, k, report);
    }
    std::fflush(stdout);
  }
  const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::printf("fuzz: %lld sessions, %lld commands, %lld failures (seed %llu, %.1f s)\n", sessions, commands,
              failures, static_cast<unsigned long long>(o.seed), seconds);
  for (const auto& [kind, count] : kinds) std::printf("  %4d  %s\n", count, kind.c_str());
  return failures ? 1 : 0;
}

}  // namespace tavrin::tool

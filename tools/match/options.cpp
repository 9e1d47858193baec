// Parsing of the match runner's command line.
#include "tools/match/options.h"

#include <cstdlib>
#include <map>

namespace tavrin::match {

const char* MatchHelp =
    "usage: tavrin-tool match -engine KEY=VALUE... -engine KEY=VALUE... [options]\n"
    "\n"
    "Plays games between UCI engines. With more than two engines the first plays each other one.\n"
    "\n"
    "Engine keys (after -engine, or after -each for every engine):\n"
    "  cmd=PATH          program to run (searched in PATH)\n"
    "  args=\"A B\"        its arguments, split at blanks\n"
    "  dir=DIR           working directory\n"
    "  name=NAME         name in results and PGN (default: the program name)\n"
    "  option.NAME=VALUE a UCI option sent with setoption\n"
    "  tc=[MOVES/]BASE[+INC]  clock in seconds, e.g. 10+0.1 or 40/60\n"
    "  st=SECONDS        fixed time per move\n"
    "  nodes=N           node limit per move\n"
    "  depth=N           depth limit per move\n"
    "  ponder            let the engine think on the opponent's time\n"
    "\n"
    "Options:\n"
    "  -openings file=F [format=epd|pgn] [order=random|sequential] [seed=N] [plies=N]\n"
    "                    each opening is played twice, colours swapped\n"
    "  -games N          games per pairing (default 2); -rounds N plays 2N\n"
    "  -concurrency N    games at once (default: number of cores)\n"
    "  -pgnout FILE      append every game to FILE\n"
    "  -fresh            new engine processes for each game (default: ucinewgame reuse)\n"
    "  -resign movecount=N score=CP   a side scoring <= -CP for N moves while its opponent\n"
    "                    scores >= CP for N moves loses\n"
    "  -draw movenumber=N movecount=M score=CP   after move N, both sides within CP of zero\n"
    "                    for M moves each: draw\n"
    "  -sprt elo0=E0 elo1=E1 alpha=A beta=B   stop when the GSPRT over game pairs decides\n"
    "  -timemargin MS    overstep of the clock forgiven (default 50)\n"
    "  -replytimeout S   wait for handshakes, stops and untimed searches (default 10)\n"
    "  -event NAME, -site NAME   PGN tags\n"
    "  -ratinginterval N print the Elo estimate every N games (default 10; 0 only at the end)\n"
    "\n"
    "Faults (illegal move, crash, no reply, loss on time) lose the game and are reported.\n";

namespace {

bool toInt(const std::string& s, long long lo, long long hi, long long& out) {
  if (s.empty()) return false;
  char* end = nullptr;
  long long v = std::strtoll(s.c_str(), &end, 10);
  if (*end != '\0' || v < lo || v > hi) return false;
  out = v;
  return true;
}

bool toDouble(const std::string& s, double& out) {
  if (s.empty()) return false;
  char* end = nullptr;
  double v = std::strtod(s.c_str(), &end);
  if (*end != '\0' || v != v) return false;
  out = v;
  return true;
}

std::vector<std::string> splitArgs(const std::string& s) {
  std::vector<std::string> out;
  std::string cur;
  bool have = false;
  char quote = 0;
  for (char c : s) {
    if (quote) {
      if (c == quote) quote = 0;
      else cur += c;
    } else if (c == '"' || c == '\'') {
      quote = c;
      have = true;
    } else if (c == ' ' || c == '\t') {
      if (have || !cur.empty()) out.push_back(cur);
      cur.clear();
      have = false;
    } else {
      cur += c;
    }
  }
  if (have || !cur.empty()) out.push_back(cur);
  return out;
}

std::string applyEngineKey(EngineConfig& e, const std::string& token) {
  if (token == "ponder") {
    e.ponder = true;
    return "";
  }
  std::size_t eq = token.find('=');
  if (eq == std::string::npos) return "engine setting without '=': " + token;
  std::string key = token.substr(0, eq), value = token.substr(eq + 1);
  long long n;
  if (key == "cmd") e.command = value;
  else if (key == "args") e.args = splitArgs(value);
  else if (key == "dir") e.workDir = value;
  else if (key == "name") e.name = value;
  else if (key.rfind("option.", 0) == 0 && key.size() > 7) {
    std::string name = key.substr(7);
    for (auto& kv : e.options)
      if (kv.first == name) {
        kv.second = value;
        return "";
      }
    e.options.emplace_back(name, value);
  } else if (key == "tc") {
    if (value == "inf") e.tc.hasClock = false;
    else if (!parseClock(value, e.tc)) return "bad time control: " + value;
  } else if (key == "st") {
    if (!parseSeconds(value, e.tc.moveTimeMs) || e.tc.moveTimeMs <= 0) return "bad st: " + value;
  } else if (key == "nodes") {
    if (!toInt(value, 1, 1LL << 50, n)) return "bad nodes: " + value;
    e.tc.nodes = n;
  } else if (key == "depth") {
    if (!toInt(value, 1, 1000, n)) return "bad depth: " + value;
    e.tc.depth = int(n);
  } else if (key == "proto") {
    if (value != "uci") return "only the uci protocol is spoken";
  } else {
    return "unknown engine setting: " + key;
  }
  return "";
}

// Reads the KEY=VALUE tokens that follow an option, up to the next option.
std::map<std::string, std::string> keyValues(const std::vector<std::string>& a, std::size_t& i,
                                             std::string& error) {
  std::map<std::string, std::string> kv;
  while (i + 1 < a.size() && !(a[i + 1].size() > 1 && a[i + 1][0] == '-' && a[i + 1].find('=') == std::string::npos)) {
    const std::string& t = a[++i];
    std::size_t eq = t.find('=');
    if (eq == std::string::npos) error = "expected KEY=VALUE: " + t;
    else kv[t.substr(0, eq)] = t.substr(eq + 1);
  }
  return kv;
}

}  // namespace

std::string parseMatchOptions(const std::vector<std::string>& a, MatchOptions& out) {
  std::vector<std::vector<std::string>> engineTokens;
  std::vector<std::string> eachTokens;
  long long n;
  double d;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const std::string& opt = a[i];
    auto value = [&](std::string& v) {
      if (i + 1 >= a.size()) return false;
      v = a[++i];
      return true;
    };
    std::string v, error;
    if (opt == "-help" || opt == "--help" || opt == "-h") {
      out.help = true;
      return "";
    } else if (opt == "-engine" || opt == "-each") {
      std::vector<std::string> tokens;
      while (i + 1 < a.size() && !(a[i + 1].size() > 1 && a[i + 1][0] == '-' && a[i + 1].find('=') == std::string::npos))
        tokens.push_back(a[++i]);
      if (opt == "-engine") engineTokens.push_back(tokens);
      else eachTokens.insert(eachTokens.end(), tokens.begin(), tokens.end());
    } else if (opt == "-openings") {
      auto kv = keyValues(a, i, error);
      if (!error.empty()) return error;
      for (auto& [k, val] : kv) {
        if (k == "file") out.openings.file = val;
        else if (k == "format") out.openings.format = val;
        else if (k == "order") {
          if (val != "random" && val != "sequential") return "bad order: " + val;
          out.openings.random = val == "random";
        } else if (k == "seed") {
          if (!toInt(val, 0, (1LL << 62), n)) return "bad seed: " + val;
          out.openings.seed = std::uint64_t(n);
        } else if (k == "plies") {
          if (!toInt(val, 0, 1000, n)) return "bad plies: " + val;
          out.openings.plies = int(n);
        } else if (k == "policy" || k == "start") {
          // accepted for familiarity; has no effect
        } else {
          return "unknown openings setting: " + k;
        }
      }
      if (out.openings.file.empty()) return "-openings needs file=";
      out.haveOpenings = true;
    } else if (opt == "-games" || opt == "-rounds") {
      if (!value(v) || !toInt(v, 1, 100000000, n)) return opt + " needs a positive number";
      out.games = int(opt == "-rounds" ? 2 * n : n);
    } else if (opt == "-concurrency") {
      if (!value(v) || !toInt(v, 1, 256, n)) return "-concurrency needs a number from 1 to 256";
      out.concurrency = int(n);
    } else if (opt == "-pgnout") {
      if (!value(out.pgnOut)) return "-pgnout needs a file";
    } else if (opt == "-fresh") {
      out.fresh = true;
    } else if (opt == "-resign" || opt == "-draw" || opt == "-sprt") {
      auto kv = keyValues(a, i, error);
      if (!error.empty()) return error;
      for (auto& [k, val] : kv) {
        if (opt == "-sprt") {
          if (!toDouble(val, d)) return "bad number: " + val;
          if (k == "elo0") out.sprt.elo0 = d;
          else if (k == "elo1") out.sprt.elo1 = d;
          else if (k == "alpha") out.sprt.alpha = d;
          else if (k == "beta") out.sprt.beta = d;
          else return "unknown sprt setting: " + k;
          continue;
        }
        if (!toInt(val, -1000000, 1000000, n)) return "bad number: " + val;
        Adjudication& adj = out.game.adjudication;
        if (opt == "-resign" && k == "movecount") adj.resignMoveCount = int(n);
        else if (opt == "-resign" && k == "score") adj.resignScore = int(n);
        else if (opt == "-draw" && k == "movenumber") adj.drawMoveNumber = int(n);
        else if (opt == "-draw" && k == "movecount") adj.drawMoveCount = int(n);
        else if (opt == "-draw" && k == "score") adj.drawScore = int(n);
        else return "unknown " + opt.substr(1) + " setting: " + k;
      }
      if (opt == "-sprt") {
        out.sprt.enabled = true;
        if (!(out.sprt.alpha > 0 && out.sprt.alpha < 1 && out.sprt.beta > 0 && out.sprt.beta < 1) ||
            out.sprt.elo1 <= out.sprt.elo0)
          return "-sprt needs elo0 < elo1 and alpha, beta in (0, 1)";
      }
    } else if (opt == "-timemargin") {
      if (!value(v) || !toInt(v, 0, 3600000, n)) return "-timemargin needs milliseconds";
      out.game.timeMarginMs = n;
    } else if (opt == "-replytimeout") {
      std::int64_t ms;
      if (!value(v) || !parseSeconds(v, ms) || ms <= 0) return "-replytimeout needs seconds";
      out.game.replyTimeoutMs = ms;
    } else if (opt == "-event") {
      if (!value(out.event)) return "-event needs a name";
    } else if (opt == "-site") {
      if (!value(out.site)) return "-site needs a name";
    } else if (opt == "-ratinginterval") {
      if (!value(v) || !toInt(v, 0, 1000000, n)) return "-ratinginterval needs a number";
      out.ratingInterval = int(n);
    } else {
      return "unknown option: " + opt;
    }
  }

  for (const auto& tokens : engineTokens) {
    EngineConfig e;
    for (const std::string& t : eachTokens)
      if (std::string why = applyEngineKey(e, t); !why.empty()) return why;
    for (const std::string& t : tokens)
      if (std::string why = applyEngineKey(e, t); !why.empty()) return why;
    if (e.command.empty()) return "an engine needs cmd=";
    if (e.name.empty()) {
      std::size_t slash = e.command.rfind('/');
      e.name = slash == std::string::npos ? e.command : e.command.substr(slash + 1);
    }
    if (!e.tc.limited()) return "engine " + e.name + " has no time control (tc=, st=, nodes= or depth=)";
    out.engines.push_back(e);
  }
  if (out.engines.size() < 2) return "at least two engines are needed";
  // Equal names would make results and PGN ambiguous.
  for (std::size_t i = 0; i < out.engines.size(); ++i)
    for (std::size_t j = 0; j < i; ++j)
      if (out.engines[i].name == out.engines[j].name) out.engines[i].name.append(1, '-').append(std::to_string(i + 1));
  return "";
}

}  // namespace tavrin::match

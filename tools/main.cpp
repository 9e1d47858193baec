// tavrin-tool: developer subcommands (perft, bench, eval, ...).
#include <cstdio>
#include <cstring>

#include "tools/commands.h"

namespace {

struct Subcommand {
  const char* name;
  int (*run)(int, char**);
  const char* help;
};

const Subcommand Subcommands[] = {
    {"perft", tavrin::tool::perftCommand, "perft [--bulk] FEN DEPTH | perft [--bulk] --epd FILE [--max-depth N]"},
    {"eval", tavrin::tool::evalCommand, "eval FEN"},
    {"bench", tavrin::tool::benchCommand, "bench [DEPTH] [--threads N]"},
    {"match", tavrin::tool::matchCommand, "match -engine cmd=PATH ... -engine cmd=PATH ... [options] (match --help)"},
    {"fuzz", tavrin::tool::fuzzCommand, "fuzz --engine PATH [--seconds N] [--sessions N] [--seed S] [--verbose] (fuzz --help)"},
    {"datagen", tavrin::tool::datagenCommand,
     "datagen --output FILE [--games N] [--nodes N] [--book FILE] [--seed S] [--index K --count N] ..."},
    {"tune", tavrin::tool::tuneCommand, "tune --data FILE [--data FILE ...] [--lambda L] [--epochs N] ... (tune --help)"},
    {"clock", tavrin::tool::clockCommand, "clock FILE.pgn [FILE.pgn ...]"},
};

int usage() {
  std::fprintf(stderr, "usage: tavrin-tool <command> [arguments]\n");
  for (const Subcommand& s : Subcommands) std::fprintf(stderr, "  %s\n", s.help);
  return 2;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return usage();
  for (const Subcommand& s : Subcommands)
    if (std::strcmp(argv[1], s.name) == 0) return s.run(argc - 1, argv + 1);
  return usage();
}

// tavrin-tool clock: how much of its clock each engine used in the games of match PGN files.
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/clock/clock_report.h"
#include "tools/commands.h"

namespace tavrin::tool {

namespace {

void usage() {
  std::fprintf(stderr,
               "usage: clock FILE.pgn [FILE.pgn ...]\n"
               "  Per engine (by the White and Black tags): the share of its clock used per game (the time\n"
               "  spent over the base time plus the increments of its moves; a game lost on time counts\n"
               "  as all of it), the time per move by phase of the game, and the losses on time. Reads\n"
               "  the move times from the comments written by the match command; games without them or\n"
               "  without a time control are skipped and counted.\n");
}

// Feeds a whole file in pieces, so that a huge line costs no more than the reader keeps of it.
bool feedFile(const char* path, clockuse::ClockReader& reader) {
  std::FILE* f = std::fopen(path, "rb");
  if (!f) return false;
  char buf[1 << 16];
  std::size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, f)) > 0) reader.feed(std::string_view(buf, n));
  bool ok = !std::ferror(f);
  std::fclose(f);
  reader.finish();
  return ok;
}

}  // namespace

int clockCommand(int argc, char** argv) {
  if (argc < 2) {
    usage();
    return 2;
  }
  for (int i = 1; i < argc; ++i)
    if (std::strcmp(argv[i], "--help") == 0 || std::strcmp(argv[i], "-h") == 0) {
      usage();
      return 0;
    }
  clockuse::ClockReader reader;
  for (int i = 1; i < argc; ++i) {
    if (!feedFile(argv[i], reader)) {
      std::fprintf(stderr, "clock: cannot read %s: %s\n", argv[i], std::strerror(errno));
      return 1;
    }
  }
  std::fputs(clockuse::formatClockReport(reader.report()).c_str(), stdout);
  return 0;
}

}  // namespace tavrin::tool

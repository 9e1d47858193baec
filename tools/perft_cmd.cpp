// Placeholder until the perft subcommand lands.
#include <cstdio>

#include "tools/commands.h"

namespace tavrin::tool {

int perftCommand(int, char**) {
  std::fprintf(stderr, "perft: not available yet\n");
  return 1;
}

}  // namespace tavrin::tool

// Placeholder until the bench subcommand lands.
#include <cstdio>

#include "tools/commands.h"

namespace tavrin::tool {

int benchCommand(int, char**) {
  std::fprintf(stderr, "bench: not available yet\n");
  return 1;
}

}  // namespace tavrin::tool

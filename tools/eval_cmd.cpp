// Placeholder until the eval subcommand lands.
#include <cstdio>

#include "tools/commands.h"

namespace tavrin::tool {

int evalCommand(int, char**) {
  std::fprintf(stderr, "eval: not available yet\n");
  return 1;
}

}  // namespace tavrin::tool

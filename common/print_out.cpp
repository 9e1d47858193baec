// The single output routine.
#include <cstdarg>
#include <cstdio>

#include "common/console.h"

namespace tavrin {

void printOut(const char* format, ...) {
  va_list args;
  va_start(args, format);
  std::vfprintf(stdout, format, args);
  va_end(args);
  std::fflush(stdout);
}

}  // namespace tavrin

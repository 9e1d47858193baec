// Reading decimal numbers from command text.
#include "uci/decimal.h"

namespace tavrin {

std::int64_t readDecimal(const char* text) {
  while (*text == ' ' || *text == '\t' || *text == '\n' || *text == '\r' || *text == '\v' || *text == '\f')
    ++text;
  const bool negative = *text == '-';
  if (*text == '-' || *text == '+') ++text;
  std::uint64_t value = 0;
  for (; *text >= '0' && *text <= '9'; ++text) value = value * 10 + std::uint64_t(*text - '0');
  return std::int64_t(negative ? 0 - value : value);
}

}  // namespace tavrin

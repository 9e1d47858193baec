// Reading decimal numbers from command text.
#pragma once

#include <cstdint>

namespace tavrin {

// Decimal number in the manner of atoi (leading blanks, optional sign, digits; no digits give 0),
// accumulated modulo 2^64 so that absurd inputs wrap instead of overflowing.
std::int64_t readDecimal(const char* text);

}  // namespace tavrin

// Splitting command text into words.
#pragma once

#include <cstddef>

namespace tavrin {

// Command words are read into buffers of this many bytes; longer words are truncated.
constexpr std::size_t WordBytes = 1024;

// Copies the next word, delimited by the characters for which isSeparator holds and truncated to
// the buffer, and returns the text just after it. An empty word means the text has ended.
template <class IsSeparator>
const char* readWord(const char* text, char* word, IsSeparator isSeparator) {
  while (isSeparator(*text)) ++text;
  std::size_t n = 0;
  for (; *text && !isSeparator(*text); ++text)
    if (n < WordBytes - 1) word[n++] = *text;
  word[n] = 0;
  return text;
}

}  // namespace tavrin

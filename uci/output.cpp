// Formatting of search results into protocol text.
#include "uci/output.h"

#include <cstdio>

namespace tavrin {

const char* scoreText(int score) {
  static char text[32];
  if (score > MateThreshold)
    std::snprintf(text, sizeof text, "mate %d", (MateScore + 1 - score) / 2);
  else if (score < -MateThreshold)
    std::snprintf(text, sizeof text, "mate %d", (-MateScore - score) / 2);
  else
    std::snprintf(text, sizeof text, "cp %d", score);
  return text;
}

char* moveText(Move m, char* buf) {
  if (m == NoMove) {
    buf[0] = 'N', buf[1] = 'U', buf[2] = 'L', buf[3] = 'L', buf[4] = 0;
    return buf;
  }
  int from = moveFrom(m), to = moveTo(m);
  buf[0] = char('a' + fileOf(from));
  buf[1] = char('1' + rankOf(from));
  buf[2] = char('a' + fileOf(to));
  buf[3] = char('1' + rankOf(to));
  buf[4] = 0;
  if (moveKind(m) >= PromoteKnight) {
    buf[4] = "0123nbrq"[moveKind(m)];
    buf[5] = 0;
  }
  return buf;
}

}  // namespace tavrin

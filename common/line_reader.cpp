// The line reader: fgets-like lines out of a byte source, with a non-blocking readiness test.
#include <cstring>

#include "common/console.h"

namespace tavrin {

bool LineReader::fill() {
  if (ended_) return false;
  if (begin_ > 0) {
    std::memmove(buffer_, buffer_ + begin_, end_ - begin_);
    end_ -= begin_;
    begin_ = 0;
  }
  if (end_ == sizeof buffer_) return true;
  long n = source_(buffer_ + end_, sizeof buffer_ - end_);
  if (n <= 0) {
    ended_ = true;
    return false;
  }
  end_ += std::size_t(n);
  return true;
}

bool LineReader::completeLineBuffered() const {
  return end_ - begin_ >= MaxLineChars || std::memchr(buffer_ + begin_, '\n', end_ - begin_) != nullptr;
}

bool LineReader::readLine(char* out) {
  std::size_t n = 0;
  bool newline = false;
  while (!newline && n < MaxLineChars) {
    if (begin_ == end_ && !fill()) break;
    while (begin_ < end_ && n < MaxLineChars) {
      char c = buffer_[begin_++];
      out[n++] = c;
      if (c == '\n') {
        newline = true;
        if (cr_ == CarriageReturn::Drop && n >= 2 && out[n - 2] == '\r') {
          out[n - 2] = '\n';   // "\r\n" becomes "\n"
          --n;
        }
        break;
      }
    }
  }
  out[n] = 0;
  if (n == 0) return false;
  // The last character read is taken to be the newline and dropped unseen; the length is that of
  // the text, which a NUL byte in the input may shorten (and then nothing is dropped at -1).
  std::size_t length = std::strlen(out);
  if (length > 0) out[length - 1] = 0;
  return true;
}

bool LineReader::lineReady(bool (*ready)()) {
  if (completeLineBuffered()) return true;
  if (ended_) return true;
  if (!ready()) return false;
  fill();
  return completeLineBuffered() || ended_;
}

}  // namespace tavrin

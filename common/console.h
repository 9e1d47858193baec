// Console input and output: the single output routine and the command-line reader.
#pragma once

#include <cstddef>


namespace tavrin {

// Formatted write to standard output followed at once by a flush. Every line the engine prints
// goes through here, so a GUI reading a pipe sees each line as soon as it is written.
void printOut(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Longest line piece the reader hands out (a longer line is split), and the buffer a caller gives it.
constexpr std::size_t MaxLineChars = 65535;
constexpr std::size_t LineBufferBytes = MaxLineChars + 1;

// What happens to a carriage return just before a line feed: kept as part of the line (Linux,
// where a line ends in a line feed), or dropped with it (Windows, where consoles and many GUIs end
// their lines in CR LF, and a program reading in text mode would never see the CR).
enum class CarriageReturn { Keep, Drop };
#ifdef _WIN32
constexpr CarriageReturn PlatformCarriageReturn = CarriageReturn::Drop;
#else
constexpr CarriageReturn PlatformCarriageReturn = CarriageReturn::Keep;
#endif

// Reads standard input through its own buffer with fgets-like rules: one line of at most
// MaxLineChars characters, the last character read always dropped (taken to be the newline), a
// carriage return before it kept or dropped as the platform says. The source is a function so
// that tests can feed it.
class LineReader {
 public:
  using Source = long (*)(char* buffer, std::size_t n);
  explicit LineReader(Source source, CarriageReturn cr = PlatformCarriageReturn) : source_(source), cr_(cr) {}

  // Blocks until a line (or the end of input) is there. Returns false when the input has ended
  // and nothing was read; otherwise writes the NUL-terminated line into out (LineBufferBytes).
  bool readLine(char* out);
  // True when readLine would return without blocking: a line, or the end of input. Never blocks:
  // it takes in at most what the source has ready (when ready() says so).
  bool lineReady(bool (*ready)());
  // True when some input (a whole or partial line) is already buffered.
  bool hasBuffered() const { return begin_ < end_; }

 private:
  bool fill();                   // one read from the source into the free space; false at end
  bool completeLineBuffered() const;

  Source source_;
  CarriageReturn cr_;
  bool ended_ = false;
  std::size_t begin_ = 0, end_ = 0;
  char buffer_[LineBufferBytes];
};

}  // namespace tavrin

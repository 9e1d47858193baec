// The evaluation's trace: while a trace is active, every weight the evaluation uses is noted with
// how often it counted, so that the tuner can score positions with other weights through the
// engine's own evaluation code. Without an active trace the notes cost one predictable branch.
#pragma once

#include <cstdint>
#include <vector>

#include "board/position.h"
#include "eval/weights.h"

namespace tavrin {

// Where a weight's count goes. The per-colour channels are followed by the colour ([Black, White]).
constexpr int PositionalChannel = 0;  // packed positional sum, counted for White minus Black
constexpr int MaterialChannel = 1;    // material value, counted for White minus Black
constexpr int ShelterChannel = 2;     // king shelter (middlegame points) of one colour, +colour
constexpr int DangerChannel = 4;      // king danger sum of one colour's king, +colour
constexpr int PullChannel = 6;        // drawish pull of one colour, +colour
constexpr int ChannelCount = 8;

// A weight is known by its place in EvalWeights: its index in 32-bit words.
constexpr int WeightSlots = int(sizeof(EvalWeights) / sizeof(std::int32_t));
static_assert(sizeof(Packed) == sizeof(std::int32_t) && sizeof(int) == sizeof(std::int32_t),
              "every weight is one 32-bit word");

struct TraceNote {
  std::uint16_t slot;
  std::uint8_t channel;
  std::int32_t count;
};

struct EvalTrace {
  std::vector<TraceNote> notes;
  int attackersByKind[2][8] = {};  // pieces of a colour attacking the enemy king zone, by kind
  bool dangerScored[2] = {};       // the king of this colour faced enough attackers to be scored
  int scaleSlot = -1;              // the scale factor the material chose, -1 for none (1.0)
  // What the evaluation computed, for the tuner to check its model against.
  Packed positional = 0;           // the packed positional sum, White's point of view
  int material = 0;                // the material value, White's point of view
  int scale = 128;
  int pull[2] = {0, 0};
  int phase = 0;
  int shelter[2] = {0, 0};
  int danger[2] = {0, 0};          // the king-danger sum of each colour's king, where scored
  std::uint8_t flags = 0;          // evalFlags of the material
  bool modelled = false;           // false for pawn endings and the special and minor-piece endings
  int total = 0;                   // the final score without noise, White's point of view

  // Empties the trace, keeping the notes' storage.
  void reset() {
    std::vector<TraceNote> kept = std::move(notes);
    *this = EvalTrace{};
    notes = std::move(kept);
    notes.clear();
  }
};

// The trace being filled, or null (the engine's case).
extern EvalTrace* ActiveTrace;

inline int slotOf(const std::int32_t& weight) {
  return int(&weight - reinterpret_cast<const std::int32_t*>(&Weights));
}

// Out of line, so that the engine's evaluation carries only the test of ActiveTrace.
[[gnu::cold, gnu::noinline]] void recordNote(const std::int32_t& weight, int channel, int count);

inline void noteWeight(const std::int32_t& weight, int channel, int count) {
  if (ActiveTrace) [[unlikely]] recordNote(weight, channel, count);
}

// A packed positional weight counted count times for colour Us.
template <Color Us>
inline Packed term(const Packed& weight, int count = 1) {
  noteWeight(weight, PositionalChannel, Us == White ? count : -count);
  return weight * count;
}

// A plain weight counted count times in channel (already including any colour sign).
inline int termIn(const int& weight, int channel, int count = 1) {
  noteWeight(weight, channel, count);
  return weight * count;
}

// The full evaluation of pos (no cache, no lazy estimate, no noise) with its trace. Returns the
// score from White's point of view, as evaluateStatic would. Pawn endings and the special and
// minor-piece endings follow rules of their own: their trace is marked as not modelled.
int traceEvaluation(Position& pos, EvalTrace& trace);

}  // namespace tavrin

// The transposition table and the small table of exact principal-variation results. Search threads
// share both without locks: every access to an entry during a search is a relaxed one per field.
#pragma once

#include <cstdint>

#include "board/types.h"
#include "common/relaxed.h"

namespace tavrin {

// Flags of a table entry.
enum TtFlag : std::uint8_t {
  TtLower = 1,        // a lower bound is present
  TtUpper = 2,        // an upper bound is present
  TtWeakUpper = 4,    // the upper bound is of lesser standing (pruning decisions)
  TtWeakLower = 8,    // the lower bound is of lesser standing (all-node fail-highs)
  TtExact = 16,       // exact principal-variation result: both bounds equal the score
};

struct TtEntry {
  std::uint32_t key;          // upper half of the position key (the lower half chose the bucket)
  std::uint8_t flags;
  std::uint8_t age;           // search generation that last wrote the entry
  std::uint8_t depthUpper;    // 0 when there is no upper bound
  std::uint8_t depthLower;    // 0 when there is no lower bound
  std::int16_t valueLower;
  std::int16_t valueUpper;
  std::uint16_t move;         // bit 15 always clear
  std::uint16_t spare;
};
static_assert(sizeof(TtEntry) == 16, "a table entry is 16 bytes");

constexpr int TtBucketEntries = 4;
struct alignas(64) TtBucket {
  TtEntry entry[TtBucketEntries];
};
static_assert(sizeof(TtBucket) == 64 && alignof(TtBucket) == 64, "a bucket is one cache line");

struct TranspositionTable {
  TtEntry* table = nullptr;          // the entries, 64-byte aligned
  std::uint64_t entries = 0;
  std::uint64_t indexMask = 0;     // entries - 4: a power of two less 4 only for power-of-two sizes
  std::uint64_t searchAge = 0;     // the low byte is what entries store
  bool clean = false;              // nothing stored since the last clear: clearing again is a no-op
};
extern TranspositionTable Tt;

struct PvEntry {
  Key key;
  std::int32_t score;
  std::uint16_t move;
  std::uint8_t depth;
  std::uint8_t age;
};
static_assert(sizeof(PvEntry) == 16);
constexpr int PvTableEntries = 65536;
extern PvEntry PvTable[PvTableEntries];

// (Re)allocates the main table with the given megabytes and clears it; returns the megabytes.
int resizeTable(int megabytes);
// Clears the main table (every age set to 128) and the PV table.
void clearTables();
// Advances the search generation; once per go.
void newSearch();

// The first of the four entries of the key's bucket.
inline TtEntry* ttBucket(Key key) {
  return Tt.table + (std::uint32_t(key) & Tt.indexMask);
}
// Asks the processor for the key's bucket ahead of its probe.
inline void prefetchBucket(Key key) { __builtin_prefetch(ttBucket(key)); }
inline std::uint32_t ttCheck(Key key) { return std::uint32_t(key >> 32); }
inline std::uint8_t ttAge() { return std::uint8_t(Tt.searchAge); }
// First entry of the key's bucket in the PV table.
inline PvEntry* pvBucket(Key key) { return PvTable + (key & 0xFFFC); }

// Replacement value: staler and shallower entries go first.
inline int replacementValue(const TtEntry& e) {
  int staleness = (ttAge() - relaxedLoad(e.age)) & 255;
  const int lower = relaxedLoad(e.depthLower), upper = relaxedLoad(e.depthUpper);
  int depth = lower > upper ? lower : upper;
  return staleness * 192 + (191 - depth);
}
// The PV table's entries by the same rule, with their single depth.
inline int replacementValue(const PvEntry& e) {
  return ((ttAge() - relaxedLoad(e.age)) & 255) * 192 + (191 - relaxedLoad(e.depth));
}

void storeLower(Key key, int depth, int value, Move move);
void storeUpper(Key key, int depth, int value);
void storeWeakUpper(Key key, int depth, int value);
// The all-node fail-high: a lower bound of lesser standing (flags bits 0 and 3).
void storeWeakLower(Key key, int depth, int value, Move move);
void storeExact(Key key, int depth, int score, Move move);

// The PV table's entry for the key (the whole key compared), or nullptr.
const PvEntry* pvTableEntry(Key key);
// The PV table's move for the key, 0 when it holds none.
Move pvTableMove(Key key);

}  // namespace tavrin

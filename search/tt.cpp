// The transposition table: bounds with their own depths, a move, ages and the replacement rule.
// Entries are read and written field by field with relaxed accesses (the tables are shared by the
// search threads without locks); clearing happens outside a search and writes them plainly.
#include "search/tt.h"

#include <algorithm>
#include <cstring>

#include "common/platform.h"

namespace tavrin {

TranspositionTable Tt;

namespace {

std::uint8_t depthByte(int depth) { return std::uint8_t(std::clamp(depth, 0, 255)); }

// The entry with the greatest replacement value: the first entry to begin with, a later one only
// when its value is strictly greater.
template <class Entry>
inline Entry* victimOf(Entry* bucket) {
  Entry* choice = bucket;
  int best = replacementValue(*bucket);
#pragma GCC unroll 4
  for (int i = 1; i < TtBucketEntries; ++i) {
    int v = replacementValue(bucket[i]);
    if (v > best) best = v, choice = bucket + i;
  }
  return choice;
}
inline TtEntry* victim(TtEntry* bucket) { return victimOf(bucket); }

// The first entry of the bucket that holds the key and that `updatable` accepts, or nullptr.
// Marks the table as written to (only when it is not yet: the flag's line is read by every probe).
template <class Updatable>
TtEntry* firstUpdatable(TtEntry* bucket, std::uint32_t check, Updatable updatable) {
  if (relaxedLoad(Tt.clean)) relaxedStore(Tt.clean, false);
#pragma GCC unroll 4
  for (int i = 0; i < TtBucketEntries; ++i)
    if (relaxedLoad(bucket[i].key) == check && updatable(bucket[i])) return bucket + i;
  return nullptr;
}

// A whole new entry written in this search (the spare word stays as it was).
void writeEntry(TtEntry& e, std::uint32_t check, std::uint8_t flags, std::uint8_t depthUpper, std::uint8_t depthLower,
                int valueLower, int valueUpper, Move move) {
  relaxedStore(e.key, check);
  relaxedStore(e.flags, flags);
  relaxedStore(e.age, ttAge());
  relaxedStore(e.depthUpper, depthUpper);
  relaxedStore(e.depthLower, depthLower);
  relaxedStore(e.valueLower, std::int16_t(valueLower));
  relaxedStore(e.valueUpper, std::int16_t(valueUpper));
  relaxedStore(e.move, moveOf(move));
}

// The state of every entry after clearing: all zero but an age of 128, so that each starts stale.
constexpr TtEntry ClearedEntry{0, 0, 128, 0, 0, 0, 0, 0, 0};

}  // namespace

int resizeTable(int megabytes) {
  std::uint64_t bytes = std::uint64_t(std::max(megabytes, 0)) << 20;
  std::uint64_t entries = std::min<std::uint64_t>(bytes / sizeof(TtEntry), std::uint64_t(1) << 32);
  entries = std::max<std::uint64_t>(entries, TtBucketEntries);   // at least one bucket
  if (Tt.table) alignedFree(Tt.table);
  Tt.table = static_cast<TtEntry*>(alignedAlloc(entries * sizeof(TtEntry)));
  Tt.entries = entries;
  Tt.indexMask = entries - TtBucketEntries;
  Tt.searchAge = 0;
  Tt.clean = false;
  clearTables();
  return megabytes;
}

void clearTables() {
  // Nothing has been stored since the last clear (start-up clears on resizing and again for the
  // new game): the tables already hold their cleared state.
  if (!Tt.clean) {
    // One pass over the main table: each entry written once with its cleared value.
    if (Tt.table) std::fill_n(Tt.table, Tt.entries, ClearedEntry);
    std::memset(static_cast<void*>(PvTable), 0, sizeof PvTable);
    Tt.clean = Tt.table != nullptr;
  }
  Tt.searchAge = 0;
}

void newSearch() {
  Tt.searchAge = (Tt.searchAge + 1) & 255;
  Tt.clean = false;   // probes refresh the ages of the entries they use
}

void storeLower(Key key, int depth, int value, Move move) {
  TtEntry* bucket = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  const std::uint8_t d = depthByte(depth);
  if (TtEntry* e = firstUpdatable(bucket, check, [d](const TtEntry& x) {
        return !(relaxedLoad(x.flags) & TtExact) && relaxedLoad(x.depthLower) <= d;
      })) {
    relaxedStore(e->depthLower, d);
    relaxedStore(e->valueLower, std::int16_t(value));
    relaxedStore(e->move, moveOf(move));
    relaxedStore(e->age, ttAge());
    relaxedStore(e->flags, std::uint8_t((relaxedLoad(e->flags) & ~TtWeakLower) | TtLower));
    return;
  }
  writeEntry(*victim(bucket), check, TtLower, 0, d, value, 0, move);
}

void storeUpper(Key key, int depth, int value) {
  TtEntry* bucket = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  const std::uint8_t d = depthByte(depth);
  if (TtEntry* e = firstUpdatable(bucket, check, [d](const TtEntry& x) {
        return !(relaxedLoad(x.flags) & TtExact) && relaxedLoad(x.depthUpper) <= d;
      })) {
    relaxedStore(e->depthUpper, d);
    relaxedStore(e->valueUpper, std::int16_t(value));
    relaxedStore(e->age, ttAge());
    relaxedStore(e->flags, std::uint8_t((relaxedLoad(e->flags) & ~TtWeakUpper) | TtUpper));
    return;
  }
  writeEntry(*victim(bucket), check, TtUpper, d, 0, 0, value, NoMove);
}

void storeWeakUpper(Key key, int depth, int value) {
  TtEntry* bucket = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  const std::uint8_t d = depthByte(depth);
  if (TtEntry* e = firstUpdatable(bucket, check, [d](const TtEntry& x) {
        const std::uint8_t upper = relaxedLoad(x.depthUpper);
        return (upper == 0 || (relaxedLoad(x.flags) & TtWeakUpper)) && upper <= d;
      })) {
    relaxedStore(e->flags, std::uint8_t(relaxedLoad(e->flags) | TtUpper | TtWeakUpper));
    relaxedStore(e->valueUpper, std::int16_t(value));
    relaxedStore(e->age, ttAge());
    relaxedStore(e->depthUpper, d);
    return;
  }
  writeEntry(*victim(bucket), check, TtUpper | TtWeakUpper, d, 0, 0, value, NoMove);
}

void storeWeakLower(Key key, int depth, int value, Move move) {
  TtEntry* bucket = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  const std::uint8_t d = depthByte(depth);
  if (TtEntry* e = firstUpdatable(bucket, check, [d](const TtEntry& x) {
        const std::uint8_t flags = relaxedLoad(x.flags), lower = relaxedLoad(x.depthLower);
        return !(flags & TtExact) && (lower == 0 || (flags & TtWeakLower)) && lower <= d;
      })) {
    relaxedStore(e->flags, std::uint8_t(relaxedLoad(e->flags) | TtLower | TtWeakLower));
    relaxedStore(e->valueLower, std::int16_t(value));
    relaxedStore(e->age, ttAge());
    relaxedStore(e->depthLower, d);
    if (move) relaxedStore(e->move, moveOf(move));
    return;
  }
  writeEntry(*victim(bucket), check, TtLower | TtWeakLower, 0, d, value, 0, move);
}

void storeExact(Key key, int depth, int score, Move move) {
  const std::uint8_t d = depthByte(depth);

  // 1. The PV table: the same key is overwritten whatever its depth.
  PvEntry* pv = pvBucket(key);
  PvEntry* slot = nullptr;
  for (int i = 0; i < 4 && !slot; ++i)
    if (relaxedLoad(pv[i].key) == key) slot = pv + i;
  if (!slot) {
    slot = victimOf(pv);
    relaxedStore(slot->key, key);
  }
  relaxedStore(slot->depth, d);
  relaxedStore(slot->score, score);
  relaxedStore(slot->move, moveOf(move));
  relaxedStore(slot->age, ttAge());

  // 2. The main table, then 3. wipe later entries of the same key that this one supersedes.
  TtEntry* bucket = ttBucket(key);
  const std::uint32_t check = ttCheck(key);
  auto supersededBy = [d](const TtEntry& x) {
    return std::max(relaxedLoad(x.depthLower), relaxedLoad(x.depthUpper)) <= d;
  };
  if (TtEntry* e = firstUpdatable(bucket, check, supersededBy)) {
    writeEntry(*e, check, TtExact, d, d, score, score, move);
    for (TtEntry* later = e + 1; later < bucket + TtBucketEntries; ++later) {
      if (relaxedLoad(later->key) == check && supersededBy(*later)) {
        writeEntry(*later, 0, 0, 0, 0, 0, 0, NoMove);
        relaxedStore(later->age, ttAge() ^ 128);   // the stalest entry: the first to go
      }
    }
    return;
  }
  // 4. No entry could take it: the victim does.
  writeEntry(*victim(bucket), check, TtExact, d, d, score, score, move);
}

}  // namespace tavrin

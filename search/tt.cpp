// The transposition table: bounds with their own depths, a move, ages and the replacement rule.
#include "search/tt.h"

#include <algorithm>
#include <cstring>

#include "app/platform.h"

namespace tavrin {

TranspositionTable Tt;

namespace {

std::uint8_t depthByte(int depth) { return std::uint8_t(std::clamp(depth, 0, 255)); }

// The entry with the greatest replacement value; ties keep the earlier entry.
TtEntry* victim(TtEntry* bucket) {
  TtEntry* choice = bucket;
  int best = replacementValue(*bucket);
  for (int i = 1; i < TtBucketEntries; ++i) {
    int v = replacementValue(bucket[i]);
    if (v > best) best = v, choice = bucket + i;
  }
  return choice;
}

}  // namespace

int resizeTable(int megabytes) {
  std::uint64_t bytes = std::uint64_t(std::max(megabytes, 0)) << 20;
  std::uint64_t entries = std::min<std::uint64_t>(bytes / sizeof(TtEntry), std::uint64_t(1) << 32);
  entries = std::max<std::uint64_t>(entries, TtBucketEntries);   // at least one bucket
  if (Tt.entries) alignedFree(Tt.entries);
  Tt.entries = static_cast<TtEntry*>(alignedAlloc(entries * sizeof(TtEntry)));
  Tt.entryCount = entries;
  Tt.indexMask = entries - TtBucketEntries;
  Tt.searchAge = 0;
  clearTables();
  return megabytes;
}

void clearTables() {
  if (Tt.entries) {
    std::memset(static_cast<void*>(Tt.entries), 0, Tt.entryCount * sizeof(TtEntry));
    for (std::uint64_t i = 0; i < Tt.entryCount; ++i) Tt.entries[i].age = 128;
  }
  std::memset(static_cast<void*>(PvTable), 0, sizeof PvTable);
  Tt.searchAge = 0;
}

void newSearch() { Tt.searchAge = (Tt.searchAge + 1) & 255; }

void storeLower(Key key, int depth, int value, Move move) {
  TtEntry* bucket = ttBucket(key);
  std::uint32_t check = ttCheck(key);
  std::uint8_t d = depthByte(depth);
  for (int i = 0; i < TtBucketEntries; ++i) {
    TtEntry& e = bucket[i];
    if (e.key == check && !(e.flags & TtExact) && e.depthLower <= d) {
      e.depthLower = d;
      e.valueLower = std::int16_t(value);
      e.move = move & 0x7FFF;
      e.age = ttAge();
      e.flags = std::uint8_t((e.flags & ~TtWeakLower) | TtLower);
      return;
    }
  }
  TtEntry& e = *victim(bucket);
  e.key = check;
  e.move = move & 0x7FFF;
  e.age = ttAge();
  e.valueUpper = 0;
  e.flags = TtLower;
  e.depthUpper = 0;
  e.depthLower = d;
  e.valueLower = std::int16_t(value);
}

void storeUpper(Key key, int depth, int value) {
  TtEntry* bucket = ttBucket(key);
  std::uint32_t check = ttCheck(key);
  std::uint8_t d = depthByte(depth);
  for (int i = 0; i < TtBucketEntries; ++i) {
    TtEntry& e = bucket[i];
    if (e.key == check && !(e.flags & TtExact) && e.depthUpper <= d) {
      e.depthUpper = d;
      e.valueUpper = std::int16_t(value);
      e.age = ttAge();
      e.flags = std::uint8_t((e.flags & ~TtWeakUpper) | TtUpper);
      return;
    }
  }
  TtEntry& e = *victim(bucket);
  e.key = check;
  e.flags = TtUpper;
  e.age = ttAge();
  e.depthUpper = d;
  e.depthLower = 0;
  e.valueLower = 0;
  e.valueUpper = std::int16_t(value);
  e.move = 0;
}

void storeWeakUpper(Key key, int depth, int value) {
  TtEntry* bucket = ttBucket(key);
  std::uint32_t check = ttCheck(key);
  std::uint8_t d = depthByte(depth);
  for (int i = 0; i < TtBucketEntries; ++i) {
    TtEntry& e = bucket[i];
    if (e.key == check && (e.depthUpper == 0 || (e.flags & TtWeakUpper)) && e.depthUpper <= d) {
      e.flags |= TtUpper | TtWeakUpper;
      e.valueUpper = std::int16_t(value);
      e.age = ttAge();
      e.depthUpper = d;
      return;
    }
  }
  TtEntry& e = *victim(bucket);
  e.key = check;
  e.flags = TtUpper | TtWeakUpper;
  e.age = ttAge();
  e.depthUpper = d;
  e.depthLower = 0;
  e.valueLower = 0;
  e.valueUpper = std::int16_t(value);
  e.move = 0;
}

void storeWeakLower(Key key, int depth, int value, Move move) {
  TtEntry* bucket = ttBucket(key);
  std::uint32_t check = ttCheck(key);
  std::uint8_t d = depthByte(depth);
  for (int i = 0; i < TtBucketEntries; ++i) {
    TtEntry& e = bucket[i];
    if (e.key == check && !(e.flags & TtExact) &&
        (e.depthLower == 0 || (e.flags & TtWeakLower)) && e.depthLower <= d) {
      e.flags |= TtLower | TtWeakLower;
      e.valueLower = std::int16_t(value);
      e.age = ttAge();
      e.depthLower = d;
      if (move) e.move = move & 0x7FFF;
      return;
    }
  }
  TtEntry& e = *victim(bucket);
  e.key = check;
  e.flags = TtLower | TtWeakLower;
  e.age = ttAge();
  e.depthLower = d;
  e.depthUpper = 0;
  e.valueUpper = 0;
  e.valueLower = std::int16_t(value);
  e.move = move & 0x7FFF;
}

void storeExact(Key key, int depth, int score, Move move) {
  std::uint8_t d = depthByte(depth);

  // 1. The PV table: the same key is overwritten whatever its depth.
  PvEntry* pv = pvBucket(key);
  PvEntry* slot = nullptr;
  for (int i = 0; i < 4 && !slot; ++i)
    if (pv[i].key == key) slot = pv + i;
  if (!slot) {
    slot = pv;
    int best = -1;
    for (int i = 0; i < 4; ++i) {
      int v = ((ttAge() - pv[i].age) & 255) * 192 + (191 - pv[i].depth);
      if (v > best) best = v, slot = pv + i;
    }
    slot->key = key;
  }
  slot->depth = d;
  slot->score = score;
  slot->move = move & 0x7FFF;
  slot->age = ttAge();

  // 2. The main table, then 3. wipe later entries of the same key that this one supersedes.
  TtEntry* bucket = ttBucket(key);
  std::uint32_t check = ttCheck(key);
  for (int i = 0; i < TtBucketEntries; ++i) {
    TtEntry& e = bucket[i];
    if (e.key == check && std::max(e.depthLower, e.depthUpper) <= d) {
      e.depthLower = e.depthUpper = d;
      e.valueLower = e.valueUpper = std::int16_t(score);
      e.move = move & 0x7FFF;
      e.age = ttAge();
      e.flags = TtExact;
      for (int j = i + 1; j < TtBucketEntries; ++j) {
        TtEntry& later = bucket[j];
        if (later.key == check && std::max(later.depthLower, later.depthUpper) <= d) {
          later.key = 0;
          later.valueLower = later.valueUpper = 0;
          later.depthLower = later.depthUpper = 0;
          later.flags = 0;
          later.move = 0;
          later.age = ttAge() ^ 128;
        }
      }
      return;
    }
  }
  // 4. No entry could take it: the victim does.
  TtEntry& e = *victim(bucket);
  e.key = check;
  e.flags = TtExact;
  e.age = ttAge();
  e.depthLower = e.depthUpper = d;
  e.valueLower = e.valueUpper = std::int16_t(score);
  e.move = move & 0x7FFF;
}

}  // namespace tavrin

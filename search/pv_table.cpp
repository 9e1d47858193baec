// The PV table: 65536 exact principal-variation results in buckets of four, read by the output
// (field by field with relaxed accesses, as the search threads write it).
#include "search/tt.h"

namespace tavrin {

PvEntry PvTable[PvTableEntries];

const PvEntry* pvTableEntry(Key key) {
  const PvEntry* bucket = pvBucket(key);
  for (int i = 0; i < 4; ++i)
    if (relaxedLoad(bucket[i].key) == key) return bucket + i;
  return nullptr;
}

Move pvTableMove(Key key) {
  const PvEntry* e = pvTableEntry(key);
  return e ? relaxedLoad(e->move) : NoMove;
}

}  // namespace tavrin

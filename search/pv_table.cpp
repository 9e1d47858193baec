// The PV table: 65536 exact principal-variation results in buckets of four, read by the output.
#include "search/tt.h"

namespace tavrin {

PvEntry PvTable[PvTableEntries];

Move pvTableMove(Key key) {
  PvEntry* bucket = pvBucket(key);
  for (int i = 0; i < 4; ++i)
    if (bucket[i].key == key) return bucket[i].move;
  return NoMove;
}

}  // namespace tavrin

// Transposition table: sizing, ageing, and the store and replacement rules on a table of cases.
#include <algorithm>
#include <functional>
#include <vector>

#include "search/tt.h"
#include "tests/search/search_support.h"

namespace tavrin::test {
namespace {

// Keys that share one bucket (same low half) and differ in their check word.
constexpr Key keyOf(std::uint32_t check, std::uint32_t low = 0x1234) { return (Key(check) << 32) | low; }

class TtTest : public ::testing::Test {
 protected:
  void SetUp() override {
    initEngineForTests();
    resizeTable(1);
  }
  void TearDown() override { resizeTable(Engine.hashMegabytes); }
  static TtEntry* bucket() { return ttBucket(keyOf(1)); }
};

// Whatever the size (a power of two or not, or none), every key's bucket lies inside the table.
TEST_F(TtTest, BucketsStayInsideTablesOfAnySize) {
  for (int megabytes : {126, 1, 0}) {
    resizeTable(megabytes);
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(Tt.table) % 64, 0u) << megabytes;
    EXPECT_LE(Tt.entries * sizeof(TtEntry), std::max(megabytes, 1) * 1048576ull) << megabytes;
    EXPECT_LE(ttBucket(keyOf(7, 0xFFFFFFFF)) + TtBucketEntries, Tt.table + Tt.entries) << megabytes;
  }
}

// A clear leaves each entry zero but for an age of 128, whatever was stored or aged before.
TEST_F(TtTest, ClearingAfterStoresAndAgeing) {
  storeLower(keyOf(1), 10, 5, 0);
  newSearch();
  storeExact(keyOf(1), 9, 33, makeMove(E2, E4));
  newSearch();
  storeWeakUpper(keyOf(0, 0x1234), 4, -7);
  clearTables();
  EXPECT_EQ(Tt.searchAge, 0u);
  EXPECT_EQ(pvTableMove(keyOf(1)), NoMove);
  for (std::uint64_t n = 0; n < Tt.entries; ++n) {
    const TtEntry& e = Tt.table[n];
    ASSERT_TRUE(e.key == 0 && e.flags == 0 && e.age == 128 && e.depthUpper == 0 && e.depthLower == 0 &&
                e.valueLower == 0 && e.valueUpper == 0 && e.move == 0 && e.spare == 0)
        << "entry " << n;
  }
}

struct StoreCase {
  const char* name;
  std::function<void()> stores;
  std::function<void(const TtEntry*)> check;
};

TEST_F(TtTest, StoreRules) {
  const std::vector<StoreCase> cases = {
      {"lower bound into an empty bucket takes the first entry",
       [] { storeLower(keyOf(1), 8, 120, makeMove(E2, E4)); },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].key, 1u);
         EXPECT_EQ(b[0].flags, TtLower);
         EXPECT_EQ(b[0].depthLower, 8);
         EXPECT_EQ(b[0].valueLower, 120);
         EXPECT_EQ(b[0].move, makeMove(E2, E4));
       }},
      {"a move with bit 15 set is stored without it",
       [] { storeLower(keyOf(1), 8, 1, Move(NonCaptureMark | makeMove(G1, F3))); },
       [](const TtEntry* b) { EXPECT_EQ(b[0].move, makeMove(G1, F3)); }},
      {"lower bound over an upper-only entry keeps the upper bound",
       [] {
         storeUpper(keyOf(1), 6, -40);
         storeLower(keyOf(1), 4, -90, makeMove(D2, D4));
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].flags, TtLower | TtUpper);
         EXPECT_EQ(b[0].valueUpper, -40);
         EXPECT_EQ(b[0].depthUpper, 6);
         EXPECT_EQ(b[0].valueLower, -90);
         EXPECT_EQ(b[1].key, 0u);
       }},
      {"a shallower lower bound does not update a deeper one: it takes another entry",
       [] {
         storeLower(keyOf(1), 10, 50, 0);
         storeLower(keyOf(1), 6, 70, 0);
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].valueLower, 50);
         EXPECT_EQ(b[1].key, 1u);
         EXPECT_EQ(b[1].valueLower, 70);
       }},
      {"a lower bound never updates an exact entry",
       [] {
         storeExact(keyOf(1), 4, 33, makeMove(E2, E4));
         storeLower(keyOf(1), 12, 80, makeMove(D2, D4));
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].flags, TtExact);
         EXPECT_EQ(b[0].valueLower, 33);
         EXPECT_EQ(b[1].key, 1u);
         EXPECT_EQ(b[1].flags, TtLower);
       }},
      {"a lower-bound store clears the weak-lower mark",
       [] {
         storeWeakLower(keyOf(1), 6, 10, 0);
         storeLower(keyOf(1), 8, 20, 0);
       },
       [](const TtEntry* b) { EXPECT_EQ(b[0].flags, TtLower); }},
      {"an upper bound keeps the move and the lower bound",
       [] {
         storeLower(keyOf(1), 6, 10, makeMove(B1, C3));
         storeUpper(keyOf(1), 6, 30);
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].flags, TtLower | TtUpper);
         EXPECT_EQ(b[0].move, makeMove(B1, C3));
         EXPECT_EQ(b[0].valueLower, 10);
       }},
      {"a weak upper bound does not replace a real one of the same key",
       [] {
         storeUpper(keyOf(1), 6, 30);
         storeWeakUpper(keyOf(1), 8, 10);
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].flags, TtUpper);
         EXPECT_EQ(b[1].flags, TtUpper | TtWeakUpper);
       }},
      {"a weak upper bound updates a weak one",
       [] {
         storeWeakUpper(keyOf(1), 6, 30);
         storeWeakUpper(keyOf(1), 8, 10);
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].depthUpper, 8);
         EXPECT_EQ(b[0].valueUpper, 10);
         EXPECT_EQ(b[1].key, 0u);
       }},
      {"an exact store updates in place and wipes a later entry of the same key",
       [] {
         storeLower(keyOf(1), 4, 10, 0);
         storeUpper(keyOf(2), 4, 10);
         storeLower(keyOf(1), 2, 5, 0);   // shallower: second entry of key 1 at index 2
         storeExact(keyOf(1), 6, 44, makeMove(E2, E4));
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].flags, TtExact);
         EXPECT_EQ(b[0].valueLower, 44);
         EXPECT_EQ(b[0].valueUpper, 44);
         EXPECT_EQ(b[2].key, 0u);
         EXPECT_EQ(b[2].flags, 0);
         EXPECT_EQ(b[2].age, ttAge() ^ 128);
         EXPECT_EQ(pvTableMove(keyOf(1)), makeMove(E2, E4));
       }},
      {"the victim is the stalest, then the shallowest entry",
       [] {
         for (std::uint32_t k = 1; k <= 4; ++k) storeLower(keyOf(k), int(10 + k), 0, 0);
         storeLower(keyOf(9), 3, 0, 0);
       },
       [](const TtEntry* b) {
         EXPECT_EQ(b[0].key, 9u);   // depth 11 was the shallowest
         EXPECT_EQ(b[1].key, 2u);
       }},
      {"an entry of an older search goes before a shallower fresh one",
       [] {
         storeLower(keyOf(1), 30, 0, 0);
         newSearch();
         for (std::uint32_t k = 2; k <= 4; ++k) storeLower(keyOf(k), 2, 0, 0);
         storeLower(keyOf(9), 2, 0, 0);
       },
       [](const TtEntry* b) { EXPECT_EQ(b[0].key, 9u); }},
      {"the PV table's victim follows the same rule when every value is negative",
       [] {
         // Fresh entries deeper than 191 have negative values: -64, -9, -59, -19.
         const int depths[] = {255, 200, 250, 210};
         for (std::uint32_t k = 1; k <= 4; ++k) storeExact(keyOf(k), depths[k - 1], 0, makeMove(E2, E4));
         storeExact(keyOf(9), 1, 0, makeMove(D2, D4));
       },
       [](const TtEntry*) {
         const PvEntry* pv = pvBucket(keyOf(1));
         EXPECT_EQ(pv[1].key, keyOf(9));
         EXPECT_EQ(pv[0].key, keyOf(1));
       }},
  };
  for (const StoreCase& c : cases) {
    SCOPED_TRACE(c.name);
    clearTables();
    c.stores();
    c.check(bucket());
  }
}

}  // namespace
}  // namespace tavrin::test

// The king-and-pawn-against-king bitbase. Positions are seen with the pawn White's and on files a-d.
#include "eval/kpk.h"

#include <cstdint>
#include <vector>

#include "eval/masks.h"

namespace tavrin {

namespace {

// Index: side to move (bit 0, 1 = pawn side), weak king (6 bits), strong king (6 bits),
// pawn (file a-d, rank 2-7: 24 values).
constexpr int KpkSize = 24 << 13;
std::uint64_t KpkWon[KpkSize / 64];
bool KpkBuilt = false;

enum : std::uint8_t { Unknown = 0, Invalid = 1, Draw = 2, Win = 4 };

// The squares next to each square, ended by -1.
struct Neighbours {
  int squares[64][9];
};
constexpr Neighbours makeNeighbours() {
  Neighbours n{};
  for (int s = 0; s < 64; ++s) {
    int k = 0;
    for (int t = 0; t < 64; ++t) {
      int df = fileOf(s) - fileOf(t), dr = rankOf(s) - rankOf(t);
      if (s != t && df >= -1 && df <= 1 && dr >= -1 && dr <= 1) n.squares[s][k++] = t;
    }
    n.squares[s][k] = -1;
  }
  return n;
}
constexpr Neighbours KingSteps = makeNeighbours();

int kpkIndex(int strongToMove, int strongKing, int weakKing, int pawn) {
  int pawnIndex = fileOf(pawn) + 4 * (rankOf(pawn) - 1);
  return strongToMove | (weakKing << 1) | (strongKing << 7) | (pawnIndex << 13);
}

bool pawnAttacksSquare(int pawn, int sq) {
  return rankOf(sq) == rankOf(pawn) + 1 && (fileOf(sq) - fileOf(pawn) == 1 || fileOf(pawn) - fileOf(sq) == 1);
}

std::uint8_t initialResult(int stm, int wk, int bk, int p) {
  if (wk == bk || wk == p || bk == p || distance(wk, bk) <= 1) return Invalid;
  if (stm == 1) {
    if (pawnAttacksSquare(p, bk)) return Invalid;
    int promo = p + 8;
    if (rankOf(p) == 6 && promo != wk && promo != bk && (distance(bk, promo) > 1 || distance(wk, promo) == 1))
      return Win;
    return Unknown;
  }
  if (distance(bk, p) == 1 && distance(wk, p) > 1) return Draw;  // the pawn falls
  bool canMove = false;
  for (const int* t = KingSteps.squares[bk]; *t >= 0 && !canMove; ++t)
    if (distance(wk, *t) > 1 && !pawnAttacksSquare(p, *t) && *t != p) canMove = true;
  if (!canMove) return pawnAttacksSquare(p, bk) ? Win : Draw;
  return Unknown;
}

std::uint8_t classify(const std::vector<std::uint8_t>& r, int stm, int wk, int bk, int p) {
  if (stm == 1) {
    bool anyUnknown = false;
    auto look = [&](int child) {
      std::uint8_t v = r[child];
      if (v == Win) return true;
      if (v == Unknown) anyUnknown = true;
      return false;
    };
    for (const int* t = KingSteps.squares[wk]; *t >= 0; ++t)
      if (distance(bk, *t) > 1 && *t != p && look(kpkIndex(0, *t, bk, p))) return Win;
    int push = p + 8;
    if (rankOf(push) < 7 && push != wk && push != bk) {
      if (look(kpkIndex(0, wk, bk, push))) return Win;
      int twice = push + 8;
      if (rankOf(p) == 1 && twice != wk && twice != bk && look(kpkIndex(0, wk, bk, twice))) return Win;
    }
    return anyUnknown ? Unknown : Draw;
  }
  bool anyUnknown = false;
  for (const int* t = KingSteps.squares[bk]; *t >= 0; ++t) {
    if (distance(wk, *t) <= 1 || pawnAttacksSquare(p, *t) || *t == p) continue;
    std::uint8_t v = r[kpkIndex(1, wk, *t, p)];
    if (v == Draw) return Draw;
    if (v == Unknown) anyUnknown = true;
  }
  return anyUnknown ? Unknown : Win;
}

}  // namespace

void buildKpkBitbase() {
  std::vector<std::uint8_t> r(KpkSize);
  for (int idx = 0; idx < KpkSize; ++idx) {
    int stm = idx & 1, bk = (idx >> 1) & 63, wk = (idx >> 7) & 63, pi = idx >> 13;
    int p = makeSquare(pi % 4, pi / 4 + 1);
    r[idx] = initialResult(stm, wk, bk, p);
  }
  for (bool changed = true; changed;) {
    changed = false;
    for (int idx = 0; idx < KpkSize; ++idx) {
      if (r[idx] != Unknown) continue;
      int stm = idx & 1, bk = (idx >> 1) & 63, wk = (idx >> 7) & 63, pi = idx >> 13;
      int p = makeSquare(pi % 4, pi / 4 + 1);
      std::uint8_t v = classify(r, stm, wk, bk, p);
      if (v != Unknown) {
        r[idx] = v;
        changed = true;
      }
    }
  }
  KpkBuilt = true;
  for (int idx = 0; idx < KpkSize; ++idx) {
    if (r[idx] == Win) KpkWon[idx / 64] |= std::uint64_t(1) << (idx % 64);
    else KpkWon[idx / 64] &= ~(std::uint64_t(1) << (idx % 64));
  }
}

bool kpkWins(int strongKing, int pawn, int weakKing, bool pawnIsWhite, bool strongToMove) {
  if (!KpkBuilt) [[unlikely]] buildKpkBitbase();   // start-up normally builds it
  // Only pawns on ranks 2-7 exist in the bitbase; anything else is left to the heuristics.
  if (!pawnIsWhite) {
    strongKing ^= 56;
    pawn ^= 56;
    weakKing ^= 56;
  }
  if (rankOf(pawn) < 1 || rankOf(pawn) > 6) return false;
  if (fileOf(pawn) > 3) {
    strongKing ^= 7;
    pawn ^= 7;
    weakKing ^= 7;
  }
  int idx = kpkIndex(strongToMove ? 1 : 0, strongKing, weakKing, pawn);
  return (KpkWon[idx / 64] >> (idx % 64)) & 1;
}

}  // namespace tavrin

// The pawn hash table and the pawn-structure evaluator that fills it.
#pragma once

#include <bit>
#include <cstdint>
#include <cstring>

#include "board/position.h"
#include "common/relaxed.h"

namespace tavrin {

// One 32-byte entry: eight 32-bit words. Words 0 and 1 hold the key halves XORed with the even and
// odd payload words, so that an entry torn by a concurrent writer never matches.
struct alignas(32) PawnEntry {
  std::uint32_t checkLow;          // word 0: key bits 0-31 ^ words 2, 4, 6
  std::uint32_t checkHigh;         // word 1: key bits 32-63 ^ words 3, 5, 7
  Packed score;                    // word 2: pawn structure, White's point of view
  std::uint8_t count[2];           // word 3: pawns per colour [Black, White]
  std::uint8_t pull[2];            //         drawish pull per colour
  std::uint8_t passedFiles[2];     // word 4: files holding a passed pawn (the front one)
  std::uint8_t semiOpenFiles[2];   //         files without an own pawn
  std::int16_t shelter[2];         // word 5: king shelter and storm, middlegame, per colour
  std::uint8_t candidateFiles[2];  // word 6: files holding a candidate passer
  std::uint8_t pawnFiles;          //         files holding any pawn
  std::uint8_t spare0;
  std::uint32_t spare1;            // word 7

  Key storedKey() const {
    std::uint32_t w[8];
    std::memcpy(w, this, sizeof w);
    std::uint64_t low = w[0] ^ w[2] ^ w[4] ^ w[6];
    std::uint64_t high = w[1] ^ w[3] ^ w[5] ^ w[7];
    return (high << 32) | low;
  }
};
static_assert(sizeof(PawnEntry) == 32, "pawn entries are 32 bytes");
static_assert(alignof(PawnEntry) == 32, "an entry lies within one cache line, its 64-bit words aligned");

extern PawnEntry* PawnTable;
extern std::uint64_t PawnTableMask;

inline PawnEntry* pawnSlot(Key pawnKey) { return PawnTable + (pawnKey & PawnTableMask); }

// The table is shared by the search threads without locks: an entry is copied in and out as four
// relaxed 64-bit words, and a copy torn by a concurrent writer fails the XOR check.
constexpr int PawnEntryWords = sizeof(PawnEntry) / sizeof(std::uint64_t);
inline void loadPawnEntry(const PawnEntry* slot, PawnEntry& e) {
  const auto* from = reinterpret_cast<const std::uint64_t*>(slot);
  auto* to = reinterpret_cast<unsigned char*>(&e);
#pragma GCC unroll 4
  for (int i = 0; i < PawnEntryWords; ++i) {
    const std::uint64_t w = relaxedLoad(from[i]);
    std::memcpy(to + i * sizeof w, &w, sizeof w);
  }
}
inline void storePawnEntry(PawnEntry* slot, const PawnEntry& e) {
  const auto* from = reinterpret_cast<const unsigned char*>(&e);
  auto* to = reinterpret_cast<std::uint64_t*>(slot);
#pragma GCC unroll 4
  for (int i = 0; i < PawnEntryWords; ++i) {
    std::uint64_t w;
    std::memcpy(&w, from + i * sizeof w, sizeof w);
    relaxedStore(to[i], w);
  }
}

// Calls fn(square) with the front pawn of colour C on each file that holds a passed pawn.
template <Color C, typename Fn>
inline void forEachFrontPasser(const Position& pos, const PawnEntry& pe, Fn&& fn) {
  const Bitboard ownPawns = pos.pieces[ColorTraits<C>::OwnPawn];
  for (unsigned files = pe.passedFiles[C]; files; files &= files - 1) {
    const Bitboard onFile = ownPawns & (0x0101010101010101ULL << std::countr_zero(files));
    if (onFile) fn(C == White ? 63 - std::countl_zero(onFile) : std::countr_zero(onFile));
  }
}

// Evaluates the pawn structure (with king shelter, since the pawn key holds the kings and the
// castling rights) into entry and stores it into the table with the XOR check.
void evaluatePawns(const Position& pos, PawnEntry& entry);

// Clears the pawn table.
void clearPawnTable();

}  // namespace tavrin

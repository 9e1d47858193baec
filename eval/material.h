// The material table: value, scale and flags for every count of pieces the signature can index.
#pragma once

#include <cstdint>
#include <initializer_list>

#include "board/material.h"
#include "board/position.h"

namespace tavrin {

// The endgame rule the special-endings flag calls for.
enum class EndingRule : std::uint8_t {
  None,
  MateBareKing,   // mating material against a bare king
  RookVsPawn,     // a lone rook against a lone pawn
  QueenVsPawn,    // a lone queen against a lone pawn
  RookEnding,     // one rook each, pawn counts at most one apart
};

// One row of the material table (six bytes).
struct MaterialEntry {
  std::int16_t value;        // White's point of view, centipawns
  std::uint8_t scale;        // 128 means 1.0
  std::uint8_t strongSide;   // 1 when the value favours White (or is even), else 0
  EndingRule rule;           // None unless flags has FlagSpecialEnding
  std::uint8_t flags;        // copied to evalFlags
};
static_assert(sizeof(MaterialEntry) == 6, "material rows are six bytes");

constexpr int MaterialTableSize = 419904;
extern MaterialEntry* MaterialTable;   // MaterialTableSize rows, allocated by the first build

// evalFlags bits.
constexpr std::uint8_t FlagBlackPieces = 1 << 0;   // Black has a knight, bishop, rook or queen
constexpr std::uint8_t FlagWhitePieces = 1 << 1;
constexpr std::uint8_t FlagWhiteMinorOnly = 1 << 5;  // White's only piece is one knight or bishop
constexpr std::uint8_t FlagBlackMinorOnly = 1 << 6;
constexpr std::uint8_t FlagSpecialEnding = 1 << 7;   // an endgame rule applies (the row's rule)

constexpr std::uint32_t MaterialIndexBits = (1u << 19) - 1;   // 419,904 rows fit in 19 bits
constexpr int materialIndex(std::uint32_t materialKey) {
  return int((materialKey >> MaterialIndexShift) & MaterialIndexBits);
}
constexpr int gamePhase(std::uint32_t materialKey) {
  const int phase = int(materialKey & PhaseBits);
  return phase > 32 ? 32 : phase;
}

// Piece counts behind a material index.
struct MaterialCounts {
  int queens[2], rooks[2], lightBishops[2], darkBishops[2], knights[2], pawns[2];  // [Black, White]
};
MaterialCounts decodeMaterialIndex(int index);

// Rebuilds the table from the piece values and pair bonus of Engine when they differ from those
// it was built with (cheap when nothing changed). Called at start-up and before every search,
// after reduced strength has set the values.
void refreshMaterialTable();
// Rebuilds unconditionally.
void buildMaterialTable();
// Was the table built with Engine's current values? The driver checks this on every call, so the
// table follows the values even when nobody refreshes it (the first evaluation then pays).
bool materialTableCurrent();

// Material of a position whose counts lie outside the table: value from the piece counts.
int outOfRangeMaterial(const Position& pos);
// Notes the material corrections of the position and the scale factor its table row took.
struct EvalTrace;
void traceMaterial(const Position& pos, EvalTrace& trace);

// Are all piece counts of the position inside the table's range?
bool materialInRange(const Position& pos);

}  // namespace tavrin

// The material table builder and the evaluator for material the table cannot index.
#include "eval/material.h"

#include "board/bitboard.h"
#include "common/globals.h"
#include "common/platform.h"
#include "eval/trace.h"
#include "eval/weights.h"

namespace tavrin {

MaterialEntry* MaterialTable = nullptr;

namespace {

// The values the table was last built with.
struct BuiltValues {
  int pawn = -1, knight = -1, bishop = -1, rook = -1, queen = -1, pair = -1, materialOnly = -1;
  bool operator==(const BuiltValues&) const = default;
};
BuiltValues Built;

BuiltValues currentValues() {
  return {Engine.pawnValue, Engine.knightValue, Engine.bishopValue, Engine.rookValue,
          Engine.queenValue, Engine.bishopPairBonus, Engine.materialOnly};
}

// One side's material: piece values, the bishop pair and small redundancy corrections.
int sideMaterial(int side, int pawns, int knights, int lightBishops, int darkBishops, int rooks, int queens) {
  const EvalWeights& w = Weights;
  const int sign = side == White ? 1 : -1;   // the trace counts for White minus Black
  int bishops = lightBishops + darkBishops;
  int v = pawns * Engine.pawnValue + knights * Engine.knightValue + bishops * Engine.bishopValue +
          rooks * Engine.rookValue + queens * Engine.queenValue;
  if (Engine.materialOnly) return v;
  if (lightBishops && darkBishops) v += Engine.bishopPairBonus;
  auto correct = [&](const int& weight, int count) {
    noteWeight(weight, MaterialChannel, sign * count);
    v += weight * count;
  };
  if (knights >= 2) correct(w.KnightPairPenalty, -1);
  if (rooks >= 2) correct(w.RookPairPenalty, -1);
  if (queens && rooks) correct(w.QueenRookPenalty, -1);
  correct(w.KnightPawnAdjust, knights * (pawns - 5));
  correct(w.RookPawnAdjust, -rooks * (pawns - 5));
  return v;
}

int nonPawnMaterial(const MaterialCounts& c, int side) {
  return c.knights[side] * Engine.knightValue +
         (c.lightBishops[side] + c.darkBishops[side]) * Engine.bishopValue +
         c.rooks[side] * Engine.rookValue + c.queens[side] * Engine.queenValue;
}

int pieceCount(const MaterialCounts& c, int side) {
  return c.knights[side] + c.lightBishops[side] + c.darkBishops[side] + c.rooks[side] + c.queens[side];
}

bool onlyOneMinor(const MaterialCounts& c, int side) {
  int minors = c.knights[side] + c.lightBishops[side] + c.darkBishops[side];
  return minors == 1 && c.rooks[side] == 0 && c.queens[side] == 0;
}

bool canMateBareKing(const MaterialCounts& c, int side) {
  int bishops = c.lightBishops[side] + c.darkBishops[side];
  return c.queens[side] || c.rooks[side] || (bishops && c.knights[side]) ||
         (c.lightBishops[side] && c.darkBishops[side]);
}

// The scale factor that applies to drawish material, from the stronger side's point of view, or
// null when the whole score survives.
const int* scaleWeightFor(const MaterialCounts& c, int strong) {
  const EvalWeights& w = Weights;
  int weak = strong ^ 1;
  int npmStrong = nonPawnMaterial(c, strong), npmWeak = nonPawnMaterial(c, weak);
  int lead = npmStrong - npmWeak;

  if (c.pawns[strong] == 0 && !canMateBareKing(c, strong)) {
    // One minor cannot mate, two knights cannot force it. Against pawns the minor-piece draw
    // test decides instead, since those pawns may still win.
    if (c.pawns[weak] == 0) return &w.ScaleNoWin;
    return c.knights[strong] == 2 ? &w.ScaleTwoKnightsVsPawns : nullptr;
  }
  if (c.pawns[strong] == 0 && lead <= Engine.bishopValue) {
    if (c.rooks[strong] == 1 && pieceCount(c, strong) == 1 && onlyOneMinor(c, weak))
      return &w.ScaleRookVsMinor;
    return &w.ScalePawnlessMinorUp;
  }
  if (c.pawns[strong] == 1 && lead <= Engine.bishopValue && npmWeak > 0) return &w.ScaleOnePawnMinorUp;

  int bishopsW = c.lightBishops[White] + c.darkBishops[White];
  int bishopsB = c.lightBishops[Black] + c.darkBishops[Black];
  if (bishopsW == 1 && bishopsB == 1 && c.lightBishops[White] != c.lightBishops[Black]) {
    if (pieceCount(c, White) == 1 && pieceCount(c, Black) == 1) return &w.ScaleOppositeBishops;
    return &w.ScaleOppositeBishopsRest;
  }
  return nullptr;
}

// The endgame rule of the counts, if any.
EndingRule endingRuleFor(const MaterialCounts& c) {
  for (int side : {Black, White}) {
    int other = side ^ 1;
    if (pieceCount(c, other) == 0 && c.pawns[other] == 0 && c.pawns[side] == 0 && canMateBareKing(c, side))
      return EndingRule::MateBareKing;
    if (pieceCount(c, side) == 1 && c.pawns[side] == 0 && pieceCount(c, other) == 0 && c.pawns[other] == 1) {
      if (c.rooks[side]) return EndingRule::RookVsPawn;
      if (c.queens[side]) return EndingRule::QueenVsPawn;
    }
  }
  bool rookEach = c.rooks[White] == 1 && c.rooks[Black] == 1 && pieceCount(c, White) == 1 &&
                  pieceCount(c, Black) == 1;
  int pawnGap = c.pawns[White] - c.pawns[Black];
  if (rookEach && pawnGap <= 1 && pawnGap >= -1 && c.pawns[White] + c.pawns[Black] > 0)
    return EndingRule::RookEnding;
  return EndingRule::None;
}

int scaleFor(const MaterialCounts& c, int strong) {
  const int* weight = scaleWeightFor(c, strong);
  return weight ? *weight : 128;
}

}  // namespace

MaterialCounts decodeMaterialIndex(int index) {
  MaterialCounts c{};
  c.queens[White] = index % 2; index /= 2;
  c.queens[Black] = index % 2; index /= 2;
  c.rooks[White] = index % 3; index /= 3;
  c.rooks[Black] = index % 3; index /= 3;
  c.lightBishops[White] = index % 2; index /= 2;
  c.darkBishops[White] = index % 2; index /= 2;
  c.lightBishops[Black] = index % 2; index /= 2;
  c.darkBishops[Black] = index % 2; index /= 2;
  c.knights[White] = index % 3; index /= 3;
  c.knights[Black] = index % 3; index /= 3;
  c.pawns[White] = index % 9; index /= 9;
  c.pawns[Black] = index;
  return c;
}

void buildMaterialTable() {
  // Allocated once, on large pages where the system has them: every evaluation reads a row.
  if (!MaterialTable)
    MaterialTable = static_cast<MaterialEntry*>(alignedAlloc(std::size_t(MaterialTableSize) * sizeof(MaterialEntry)));
  Built = currentValues();
  for (int index = 0; index < MaterialTableSize; ++index) {
    MaterialCounts c = decodeMaterialIndex(index);
    int value = 0;
    for (int side : {Black, White}) {
      int v = sideMaterial(side, c.pawns[side], c.knights[side], c.lightBishops[side], c.darkBishops[side],
                           c.rooks[side], c.queens[side]);
      value += side == White ? v : -v;
    }
    int strong = value >= 0 ? White : Black;
    MaterialEntry& e = MaterialTable[index];
    e.value = std::int16_t(value);
    e.strongSide = std::uint8_t(strong);
    e.scale = std::uint8_t(scaleFor(c, strong));
    e.rule = endingRuleFor(c);
    std::uint8_t flags = 0;
    if (pieceCount(c, Black)) flags |= FlagBlackPieces;
    if (pieceCount(c, White)) flags |= FlagWhitePieces;
    if (onlyOneMinor(c, White)) flags |= FlagWhiteMinorOnly;
    if (onlyOneMinor(c, Black)) flags |= FlagBlackMinorOnly;
    if (e.rule != EndingRule::None) flags |= FlagSpecialEnding;
    e.flags = flags;
  }
}

void refreshMaterialTable() {
  if (!(Built == currentValues())) buildMaterialTable();
}

bool materialTableCurrent() {
  return Built.pawn == Engine.pawnValue && Built.knight == Engine.knightValue &&
         Built.bishop == Engine.bishopValue && Built.rook == Engine.rookValue &&
         Built.queen == Engine.queenValue && Built.pair == Engine.bishopPairBonus &&
         Built.materialOnly == Engine.materialOnly;
}

bool materialInRange(const Position& pos) {
  for (int offset : {0, 8}) {
    if (popCount(pos.pieces[Queen + offset]) > 1 || popCount(pos.pieces[Rook + offset]) > 2 ||
        popCount(pos.pieces[BishopLight + offset]) > 1 || popCount(pos.pieces[BishopDark + offset]) > 1 ||
        popCount(pos.pieces[Knight + offset]) > 2 || popCount(pos.pieces[Pawn + offset]) > 8)
      return false;
  }
  return true;
}

int outOfRangeMaterial(const Position& pos) {
  int value = 0;
  for (int side : {Black, White}) {
    int offset = side == White ? 0 : 8;
    int v = sideMaterial(side, popCount(pos.pieces[Pawn + offset]), popCount(pos.pieces[Knight + offset]),
                         popCount(pos.pieces[BishopLight + offset]), popCount(pos.pieces[BishopDark + offset]),
                         popCount(pos.pieces[Rook + offset]), popCount(pos.pieces[Queen + offset]));
    value += side == White ? v : -v;
  }
  return value;
}

void traceMaterial(const Position& pos, EvalTrace& trace) {
  outOfRangeMaterial(pos);   // its notes are the corrections, whether or not the table holds the counts
  const std::uint32_t key = pos.st().materialKey;
  if (key & UnusualMaterial) return;
  const MaterialCounts c = decodeMaterialIndex(materialIndex(key));
  const int* weight = scaleWeightFor(c, MaterialTable[materialIndex(key)].strongSide);
  trace.scaleSlot = weight ? slotOf(*weight) : -1;
}

}  // namespace tavrin

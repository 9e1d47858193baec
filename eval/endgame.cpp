// Endgame rules of the final combination: mating a bare king, and minor pieces that cannot win.
#include "board/attacks.h"
#include "board/bitboard.h"
#include "eval/eval_internal.h"
#include "eval/masks.h"
#include "eval/material.h"
#include "eval/weights.h"

namespace tavrin {

namespace {

constexpr const EvalWeights& W = Weights;

// Distance of a square from the centre in king steps along file and rank (0 .. 6).
constexpr int centreDistance(int sq) {
  int f = fileOf(sq), r = rankOf(sq);
  int df = f < 4 ? 3 - f : f - 4, dr = r < 4 ? 3 - r : r - 4;
  return df + dr;
}

// Help for the side with mating material: weak king to the edge (to the bishop's corners with
// bishop and knight), kings together.
template <Color Strong>
int mateBonus(const Position& pos) {
  using T = ColorTraits<Strong>;
  int weakKing = pos.kingSquare(T::Them), strongKing = pos.kingSquare(Strong);
  int bonus = W.MateBaseBonus + W.MateEdgeWeight * centreDistance(weakKing) +
              W.MateKingsCloseWeight * (7 - distance(strongKing, weakKing));
  Bitboard light = pos.pieces[T::OwnBishopLight], dark = pos.pieces[T::OwnBishopDark];
  bool bishopAndKnight = pos.pieces[T::OwnKnight] && (light || dark) && !(light && dark) &&
                         !pos.pieces[T::OwnRook] && !pos.pieces[T::OwnQueen];
  if (bishopAndKnight) {
    // a1 and h8 are dark, a8 and h1 light.
    int c1 = dark ? A1 : A8, c2 = dark ? H8 : H1;
    int d1 = distance(weakKing, c1), d2 = distance(weakKing, c2);
    bonus += W.MateCornerWeight * (7 - (d1 < d2 ? d1 : d2));
  }
  return bonus;
}

// Can Us, whose only piece is one knight or bishop, not win?
template <Color Us>
bool minorCannotWin(const Position& pos) {
  using T = ColorTraits<Us>;
  Bitboard pawns = pos.pieces[T::OwnPawn];
  if (!pawns) return true;
  bool fileA = !(pawns & ~FileA), fileH = !(pawns & ~FileH);
  if (!fileA && !fileH) return false;
  int corner = fileA ? (Us == White ? A8 : A1) : (Us == White ? H8 : H1);
  bool knight = pos.pieces[T::OwnKnight] != 0;
  bool wrongBishop = isDarkSquare(corner) ? pos.pieces[T::OwnBishopLight] != 0 : pos.pieces[T::OwnBishopDark] != 0;
  if (!knight && !wrongBishop) return false;
  int defender = pos.kingSquare(T::Them);
  return defender == corner || (kingAttacks(corner) & bit(defender));
}

}  // namespace

int applySpecialEnding(const Position& pos, int total) {
  // The bare side is the one with nothing but its king.
  if (!(pos.pieces[AllBlack] & ~pos.pieces[BlackKing])) return total + mateBonus<White>(pos);
  if (!(pos.pieces[AllWhite] & ~pos.pieces[WhiteKing])) return total - mateBonus<Black>(pos);
  return total;
}

int applyMinorDrawTests(const Position& pos, std::uint8_t flags, int total) {
  if ((flags & FlagWhiteMinorOnly) && total > 0 && minorCannotWin<White>(pos)) return 0;
  if ((flags & FlagBlackMinorOnly) && total < 0 && minorCannotWin<Black>(pos)) return 0;
  return total;
}

}  // namespace tavrin

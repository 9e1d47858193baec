// Endgame rules of the final combination: mating a bare king, a rook or queen against a lone pawn,
// drawish rook endings, and minor pieces that cannot win.
#include <optional>

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

// The squares the lone-pawn rules read: the pawn and both kings.
struct LonePawn {
  int pawn, strongKing, weakKing;
};

// The weaker side's lone pawn and the kings, or nothing for a pawn that cannot stand where it stands
// (on its first or last rank, in a position set up by hand): no rule applies to it.
template <Color Strong>
std::optional<LonePawn> lonePawn(const Position& pos) {
  using T = ColorTraits<Strong>;
  const int pawn = bitScanForward(pos.pieces[T::EnemyPawn]);
  const int rank = ColorTraits<T::Them>::RelativeRank(pawn);
  if (rank == 0 || rank == 7) return std::nullopt;
  return LonePawn{pawn, pos.kingSquare(Strong), pos.kingSquare(T::Them)};
}

// Rook against a lone pawn, from the rook's side (Strong), in centipawns. It wins outright when
// its king stands in the pawn's path or the pawn's king is far from both pawn and rook; an
// advanced pawn next to its king with the rook's king far away is close to a draw; in between,
// the kings' race to the pawn's next square and the pawn's distance to promotion decide.
template <Color Strong>
int rookVsPawn(const Position& pos, int own) {
  using T = ColorTraits<Strong>;
  using Defender = ColorTraits<T::Them>;
  const auto lone = lonePawn<Strong>(pos);
  if (!lone) return own;
  const auto [pawn, strongKing, weakKing] = *lone;
  const int rook = bitScanForward(pos.pieces[T::OwnRook]);
  const int queening = makeSquare(fileOf(pawn), Defender::Rank8);
  const int next = pawn + Defender::Up;
  const int defenderMoves = pos.sideToMove == T::Them ? 1 : 0;

  if (Spans.forwardFile[T::Them][pawn] & bit(strongKing)) return own;
  if (distance(weakKing, pawn) - defenderMoves >= 3 && distance(weakKing, rook) >= 3) return own;
  if (Defender::RelativeRank(pawn) >= 4 && distance(weakKing, pawn) <= 1 &&
      distance(strongKing, pawn) - (1 - defenderMoves) >= 3)
    return W.RookVsPawnDrawish - W.RookVsPawnDistance * distance(strongKing, queening);
  return W.RookVsPawnBase - W.RookVsPawnDistance * (distance(strongKing, next) - distance(weakKing, next) -
                                                    distance(pawn, queening));
}

// Queen against a lone pawn, from the queen's side: a rook or bishop pawn on the seventh next to
// its king holds the draw unless the queen's king is near; elsewhere the queen wins, the sooner
// the closer its king comes.
template <Color Strong>
int queenVsPawn(const Position& pos, int own) {
  using T = ColorTraits<Strong>;
  using Defender = ColorTraits<T::Them>;
  const auto lone = lonePawn<Strong>(pos);
  if (!lone) return own;
  const auto [pawn, strongKing, weakKing] = *lone;
  const int file = fileOf(pawn);
  const bool rookOrBishopPawn = file == 0 || file == 2 || file == 5 || file == 7;
  if (Defender::RelativeRank(pawn) == 6 && rookOrBishopPawn && distance(weakKing, pawn) <= 1 &&
      distance(strongKing, pawn) >= 3)
    return own * W.QueenVsPawnDrawScale / 128;
  return own + W.QueenVsPawnKingClose * (7 - distance(strongKing, pawn));
}

// One rook each, the side ahead (Strong) at most a pawn up: a lone pawn with the defending king in
// front of it, or every pawn on one wing with the defending king beside them, is hard to win.
template <Color Strong>
int rookEndingScale(const Position& pos) {
  using T = ColorTraits<Strong>;
  const Bitboard own = pos.pieces[T::OwnPawn], enemy = pos.pieces[T::EnemyPawn];
  const int weakKing = pos.kingSquare(T::Them);
  if (!own) return 128;
  if (!enemy && !moreThanOne(own)) {
    const int pawn = bitScanForward(own);
    return Spans.passedSpan[Strong][pawn] & bit(weakKing) ? W.ScaleRookPawnKingInFront : 128;
  }
  const Bitboard all = own | enemy;
  if ((all & QueenSideFiles) && (all & KingSideFiles)) return 128;
  int lowFile = 7, highFile = 0;
  for (Bitboard b = all; b;) {
    int f = fileOf(popLowest(b));
    lowFile = f < lowFile ? f : lowFile;
    highFile = f > highFile ? f : highFile;
  }
  const int kingFile = fileOf(weakKing);
  return kingFile >= lowFile - 1 && kingFile <= highFile + 1 ? W.ScaleRookEndingOneWing : 128;
}

// A rule written from the stronger side's point of view, applied to a White-view total.
template <int (*WhiteRule)(const Position&, int), int (*BlackRule)(const Position&, int)>
int fromStrongSide(const Position& pos, Color strong, int total) {
  return strong == White ? WhiteRule(pos, total) : -BlackRule(pos, -total);
}

}  // namespace

int applySpecialEnding(const Position& pos, EndingRule rule, int total) {
  switch (rule) {
    case EndingRule::MateBareKing:
      // The bare side is the one with nothing but its king.
      if (!(pos.pieces[AllBlack] & ~pos.pieces[BlackKing])) return total + mateBonus<White>(pos);
      if (!(pos.pieces[AllWhite] & ~pos.pieces[WhiteKing])) return total - mateBonus<Black>(pos);
      return total;
    case EndingRule::RookVsPawn:
      return fromStrongSide<rookVsPawn<White>, rookVsPawn<Black>>(pos, pos.pieces[WhiteRook] ? White : Black,
                                                                   total);
    case EndingRule::QueenVsPawn:
      return fromStrongSide<queenVsPawn<White>, queenVsPawn<Black>>(pos, pos.pieces[WhiteQueen] ? White : Black,
                                                                     total);
    case EndingRule::RookEnding:
      if (total == 0) return 0;
      return total * (total > 0 ? rookEndingScale<White>(pos) : rookEndingScale<Black>(pos)) / 128;
    case EndingRule::None: break;
  }
  return total;
}

int applyMinorDrawTests(const Position& pos, std::uint8_t flags, int total) {
  if ((flags & FlagWhiteMinorOnly) && total > 0 && minorCannotWin<White>(pos)) return 0;
  if ((flags & FlagBlackMinorOnly) && total < 0 && minorCannotWin<Black>(pos)) return 0;
  return total;
}

}  // namespace tavrin

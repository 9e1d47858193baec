// The attack-summary fields that follow from the two attack sets of a position.
#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/legality.h"
#include "eval/eval_internal.h"

namespace tavrin {

namespace {

// Pieces of the side to move whose quiet move may give check: discovered-check candidates and
// every piece or pawn that can reach a square from which it would check.
template <Color Us>
Bitboard checkCandidates(const Position& pos) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  const int ek = pos.kingSquare(~Us);
  const Bitboard empty = ~pos.occupied;
  Bitboard candidates = discoveredCheckCandidates<Us>(pos);

  const Bitboard pawnChecks = Attacks.pawn[~Us][ek] & empty;
  const Bitboard singleFrom = Us == White ? shift<-8>(pawnChecks) : shift<8>(pawnChecks);
  const Bitboard pushedOnce = (Us == White ? shift<-8>(pawnChecks) : shift<8>(pawnChecks)) & empty;
  const Bitboard doubleFrom = (Us == White ? shift<-8>(pushedOnce) : shift<8>(pushedOnce)) &
                              (Us == White ? Rank2Mask : Rank7Mask);
  candidates |= (singleFrom | doubleFrom) & p[T::OwnPawn];

  const Bitboard knightChecks = knightAttacks(ek) & empty;
  const Bitboard bishopChecks = bishopAttacks(ek, pos) & empty;
  const Bitboard rookChecks = rookAttacks(ek, pos) & empty;
  for (Bitboard b = p[T::OwnKnight]; b;) {
    const int s = popLowest(b);
    if (knightAttacks(s) & knightChecks) candidates |= bit(s);
  }
  for (Bitboard b = p[T::OwnBishopLight] | p[T::OwnBishopDark]; b;) {
    const int s = popLowest(b);
    if (bishopAttacks(s, pos) & bishopChecks) candidates |= bit(s);
  }
  for (Bitboard b = p[T::OwnRook]; b;) {
    const int s = popLowest(b);
    if (rookAttacks(s, pos) & rookChecks) candidates |= bit(s);
  }
  for (Bitboard b = p[T::OwnQueen]; b;) {
    const int s = popLowest(b);
    if (queenAttacks(s, pos) & (bishopChecks | rookChecks)) candidates |= bit(s);
  }
  return candidates;
}

template <Color Us>
void finishFor(Position& pos, Bitboard attackedByUs, Bitboard attackedByThem) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  StateEntry& st = pos.st();
  const Bitboard* p = pos.pieces;
  st.pinned = pinnedPieces<Us>(pos);
  Bitboard candidates = checkCandidates<Us>(pos);
  st.checkCandidates = candidates;
  // Pieces in danger: moving them away is a rescue, never a futile quiet move.
  Bitboard pieces = p[T::OwnAll] & ~p[T::OwnPawn] & ~p[T::OwnKing];
  Bitboard threatened = pieces & (pawnAttacks<Them>(p[T::EnemyPawn]) | (attackedByThem & ~attackedByUs));
  st.quietExemptions = candidates | threatened;
  // Pawn captures never lose material, and a king capture that would is illegal anyway.
  st.exchangeExclusion = p[T::OwnPawn] | p[T::OwnKing];
  st.pawnThreats = p[T::EnemyPawn] & attackedByUs & ~attackedByThem;
}

}  // namespace

void finishAttackSummary(Position& pos, Bitboard attackedByWhite, Bitboard attackedByBlack) {
  StateEntry& st = pos.st();
  st.attackedByWhite = attackedByWhite;
  st.attackedByBlack = attackedByBlack;
  st.whiteKingAttackers = attackersTo<Black>(pos, pos.whiteKingSquare);
  st.blackKingAttackers = attackersTo<White>(pos, pos.blackKingSquare);
  if (pos.sideToMove == White) finishFor<White>(pos, attackedByWhite, attackedByBlack);
  else finishFor<Black>(pos, attackedByBlack, attackedByWhite);
  st.evalFinal = 0;
}

}  // namespace tavrin

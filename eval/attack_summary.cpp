// The attack summary: attacked squares, king attackers, pins, check candidates, futility
// exemptions, exchange exclusions and pawn threats of a position, for the search.
#include "eval/attack_summary.h"

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

  // Pawns: a single or double push onto a square from which a pawn checks.
  const Bitboard pawnChecks = Attacks.pawn[~Us][ek] & empty;
  const Bitboard singleFrom = Us == White ? shift<-8>(pawnChecks) : shift<8>(pawnChecks);
  const Bitboard doubleFrom = (Us == White ? shift<-8>(singleFrom & empty) : shift<8>(singleFrom & empty)) &
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

// The fields of the side to move.
template <Color Us>
void finishFor(Position& pos, Bitboard attackedByUs, Bitboard attackedByThem) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  StateEntry& st = pos.st();
  const Bitboard* p = pos.pieces;
  st.pinned = pinnedPieces<Us>(pos);
  const Bitboard candidates = checkCandidates<Us>(pos);
  st.checkCandidates = candidates;
  // Pieces in danger (hit by a pawn, or attacked and undefended): moving them away is a rescue,
  // never a futile quiet move.
  const Bitboard pieces = p[T::OwnAll] & ~p[T::OwnPawn] & ~p[T::OwnKing];
  const Bitboard threatened = pieces & (pawnAttacks<Them>(p[T::EnemyPawn]) | (attackedByThem & ~attackedByUs));
  st.quietExemptions = candidates | threatened;
  // Pawn captures never lose material, and a king capture that would is illegal anyway.
  st.exchangeExclusion = p[T::OwnPawn] | p[T::OwnKing];
  // Enemy pawns that can be taken for nothing.
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

void computeAttackSummary(Position& pos) {
  finishAttackSummary(pos, attackedSquares<White>(pos), attackedSquares<Black>(pos));
}

}  // namespace tavrin

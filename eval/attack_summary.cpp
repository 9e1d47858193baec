// The attack summary: attacked squares, king attackers, pins and check candidates of a position.
#include "eval/attack_summary.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/legality.h"

namespace tavrin {

namespace {

// Pieces of the side to move whose quiet move may give check: the discovered-check candidates
// and every piece or pawn that can reach a square from which it would check.
template <Color Us>
Bitboard checkCandidates(const Position& pos) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  const int ek = pos.kingSquare(~Us);
  const Bitboard empty = ~pos.occupied;
  Bitboard candidates = discoveredCheckCandidates<Us>(pos);

  // Pawns: single or double push onto a pawn-check square.
  constexpr int Up = T::Up;
  const Bitboard pawnChecks = Attacks.pawn[~Us][ek] & empty;
  const Bitboard singleFrom = shift<-Up>(pawnChecks);
  const Bitboard doubleFrom = shift<-Up>(shift<-Up>(pawnChecks) & empty) & (Us == White ? Rank2Mask : Rank7Mask);
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

}  // namespace

void computeAttackSummary(Position& pos) {
  StateEntry& st = *pos.state;
  st.attackedByWhite = attackedSquares<White>(pos);
  st.attackedByBlack = attackedSquares<Black>(pos);
  st.whiteKingAttackers = attackersTo<Black>(pos, pos.whiteKingSquare);
  st.blackKingAttackers = attackersTo<White>(pos, pos.blackKingSquare);
  if (pos.sideToMove == White) {
    st.pinned = pinnedPieces<White>(pos);
    st.checkCandidates = checkCandidates<White>(pos);
  } else {
    st.pinned = pinnedPieces<Black>(pos);
    st.checkCandidates = checkCandidates<Black>(pos);
  }
  st.quietExemptions = 0;
  st.exchangeExclusion = 0;
  st.pawnThreats = 0;
}

}  // namespace tavrin

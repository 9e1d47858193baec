// The attack summary: attacked squares, king attackers, pins, check candidates, futility
// exemptions, exchange exclusions and pawn threats of a position, for the search.
#include "eval/attack_summary.h"

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/legality.h"
#include "eval/eval_internal.h"

namespace tavrin {

namespace {

// Pieces of colour By attacking a king, its slider lines already known.
template <Color By>
Bitboard kingAttackersFrom(const Position& pos, int kingSquare, const KingLines& lines) {
  using T = ColorTraits<By>;
  const Bitboard* p = pos.pieces;
  return (Attacks.pawn[~By][kingSquare] & p[T::OwnPawn]) | (knightAttacks(kingSquare) & p[T::OwnKnight]) |
         (kingAttacks(kingSquare) & p[T::OwnKing]) |
         (lines.bishop & (p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen])) |
         (lines.rook & (p[T::OwnRook] | p[T::OwnQueen]));
}

// Pawns of the side to move whose single or double push lands on a square from which a pawn checks.
template <Color Us>
Bitboard pawnCheckCandidates(const Position& pos) {
  using T = ColorTraits<Us>;
  const Bitboard empty = ~pos.occupied;
  const Bitboard pawnChecks = Attacks.pawn[~Us][pos.kingSquare(~Us)] & empty;
  const Bitboard singleFrom = Us == White ? shift<-8>(pawnChecks) : shift<8>(pawnChecks);
  const Bitboard doubleFrom = (Us == White ? shift<-8>(singleFrom & empty) : shift<8>(singleFrom & empty)) &
                              (Us == White ? Rank2Mask : Rank7Mask);
  return (singleFrom | doubleFrom) & pos.pieces[T::OwnPawn];
}

// The fields of the side to move. Its quiet moves that may give check come from discovered-check
// candidates, pawns and the pieces the parts name.
template <Color Us>
void finishFor(Position& pos, const SummaryParts& parts) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  StateEntry& st = pos.st();
  const Bitboard* p = pos.pieces;
  const Bitboard attackedByUs = parts.attacked[Us], attackedByThem = parts.attacked[Them];
  st.pinned = parts.pinned;
  const Bitboard candidates =
      discoveredCheckCandidates<Us>(pos) | pawnCheckCandidates<Us>(pos) | parts.pieceCandidates;
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

// The side to move's attacked squares and the pieces among them that reach a checking square,
// in one pass over its pieces; and its pins.
template <Color Us>
void sideToMoveParts(const Position& pos, SummaryParts& parts) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  const CheckSquares checks = checkSquares<Us>(pos, parts.lines[~Us]);
  Bitboard attacks = pawnAttacks<Us>(p[T::OwnPawn]);
  if (p[T::OwnKing]) attacks |= kingAttacks(pos.kingSquare(Us));
  Bitboard candidates = 0;
  auto add = [&](int s, Bitboard att, Bitboard checking) {
    attacks |= att;
    if (att & checking) candidates |= bit(s);
  };
  for (Bitboard b = p[T::OwnKnight]; b;) {
    const int s = popLowest(b);
    add(s, knightAttacks(s), checks.knight);
  }
  for (Bitboard b = p[T::OwnBishopLight] | p[T::OwnBishopDark]; b;) {
    const int s = popLowest(b);
    add(s, bishopAttacks(s, pos), checks.bishop);
  }
  for (Bitboard b = p[T::OwnRook]; b;) {
    const int s = popLowest(b);
    add(s, rookAttacks(s, pos), checks.rook);
  }
  for (Bitboard b = p[T::OwnQueen]; b;) {
    const int s = popLowest(b);
    add(s, queenAttacks(s, pos), checks.bishop | checks.rook);
  }
  parts.attacked[Us] = attacks;
  parts.pieceCandidates = candidates;
  parts.pinned = pinnedPieces<Us>(pos);
}

}  // namespace

void finishAttackSummary(Position& pos, const SummaryParts& parts) {
  StateEntry& st = pos.st();
  st.attackedByWhite = parts.attacked[White];
  st.attackedByBlack = parts.attacked[Black];
  st.whiteKingAttackers = kingAttackersFrom<Black>(pos, pos.whiteKingSquare, parts.lines[White]);
  st.blackKingAttackers = kingAttackersFrom<White>(pos, pos.blackKingSquare, parts.lines[Black]);
  if (pos.sideToMove == White) finishFor<White>(pos, parts);
  else finishFor<Black>(pos, parts);
  st.evalFinal = 0;
}

void computeAttackSummary(Position& pos) {
  SummaryParts parts;
  parts.lines[White] = kingLines(pos, pos.whiteKingSquare);
  parts.lines[Black] = kingLines(pos, pos.blackKingSquare);
  if (pos.sideToMove == White) {
    sideToMoveParts<White>(pos, parts);
    parts.attacked[Black] = attackedSquares<Black>(pos);
  } else {
    sideToMoveParts<Black>(pos, parts);
    parts.attacked[White] = attackedSquares<White>(pos);
  }
  finishAttackSummary(pos, parts);
}

}  // namespace tavrin

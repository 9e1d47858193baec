// Tests of single moves: pseudo-legality of stored moves, checks and pins, static exchange.
#pragma once

#include "board/attacks.h"
#include "board/position.h"

namespace tavrin {

// Is the move playable by the side to move? Reads the attack sets of the current entry.
// `isPseudoLegal<Us>(...)` where the colour is known at compile time, else a named instance.
template <Color Us> bool isPseudoLegal(const Position& pos, Move m);
bool isPseudoLegalWhite(const Position& pos, Move m);
bool isPseudoLegalBlack(const Position& pos, Move m);

// Squares attacked by a colour (whole-board computation).
template <Color Us> Bitboard attackedSquares(const Position& pos);
// Pieces of colour By attacking square sq with the given occupancy.
template <Color By> Bitboard attackersOf(const Position& pos, int sq, Bitboard occupied);

// Pieces of colour By attacking sq with the position's own occupancy (table lookups only).
template <Color By>
inline Bitboard attackersTo(const Position& pos, int sq) {
  using T = ColorTraits<By>;
  const Bitboard* p = pos.pieces;
  return (Attacks.pawn[~By][sq] & p[T::OwnPawn]) | (knightAttacks(sq) & p[T::OwnKnight]) |
         (kingAttacks(sq) & p[T::OwnKing]) |
         (bishopAttacks(sq, pos) & (p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen])) |
         (rookAttacks(sq, pos) & (p[T::OwnRook] | p[T::OwnQueen]));
}
template <Color By>
inline bool isAttackedBy(const Position& pos, int sq) {
  using T = ColorTraits<By>;
  const Bitboard* p = pos.pieces;
  return (Attacks.pawn[~By][sq] & p[T::OwnPawn]) || (knightAttacks(sq) & p[T::OwnKnight]) ||
         (kingAttacks(sq) & p[T::OwnKing]) ||
         (bishopAttacks(sq, pos) & (p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen])) ||
         (rookAttacks(sq, pos) & (p[T::OwnRook] | p[T::OwnQueen]));
}

// Pieces of colour Us that stand alone between Us's king and an enemy slider aimed at it.
template <Color Us> Bitboard pinnedPieces(const Position& pos);
// Pieces of colour Us whose move off the line would uncover a check of Us's slider on the
// enemy king (discovered-check candidates).
template <Color Us> Bitboard discoveredCheckCandidates(const Position& pos);

// Checkers of the side to move and its pinned pieces, written into the current entry
// (whiteKingAttackers / blackKingAttackers and pinned).
void computeChecksAndPins(Position& pos);
// Is the king of the side that just moved attacked (the move was illegal)?
bool leftOwnKingInCheck(const Position& pos);
// Is the side to move in check?
bool inCheck(const Position& pos);

// Does the move lose material once the exchanges on its destination are played out?
template <Color Us> bool exchangeLoses(const Position& pos, Move m);
bool exchangeLoses(const Position& pos, Move m);

}  // namespace tavrin

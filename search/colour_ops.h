// Colour-fixed access to the board's twins: each call resolves at compile time to the White or
// Black instance, so the search's templates never test the side to move.
#pragma once

#include "board/legality.h"
#include "board/make_move.h"
#include "board/movegen.h"

namespace tavrin {

template <Color Us> inline void doMove(Position& pos, Move m) {
  if constexpr (Us == White) makeMoveWhite(pos, m);
  else makeMoveBlack(pos, m);
}
template <Color Us> inline void undoMove(Position& pos, Move m) {
  if constexpr (Us == White) unmakeMoveWhite(pos, m);
  else unmakeMoveBlack(pos, m);
}
template <Color Us> inline bool pseudoLegal(const Position& pos, Move m) {
  if constexpr (Us == White) return isPseudoLegalWhite(pos, m);
  else return isPseudoLegalBlack(pos, m);
}
template <Color Us> inline MoveWord* genCaptures(const Position& pos, MoveWord* list, Bitboard targets) {
  if constexpr (Us == White) return generateCapturesWhite(pos, list, targets);
  else return generateCapturesBlack(pos, list, targets);
}
template <Color Us> inline MoveWord* genEvasions(const Position& pos, MoveWord* list, Bitboard mask) {
  if constexpr (Us == White) return generateEvasionsWhite(pos, list, mask);
  else return generateEvasionsBlack(pos, list, mask);
}

template <Color Us> inline MoveWord* genRemaining(const Position& pos, MoveWord* list, int margin) {
  if constexpr (Us == White) return generateRemainingWhite(pos, list, margin);
  else return generateRemainingBlack(pos, list, margin);
}
template <Color Us> inline MoveWord* genQuietChecks(const Position& pos, MoveWord* list) {
  if constexpr (Us == White) return generateQuietChecksWhite(pos, list);
  else return generateQuietChecksBlack(pos, list);
}

// King attackers of a colour, as the evaluation's attack summary leaves them in the entry.
template <Color C> inline Bitboard kingAttackers(const StateEntry& st) {
  if constexpr (C == White) return st.whiteKingAttackers;
  else return st.blackKingAttackers;
}

}  // namespace tavrin

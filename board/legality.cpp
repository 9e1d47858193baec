// Tests of single moves and squares: pseudo-legality of stored moves, attacks, checks and pins,
// and the static exchange test.
#include "board/legality.h"

#include <algorithm>

#include "board/attacks.h"
#include "board/bitboard.h"

namespace tavrin {

template <Color Us>
bool isPseudoLegal(const Position& pos, Move m) {
  using T = ColorTraits<Us>;
  const int from = moveFrom(m), to = moveTo(m), kind = moveKind(m);
  const int piece = pos.board[from];
  const int target = pos.board[to];
  const StateEntry& st = *pos.state;
  const Bitboard attackedByThem = Us == White ? st.attackedByBlack : st.attackedByWhite;

  // 1-2. Own piece on from; neither an own piece nor the enemy king on to.
  if (!(pos.pieces[T::OwnAll] & bit(from))) return false;
  if ((pos.pieces[T::OwnAll] & bit(to)) || target == T::EnemyKing) return false;

  if (piece == T::OwnPawn) {
    // 3. Pawns, White's view mirrored through Up. A promotion kind is only taken on the last
    // rank, and no other kind but en passant on a pawn: the make would misread it.
    constexpr int Up = T::Up;
    if ((rankOf(to) == T::Rank8) != (kind >= PromoteKnight)) return false;
    if (kind == CastlingMove || kind == 2) return false;  // kind 2 is never a move
    if (kind == EnPassantMove)
      return to == st.epSquare && st.epSquare != 0 && (from == to - Up - 1 || from == to - Up + 1) &&
             rankOf(from) == rankOf(to - Up);
    if (from == to - Up) return target == 0;
    if (from == to - 2 * Up)
      return T::RelativeRank(from) == 1 && pos.board[from + Up] == 0;  // to itself is not examined
    if ((from == to - Up - 1 || from == to - Up + 1) && rankOf(from) == rankOf(to - Up))
      return (pos.pieces[T::EnemyAll] & bit(to)) != 0;
    return false;
  }
  // Only pawns carry the en-passant and promotion kinds, only the king castles.
  if (kind != NormalMove && !(kind == CastlingMove && piece == T::OwnKing)) return false;
  if (piece == T::OwnKnight) return (knightAttacks(from) & bit(to)) != 0;
  if (piece == T::OwnBishopLight || piece == T::OwnBishopDark) return (bishopAttacks(from, pos) & bit(to)) != 0;

  if (kind == CastlingMove && piece == T::OwnKing && from == T::KingStart) {
    // 6. Castling; whether the king stands in check is not tested here.
    constexpr int G = Us == White ? G1 : G8, F = Us == White ? F1 : F8, H = Us == White ? H1 : H8;
    constexpr int C = Us == White ? C1 : C8, D = Us == White ? D1 : D8, B = Us == White ? B1 : B8;
    constexpr int A = Us == White ? A1 : A8;
    if (to == G)
      return (st.castle & T::KingSideRight) && !(pos.occupied & (bit(F) | bit(G))) &&
             !(attackedByThem & (bit(F) | bit(G))) && pos.board[H] == T::OwnRook;
    if (to == C)
      return (st.castle & T::QueenSideRight) && !(pos.occupied & (bit(B) | bit(C) | bit(D))) &&
             !(attackedByThem & (bit(C) | bit(D))) && pos.board[A] == T::OwnRook;
  }
  if (piece == T::OwnRook) return kind != CastlingMove && (rookAttacks(from, pos) & bit(to)) != 0;
  if (piece == T::OwnQueen) return kind != CastlingMove && (queenAttacks(from, pos) & bit(to)) != 0;
  if (piece == T::OwnKing)
    return kind != CastlingMove && (kingAttacks(from) & bit(to)) && !(attackedByThem & bit(to));
  return false;
}

template bool isPseudoLegal<White>(const Position&, Move);
template bool isPseudoLegal<Black>(const Position&, Move);
bool isPseudoLegalWhite(const Position& pos, Move m) { return isPseudoLegal<White>(pos, m); }
bool isPseudoLegalBlack(const Position& pos, Move m) { return isPseudoLegal<Black>(pos, m); }

template <Color Us>
Bitboard attackedSquares(const Position& pos) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  Bitboard attacks = pawnAttacks<Us>(p[T::OwnPawn]);
  if (p[T::OwnKing]) attacks |= kingAttacks(pos.kingSquare(Us));
  for (Bitboard b = p[T::OwnKnight]; b;) attacks |= knightAttacks(popLowest(b));
  for (Bitboard b = p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen]; b;)
    attacks |= bishopAttacks(popLowest(b), pos);
  for (Bitboard b = p[T::OwnRook] | p[T::OwnQueen]; b;) attacks |= rookAttacks(popLowest(b), pos);
  return attacks;
}
template Bitboard attackedSquares<White>(const Position&);
template Bitboard attackedSquares<Black>(const Position&);

template <Color By>
Bitboard attackersOf(const Position& pos, int sq, Bitboard occupied) {
  using T = ColorTraits<By>;
  if (occupied == pos.occupied) return attackersTo<By>(pos, sq);
  const Bitboard* p = pos.pieces;
  return ((Attacks.pawn[~By][sq] & p[T::OwnPawn]) | (knightAttacks(sq) & p[T::OwnKnight]) |
          (kingAttacks(sq) & p[T::OwnKing]) |
          (slowBishopAttacks(sq, occupied) & (p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen])) |
          (slowRookAttacks(sq, occupied) & (p[T::OwnRook] | p[T::OwnQueen]))) &
         occupied;
}
template Bitboard attackersOf<White>(const Position&, int, Bitboard);
template Bitboard attackersOf<Black>(const Position&, int, Bitboard);

namespace {

// Pieces of either colour that stand alone between square k and a slider of colour By aimed at it.
template <Color By>
Bitboard blockersFor(const Position& pos, int k) {
  using T = ColorTraits<By>;
  const Bitboard* p = pos.pieces;
  Bitboard snipers = (rookPseudoAttacks(k) & (p[T::OwnRook] | p[T::OwnQueen])) |
                     (bishopPseudoAttacks(k) & (p[T::OwnBishopLight] | p[T::OwnBishopDark] | p[T::OwnQueen]));
  Bitboard blockers = 0;
  while (snipers) {
    Bitboard between = Attacks.between[k][popLowest(snipers)] & pos.occupied;
    if (between && !moreThanOne(between)) blockers |= between;
  }
  return blockers;
}

}  // namespace

template <Color Us>
Bitboard pinnedPieces(const Position& pos) {
  return blockersFor<~Us>(pos, pos.kingSquare(Us)) & pos.pieces[ColorTraits<Us>::OwnAll];
}
template Bitboard pinnedPieces<White>(const Position&);
template Bitboard pinnedPieces<Black>(const Position&);

template <Color Us>
Bitboard discoveredCheckCandidates(const Position& pos) {
  return blockersFor<Us>(pos, pos.kingSquare(~Us)) & pos.pieces[ColorTraits<Us>::OwnAll];
}
template Bitboard discoveredCheckCandidates<White>(const Position&);
template Bitboard discoveredCheckCandidates<Black>(const Position&);

void computeChecksAndPins(Position& pos) {
  StateEntry& st = *pos.state;
  if (pos.sideToMove == White) {
    st.whiteKingAttackers = attackersTo<Black>(pos, pos.whiteKingSquare);
    st.pinned = pinnedPieces<White>(pos);
  } else {
    st.blackKingAttackers = attackersTo<White>(pos, pos.blackKingSquare);
    st.pinned = pinnedPieces<Black>(pos);
  }
}

bool leftOwnKingInCheck(const Position& pos) {
  return pos.sideToMove == White ? isAttackedBy<White>(pos, pos.blackKingSquare)
                                 : isAttackedBy<Black>(pos, pos.whiteKingSquare);
}

bool inCheck(const Position& pos) {
  return pos.sideToMove == White ? isAttackedBy<Black>(pos, pos.whiteKingSquare)
                                 : isAttackedBy<White>(pos, pos.blackKingSquare);
}

namespace {

constexpr int KingExchangeValue = 20000;
// Exchange values by piece code: pawn 100, minor pieces 325, rook 500, queen 975, king last.
constexpr int ExchangeValue[16] = {0, 100, 325, KingExchangeValue, 325, 325, 500, 975,
                                   0, 100, 325, KingExchangeValue, 325, 325, 500, 975};

}  // namespace

template <Color Us>
bool exchangeLoses(const Position& pos, Move m) {
  using T = ColorTraits<Us>;
  const int from = moveFrom(m), to = moveTo(m), kind = moveKind(m);
  if (kind == CastlingMove) return false;
  const Bitboard* p = pos.pieces;
  const int mover = pos.board[from];
  int gain[40];
  int onSquare = ExchangeValue[mover];
  gain[0] = kind == EnPassantMove ? 100 : ExchangeValue[pos.board[to]];
  if (kind >= PromoteKnight) {
    static constexpr int PromotionValue[8] = {0, 0, 0, 0, 325, 325, 500, 975};
    onSquare = PromotionValue[kind];
    gain[0] += onSquare - 100;
  } else if (kindOf(mover) != King && gain[0] >= onSquare) {
    return false;  // taking something at least as valuable never loses
  }

  Occupancy occ = Occupancy::of(pos);
  occ.toggle(from);
  if (kind == EnPassantMove) occ.toggle(to ^ 8);
  const Bitboard diagonalSliders = p[WhiteBishopLight] | p[WhiteBishopDark] | p[WhiteQueen] |
                                   p[BlackBishopLight] | p[BlackBishopDark] | p[BlackQueen];
  const Bitboard straightSliders = p[WhiteRook] | p[WhiteQueen] | p[BlackRook] | p[BlackQueen];
  Bitboard attackers = ((Attacks.pawn[Black][to] & p[WhitePawn]) | (Attacks.pawn[White][to] & p[BlackPawn]) |
                        (knightAttacks(to) & (p[WhiteKnight] | p[BlackKnight])) |
                        (kingAttacks(to) & (p[WhiteKing] | p[BlackKing])) |
                        (bishopAttacks(to, occ) & diagonalSliders) | (rookAttacks(to, occ) & straightSliders)) &
                       occ.plain;

  // A king may only capture onto a square the other side does not defend.
  if (kindOf(mover) == King) return (attackers & p[T::EnemyAll]) != 0;

  int depth = 0;
  Color side = ~Us;
  while (depth < 38) {
    const int offset = side == White ? 0 : 8;
    const Bitboard mine = attackers & p[offset];
    if (!mine) break;
    // Cheapest attacker first; the two bishop codes are one class.
    int from2 = -1, kindValue = 0;
    static constexpr int Order[6][2] = {{Pawn, Pawn}, {Knight, Knight}, {BishopLight, BishopDark},
                                        {Rook, Rook}, {Queen, Queen}, {King, King}};
    for (const auto& kinds : Order) {
      Bitboard b = mine & (p[kinds[0] + offset] | p[kinds[1] + offset]);
      if (b) {
        from2 = bitScanForward(b);
        kindValue = ExchangeValue[kinds[0]];
        break;
      }
    }
    if (kindValue == KingExchangeValue && (attackers & p[offset ^ 8])) break;  // king cannot recapture
    ++depth;
    gain[depth] = onSquare - gain[depth - 1];
    if (std::max(-gain[depth - 1], gain[depth]) < 0) break;
    onSquare = kindValue;
    occ.toggle(from2);
    attackers |= (bishopAttacks(to, occ) & diagonalSliders) | (rookAttacks(to, occ) & straightSliders);
    attackers &= occ.plain;
    side = ~side;
  }
  while (depth > 0) {
    gain[depth - 1] = -std::max(-gain[depth - 1], gain[depth]);
    --depth;
  }
  return gain[0] < 0;
}
template bool exchangeLoses<White>(const Position&, Move);
template bool exchangeLoses<Black>(const Position&, Move);

bool exchangeLoses(const Position& pos, Move m) {
  return pos.sideToMove == White ? exchangeLoses<White>(pos, m) : exchangeLoses<Black>(pos, m);
}

}  // namespace tavrin

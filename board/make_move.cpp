// Making and unmaking moves with incremental keys, material, piece-square sum and castling,
// en-passant and fifty-move state; the null move; completing a move from its squares.
#include "board/make_move.h"

#include <cstring>

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/material.h"
#include "board/piece_square.h"
#include "board/zobrist.h"

namespace tavrin {

std::uint64_t PollCounter;

namespace {
void noPoll(Position&) {}
}  // namespace
void (*InputPoll)(Position&) = noPoll;

namespace {

// Promotion kind -> piece code (light-squared bishop; raised by one on a dark square).
constexpr std::uint8_t PromotionCode[2][8] = {
    {0, 0, 0, 0, BlackKnight, BlackBishopLight, BlackRook, BlackQueen},
    {0, 0, 0, 0, WhiteKnight, WhiteBishopLight, WhiteRook, WhiteQueen},
};

// Files beside each file: after a double push an en-passant square is only recorded when an
// enemy pawn stands beside the pawn on the rank it lands on.
constexpr Bitboard AdjacentFiles[8] = {
    fileMask(1), fileMask(0) | fileMask(2), fileMask(1) | fileMask(3), fileMask(2) | fileMask(4),
    fileMask(3) | fileMask(5), fileMask(4) | fileMask(6), fileMask(5) | fileMask(7), fileMask(6),
};

inline void toggleOccupancy(Position& pos, int sq, Bitboard b) {
  pos.occupied ^= b;
  pos.occupiedFileMajor ^= Rot.setFileMajor[sq];
  pos.occupiedAntiDiag ^= Rot.setAntiDiag[sq];
  pos.occupiedDiag ^= Rot.setDiag[sq];
}

// The castling rook of a king arriving on kingTo: its corner and the square the king crosses.
struct CastlingRook {
  int corner, inner;
};
template <Color Us>
constexpr CastlingRook castlingRook(int kingTo) {
  constexpr bool W = Us == White;
  return kingTo == (W ? G1 : G8) ? CastlingRook{W ? H1 : H8, W ? F1 : F8} : CastlingRook{W ? A1 : A8, W ? D1 : D8};
}

// Moves an own rook from `off` onto `onto` (castling and its undoing).
template <Color Us>
inline void shiftRook(Position& pos, int off, int onto) {
  using T = ColorTraits<Us>;
  const Bitboard rookBits = bit(off) | bit(onto);
  pos.pieces[T::OwnAll] ^= rookBits;
  pos.pieces[T::OwnRook] ^= rookBits;
  toggleOccupancy(pos, off, bit(off));
  toggleOccupancy(pos, onto, bit(onto));
  pos.board[off] = 0;
  pos.board[onto] = T::OwnRook;
}

// Takes the pawn captured en passant off its square, or puts it back when restoring.
template <Color Us>
inline void toggleEnPassantVictim(Position& pos, int victimSq, bool restore) {
  using T = ColorTraits<Us>;
  const Bitboard victimBit = bit(victimSq);
  pos.pieces[T::EnemyAll] ^= victimBit;
  pos.pieces[T::EnemyPawn] ^= victimBit;
  toggleOccupancy(pos, victimSq, victimBit);
  pos.board[victimSq] = restore ? T::EnemyPawn : NoPiece;
}

}  // namespace

template <Color Us>
void makeMove(Position& pos, Move m) {
  using T = ColorTraits<Us>;
  constexpr Bitboard DoublePushRank = Us == White ? Rank4Mask : Rank5Mask;

  countNode(pos);
  if constexpr (Us == White) {
    // The main record polls its input every 4096 white moves, before the move is played.
    if (pos.recordIndex == 0 && (++PollCounter & PollPhaseBits) == 0) InputPoll(pos);
  }

  StateEntry* st = pos.state + 1;
  std::memcpy(static_cast<void*>(st), pos.state, 32);
  pos.state = st;

  const int from = moveFrom(m), to = moveTo(m), kind = moveKind(m);
  const int p = pos.board[from];
  const Bitboard fromBit = bit(from), toBit = bit(to);

  st->rule50++;
  st->move = moveOf(m);

  const int castle = st->castle;
  const int kept = castle & CastleMask[from] & CastleMask[to];
  const Key castleDelta = Zobrist.castling[castle ^ kept];
  st->key ^= castleDelta;
  st->pawnKey ^= castleDelta;
  st->castle = std::uint8_t(kept);

  if (st->epSquare) {
    st->key ^= Zobrist.enPassant[st->epSquare & 7];
    st->epSquare = 0;
  }

  pos.board[from] = 0;
  pos.pieces[T::OwnAll] ^= fromBit;
  pos.pieces[p] ^= fromBit;
  toggleOccupancy(pos, from, fromBit);

  st->psqScore += PieceSquare[p][to] - PieceSquare[p][from];
  const Key delta = Zobrist.pieceSquare[p][from] ^ Zobrist.pieceSquare[p][to];
  const int captured = pos.board[to];
  st->capturedPiece = std::uint8_t(captured);
  st->key ^= delta ^ Zobrist.side;
  if (p == T::OwnPawn || p == T::OwnKing) st->pawnKey ^= delta;

  pos.sideToMove ^= 1;
  pos.ply++;
  if (p == T::OwnKing) {
    if constexpr (Us == White) pos.whiteKingSquare = std::uint8_t(to);
    else pos.blackKingSquare = std::uint8_t(to);
  }

  if (captured) {
    pos.pieces[T::EnemyAll] ^= toBit;
    pos.pieces[captured] ^= toBit;
    st->materialKey -= MaterialConstant[captured];
    st->psqScore -= PieceSquare[captured][to];
    const Key victim = Zobrist.pieceSquare[captured][to];
    if (captured == T::EnemyPawn) st->pawnKey ^= victim;
    st->key ^= victim;
    st->rule50 = 0;
  } else {
    toggleOccupancy(pos, to, toBit);
    if (kind == CastlingMove) {
      st->rule50 = 0;
      const auto [corner, inner] = castlingRook<Us>(to);
      shiftRook<Us>(pos, corner, inner);
      st->psqScore += PieceSquare[T::OwnRook][inner] - PieceSquare[T::OwnRook][corner];
      st->key ^= Zobrist.pieceSquare[T::OwnRook][corner] ^ Zobrist.pieceSquare[T::OwnRook][inner];
    }
  }

  pos.board[to] = std::uint8_t(p);
  pos.pieces[T::OwnAll] |= toBit;
  pos.pieces[p] |= toBit;

  if (p == T::OwnPawn) {
    st->rule50 = 0;
    if (kind == EnPassantMove) {
      const int victimSq = to ^ 8;
      toggleEnPassantVictim<Us>(pos, victimSq, false);
      st->materialKey -= MaterialConstant[T::EnemyPawn];
      st->psqScore -= PieceSquare[T::EnemyPawn][victimSq];
      const Key victim = Zobrist.pieceSquare[T::EnemyPawn][victimSq];
      st->key ^= victim;
      st->pawnKey ^= victim;
    } else if (kind >= PromoteKnight) {
      int q = PromotionCode[Us][kind];
      if (kind == PromoteBishop && (DarkSquares & toBit)) ++q;
      pos.board[to] = std::uint8_t(q);
      if (pos.pieces[q]) st->materialKey |= UnusualMaterial;
      pos.pieces[T::OwnPawn] ^= toBit;
      pos.pieces[q] |= toBit;
      st->materialKey += MaterialConstant[q] - MaterialConstant[T::OwnPawn];
      st->psqScore += PieceSquare[q][to] - PieceSquare[T::OwnPawn][to];
      st->key ^= Zobrist.pieceSquare[q][to] ^ Zobrist.pieceSquare[T::OwnPawn][to];
      st->pawnKey ^= Zobrist.pieceSquare[T::OwnPawn][to];
    } else if ((from ^ to) == 16 && (pos.pieces[T::EnemyPawn] & AdjacentFiles[to & 7] & DoublePushRank)) {
      st->epSquare = std::uint8_t((from + to) / 2);
      st->key ^= Zobrist.enPassant[st->epSquare & 7];
    }
  }

  pos.historyCount++;
  pos.keyHistory[pos.historyCount] = st->key;
}

template <Color Us>
void unmakeMove(Position& pos, Move m) {
  using T = ColorTraits<Us>;

  const int from = moveFrom(m), to = moveTo(m), kind = moveKind(m);
  const Bitboard fromBit = bit(from), toBit = bit(to);
  int p = pos.board[to];
  pos.sideToMove ^= 1;
  pos.ply--;

  if (kind >= PromoteKnight) {
    pos.pieces[p] ^= toBit;
    p = T::OwnPawn;
  } else {
    pos.pieces[p] ^= toBit;
  }
  const int captured = pos.state->capturedPiece;
  pos.board[from] = std::uint8_t(p);
  pos.board[to] = std::uint8_t(captured);
  if (p == T::OwnKing) {
    if constexpr (Us == White) pos.whiteKingSquare = std::uint8_t(from);
    else pos.blackKingSquare = std::uint8_t(from);
  }

  pos.pieces[T::OwnAll] ^= fromBit | toBit;
  pos.pieces[p] |= fromBit;
  toggleOccupancy(pos, from, fromBit);

  if (captured) {
    pos.pieces[T::EnemyAll] |= toBit;
    pos.pieces[captured] |= toBit;
  } else {
    toggleOccupancy(pos, to, toBit);
    if (kind == CastlingMove) {
      const auto [corner, inner] = castlingRook<Us>(to);
      shiftRook<Us>(pos, inner, corner);
    } else if (kind == EnPassantMove) {
      toggleEnPassantVictim<Us>(pos, to ^ 8, true);
    }
  }

  pos.state--;
  pos.historyCount--;
}

template void makeMove<White>(Position&, Move);
template void makeMove<Black>(Position&, Move);
template void unmakeMove<White>(Position&, Move);
template void unmakeMove<Black>(Position&, Move);

void makeMoveWhite(Position& pos, Move m) { makeMove<White>(pos, m); }
void makeMoveBlack(Position& pos, Move m) { makeMove<Black>(pos, m); }
void unmakeMoveWhite(Position& pos, Move m) { unmakeMove<White>(pos, m); }
void unmakeMoveBlack(Position& pos, Move m) { unmakeMove<Black>(pos, m); }

void makeMoveAny(Position& pos, Move m) {
  if (pos.sideToMove == White) makeMoveWhite(pos, m);
  else makeMoveBlack(pos, m);
}

void unmakeMove(Position& pos, Move m) {
  if (pos.sideToMove == White) unmakeMoveBlack(pos, m);
  else unmakeMoveWhite(pos, m);
}

void makeRootMove(Position& pos, Move m) {
  // Moves of the position command are not search moves: give back the count White's make adds,
  // unless that would cross a polling boundary.
  if (pos.sideToMove == White && (PollCounter & PollPhaseBits) != 0) --PollCounter;
  makeMoveAny(pos, m);
}

void makeNullMove(Position& pos) {
  countNode(pos);
  StateEntry* prev = pos.state;
  prev->savedNullBits = prev->nullBits;
  StateEntry* st = prev + 1;
  std::memcpy(static_cast<void*>(st), prev, 64);
  pos.state = st;
  st->key ^= Zobrist.side;
  pos.sideToMove ^= 1;
  pos.ply++;
  st->rule50++;
  if (st->epSquare) {
    st->key ^= Zobrist.enPassant[st->epSquare & 7];
    st->epSquare = 0;
  }
  st->staticEval = -16 - prev->staticEval;
  st->positionalEval = prev->positionalEval;
  st->lazyCount = prev->lazyCount;
  st->nullBits &= std::uint8_t(~3u);
  st->move = NoMove;
  pos.historyCount++;
  pos.keyHistory[pos.historyCount] = st->key;
}

void unmakeNullMove(Position& pos) {
  pos.state--;
  pos.historyCount--;
  pos.ply--;
  pos.sideToMove ^= 1;
}

Move moveFromSquares(const Position& pos, Move m) {
  const int from = moveFrom(m), to = moveTo(m);
  const int piece = pos.board[from];
  if (kindOf(piece) == King && (to - from == 2 || from - to == 2))
    return addKind(m, CastlingMove);
  if (kindOf(piece) == Pawn && pos.state->epSquare != 0 && to == pos.state->epSquare)
    return addKind(m, EnPassantMove);
  return m;
}

}  // namespace tavrin

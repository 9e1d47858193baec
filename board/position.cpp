// Position set-up: the state stack, the start position and the recomputation of every derived
// field (bitboards, occupancies, keys, material signature, piece-square sum) from the board.
#include "board/position.h"

#include <cstring>
#include <new>

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/material.h"
#include "board/piece_square.h"
#include "board/zobrist.h"

namespace tavrin {

namespace {
void noEvaluation(Position&) {}
}  // namespace
void (*EvaluatePosition)(Position&) = noEvaluation;

void initPosition(Position& pos, int stackEntries) {
  StateEntry* stack = pos.stateStack;
  if (stack && int(pos.stackEntries) != stackEntries) {
    releasePosition(pos);
    stack = nullptr;
  }
  std::memset(static_cast<void*>(&pos), 0, sizeof(Position));
  // One zeroed guard entry below the base keeps "the entry below the current one" readable
  // even when the base itself is current (as after reading a FEN).
  if (!stack) stack = new (std::align_val_t(64)) StateEntry[stackEntries + 1]() + 1;
  std::memset(static_cast<void*>(stack), 0, sizeof(StateEntry) * stackEntries);
  pos.stateStack = stack;
  pos.stackEntries = std::uint32_t(stackEntries);
  pos.state = stack;
}

void releasePosition(Position& pos) {
  if (pos.stateStack) ::operator delete[](pos.stateStack - 1, std::align_val_t(64));
  pos.stateStack = pos.state = nullptr;
}

void setStartPosition(Position& pos) {
  static constexpr std::uint8_t FirstRank[8] = {WhiteRook, WhiteKnight, WhiteBishopDark, WhiteQueen,
                                                WhiteKing, WhiteBishopLight, WhiteKnight, WhiteRook};
  static constexpr std::uint8_t LastRank[8] = {BlackRook, BlackKnight, BlackBishopLight, BlackQueen,
                                               BlackKing, BlackBishopDark, BlackKnight, BlackRook};
  std::memset(pos.board, 0, sizeof pos.board);
  std::memset(static_cast<void*>(pos.stateStack), 0, sizeof(StateEntry) * pos.stackEntries);
  // The first entry stays zero so that the entry below the root can always be read.
  pos.state = pos.stateStack + 1;
  pos.sideToMove = White;
  pos.ply = 0;
  pos.state->castle = 15;
  pos.state->epSquare = 0;
  pos.state->rule50 = 0;
  for (int f = 0; f < 8; ++f) {
    pos.board[f] = FirstRank[f];
    pos.board[8 + f] = WhitePawn;
    pos.board[48 + f] = BlackPawn;
    pos.board[56 + f] = LastRank[f];
  }
  pos.historyCount = 0;
  recomputeFromBoard(pos);
}

DerivedState computeDerivedState(const Position& pos) {
  const StateEntry& st = *pos.state;
  DerivedState d{0, PawnKeySalt, 0, 0};
  for (int sq = 0; sq < 64; ++sq) {
    int c = pos.board[sq];
    if (!c) continue;
    d.psqScore += PieceSquare[c][sq];
    d.key ^= Zobrist.pieceSquare[c][sq];
    if (kindOf(c) == Pawn || kindOf(c) == King) d.pawnKey ^= Zobrist.pieceSquare[c][sq];
    d.materialKey += MaterialConstant[c];
  }
  if (unusualMaterial(pos)) d.materialKey |= UnusualMaterial;
  d.key ^= Zobrist.castling[st.castle & 15];
  d.pawnKey ^= Zobrist.castling[st.castle & 15];
  if (st.epSquare) d.key ^= Zobrist.enPassant[st.epSquare & 7];
  if (pos.sideToMove == White) d.key ^= Zobrist.side;
  return d;
}

void recomputeFromBoard(Position& pos) {
  StateEntry& st = *pos.state;
  // Steps 1-3: piece sets, keys, material and piece-square sum from the board.
  for (Bitboard& b : pos.pieces) b = 0;
  st.key = st.pawnKey = 0;
  st.materialKey = 0;
  st.psqScore = 0;
  for (int sq = 0; sq < 64; ++sq) {
    int c = pos.board[sq];
    if (!c) continue;
    st.psqScore += PieceSquare[c][sq];
    st.key ^= Zobrist.pieceSquare[c][sq];
    if (kindOf(c) == Pawn) st.pawnKey ^= Zobrist.pieceSquare[c][sq];
    st.materialKey += MaterialConstant[c];
    pos.pieces[c] |= bit(sq);
  }
  for (int k = 1; k < 8; ++k) {
    pos.pieces[AllWhite] |= pos.pieces[k];
    pos.pieces[AllBlack] |= pos.pieces[k + 8];
  }
  pos.occupied = pos.pieces[AllWhite] | pos.pieces[AllBlack];
  // Step 4: material the table cannot index.
  if (unusualMaterial(pos)) st.materialKey |= UnusualMaterial;
  // Step 5: rotated occupancies.
  pos.occupiedFileMajor = pos.occupiedAntiDiag = pos.occupiedDiag = 0;
  for (Bitboard b = pos.occupied; b;) {
    int sq = popLowest(b);
    pos.occupiedFileMajor |= Rot.setFileMajor[sq];
    pos.occupiedAntiDiag |= Rot.setAntiDiag[sq];
    pos.occupiedDiag |= Rot.setDiag[sq];
  }
  // Step 6: king squares (a board without a king, which set-up never produces, reads a1).
  pos.whiteKingSquare = std::uint8_t(pos.pieces[WhiteKing] ? bitScanForward(pos.pieces[WhiteKing]) : 0);
  pos.blackKingSquare = std::uint8_t(pos.pieces[BlackKing] ? bitScanForward(pos.pieces[BlackKing]) : 0);
  // Steps 7-9: castling, en passant, kings in the pawn key, side to move.
  st.castle &= 15;
  st.key ^= Zobrist.castling[st.castle];
  if (st.epSquare) st.key ^= Zobrist.enPassant[st.epSquare & 7];
  st.pawnKey ^= Zobrist.castling[st.castle] ^ Zobrist.pieceSquare[BlackKing][pos.blackKingSquare] ^
                Zobrist.pieceSquare[WhiteKing][pos.whiteKingSquare] ^ PawnKeySalt;
  if (pos.sideToMove == White) st.key ^= Zobrist.side;
  // The position itself counts for repetitions.
  pos.keyHistory[pos.historyCount] = st.key;
  // Step 10: one full evaluation fills the evaluation fields of the entry.
  EvaluatePosition(pos);
}

bool boardPlayable(const std::uint8_t (&board)[64]) {
  int kings[2] = {}, men[2] = {}, pawns[2] = {};
  for (int sq = 0; sq < 64; ++sq) {
    const int piece = board[sq];
    if (piece == NoPiece) continue;
    if (kindOf(piece) == 0) return false;
    const int colour = isBlackPiece(piece) ? Black : White;
    ++men[colour];
    if (kindOf(piece) == King) ++kings[colour];
    if (kindOf(piece) == Pawn) {
      ++pawns[colour];
      if (rankOf(sq) == 0 || rankOf(sq) == 7) return false;
    }
  }
  for (int c = 0; c < 2; ++c)
    if (kings[c] != 1 || men[c] > 16 || pawns[c] > 8) return false;
  return true;
}

}  // namespace tavrin

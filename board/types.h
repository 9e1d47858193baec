// Basic vocabulary of the engine: squares, piece codes, colours, moves, scores and depths.
#pragma once

#include <cstdint>

namespace tavrin {

using Bitboard = std::uint64_t;
using Key = std::uint64_t;
using Move = std::uint16_t;

// Squares: a1 = 0, h1 = 7, a8 = 56, h8 = 63.
enum Square : int {
  A1, B1, C1, D1, E1, F1, G1, H1,
  A2, B2, C2, D2, E2, F2, G2, H2,
  A3, B3, C3, D3, E3, F3, G3, H3,
  A4, B4, C4, D4, E4, F4, G4, H4,
  A5, B5, C5, D5, E5, F5, G5, H5,
  A6, B6, C6, D6, E6, F6, G6, H6,
  A7, B7, C7, D7, E7, F7, G7, H7,
  A8, B8, C8, D8, E8, F8, G8, H8,
};

constexpr int fileOf(int sq) { return sq & 7; }
constexpr int rankOf(int sq) { return sq >> 3; }
constexpr int makeSquare(int file, int rank) { return rank * 8 + file; }

// Side to move: 1 = White, 0 = Black (the opposite sense of the colour bit of a piece code).
enum Color : int { Black = 0, White = 1 };
constexpr Color operator~(Color c) { return Color(c ^ 1); }

// Piece codes. The low three bits give the kind, bit 3 the colour (0 white, 8 black).
// A bishop's code follows the colour of the square it stands on.
enum Piece : int {
  NoPiece = 0, AllWhite = 0,
  WhitePawn = 1, WhiteKnight = 2, WhiteKing = 3, WhiteBishopLight = 4, WhiteBishopDark = 5,
  WhiteRook = 6, WhiteQueen = 7,
  AllBlack = 8,
  BlackPawn = 9, BlackKnight = 10, BlackKing = 11, BlackBishopLight = 12, BlackBishopDark = 13,
  BlackRook = 14, BlackQueen = 15,
};

// Piece kinds (a code's low three bits).
enum PieceKind : int { Pawn = 1, Knight = 2, King = 3, BishopLight = 4, BishopDark = 5, Rook = 6, Queen = 7 };

constexpr int kindOf(int piece) { return piece & 7; }
constexpr bool isBlackPiece(int piece) { return (piece & 8) != 0; }
constexpr char PieceLetters[] = "0PNKBBRQ0pnkbbrq";

constexpr Bitboard DarkSquares = 0xAA55AA55AA55AA55ULL;
constexpr bool isDarkSquare(int sq) { return (DarkSquares >> sq) & 1; }

// Castling rights.
enum CastlingRight : int { WhiteKingSide = 1, WhiteQueenSide = 2, BlackKingSide = 4, BlackQueenSide = 8 };

// Move: to in bits 0-5, from in bits 6-11, kind in bits 12-14. Bit 15 is never part of a move;
// words that hold a move in their low bits (move-list words, root records) may set it or more.
enum MoveKind : int {
  NormalMove = 0, CastlingMove = 1, EnPassantMove = 3,
  PromoteKnight = 4, PromoteBishop = 5, PromoteRook = 6, PromoteQueen = 7,
};
constexpr Move NoMove = 0;
constexpr int MoveFromShift = 6;
constexpr int MoveKindShift = 12;
constexpr Move MoveSquareBits = 0x0FFF;   // from and to: from * 64 + to
constexpr Move MoveBits = 0x7FFF;         // to, from and kind
constexpr int moveTo(Move m) { return m & 63; }
constexpr int moveFrom(Move m) { return (m >> MoveFromShift) & 63; }
constexpr int moveKind(Move m) { return (m >> MoveKindShift) & 7; }
constexpr int moveSquares(Move m) { return m & MoveSquareBits; }
constexpr bool isPromotion(Move m) { return moveKind(m) >= PromoteKnight; }
// En passant or a promotion: one of the kind bits 13 and 14 set (castling has bit 12 only).
constexpr bool isEnPassantOrPromotion(Move m) { return moveKind(m) > CastlingMove; }
// The move with a kind added to the kind bits it has.
constexpr Move addKind(Move m, int kind) { return Move(m | (kind << MoveKindShift)); }
constexpr Move makeMove(int from, int to, int kind = NormalMove) {
  return addKind(Move((from << MoveFromShift) | to), kind);
}
// The move in the low bits of a word: bit 15 and everything above it stripped. The one place
// that strips them, for list words, root records and moves about to be stored or played.
constexpr Move moveOf(std::uint32_t word) { return Move(word & MoveBits); }

// Scores: centipawns from the side to move's point of view in the search.
constexpr int MateScore = 22000;
constexpr int MateThreshold = 21488;   // beyond this a score prints as a mate
constexpr int DecisiveEval = 15000;    // an evaluation beyond this counts as decisive

// Depth is counted in half-plies: two units are one ply.
constexpr int OnePly = 2;

// Packed middlegame/endgame score: mg * 65536 + eg.
using Packed = std::int32_t;
constexpr Packed pack(int mg, int eg) { return Packed(std::uint32_t(mg) * 65536u + std::uint32_t(eg)); }
constexpr int endgameOf(Packed s) { return std::int16_t(std::uint16_t(std::uint32_t(s) & 0xFFFF)); }
constexpr int middlegameOf(Packed s) { return (s >> 16) + (endgameOf(s) < 0 ? 1 : 0); }

// Colour-fixed constants for the colour twins. Everything derives from the colour at compile time.
template <Color Us>
struct ColorTraits {
  static constexpr Color Them = ~Us;
  static constexpr int Offset = Us == White ? 0 : 8;       // own piece codes = kind + Offset
  static constexpr int EnemyOffset = Us == White ? 8 : 0;
  static constexpr int OwnAll = Offset;                    // all-pieces slot of pieces[]
  static constexpr int EnemyAll = EnemyOffset;
  static constexpr int OwnPawn = Pawn + Offset, OwnKnight = Knight + Offset, OwnKing = King + Offset;
  static constexpr int OwnBishopLight = BishopLight + Offset, OwnBishopDark = BishopDark + Offset;
  static constexpr int OwnRook = Rook + Offset, OwnQueen = Queen + Offset;
  static constexpr int EnemyPawn = Pawn + EnemyOffset, EnemyKnight = Knight + EnemyOffset;
  static constexpr int EnemyKing = King + EnemyOffset;
  static constexpr int EnemyBishopLight = BishopLight + EnemyOffset;
  static constexpr int EnemyBishopDark = BishopDark + EnemyOffset;
  static constexpr int EnemyRook = Rook + EnemyOffset, EnemyQueen = Queen + EnemyOffset;
  static constexpr int Up = Us == White ? 8 : -8;           // pawn push direction
  static constexpr int Rank2 = Us == White ? 1 : 6;         // rank of the double-step start
  static constexpr int Rank7 = Us == White ? 6 : 1;         // rank from which pawns promote
  static constexpr int Rank8 = Us == White ? 7 : 0;         // promotion rank
  static constexpr int KingStart = Us == White ? E1 : E8;
  static constexpr int KingSideRight = Us == White ? WhiteKingSide : BlackKingSide;
  static constexpr int QueenSideRight = Us == White ? WhiteQueenSide : BlackQueenSide;
  static constexpr int RelativeRank(int sq) { return Us == White ? rankOf(sq) : 7 - rankOf(sq); }
};

}  // namespace tavrin

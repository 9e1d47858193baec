// Move generators: captures and promotions, check evasions, gain-filtered quiet moves, the
// remaining quiet moves keyed by history, quiet checks and the full legal list.
#include "board/movegen.h"

#include <climits>
#include <cstdlib>
#include <optional>

#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/legality.h"

namespace tavrin {

std::uint32_t CaptureKey[16][16];

namespace {
// CaptureKey without NonCaptureMark, for the legal list whose low half is the move.
std::uint32_t LegalKey[16][16];

// Sort keys of promotions. A queen push sorts above every capture, a knight push that checks just
// below the captures of a rook. A promotion that captures raises its capture key: the queen by
// QueenCaptureRaise (by EvasionQueenRaise when it takes the checker), the checking knight by
// CheckingKnightCaptureRaise.
constexpr MoveWord QueenPushKey = 0xD8000000u;
constexpr MoveWord CheckingKnightPushKey = 0xC2000000u;
constexpr MoveWord QueenCaptureRaise = 0x28000000u;
constexpr MoveWord CheckingKnightCaptureRaise = 0x1A000000u;
constexpr MoveWord EvasionQueenRaise = 0x20000000u;
}  // namespace

void initCaptureKeys() {
  // Rows by attacker kind, columns by victim kind (0 empty, 1 pawn, 2 knight, 3 king never
  // captured, 4 and 5 bishops, 6 rook, 7 queen). The top byte orders most valuable victim
  // first, then cheapest attacker; bit 21 marks a winning and bit 20 an even capture, bit 15 a
  // quiet move of every piece but the king.
  static constexpr std::uint32_t ByKind[8][8] = {
      {},
      {0x06008000, 0xB0100000, 0xB8200000, 0, 0xC0200000, 0xC0200000, 0xC8200000, 0xD0200000},  // pawn
      {0x05008000, 0xAF000000, 0xB7100000, 0, 0xBF100000, 0xBF100000, 0xC7200000, 0xCF200000},  // knight
      {0x07000000, 0xAB000000, 0xB3000000, 0, 0xBB000000, 0xBB000000, 0xC3000000, 0xCB000000},  // king
      {0x04008000, 0xAE000000, 0xB6100000, 0, 0xBE100000, 0xBE100000, 0xC6200000, 0xCE200000},  // bishop
      {0x04008000, 0xAE000000, 0xB6100000, 0, 0xBE100000, 0xBE100000, 0xC6200000, 0xCE200000},  // bishop
      {0x03008000, 0xAD000000, 0xB5000000, 0, 0xBD000000, 0xBD000000, 0xC5100000, 0xCD200000},  // rook
      {0x02008000, 0xAC000000, 0xB4000000, 0, 0xBC000000, 0xBC000000, 0xC4000000, 0xCC100000},  // queen
  };
  for (auto& row : CaptureKey)
    for (std::uint32_t& key : row) key = 0;
  for (int attacker = 1; attacker < 8; ++attacker) {
    CaptureKey[attacker][0] = CaptureKey[attacker + 8][0] = ByKind[attacker][0];
    for (int victim = 1; victim < 8; ++victim) {
      CaptureKey[attacker][victim + 8] = ByKind[attacker][victim];
      CaptureKey[attacker + 8][victim] = ByKind[attacker][victim];
    }
  }
  for (int a = 0; a < 16; ++a)
    for (int v = 0; v < 16; ++v) LegalKey[a][v] = CaptureKey[a][v] & ~NonCaptureMark;
}

namespace {

// Writes the moves of one piece onto targets, keyed by attacker and victim.
inline MoveWord* addPieceMoves(const Position& pos, MoveWord* list, int piece, int from, Bitboard targets,
                               const std::uint32_t (&table)[16][16] = CaptureKey) {
  const std::uint32_t* keys = table[piece];
  while (targets) {
    const int to = popLowest(targets);
    *list++ = keys[pos.board[to]] | makeMove(from, to);
  }
  return list;
}

// The four promotions of one pawn move, queen first; only the queen carries a key.
inline MoveWord* addPromotions(MoveWord* list, int from, int to, std::uint32_t queenKey) {
  *list++ = queenKey | makeMove(from, to, PromoteQueen);
  *list++ = makeMove(from, to, PromoteKnight);
  *list++ = makeMove(from, to, PromoteRook);
  *list++ = makeMove(from, to, PromoteBishop);
  return list;
}

template <Color Us>
struct Geometry {
  using T = ColorTraits<Us>;
  static constexpr Color Them = ~Us;
  static constexpr int Up = T::Up;
  static constexpr int UpWest = Us == White ? 7 : -9;   // capture towards file a
  static constexpr int UpEast = Us == White ? 9 : -7;   // capture towards file h
  static constexpr Bitboard Rank3Rel = Us == White ? Rank3Mask : Rank6Mask;
  static constexpr Bitboard Rank7Rel = Us == White ? Rank7Mask : Rank2Mask;
  static constexpr Bitboard Rank8Rel = Us == White ? Rank8 : Rank1;
  static constexpr Bitboard Rank2Rel = Us == White ? Rank2Mask : Rank7Mask;
};

template <Color Us>
inline Bitboard attackedByThem(const StateEntry& st) {
  return Us == White ? st.attackedByBlack : st.attackedByWhite;
}

// Every pawn push that is not a promotion, each double step just before the single step of the
// same pawn: add(from, to).
template <Color Us, class Add>
inline void forEachPawnPush(const Position& pos, Add add) {
  using T = ColorTraits<Us>;
  using G = Geometry<Us>;
  for (Bitboard b = shift<G::Up>(pos.pieces[T::OwnPawn] & ~G::Rank7Rel) & ~pos.occupied; b;) {
    const int t = popLowest(b);
    if ((bit(t) & G::Rank3Rel) && pos.board[t + G::Up] == 0) add(t - G::Up, t + G::Up);
    add(t - G::Up, t);
  }
}

// The castlings open to the side, king side first: the right kept, the king and the rook on their
// starting squares, the squares between them empty, and no square of the king's way attacked
// (attacked(square) tells). add(kingFrom, kingTo).
template <Color Us, class Attacked, class Add>
inline void forEachCastling(const Position& pos, Attacked attacked, Add add) {
  using T = ColorTraits<Us>;
  constexpr int F = Us == White ? F1 : F8, Gs = Us == White ? G1 : G8, H = Us == White ? H1 : H8;
  constexpr int D = Us == White ? D1 : D8, C = Us == White ? C1 : C8, B = Us == White ? B1 : B8;
  constexpr int A = Us == White ? A1 : A8;
  const int k = pos.kingSquare(Us);
  if (k != T::KingStart) return;
  const int castle = pos.state->castle;
  if ((castle & T::KingSideRight) && !(pos.occupied & (bit(F) | bit(Gs))) && pos.board[H] == T::OwnRook &&
      !attacked(F) && !attacked(Gs))
    add(k, Gs);
  if ((castle & T::QueenSideRight) && !(pos.occupied & (bit(B) | bit(C) | bit(D))) && pos.board[A] == T::OwnRook &&
      !attacked(D) && !attacked(C))
    add(k, C);
}

struct AnySquare {
  constexpr Bitboard operator()(int) const { return ~Bitboard(0); }
};

// Knight, bishop (light and dark together), rook and queen moves onto targets, in that order. The
// legal list limits each piece further to moveMask(from), the pin line of a pinned piece (which a
// knight never moves along), and keys its moves from its own table.
template <Color Us, class MoveMask = AnySquare>
inline MoveWord* addPieceMovesOnto(const Position& pos, MoveWord* list, Bitboard targets, MoveMask moveMask = {},
                                   const std::uint32_t (&table)[16][16] = CaptureKey) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  for (Bitboard b = p[T::OwnKnight]; b;) {
    const int from = popLowest(b);
    list = addPieceMoves(pos, list, T::OwnKnight, from, knightAttacks(from) & targets & moveMask(from), table);
  }
  for (Bitboard b = p[T::OwnBishopLight] | p[T::OwnBishopDark]; b;) {
    const int from = popLowest(b);
    list = addPieceMoves(pos, list, pos.board[from], from, bishopAttacks(from, pos) & targets & moveMask(from), table);
  }
  for (Bitboard b = p[T::OwnRook]; b;) {
    const int from = popLowest(b);
    list = addPieceMoves(pos, list, T::OwnRook, from, rookAttacks(from, pos) & targets & moveMask(from), table);
  }
  for (Bitboard b = p[T::OwnQueen]; b;) {
    const int from = popLowest(b);
    list = addPieceMoves(pos, list, T::OwnQueen, from, queenAttacks(from, pos) & targets & moveMask(from), table);
  }
  return list;
}

// The en-passant capture onto e from `from`, when an own pawn stands there on a neighbouring file.
template <Color Us>
inline MoveWord* addEnPassant(const Position& pos, MoveWord* list, int from, int e) {
  using T = ColorTraits<Us>;
  if (from >= 0 && from < 64 && pos.board[from] == T::OwnPawn && std::abs(fileOf(from) - fileOf(e)) == 1)
    *list++ = CaptureKey[T::OwnPawn][T::EnemyPawn] | makeMove(from, e, EnPassantMove);
  return list;
}

}  // namespace

// ---------------------------------------------------------------------------------------------
// Captures and promotions.

template <Color Us>
MoveWord* generateCaptures(const Position& pos, MoveWord* list, Bitboard targets) {
  using T = ColorTraits<Us>;
  using G = Geometry<Us>;
  const StateEntry& st = *pos.state;
  const Bitboard* p = pos.pieces;

  // 1. En passant, whatever the targets.
  // White's pawn from the file-h side comes first, Black's from the file-a side.
  if (const int e = st.epSquare) {
    const int fromWest = e - G::UpEast, fromEast = e - G::UpWest;
    list = addEnPassant<Us>(pos, list, Us == White ? fromEast : fromWest, e);
    list = addEnPassant<Us>(pos, list, Us == White ? fromWest : fromEast, e);
  }

  // 2-9. Only when some piece of ours attacks a target at all.
  const Bitboard attackedByUs = Us == White ? st.attackedByWhite : st.attackedByBlack;
  if (attackedByUs & targets) {
    const Bitboard pawns = p[T::OwnPawn] & ~G::Rank7Rel;
    const std::uint32_t* pawnKeys = CaptureKey[T::OwnPawn];
    for (Bitboard b = shift<G::UpWest>(pawns) & targets; b;) {
      const int to = popLowest(b);
      *list++ = pawnKeys[pos.board[to]] | makeMove(to - G::UpWest, to);
    }
    for (Bitboard b = shift<G::UpEast>(pawns) & targets; b;) {
      const int to = popLowest(b);
      *list++ = pawnKeys[pos.board[to]] | makeMove(to - G::UpEast, to);
    }
    list = addPieceMovesOnto<Us>(pos, list, targets);
    const int k = pos.kingSquare(Us);
    list = addPieceMoves(pos, list, T::OwnKing, k, kingAttacks(k) & targets);
  }

  // 10. Promotions: queen, and knight only when it checks; whatever the targets for the push.
  const Bitboard enemyKing = p[T::EnemyKing];
  for (Bitboard b = p[T::OwnPawn] & G::Rank7Rel; b;) {
    const int s = popLowest(b);
    const int push = s + G::Up;
    if (!pos.board[push]) {
      *list++ = QueenPushKey | makeMove(s, push, PromoteQueen);
      if (knightAttacks(push) & enemyKing) *list++ = CheckingKnightPushKey | makeMove(s, push, PromoteKnight);
    }
    auto capture = [&](int to) {
      if (!(targets & bit(to))) return;
      const std::uint32_t key = CaptureKey[T::OwnPawn][pos.board[to]];
      *list++ = (key + QueenCaptureRaise) | makeMove(s, to, PromoteQueen);
      if (knightAttacks(to) & enemyKing) *list++ = (key + CheckingKnightCaptureRaise) | makeMove(s, to, PromoteKnight);
    };
    if (fileOf(s) != 0) capture(s + G::UpWest);
    if (fileOf(s) != 7) capture(s + G::UpEast);
  }

  *list = 0;
  return list;
}

// ---------------------------------------------------------------------------------------------
// Check evasions (pseudo-legal: pins are not looked at).

template <Color Us>
MoveWord* generateEvasions(const Position& pos, MoveWord* list, Bitboard mask) {
  using T = ColorTraits<Us>;
  using G = Geometry<Us>;
  const StateEntry& st = *pos.state;
  const Bitboard* p = pos.pieces;
  const Bitboard checkers = kingAttackers<Us>(st);
  if (!checkers) {
    *list = 0;
    return list;
  }
  const int k = pos.kingSquare(Us);
  const int c = bitScanForward(checkers);

  // 1. King destinations: off the checking line beyond the king (a pawn checks no line).
  const Bitboard kingTargets = (pos.board[c] == T::EnemyPawn ? kingAttacks(k) : Attacks.kingEscape[k][c]) &
                               ~p[T::OwnAll] & ~attackedByThem<Us>(st) & mask;
  list = addPieceMoves(pos, list, T::OwnKing, k, kingTargets);

  // 3. Against two checkers only the king can move.
  if (moreThanOne(checkers)) {
    *list = 0;
    return list;
  }

  // 2. One checker: capture it or step in between.
  const Bitboard targets = (Attacks.between[k][c] | bit(c)) & mask;
  const std::uint32_t* pawnKeys = CaptureKey[T::OwnPawn];

  if (targets & bit(c)) {
    // Pawn captures of the checker: first from the file-a side (White c - 9, Black c + 7),
    // then from the file-h side.
    const int fromWest = c - G::UpEast, fromEast = c - G::UpWest;
    auto pawnCapture = [&](int from, bool fileOk) {
      if (!fileOk || from < 0 || from > 63 || pos.board[from] != T::OwnPawn) return;
      const std::uint32_t key = pawnKeys[pos.board[c]];
      if (bit(c) & G::Rank8Rel) list = addPromotions(list, from, c, key + EvasionQueenRaise);
      else *list++ = key | makeMove(from, c);
    };
    pawnCapture(fromWest, fromWest >= 0 && fromWest < 64 && fileOf(fromWest) != 7);
    pawnCapture(fromEast, fromEast >= 0 && fromEast < 64 && fileOf(fromEast) != 0);
  }

  if (const int e = st.epSquare; e && (targets & bit(e - G::Up))) {
    // The checker is the pawn that just made its double step; the file-a side first.
    list = addEnPassant<Us>(pos, list, e - G::UpEast, e);
    list = addEnPassant<Us>(pos, list, e - G::UpWest, e);
  }

  const Bitboard empty = ~pos.occupied;
  for (Bitboard b = shift<G::Up>(p[T::OwnPawn]) & targets & empty; b;) {
    const int to = popLowest(b);
    if (bit(to) & G::Rank8Rel) list = addPromotions(list, to - G::Up, to, pawnKeys[0]);
    else *list++ = pawnKeys[0] | makeMove(to - G::Up, to);
  }
  for (Bitboard b = shift<G::Up>(shift<G::Up>(p[T::OwnPawn] & G::Rank2Rel) & empty) & targets & empty; b;) {
    const int to = popLowest(b);
    *list++ = pawnKeys[0] | makeMove(to - 2 * G::Up, to);
  }

  list = addPieceMovesOnto<Us>(pos, list, targets);
  *list = 0;
  return list;
}

// ---------------------------------------------------------------------------------------------
// Quiet moves filtered by their gain, sorted.

namespace {

// Descending insertion sort run from the end of the list towards its start, unsigned compare.
inline void sortDescending(MoveWord* begin, MoveWord* end) {
  if (end - begin < 2) return;
  for (MoveWord* i = end - 2; i >= begin; --i) {
    const MoveWord x = *i;
    MoveWord* j = i;
    while (j + 1 < end && j[1] > x) {
      j[0] = j[1];
      ++j;
    }
    *j = x;
    if (i == begin) break;
  }
}

inline int gainOf(int piece, int from, int to) { return relaxedLoad(GainTable[gainCell(piece, makeMove(from, to))]); }

// Writes the move keyed by its gain when the gain reaches the threshold.
inline MoveWord* addGainMove(MoveWord* list, int piece, int from, int to, int threshold) {
  const int gain = gainOf(piece, from, to);
  if (gain >= threshold) *list++ = keyedWord(std::uint16_t(gain), makeMove(from, to));
  return list;
}

inline MoveWord* addGainMoves(MoveWord* list, int piece, int from, Bitboard targets, int threshold) {
  while (targets) list = addGainMove(list, piece, from, popLowest(targets), threshold);
  return list;
}

}  // namespace

template <Color Us>
MoveWord* generateQuiet(const Position& pos, MoveWord* list, int threshold) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  const Bitboard empty = ~pos.occupied;
  MoveWord* const begin = list;

  // 1. Pawns: each double step before the single step of the same pawn.
  forEachPawnPush<Us>(pos, [&](int from, int to) { list = addGainMove(list, T::OwnPawn, from, to, threshold); });
  // 2-5. Knights, light then dark bishops, rooks, queens.
  for (Bitboard b = p[T::OwnKnight]; b;) {
    const int from = popLowest(b);
    list = addGainMoves(list, T::OwnKnight, from, knightAttacks(from) & empty, threshold);
  }
  for (Bitboard b = p[T::OwnBishopLight]; b;) {
    const int from = popLowest(b);
    list = addGainMoves(list, T::OwnBishopLight, from, bishopAttacks(from, pos) & empty, threshold);
  }
  for (Bitboard b = p[T::OwnBishopDark]; b;) {
    const int from = popLowest(b);
    list = addGainMoves(list, T::OwnBishopDark, from, bishopAttacks(from, pos) & empty, threshold);
  }
  for (Bitboard b = p[T::OwnRook]; b;) {
    const int from = popLowest(b);
    list = addGainMoves(list, T::OwnRook, from, rookAttacks(from, pos) & empty, threshold);
  }
  for (Bitboard b = p[T::OwnQueen]; b;) {
    const int from = popLowest(b);
    list = addGainMoves(list, T::OwnQueen, from, queenAttacks(from, pos) & empty, threshold);
  }
  // 6. The king never steps onto an attacked square here.
  const int k = pos.kingSquare(Us);
  list = addGainMoves(list, T::OwnKing, k, kingAttacks(k) & empty & ~attackedByThem<Us>(*pos.state), threshold);

  // 7. Terminate, then sort what this call wrote.
  *list = 0;
  sortDescending(begin, list);
  return list;
}

// ---------------------------------------------------------------------------------------------
// Checking squares, shared by the remaining-moves and quiet-check generators.

namespace {

// Where each of our piece kinds would give a direct check, and which of our pieces would give a
// discovered one by leaving their line to the enemy king.
template <Color Us>
struct CheckInfo {
  int enemyKing;
  Bitboard pawnSquares, knightSquares, bishopSquares, rookSquares, discoverers;

  explicit CheckInfo(const Position& pos)
      : enemyKing(pos.kingSquare(~Us)),
        pawnSquares(Attacks.pawn[~Us][enemyKing]),
        knightSquares(knightAttacks(enemyKing)),
        bishopSquares(bishopAttacks(enemyKing, pos)),
        rookSquares(rookAttacks(enemyKing, pos)),
        discoverers(discoveredCheckCandidates<Us>(pos)) {}

  Bitboard directSquares(int kind) const {
    switch (kind) {
      case Pawn: return pawnSquares;
      case Knight: return knightSquares;
      case BishopLight:
      case BishopDark: return bishopSquares;
      case Rook: return rookSquares;
      case Queen: return bishopSquares | rookSquares;
      default: return 0;
    }
  }
  // Destinations from `from` that give check for a piece of the given kind.
  Bitboard checkingTargets(int kind, int from) const {
    Bitboard t = directSquares(kind);
    if (discoverers & bit(from)) t |= ~Attacks.line[enemyKing][from];
    return t;
  }
};

inline MoveWord historyWord(int piece, int from, int to, int kind = NormalMove) {
  return keyedWord(relaxedLoad(HistoryTable[historyCell(piece, to)]), makeMove(from, to, kind));
}

// Writes the quiet moves of one piece keyed by history. With Filter, a move whose gain is below
// the margin is left out unless it gives check.
template <bool Filter, Color Us>
inline MoveWord* addHistoryMoves(MoveWord* list, int piece, int from, Bitboard targets, int margin,
                                 const CheckInfo<Us>* checks) {
  if constexpr (Filter) {
    const Bitboard checking = checks->checkingTargets(kindOf(piece), from);
    while (targets) {
      const int to = popLowest(targets);
      if (gainOf(piece, from, to) >= margin || (checking & bit(to))) *list++ = historyWord(piece, from, to);
    }
  } else {
    (void)margin, (void)checks;
    while (targets) *list++ = historyWord(piece, from, popLowest(targets));
  }
  return list;
}

template <bool Filter, Color Us>
MoveWord* remainingMoves(const Position& pos, MoveWord* list, int margin) {
  using T = ColorTraits<Us>;
  using G = Geometry<Us>;
  const Bitboard* p = pos.pieces;
  const StateEntry& st = *pos.state;
  const Bitboard empty = ~pos.occupied;
  const Bitboard attacked = attackedByThem<Us>(st);
  const int k = pos.kingSquare(Us);
  std::optional<CheckInfo<Us>> checkStore;
  const CheckInfo<Us>* checks = nullptr;
  if constexpr (Filter) checks = &checkStore.emplace(pos);

  // Castling, king side then queen side.
  forEachCastling<Us>(
      pos, [&](int s) { return (attacked & bit(s)) != 0; },
      [&](int from, int to) { *list++ = historyWord(T::OwnKing, from, to, CastlingMove); });

  // Pawn pushes (no promotions here): each double step before the single step.
  {
    Bitboard checking = 0, discoverers = 0;
    if constexpr (Filter) checking = checks->pawnSquares, discoverers = checks->discoverers;
    auto add = [&](int from, int to) {
      if constexpr (Filter) {
        const bool gives = (checking & bit(to)) ||
                           ((discoverers & bit(from)) && !(Attacks.line[checks->enemyKing][from] & bit(to)));
        if (gainOf(T::OwnPawn, from, to) < margin && !gives) return;
      }
      *list++ = historyWord(T::OwnPawn, from, to);
    };
    forEachPawnPush<Us>(pos, add);
  }
  for (Bitboard b = p[T::OwnQueen]; b;) {
    const int from = popLowest(b);
    list = addHistoryMoves<Filter>(list, T::OwnQueen, from, queenAttacks(from, pos) & empty, margin, checks);
  }
  for (Bitboard b = p[T::OwnRook]; b;) {
    const int from = popLowest(b);
    list = addHistoryMoves<Filter>(list, T::OwnRook, from, rookAttacks(from, pos) & empty, margin, checks);
  }
  for (Bitboard b = p[T::OwnBishopLight] | p[T::OwnBishopDark]; b;) {
    const int from = popLowest(b);
    list = addHistoryMoves<Filter>(list, pos.board[from], from, bishopAttacks(from, pos) & empty, margin, checks);
  }
  list = addHistoryMoves<Filter>(list, T::OwnKing, k, kingAttacks(k) & empty & ~attacked, margin, checks);
  for (Bitboard b = p[T::OwnKnight]; b;) {
    const int from = popLowest(b);
    list = addHistoryMoves<Filter>(list, T::OwnKnight, from, knightAttacks(from) & empty, margin, checks);
  }

  // Under-promotions: the knight only where it does not check (checking ones come with the
  // captures), then rook and bishop.
  const Bitboard enemyKing = p[T::EnemyKing];
  const Bitboard victims = p[T::EnemyAll] & ~enemyKing;
  for (Bitboard b = p[T::OwnPawn] & G::Rank7Rel; b;) {
    const int s = popLowest(b);
    auto under = [&](int to) {
      if (!(knightAttacks(to) & enemyKing)) *list++ = historyWord(T::OwnPawn, s, to, PromoteKnight);
      *list++ = historyWord(T::OwnPawn, s, to, PromoteRook);
      *list++ = historyWord(T::OwnPawn, s, to, PromoteBishop);
    };
    if (!pos.board[s + G::Up]) under(s + G::Up);
    if (fileOf(s) != 0 && (victims & bit(s + G::UpWest))) under(s + G::UpWest);
    if (fileOf(s) != 7 && (victims & bit(s + G::UpEast))) under(s + G::UpEast);
  }
  *list = 0;
  return list;
}

}  // namespace

template <Color Us>
MoveWord* generateRemaining(const Position& pos, MoveWord* list, int margin) {
  return margin == INT_MIN ? remainingMoves<false, Us>(pos, list, margin) : remainingMoves<true, Us>(pos, list, margin);
}

template <Color Us>
MoveWord* generateQuietChecks(const Position& pos, MoveWord* list) {
  using T = ColorTraits<Us>;
  const Bitboard* p = pos.pieces;
  const Bitboard empty = ~pos.occupied;
  const CheckInfo<Us> checks(pos);

  // Pawn pushes that are not promotions.
  forEachPawnPush<Us>(pos, [&](int from, int to) {
    if (checks.checkingTargets(Pawn, from) & bit(to)) *list++ = historyWord(T::OwnPawn, from, to);
  });
  auto pieces = [&](int piece, Bitboard set, auto attacksOf) {
    for (Bitboard b = set; b;) {
      const int from = popLowest(b);
      const Bitboard targets = attacksOf(from) & empty & checks.checkingTargets(kindOf(piece ? piece : pos.board[from]), from);
      list = addHistoryMoves<false, Us>(list, piece ? piece : pos.board[from], from, targets, 0, nullptr);
    }
  };
  pieces(T::OwnKnight, p[T::OwnKnight], [](int s) { return knightAttacks(s); });
  pieces(0, p[T::OwnBishopLight] | p[T::OwnBishopDark], [&](int s) { return bishopAttacks(s, pos); });
  pieces(T::OwnRook, p[T::OwnRook], [&](int s) { return rookAttacks(s, pos); });
  pieces(T::OwnQueen, p[T::OwnQueen], [&](int s) { return queenAttacks(s, pos); });
  // The king only checks by discovery, and never onto an attacked square.
  const int k = pos.kingSquare(Us);
  if (checks.discoverers & bit(k)) {
    const Bitboard targets = kingAttacks(k) & empty & ~attackedSquares<~Us>(pos) & ~Attacks.line[checks.enemyKing][k];
    list = addHistoryMoves<false, Us>(list, T::OwnKing, k, targets, 0, nullptr);
  }
  *list = 0;
  return list;
}

// ---------------------------------------------------------------------------------------------
// The full legal list, from checkers and pins computed here.

template <Color Us>
MoveWord* generateLegal(const Position& pos, MoveWord* list) {
  using T = ColorTraits<Us>;
  using G = Geometry<Us>;
  constexpr Color Them = ~Us;
  const Bitboard* p = pos.pieces;
  const int k = pos.kingSquare(Us);
  const Bitboard own = p[T::OwnAll];
  const Bitboard enemy = p[T::EnemyAll] & ~p[T::EnemyKing];
  const Bitboard empty = ~pos.occupied;
  const Bitboard checkers = attackersTo<Them>(pos, k);

  // King moves: no attacked square, and not along a checking slider's line away from it.
  Bitboard kingTargets = kingAttacks(k) & ~own & ~p[T::EnemyKing];
  for (Bitboard sliders = checkers & ~p[T::EnemyPawn] & ~p[T::EnemyKnight]; sliders;)
    kingTargets &= Attacks.kingEscape[k][popLowest(sliders)];
  for (Bitboard b = kingTargets; b;) {
    const int to = popLowest(b);
    if (!isAttackedBy<Them>(pos, to)) *list++ = LegalKey[T::OwnKing][pos.board[to]] | makeMove(k, to);
  }
  if (moreThanOne(checkers)) {
    *list = 0;
    return list;
  }

  const Bitboard pinned = pinnedPieces<Us>(pos);
  const Bitboard targets = checkers ? Attacks.between[k][bitScanForward(checkers)] | checkers : ~own;
  auto allowed = [&](int from) { return (pinned & bit(from)) ? Attacks.line[k][from] : ~Bitboard(0); };

  // Pawns.
  const std::uint32_t* pawnKeys = LegalKey[T::OwnPawn];
  const Bitboard pawns = p[T::OwnPawn] & ~G::Rank7Rel, promoting = p[T::OwnPawn] & G::Rank7Rel;
  const Bitboard single = shift<G::Up>(pawns) & empty;
  for (Bitboard b = single & targets; b;) {
    const int to = popLowest(b);
    if (allowed(to - G::Up) & bit(to)) *list++ = pawnKeys[0] | makeMove(to - G::Up, to);
  }
  for (Bitboard b = shift<G::Up>(single & G::Rank3Rel) & empty & targets; b;) {
    const int to = popLowest(b);
    if (allowed(to - 2 * G::Up) & bit(to)) *list++ = pawnKeys[0] | makeMove(to - 2 * G::Up, to);
  }
  for (Bitboard b = shift<G::UpWest>(pawns) & enemy & targets; b;) {
    const int to = popLowest(b);
    if (allowed(to - G::UpWest) & bit(to)) *list++ = pawnKeys[pos.board[to]] | makeMove(to - G::UpWest, to);
  }
  for (Bitboard b = shift<G::UpEast>(pawns) & enemy & targets; b;) {
    const int to = popLowest(b);
    if (allowed(to - G::UpEast) & bit(to)) *list++ = pawnKeys[pos.board[to]] | makeMove(to - G::UpEast, to);
  }
  if (promoting) {
    auto promote = [&](Bitboard tos, int delta) {
      for (Bitboard b = tos & targets; b;) {
        const int to = popLowest(b);
        const int from = to - delta;
        if (!(allowed(from) & bit(to))) continue;
        const std::uint32_t key = pawnKeys[pos.board[to]];
        *list++ = (key + QueenCaptureRaise) | makeMove(from, to, PromoteQueen);
        *list++ = key | makeMove(from, to, PromoteKnight);
        *list++ = key | makeMove(from, to, PromoteRook);
        *list++ = key | makeMove(from, to, PromoteBishop);
      }
    };
    promote(shift<G::Up>(promoting) & empty, G::Up);
    promote(shift<G::UpWest>(promoting) & enemy, G::UpWest);
    promote(shift<G::UpEast>(promoting) & enemy, G::UpEast);
  }
  if (const int e = pos.state->epSquare) {
    // Rare enough to test by playing it out on the occupancy: two pawns leave one rank at once,
    // which no pin table sees.
    const int victim = e - G::Up;
    for (Bitboard b = Attacks.pawn[Them][e] & p[T::OwnPawn]; b;) {
      const int from = popLowest(b);
      const Bitboard occ = (pos.occupied ^ bit(from) ^ bit(victim)) | bit(e);
      const Bitboard bishops = p[T::EnemyBishopLight] | p[T::EnemyBishopDark] | p[T::EnemyQueen];
      const Bitboard rooks = p[T::EnemyRook] | p[T::EnemyQueen];
      const Bitboard attackers = (knightAttacks(k) & p[T::EnemyKnight]) |
                                 (Attacks.pawn[Us][k] & p[T::EnemyPawn] & ~bit(victim)) |
                                 (slowBishopAttacks(k, occ) & bishops) | (slowRookAttacks(k, occ) & rooks);
      if (!attackers) *list++ = pawnKeys[T::EnemyPawn] | makeMove(from, e, EnPassantMove);
    }
  }

  // Pieces.
  list = addPieceMovesOnto<Us>(pos, list, targets & ~p[T::EnemyKing], allowed, LegalKey);

  // Castling: not out of check, not through or onto an attacked square.
  if (!checkers)
    forEachCastling<Us>(
        pos, [&](int s) { return isAttackedBy<Them>(pos, s); },
        [&](int from, int to) { *list++ = LegalKey[T::OwnKing][0] | makeMove(from, to, CastlingMove); });
  *list = 0;
  return list;
}

template MoveWord* generateCaptures<White>(const Position&, MoveWord*, Bitboard);
template MoveWord* generateCaptures<Black>(const Position&, MoveWord*, Bitboard);
template MoveWord* generateEvasions<White>(const Position&, MoveWord*, Bitboard);
template MoveWord* generateEvasions<Black>(const Position&, MoveWord*, Bitboard);
template MoveWord* generateQuiet<White>(const Position&, MoveWord*, int);
template MoveWord* generateQuiet<Black>(const Position&, MoveWord*, int);
template MoveWord* generateRemaining<White>(const Position&, MoveWord*, int);
template MoveWord* generateRemaining<Black>(const Position&, MoveWord*, int);
template MoveWord* generateQuietChecks<White>(const Position&, MoveWord*);
template MoveWord* generateQuietChecks<Black>(const Position&, MoveWord*);
template MoveWord* generateLegal<White>(const Position&, MoveWord*);
template MoveWord* generateLegal<Black>(const Position&, MoveWord*);

MoveWord* generateCapturesWhite(const Position& pos, MoveWord* list, Bitboard targets) {
  return generateCaptures<White>(pos, list, targets);
}
MoveWord* generateCapturesBlack(const Position& pos, MoveWord* list, Bitboard targets) {
  return generateCaptures<Black>(pos, list, targets);
}
MoveWord* generateEvasionsWhite(const Position& pos, MoveWord* list, Bitboard mask) {
  return generateEvasions<White>(pos, list, mask);
}
MoveWord* generateEvasionsBlack(const Position& pos, MoveWord* list, Bitboard mask) {
  return generateEvasions<Black>(pos, list, mask);
}
MoveWord* generateQuietWhite(const Position& pos, MoveWord* list, int threshold) {
  return generateQuiet<White>(pos, list, threshold);
}
MoveWord* generateQuietBlack(const Position& pos, MoveWord* list, int threshold) {
  return generateQuiet<Black>(pos, list, threshold);
}
MoveWord* generateRemainingWhite(const Position& pos, MoveWord* list, int margin) {
  return generateRemaining<White>(pos, list, margin);
}
MoveWord* generateRemainingBlack(const Position& pos, MoveWord* list, int margin) {
  return generateRemaining<Black>(pos, list, margin);
}
MoveWord* generateQuietChecksWhite(const Position& pos, MoveWord* list) {
  return generateQuietChecks<White>(pos, list);
}
MoveWord* generateQuietChecksBlack(const Position& pos, MoveWord* list) {
  return generateQuietChecks<Black>(pos, list);
}
MoveWord* generateLegalWhite(const Position& pos, MoveWord* list) { return generateLegal<White>(pos, list); }
MoveWord* generateLegalBlack(const Position& pos, MoveWord* list) { return generateLegal<Black>(pos, list); }

MoveWord* generateLegalMoves(const Position& pos, MoveWord* list) {
  return pos.sideToMove == White ? generateLegalWhite(pos, list) : generateLegalBlack(pos, list);
}

}  // namespace tavrin

// Piece terms of the full evaluation: mobility, outposts, rooks and queens on files and ranks,
// king safety, threats and passed pawns with pieces. Each is a colour template; the attack sets
// built on the way become the position's attack summary.
#include "board/attacks.h"
#include "board/bitboard.h"
#include "board/legality.h"
#include "eval/eval_internal.h"
#include "eval/masks.h"
#include "eval/trace.h"
#include "eval/weights.h"

namespace tavrin {

namespace {

constexpr const EvalWeights& W = Weights;

// Attack sets by colour ([Black, White]) and piece kind (Pawn, Knight, King, BishopLight for both
// bishops, Rook, Queen), built while the pieces are scored.
struct AttackInfo {
  Bitboard all[2];
  Bitboard twice[2];
  Bitboard byKind[2][8];
  Bitboard kingZone[2];
  Bitboard mobilityArea[2];
  int kingAttackers[2];        // pieces of this colour attacking the enemy king zone
  int kingAttackWeight[2];
  int kingZoneAttacks[2];      // attacks on squares next to the enemy king
  // Shared with the attack summary.
  KingLines lines[2];          // slider lines from each king
  Bitboard pinnedToMove;       // the side to move's pinned pieces
  Bitboard checkCandidates;    // the side to move's pieces that reach a checking square
};

template <Color Us>
void addAttacks(AttackInfo& ai, int kind, Bitboard att) {
  ai.twice[Us] |= ai.all[Us] & att;
  ai.all[Us] |= att;
  ai.byKind[Us][kind] |= att;
}

template <Color Us>
void initAttacks(const Position& pos, AttackInfo& ai) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  Bitboard pawns = pos.pieces[T::OwnPawn];
  Bitboard left = Us == White ? shift<7>(pawns) : shift<-9>(pawns);
  Bitboard right = Us == White ? shift<9>(pawns) : shift<-7>(pawns);
  int ksq = pos.kingSquare(Us);
  Bitboard kingAtt = kingAttacks(ksq);
  ai.byKind[Us][Pawn] = left | right;
  ai.byKind[Us][King] = kingAtt;
  ai.all[Us] = left | right | kingAtt;
  ai.twice[Us] = (left & right) | ((left | right) & kingAtt);
  ai.kingZone[Us] = kingAtt | bit(ksq);
  ai.lines[Us] = kingLines(pos, ksq);
  // Pawns that cannot move or have not moved yet, the own king and squares held by enemy pawns
  // do not count as room for the pieces.
  Bitboard lowRanks = Us == White ? (Rank2Mask | Rank3Mask) : (Rank7Mask | Rank6Mask);
  Bitboard blocked = pawns & (Us == White ? shift<-8>(pos.occupied) : shift<8>(pos.occupied));
  Bitboard enemyPawns = pos.pieces[T::EnemyPawn];
  Bitboard enemyPawnAttacks = pawnAttacks<Them>(enemyPawns);
  ai.mobilityArea[Us] = ~((pawns & (lowRanks | blocked)) | bit(ksq) | enemyPawnAttacks);
}

// Knights, bishops, rooks and queens of one colour: mobility, activity and attacks. Pieces that
// reach one of the checking squares (none for the side not to move) become check candidates.
template <Color Us>
void evaluatePieceKinds(const Position& pos, const PawnEntry& pe, AttackInfo& ai, EvalTerms& terms,
                        const CheckSquares& checks) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  Packed mobility = 0, activity = 0;
  Bitboard ownPawns = pos.pieces[T::OwnPawn], enemyPawns = pos.pieces[T::EnemyPawn];
  Bitboard allPawns = ownPawns | enemyPawns;
  Bitboard enemyPawnSpan = pawnAttacks<Them>(forwardFill<Them>(enemyPawns));
  Bitboard outpostRanks = Us == White ? (Rank4Mask | Rank5Mask | Rank6Mask) : (Rank5Mask | Rank4Mask | Rank3Mask);
  Bitboard zone = ai.kingZone[Them];
  int enemyKing = pos.kingSquare(Them);

  auto kingAttack = [&](int kind, Bitboard att) {
    if (att & zone) {
      ai.kingAttackers[Us]++;
      ai.kingAttackWeight[Us] += W.AttackerWeight[kind];
      if (ActiveTrace) [[unlikely]] ActiveTrace->attackersByKind[Us][kind]++;
      ai.kingZoneAttacks[Us] += popCount(att & ai.byKind[Them][King]);
    }
  };
  auto checkCandidate = [&](int s, Bitboard att, Bitboard checking) {
    if (att & checking) ai.checkCandidates |= bit(s);
  };
  auto minorCommon = [&](int s, bool knight) {
    Bitboard sq = bit(s);
    if ((sq & outpostRanks & ~enemyPawnSpan)) {
      if (ai.byKind[Us][Pawn] & sq) activity += knight ? term<Us>(W.KnightOutpost) : term<Us>(W.BishopOutpost);
      else if (knight) activity += term<Us>(W.OutpostUndefended);
    }
    if (T::RelativeRank(s) < 5 && (allPawns & bit(s + T::Up))) activity += term<Us>(W.MinorBehindPawn);
  };

  for (Bitboard b = pos.pieces[T::OwnKnight]; b;) {
    int s = popLowest(b);
    Bitboard att = knightAttacks(s);
    addAttacks<Us>(ai, Knight, att);
    kingAttack(Knight, att);
    checkCandidate(s, att, checks.knight);
    mobility += term<Us>(W.KnightMobility[popCount(att & ai.mobilityArea[Us])]);
    minorCommon(s, true);
  }
  for (Bitboard b = pos.pieces[T::OwnBishopLight] | pos.pieces[T::OwnBishopDark]; b;) {
    int s = popLowest(b);
    Bitboard att = bishopAttacks(s, pos);
    addAttacks<Us>(ai, BishopLight, att);
    kingAttack(BishopLight, att);
    checkCandidate(s, att, checks.bishop);
    mobility += term<Us>(W.BishopMobility[popCount(att & ai.mobilityArea[Us])]);
    minorCommon(s, false);
    Bitboard colour = isDarkSquare(s) ? DarkSquares : ~DarkSquares;
    activity += term<Us>(W.BishopPawnsSameColour, popCount(ownPawns & colour));
    // A bishop on a7/h7 (a2/h2 for Black) shut in by an enemy pawn on b6/g6 (b3/g3).
    int rel = Us == White ? s : s ^ 56;
    if ((rel == A7 && (enemyPawns & bit(Us == White ? B6 : B3))) ||
        (rel == H7 && (enemyPawns & bit(Us == White ? G6 : G3))))
      activity += term<Us>(W.TrappedBishop);
  }
  for (Bitboard b = pos.pieces[T::OwnRook]; b;) {
    int s = popLowest(b);
    Bitboard att = rookAttacks(s, pos);
    addAttacks<Us>(ai, Rook, att);
    kingAttack(Rook, att);
    checkCandidate(s, att, checks.rook);
    int mob = popCount(att & ai.mobilityArea[Us]);
    mobility += term<Us>(W.RookMobility[mob]);
    int f = fileOf(s);
    if (pe.semiOpenFiles[Us] & (1 << f))
      activity += (pe.semiOpenFiles[Them] & (1 << f)) ? term<Us>(W.RookOpenFile) : term<Us>(W.RookHalfOpenFile);
    else if (mob <= 3) {
      // Shut in by its own king that has lost the right to castle: the rook stands on the king's
      // file or on the corner's side of it (a king on files a-d shuts in a rook on a lower file, a
      // king on e-h one on a higher file).
      int ksq = pos.kingSquare(Us), kf = fileOf(ksq);
      bool canCastle = pos.st().castle & (T::KingSideRight | T::QueenSideRight);
      bool cornerSide = f == kf || (kf < 4 ? f < kf : f > kf);
      if (T::RelativeRank(ksq) == 0 && !canCastle && cornerSide) activity += term<Us>(W.TrappedRook);
    }
    if (T::RelativeRank(s) == 6 &&
        (T::RelativeRank(enemyKing) == 7 || (enemyPawns & (Us == White ? Rank7Mask : Rank2Mask))))
      activity += term<Us>(W.RookOnSeventh);
  }
  for (Bitboard b = pos.pieces[T::OwnQueen]; b;) {
    int s = popLowest(b);
    Bitboard att = queenAttacks(s, pos);
    addAttacks<Us>(ai, Queen, att);
    kingAttack(Queen, att);
    checkCandidate(s, att, checks.bishop | checks.rook);
    mobility += term<Us>(W.QueenMobility[popCount(att & ai.mobilityArea[Us])]);
    if (T::RelativeRank(s) == 6 &&
        (T::RelativeRank(enemyKing) == 7 || (enemyPawns & (Us == White ? Rank7Mask : Rank2Mask))))
      activity += term<Us>(W.QueenOnSeventh);
  }
  terms.mobility[Us] = mobility;
  terms.pieces[Us] = activity;
}

// Danger to the king of Us from the attacks of Them, and the king's pawn shelter.
template <Color Us>
Packed evaluateKing(const Position& pos, const PawnEntry& pe, const AttackInfo& ai) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  constexpr int Channel = DangerChannel + Us;
  int shelter = pe.shelter[Us];
  Packed score = pack(shelter, 0);
  int ksq = pos.kingSquare(Us);
  // A king on a wing without pawns: fitted as a plus in the middlegame (rarely seen with many pieces)
  // and a minus in the endgame, where such a king is far from the pawns that decide the game.
  if (!(kingFlank(fileOf(ksq)) & (pos.pieces[T::OwnPawn] | pos.pieces[T::EnemyPawn])))
    score += term<Us>(W.PawnlessFlank);

  bool enemyQueen = pos.pieces[T::EnemyQueen] != 0;
  if (ai.kingAttackers[Them] < (enemyQueen ? 1 : 2)) return score;

  Bitboard weak = ai.all[Them] & ~ai.twice[Us] & (~ai.all[Us] | ai.byKind[Us][King] | ai.byKind[Us][Queen]);
  Bitboard safe = ~pos.pieces[T::EnemyAll] & (~ai.all[Us] | (weak & ai.twice[Them]));
  Bitboard rookLines = ai.lines[Us].rook, bishopLines = ai.lines[Us].bishop;
  Bitboard knightSquares = knightAttacks(ksq);
  Bitboard pinned = Us == pos.sideToMove ? ai.pinnedToMove : pinnedPieces<Us>(pos);

  if (ActiveTrace) [[unlikely]] {
    ActiveTrace->dangerScored[Us] = true;
    for (int kind : {Knight, BishopLight, Rook, Queen})
      noteWeight(W.AttackerWeight[kind], Channel, ai.kingAttackers[Them] * ActiveTrace->attackersByKind[Them][kind]);
  }
  int danger = ai.kingAttackers[Them] * ai.kingAttackWeight[Them] +
               termIn(W.ZoneAttackWeight, Channel, ai.kingZoneAttacks[Them]) +
               termIn(W.WeakZoneWeight, Channel, popCount(ai.kingZone[Us] & weak)) +
               termIn(W.PinnedDanger, Channel, popCount(pinned)) + termIn(W.DangerBase, Channel);
  Bitboard queenChecks = (rookLines | bishopLines) & ai.byKind[Them][Queen];
  Bitboard rookChecks = rookLines & ai.byKind[Them][Rook];
  Bitboard bishopChecks = bishopLines & ai.byKind[Them][BishopLight];
  Bitboard knightChecks = knightSquares & ai.byKind[Them][Knight];
  if (queenChecks & safe & ~ai.byKind[Us][Queen]) danger += termIn(W.SafeCheckWeight[Queen], Channel);
  if (rookChecks & safe) danger += termIn(W.SafeCheckWeight[Rook], Channel);
  if (bishopChecks & safe) danger += termIn(W.SafeCheckWeight[BishopLight], Channel);
  if (knightChecks & safe) danger += termIn(W.SafeCheckWeight[Knight], Channel);
  danger += termIn(W.UnsafeCheckWeight, Channel, popCount((rookChecks | bishopChecks | knightChecks) & ~safe));
  if (!enemyQueen) danger += termIn(W.NoQueenRelief, Channel, -1);
  if (ai.byKind[Us][Knight] & ai.kingZone[Us]) danger += termIn(W.KnightDefenderRelief, Channel, -1);
  // The shelter's share is modelled by the tuner itself (it depends on the shelter weights).
  danger -= shelter * W.ShelterRelief / 8;
  if (ActiveTrace) [[unlikely]] ActiveTrace->danger[Us] = danger;
  if (danger > W.DangerThreshold) {
    danger = danger < W.DangerLimit ? danger : W.DangerLimit;   // keeps the packed halves in range
    score -= pack(danger * danger / W.DangerMiddlegameDivisor, danger / W.DangerEndgameDivisor);
  }
  return score;
}

// Attacks of Us on the pieces and pawns of Them.
template <Color Us>
Packed evaluateThreats(const Position& pos, const AttackInfo& ai) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  Bitboard enemyPawns = pos.pieces[T::EnemyPawn];
  Bitboard enemyPieces = pos.pieces[T::EnemyAll] & ~enemyPawns & ~pos.pieces[T::EnemyKing];
  Bitboard enemyMinors = pos.pieces[T::EnemyKnight] | pos.pieces[T::EnemyBishopLight] | pos.pieces[T::EnemyBishopDark];
  Bitboard enemyMajors = pos.pieces[T::EnemyRook] | pos.pieces[T::EnemyQueen];
  Bitboard defended = ai.all[Them];
  Packed score = 0;

  Bitboard ownPawns = pos.pieces[T::OwnPawn];
  Bitboard safePawns = ownPawns & (~ai.all[Them] | ai.all[Us]);
  score += term<Us>(W.ThreatByPawn, popCount(pawnAttacks<Us>(safePawns) & enemyPieces));

  Bitboard minorAttacks = ai.byKind[Us][Knight] | ai.byKind[Us][BishopLight];
  score += term<Us>(W.ThreatMinorOnMajor, popCount(minorAttacks & enemyMajors));
  score += term<Us>(W.ThreatMinorOnMinor, popCount(minorAttacks & enemyMinors & ~defended));
  score += term<Us>(W.ThreatRookOnQueen, popCount(ai.byKind[Us][Rook] & pos.pieces[T::EnemyQueen]));
  score += term<Us>(W.ThreatHangingPiece, popCount(enemyPieces & ai.all[Us] & ~defended));
  score += term<Us>(W.ThreatHangingPawn, popCount(enemyPawns & ai.all[Us] & ~defended));
  if (ai.byKind[Us][King] & (enemyPieces | enemyPawns) & ~defended) score += term<Us>(W.ThreatByKing);

  // Pawn pushes to safe squares that would attack a piece.
  Bitboard empty = ~pos.occupied;
  Bitboard pushes = (Us == White ? shift<8>(ownPawns) : shift<-8>(ownPawns)) & empty;
  Bitboard thirdRank = Us == White ? Rank3Mask : Rank6Mask;
  pushes |= (Us == White ? shift<8>(pushes & thirdRank) : shift<-8>(pushes & thirdRank)) & empty;
  pushes &= ~ai.byKind[Them][Pawn] & (ai.all[Us] | ~ai.all[Them]);
  score += term<Us>(W.PawnPushThreat, popCount(pawnAttacks<Us>(pushes) & enemyPieces));
  return score;
}

// Passed pawns of Us with the pieces around them: king distances, free path, blockade.
template <Color Us>
Packed evaluatePassed(const Position& pos, const PawnEntry& pe, const AttackInfo& ai) {
  using T = ColorTraits<Us>;
  constexpr Color Them = T::Them;
  Packed score = 0;
  const int ownKing = pos.kingSquare(Us), enemyKing = pos.kingSquare(Them);
  forEachFrontPasser<Us>(pos, pe, [&](int s) {
    int r = T::RelativeRank(s);
    if (r == 7) return;   // only in hand-made positions: no stop square
    int block = s + T::Up;
    int enemyDist = distance(block, enemyKing), ownDist = distance(block, ownKing);
    score += term<Us>(W.PassedEnemyKing[r], enemyDist < 5 ? enemyDist : 5);
    score += term<Us>(W.PassedOwnKing[r], ownDist < 5 ? ownDist : 5);
    if (pos.occupied & bit(block)) {
      score += term<Us>(W.PassedBlocked[r]);
    } else {
      Bitboard path = Spans.forwardFile[Us][s];
      if (!(path & (pos.occupied | ai.all[Them]))) score += term<Us>(W.PassedFreePath[r]);
      else if (!(bit(block) & ai.all[Them])) score += term<Us>(W.PassedSafeStep[r]);
    }
  });
  return score;
}

}  // namespace

Packed evaluatePieces(Position& pos, const PawnEntry& pe, EvalTerms& terms) {
  AttackInfo ai{};
  initAttacks<White>(pos, ai);
  initAttacks<Black>(pos, ai);
  const bool whiteToMove = pos.sideToMove == White;
  const CheckSquares checks =
      whiteToMove ? checkSquares<White>(pos, ai.lines[Black]) : checkSquares<Black>(pos, ai.lines[White]);
  ai.pinnedToMove = whiteToMove ? pinnedPieces<White>(pos) : pinnedPieces<Black>(pos);
  evaluatePieceKinds<White>(pos, pe, ai, terms, whiteToMove ? checks : CheckSquares{});
  evaluatePieceKinds<Black>(pos, pe, ai, terms, whiteToMove ? CheckSquares{} : checks);
  terms.kingSafety[White] = evaluateKing<White>(pos, pe, ai);
  terms.kingSafety[Black] = evaluateKing<Black>(pos, pe, ai);
  terms.threats[White] = evaluateThreats<White>(pos, ai);
  terms.threats[Black] = evaluateThreats<Black>(pos, ai);
  terms.passed[White] = evaluatePassed<White>(pos, pe, ai);
  terms.passed[Black] = evaluatePassed<Black>(pos, pe, ai);
  SummaryParts parts;
  parts.attacked[White] = ai.all[White];
  parts.attacked[Black] = ai.all[Black];
  parts.lines[White] = ai.lines[White];
  parts.lines[Black] = ai.lines[Black];
  parts.pinned = ai.pinnedToMove;
  parts.pieceCandidates = ai.checkCandidates;
  finishAttackSummary(pos, parts);
  Packed sum = 0;
  for (Color c : {White, Black}) {
    Packed side = terms.mobility[c] + terms.pieces[c] + terms.kingSafety[c] + terms.threats[c] + terms.passed[c];
    sum += c == White ? side : -side;
  }
  return sum;
}

}  // namespace tavrin

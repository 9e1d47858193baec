// Self-play for training data: node-limited searches in this process, the quiet-position test,
// adjudication, and one game from its opening to its result.
#include "tools/datagen/self_play.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <stdexcept>

#include "app/startup.h"
#include "board/make_move.h"
#include "common/globals.h"
#include "common/platform.h"
#include "eval/evaluate.h"
#include "search/node.h"
#include "search/search.h"
#include "search/tt.h"
#include "tools/fuzz/random_input.h"

namespace tavrin::datagen {

namespace {

using match::GameResult;

// --- The node budget -------------------------------------------------------------------------
// The board calls InputPoll every 4096 white moves of the main record, 8,000 nodes apart or more:
// too coarse for budgets of a few thousand nodes. The hook therefore re-arms the move counter
// itself, for a sixteenth of what is left of the budget in white moves (which make anything from
// a tenth to a half of the nodes, by the colour of the tree's last ply). A search then stops
// within a few nodes of its budget, after some fifty calls that cost nothing against its nodes.
constexpr std::uint64_t NoBudget = ~std::uint64_t(0);
std::uint64_t NodeBudget = NoBudget;

void armPoll(std::uint64_t nodesLeft) {
  const std::uint64_t whiteMoves = std::clamp<std::uint64_t>(nodesLeft / 16, 1, PollPeriod);
  PollCounter = (PollCounter & ~PollPhaseBits) + PollPeriod - whiteMoves;
}

void budgetPoll(Position& pos) {
  const std::uint64_t nodes = nodeCount(pos);
  if (nodes >= NodeBudget) throw SearchAborted{};
  armPoll(NodeBudget - nodes);
}

// The same test after every completed iteration: a tree in which White makes no move (every
// black move ends in an exact evaluation) never reaches the board's poll.
void iterationPoll(Position& pos, int) {
  if (nodeCount(pos) >= NodeBudget) throw SearchAborted{};
}

// --- One move's search -----------------------------------------------------------------------
// A depth cap (plies) besides the budget. In some positions whose principal line ends in a draw,
// node-limited iterations grow ever deeper while counting hardly any nodes, each slower than the
// last: past about 50 plies one search takes seconds, then minutes. Budgets of this tool end
// ordinary searches far below the cap.
constexpr int DepthCap = 40;

// Stack entries above the root cleared before each search, as the protocol's search starter does:
// killers of the last search must not carry over.
constexpr int ClearedEntries = 256;

struct SearchResult {
  Move best = NoMove;
  int score = 0;   // side to move's point of view
};

// Searches the game position on the main search record: the board, its current state entry and
// the key history (for repetitions) are copied in, the record is left at the root.
SearchResult searchPosition(const Position& game, std::int64_t nodes) {
  Position& rec = SearchRecords[0];
  std::memcpy(static_cast<void*>(&rec), &game, BoardPartBytes);
  std::memset(static_cast<void*>(rec.stateStack), 0, ClearedEntries * sizeof(StateEntry));
  std::memcpy(static_cast<void*>(rec.stateStack + 1), game.state, sizeof(StateEntry));
  rec.state = rec.stateStack + 1;
  rec.ply = 0;
  readySearchRecord(game, rec);

  // The limits of "go nodes N".
  Limits = SearchLimits{};
  Limits.nodeLimit = nodes;
  Limits.nodeLimitFlag = 1;
  Limits.depthLimit = DepthCap;
  Limits.startTime = wallClockMicros();
  newSearch();
  NodeBudget = std::uint64_t(nodes);
  PollCounter = 0;
  armPoll(NodeBudget);
  evaluateFull(rec);
  try {
    runRootSearch(rec);
  } catch (const SearchAborted&) {
  }
  NodeBudget = NoBudget;
  return {Root.bestMove, Root.bestScore};
}

// --- The quiet test --------------------------------------------------------------------------
// The quiescence search of the position (null window just above standing pat) finds nothing
// better than standing pat. It runs on a small empty table of its own: the game's table holds the
// root's search result, which the quiescence probe would return instead of its own score.
constexpr int ScratchBuckets = 256;
TtBucket ScratchTable[ScratchBuckets];

bool quietAtRoot(Position& rec) {
  const TranspositionTable gameTable = Tt;
  std::memset(static_cast<void*>(ScratchTable), 0, sizeof ScratchTable);
  Tt.table = ScratchTable[0].entry;
  Tt.entries = ScratchBuckets * TtBucketEntries;
  Tt.indexMask = Tt.entries - TtBucketEntries;
  evaluateFull(rec);
  const int standPat = rec.st().staticEval + params::QuiesceTempo;
  const int score = rec.sideToMove == White ? quiesceWhite(rec, standPat + 1, 0) : quiesceBlack(rec, standPat + 1, 0);
  Tt = gameTable;
  return score == standPat;
}

bool captureOrPromotion(const Position& pos, Move m) {
  return pos.board[moveTo(m)] != NoPiece || moveKind(m) == EnPassantMove || isPromotion(m);
}

// The tables a new game starts from, as after "ucinewgame".
void clearForNewGame() {
  clearTables();
  clearHistory();
  clearEvaluationTables();
  seedEvaluationNoise(SearchRecords[0]);
}

// Adjudication by the search scores (White's point of view) of consecutive plies.
struct Adjudicator {
  int whiteAhead = 0, blackAhead = 0, level = 0;

  GameResult update(int ply, int score) {
    whiteAhead = score >= DecisiveScore ? whiteAhead + 1 : 0;
    blackAhead = score <= -DecisiveScore ? blackAhead + 1 : 0;
    level = std::abs(score) <= DrawScore ? level + 1 : 0;
    if (whiteAhead >= WinPlies) return GameResult::WhiteWins;
    if (blackAhead >= WinPlies) return GameResult::BlackWins;
    if (ply >= DrawFromPly && level >= DrawPlies) return GameResult::Draw;
    return GameResult::None;
  }
};

}  // namespace

void prepareSelfPlay(int hashMegabytes) {
  match::initBoardOnce();
  resizeTable(hashMegabytes);
  Settings.quiet = true;
  Engine.searchRunning = 0;
  Engine.infiniteMode = Engine.ponderMode = 0;
  Reports = {[](Position&, std::int64_t, int) {}, [](int) {}, [](Move, int) {}, iterationPoll};
  InputPoll = budgetPoll;
}

SelfPlayGame playGame(const match::Opening& opening, std::uint64_t gameSeed, const SelfPlaySettings& settings) {
  SelfPlayGame game;
  match::GameBoard board;
  if (!board.setFen(opening.fen)) return game;
  for (const std::string& text : opening.moves) {
    const Move m = board.parseUci(text);
    if (!m) return game;
    board.play(m);
  }
  fuzz::Rng rng(gameSeed);
  int ply = int(fuzz::playRandomMoves(rng, board, settings.randomPlies, false).size());
  if (board.outcome().result != GameResult::None) return game;

  clearForNewGame();
  Adjudicator adjudicator;
  for (;; ++ply) {
    const match::Outcome rules = board.outcome();
    if (rules.result != GameResult::None) {
      game.result = rules.result;
      game.end = GameEnd::Rules;
      break;
    }
    if (ply >= LengthLimitPlies) {
      game.result = GameResult::Draw;
      game.end = GameEnd::Length;
      break;
    }

    const SearchResult found = searchPosition(board.position(), settings.nodes);
    ++game.searches;
    game.nodes += SearchRecords[0].nodes;
    const std::vector<Move> legal = board.legalMoves();
    if (std::find(legal.begin(), legal.end(), found.best) == legal.end())
      throw std::runtime_error("the search returned no legal move in " + board.fen());
    const int score = board.sideToMove() == White ? found.score : -found.score;

    if (ply >= settings.skipPlies && std::abs(score) < DecisiveScore && !board.inCheck() &&
        !captureOrPromotion(board.position(), found.best) && quietAtRoot(SearchRecords[0]))
      game.positions.push_back({board.fen(), score});

    const GameResult adjudged = adjudicator.update(ply, score);
    if (adjudged != GameResult::None) {
      game.result = adjudged;
      game.end = GameEnd::Adjudicated;
      break;
    }
    board.play(found.best);
  }
  game.plies = ply;
  return game;
}

const char* resultValue(GameResult r) {
  return r == GameResult::WhiteWins ? "1.0" : r == GameResult::BlackWins ? "0.0" : "0.5";
}

std::string dataLine(const KeptPosition& p, GameResult r) {
  return p.fen + " | " + resultValue(r) + " | " + std::to_string(p.score) + "\n";
}

}  // namespace tavrin::datagen

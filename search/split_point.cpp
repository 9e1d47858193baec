// Split points and the search records of the parallel search: the split attempt, the idle loop
// in which threads wait for work (a waiting master helps its own workers), the hand-over of
// results, and the stop that runs down the split tree. Every change to who works for whom
// happens under the one split lock; a split point's own lock guards its picker and its bounds.
#include "search/split_point.h"

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <thread>

#include "board/make_move.h"
#include "search/node.h"
#include "search/search.h"

namespace tavrin {

SplitGlobals Split;

namespace {

// Records beyond a thread's first: one for each open split point the thread helps search as its
// master, and one for helping at a worker's split point while it waits.
constexpr int ExtraRecords = SplitPointsPerThread + 1;

// How often a waiting main thread runs the input poll (the search's own poll counts moves).
constexpr std::chrono::milliseconds WaitingPollPeriod{1};

struct ThreadState {
  SplitPoint splitPoints[SplitPointsPerThread];
  int splitCount = 0;                 // open split points, a stack
  bool idle = false;                  // waiting in the idle loop: only then can it be given work
  std::int64_t idleSince = 0;         // when the current wait began (microseconds)
  SplitPoint* waitingAt = nullptr;    // the split point whose workers the thread waits for
  // Allocated when first needed (under the split lock), never freed; published with release order
  // because the main thread sums their node counts without the lock.
  std::atomic<Position*> extra[ExtraRecords] = {};
  std::condition_variable wake;       // the thread's wake-up event, used with SplitLock
};

// Allocated once and never freed: the pool threads may still wait on them when the process ends.
std::mutex& SplitLock = *new std::mutex;
ThreadState* const States = new ThreadState[MaxThreads];
Position* RootRecord = &SearchRecords[0];
SplitStatistics Statistics;   // under the split lock

std::int64_t nowMicros() {
  return std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

// The records a thread may search with: its first record (not the main thread's, which the root
// search owns) and its extra ones.
template <class Fn>
void forThreadRecords(std::uint64_t index, Fn fn) {
  if (index > 0 && SearchRecords[index].stateStack) fn(SearchRecords[index]);
  for (const std::atomic<Position*>& slot : States[index].extra)
    if (Position* r = slot.load(std::memory_order_acquire)) fn(*r);
}

// Can thread i join a split of thread self? It must be idle and, when it waits for workers of
// its own, self must be one of them: its help then ends before its own split point can finish.
bool available(std::uint64_t i, std::uint64_t self) {
  if (i == self || !States[i].idle || Split.threadWork[i] || Split.sleepRequested[i]) return false;
  const SplitPoint* waiting = States[i].waitingAt;
  return !waiting || waiting->master->workers[self] != nullptr;
}

// The search of one record at its split point.
void searchSplitPoint(Position& worker) {
  worker.searchingSplit = 1;
  worker.splitPoint->task.searchMoves(worker, *worker.splitPoint);
}

// A worker has finished (or abandoned) its part: its result goes to the master, which is woken
// when it was the last. Under the split lock.
void leaveSplitPoint(Position& work, std::uint64_t index) {
  Position& parent = *work.parent;
  mergeWorkerResult(parent, work);
  if (--parent.workerCount == 0) States[parent.threadIndex].wake.notify_one();
  parent.workers[index] = nullptr;
  if (Split.threadWork[index] == &work) Split.threadWork[index] = nullptr;
  work.searchingSplit = 0;
  work.inUse = 0;
}

// Stops every record working at the master's split point. Under the split lock.
void stopWorkers(Position& master) {
  for (Position* w : master.workers)
    if (w) requestStop(*w);
}

}  // namespace

void initSplitPoints() {
  setThreadCount(1);   // threads started before (a test, a tool) are retired first
  Split.threadCount = 1;
  Split.maxThreads = MaxThreads;
  for (auto& w : Split.threadWork) w = nullptr;
  for (auto& s : Split.sleepRequested) s = 0;
  Split.awakeCount = Split.threadCount;
  Split.idleCount = 0;
}

Position* acquireRecord(std::uint64_t threadIndex) {
  if (threadIndex >= std::uint64_t(MaxThreads)) return nullptr;
  Position* found = nullptr;
  forThreadRecords(threadIndex, [&](Position& r) {
    if (!found && !r.inUse) found = &r;
  });
  if (!found)
    for (std::atomic<Position*>& slot : States[threadIndex].extra)
      if (!slot.load(std::memory_order_relaxed)) {
        Position* r = new Position;
        r->stateStack = nullptr;
        initPosition(*r, WorkerStackEntries);
        r->threadIndex = threadIndex;
        r->recordIndex = threadIndex;
        seedEvaluationNoise(*r);
        slot.store(r, std::memory_order_release);
        found = r;
        break;
      }
  if (found) found->inUse = 1;
  return found;
}

Position* copyForWorker(std::uint64_t threadIndex, Position& master) {
  Position* worker = acquireRecord(threadIndex);
  if (!worker) return nullptr;
  for (auto& w : worker->workers) w = nullptr;
  std::memcpy(static_cast<void*>(worker), &master, BoardPartBytes);
  worker->stateStack[0] = master.state[-1];
  worker->stateStack[1] = master.state[0];
  worker->state = worker->stateStack + 1;
  std::memcpy(worker->keyHistory, master.keyHistory, (master.historyCount + 1) * sizeof(Key));
  worker->historyCount = master.historyCount;
  return worker;
}

void mergeWorkerResult(Position& parent, Position& worker) {
  SplitPoint& sp = *worker.splitPoint;
  {
    std::lock_guard<std::mutex> g(sp.lock);
    bestMoveSlot(parent) = Move(sp.bestMove);
  }
  if (worker.search.selDepth > parent.search.selDepth) parent.search.selDepth = worker.search.selDepth;
}

void requestStop(Position& record) {
  record.stopFlag = 1;
  stopWorkers(record);
}

void stopSplitPoint(SplitPoint& sp) {
  std::lock_guard<std::mutex> guard(SplitLock);
  {
    std::lock_guard<std::mutex> g(sp.lock);
    sp.stopped = 1;
  }
  stopWorkers(*sp.master);
}

bool trySplit(Position& record, MovePicker* movePicker, int depth, int beta, int alpha, int nodeType,
              int& bestValue, const SplitTask& task) {
  // One thread: nobody can ever be idle.
  if (Split.threadCount == 1) return false;
  std::unique_lock<std::mutex> guard(SplitLock);
  const std::uint64_t self = record.threadIndex;
  ThreadState& me = States[self];
  // 1-3. A stopping record, a full split stack or no idle thread: go on alone.
  if (record.stopFlag || me.splitCount == SplitPointsPerThread) return false;
  bool anyIdle = false;
  for (std::uint64_t i = 0; i < Split.threadCount && !anyIdle; ++i) anyIdle = available(i, self);
  if (!anyIdle) return false;

  // 4. Open the split point.
  SplitPoint& sp = me.splitPoints[me.splitCount];
  {
    std::lock_guard<std::mutex> g(sp.lock);
    sp.alpha = alpha;
    sp.beta = beta;
    sp.depth = depth;
    sp.nodeType = nodeType;
    sp.bestValue = nodeType != SplitPvNode ? beta - 1 : alpha;
    sp.bestMove = 0;
    sp.counters[0] = sp.counters[1] = 0;
    sp.movePicker = movePicker;
    sp.stopped = 0;
    sp.active = 1;
    sp.task = task;
    sp.master = &record;
  }
  record.workerCount = 0;

  // 5. Every idle thread becomes a worker, and the master searches beside them with a copy.
  auto enlist = [&](std::uint64_t i) {
    Position* worker = copyForWorker(i, record);
    if (!worker) return;
    worker->threadIndex = i;
    worker->parent = &record;
    worker->stopFlag = 0;
    worker->splitPoint = &sp;
    record.workers[i] = worker;
    ++record.workerCount;
  };
  for (std::uint64_t i = 0; i < Split.threadCount; ++i)
    if (available(i, self)) enlist(i);

  // 6. No record to be had: go on alone.
  if (record.workerCount == 0) {
    std::lock_guard<std::mutex> g(sp.lock);
    sp.active = 0;
    return false;
  }
  enlist(self);
  ++me.splitCount;

  // 7. Hand out the work, search beside the workers, then wait for them (helping them).
  for (std::uint64_t i = 0; i < Split.threadCount; ++i)
    if (record.workers[i] && i != self) {
      Split.threadWork[i] = record.workers[i];
      States[i].wake.notify_one();
    }
  Position* own = record.workers[self];
  Split.threadWork[self] = own;
  guard.unlock();

  try {
    if (own) {
      searchSplitPoint(*own);
      guard.lock();
      leaveSplitPoint(*own, self);
      own = nullptr;
      guard.unlock();
    }
    idleLoop(&record, self);
  } catch (const SearchAborted&) {
    // The main thread leaves the search: everyone below this split point stops, and the split
    // point stays open until the last worker has left it.
    if (!guard.owns_lock()) guard.lock();
    if (own) leaveSplitPoint(*own, self);
    Split.threadWork[self] = &record;   // busy: nobody may hand this thread work now
    stopWorkers(record);
    me.wake.wait(guard, [&] { return record.workerCount == 0; });
    sp.active = 0;
    --me.splitCount;
    throw;
  }

  guard.lock();
  {
    std::lock_guard<std::mutex> g(sp.lock);
    bestValue = sp.bestValue;
    sp.active = 0;
    ++Statistics.splits;
    Statistics.movesSearched += sp.counters[1];
  }
  --me.splitCount;
  Split.threadWork[self] = &record;
  return true;
}

void idleLoop(Position* master, std::uint64_t index) {
  std::unique_lock<std::mutex> guard(SplitLock);
  ThreadState& me = States[index];
  const bool mainThread = master && master->recordIndex == 0;
  // Between the checks the thread waits, and only then may others hand it work.
  auto beginWaiting = [&] {
    ++Split.idleCount;
    me.idle = true;
    me.idleSince = nowMicros();
    me.waitingAt = master ? &me.splitPoints[me.splitCount - 1] : nullptr;
  };
  auto endWaiting = [&] {
    --Split.idleCount;
    me.idle = false;
    Statistics.idleMicros += nowMicros() - me.idleSince;
    me.waitingAt = nullptr;
  };
  for (;;) {
    beginWaiting();
    while (!Split.threadWork[index]) {
      if (master ? master->workerCount == 0 : Split.sleepRequested[index] != 0) {
        endWaiting();
        return;
      }
      if (!mainThread) {
        me.wake.wait(guard);
        continue;
      }
      // The main thread keeps reading its input and watching the clock while it waits.
      if (me.wake.wait_for(guard, WaitingPollPeriod) == std::cv_status::timeout && !Split.threadWork[index] &&
          master->workerCount != 0) {
        endWaiting();
        guard.unlock();
        InputPoll(*master);
        guard.lock();
        beginWaiting();
      }
    }
    endWaiting();
    Position& work = *Split.threadWork[index];
    guard.unlock();
    try {
      searchSplitPoint(work);
    } catch (const SearchAborted&) {
      guard.lock();
      leaveSplitPoint(work, index);
      throw;
    }
    guard.lock();
    leaveSplitPoint(work, index);
  }
}

// --- The thread pool ------------------------------------------------------------------------------

namespace {

std::thread* PoolThreads[MaxThreads] = {};

void retireThreads(std::uint64_t from) {
  {
    std::lock_guard<std::mutex> g(SplitLock);
    for (std::uint64_t i = from; i < Split.threadCount; ++i) {
      Split.sleepRequested[i] = 1;
      States[i].wake.notify_one();
    }
  }
  for (std::uint64_t i = from; i < std::uint64_t(MaxThreads); ++i)
    if (PoolThreads[i]) {
      PoolThreads[i]->join();
      delete PoolThreads[i];
      PoolThreads[i] = nullptr;
    }
  std::lock_guard<std::mutex> g(SplitLock);
  for (std::uint64_t i = from; i < std::uint64_t(MaxThreads); ++i) Split.sleepRequested[i] = 0;
}

}  // namespace

void setThreadCount(int count) {
  const std::uint64_t n = std::uint64_t(count < 1 ? 1 : count > MaxThreads ? MaxThreads : count);
  if (n == Split.threadCount) return;
  if (n < Split.threadCount) retireThreads(n);
  for (std::uint64_t i = Split.threadCount; i < n; ++i) {
    Position& first = SearchRecords[i];
    if (!first.stateStack) {
      initPosition(first, WorkerStackEntries);
      first.threadIndex = i;
      first.recordIndex = i;
      seedEvaluationNoise(first);
    }
  }
  {
    std::lock_guard<std::mutex> g(SplitLock);
    const std::uint64_t old = Split.threadCount;
    Split.threadCount = n;
    Split.awakeCount = n;
    for (std::uint64_t i = old; i < n; ++i) PoolThreads[i] = new std::thread(idleLoop, nullptr, i);
  }
}

void beginParallelSearch(Position& root) {
  std::lock_guard<std::mutex> g(SplitLock);
  RootRecord = &root;
  Split.threadWork[root.threadIndex] = &root;
  for (std::uint64_t i = 0; i < std::uint64_t(MaxThreads); ++i)
    forThreadRecords(i, [&](Position& r) {
      if (&r == &root) return;
      r.nodes = 0;
      r.stopFlag = 0;
    });
}

std::uint64_t searchNodeCount() {
  std::uint64_t total = nodeCount(*RootRecord);
  if (Split.threadCount == 1 && !States[0].extra[0].load(std::memory_order_acquire)) return total;
  for (std::uint64_t i = 0; i < std::uint64_t(MaxThreads); ++i)
    forThreadRecords(i, [&](const Position& r) {
      if (&r != RootRecord) total += nodeCount(r);
    });
  return total;
}

void forEachSearchRecord(void (*fn)(Position&)) {
  if (SearchRecords[0].stateStack) fn(SearchRecords[0]);
  for (std::uint64_t i = 0; i < std::uint64_t(MaxThreads); ++i) forThreadRecords(i, fn);
}

SplitStatistics splitStatistics() {
  std::lock_guard<std::mutex> g(SplitLock);
  SplitStatistics s = Statistics;
  const std::int64_t now = nowMicros();
  for (std::uint64_t i = 0; i < Split.threadCount; ++i)
    if (States[i].idle) s.idleMicros += now - States[i].idleSince;
  return s;
}

void resetSplitStatistics() {
  std::lock_guard<std::mutex> g(SplitLock);
  Statistics = SplitStatistics{};
  const std::int64_t now = nowMicros();
  for (std::uint64_t i = 0; i < Split.threadCount; ++i) States[i].idleSince = now;
}

}  // namespace tavrin

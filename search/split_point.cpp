// Split points and the shared search records. With one thread no split ever finds a worker, but
// the records, locks and hand-over protocol are kept whole so that more threads could use them.
#include "search/split_point.h"

#include <condition_variable>
#include <cstring>
#include <mutex>

#include "search/search.h"

namespace tavrin {

SplitGlobals Split;
SplitPoint TheSplitPoint;

namespace {

// Locks live beside the records, not in them, so that Position stays a plain copyable record.
std::mutex SplitLock;
std::mutex SplitPointLock;
std::mutex RecordLock[MaxThreads];

// An auto-reset event per thread: a wait consumes the signal.
struct Event {
  std::mutex m;
  std::condition_variable cv;
  bool signalled = false;
  void set() {
    { std::lock_guard<std::mutex> g(m); signalled = true; }
    cv.notify_one();
  }
  void wait() {
    std::unique_lock<std::mutex> g(m);
    cv.wait(g, [this] { return signalled; });
    signalled = false;
  }
};
Event WakeEvent[MaxThreads];
Event SleepEvent[MaxThreads];

// The search of a worker at a split point. Workers only exist with more than one thread; the
// single-threaded engine never reaches this, so it reports the split point's bound unchanged.
void searchSplitPoint(Position& worker) { worker.searchingSplit = 1; }

}  // namespace

void initSplitPoints() {
  Split.threadCount = 1;
  if (Split.threadCount > std::uint64_t(MaxThreads)) Split.threadCount = MaxThreads;
  Split.maxThreads = MaxThreads;
  if (Split.threadCount > Split.maxThreads) Split.threadCount = Split.maxThreads;
  for (auto& w : Split.threadWork) w = nullptr;
  for (auto& s : Split.sleepRequested) s = 0;
  Split.awakeCount = Split.threadCount;
  Split.idleCount = 0;
  std::memset(&TheSplitPoint, 0, sizeof TheSplitPoint);
}

Position* acquireRecord(std::uint64_t threadIndex) {
  if (threadIndex >= std::uint64_t(MaxThreads)) return nullptr;
  Position& record = SearchRecords[threadIndex];
  if (record.inUse) return nullptr;
  record.inUse = 1;
  return &record;
}

Position* copyForWorker(std::uint64_t threadIndex, Position& master) {
  Position* worker = acquireRecord(threadIndex);
  if (!worker) return nullptr;
  for (auto& w : worker->workers) w = nullptr;
  std::memcpy(static_cast<void*>(worker), &master, BoardPartBytes);
  worker->stateStack[0] = master.state[-1];
  worker->stateStack[1] = master.state[0];
  worker->state = worker->stateStack + 1;
  std::memcpy(worker->keyHistory, master.keyHistory, sizeof master.keyHistory);
  worker->historyCount = master.historyCount;
  return worker;
}

void mergeWorkerResult(Position& parent, Position&) {
  parent.st().move = TheSplitPoint.bestValue >= TheSplitPoint.beta ? Move(TheSplitPoint.bestMove) : NoMove;
}

void requestStop(Position& record) {
  std::lock_guard<std::mutex> guard(RecordLock[record.threadIndex < MaxThreads ? record.threadIndex : 0]);
  record.stopFlag = 1;
  if (record.splitPoint) TheSplitPoint.stopped = 1;
}

bool trySplit(Position& record, MovePicker* movePicker, int depth, int beta, int alpha, int nodeType,
              int& bestValue) {
  // 1. Find the first idle thread.
  SplitLock.lock();
  std::uint64_t idle = Split.threadCount;
  for (std::uint64_t i = 0; i < Split.threadCount; ++i)
    if (!Split.threadWork[i]) { idle = i; break; }
  // 2. A stopping record does not split.
  if (record.stopFlag) { SplitLock.unlock(); return false; }
  // 3. Nobody idle: with one thread, always the case (threadWork[0] holds the root record).
  if (idle == Split.threadCount) { SplitLock.unlock(); return false; }

  // 4. Take the split point.
  const std::uint64_t self = record.threadIndex;
  Split.threadWork[self] = nullptr;
  record.workerCount = 0;
  {
    std::lock_guard<std::mutex> g(SplitPointLock);
    if (TheSplitPoint.active) {
      Split.threadWork[self] = &record;
      SplitLock.unlock();
      return false;
    }
    TheSplitPoint.alpha = alpha;
    TheSplitPoint.beta = beta;
    TheSplitPoint.depth = depth;
    TheSplitPoint.nodeType = nodeType;
    TheSplitPoint.bestValue = nodeType != SplitPvNode ? beta - 1 : alpha;
    TheSplitPoint.bestMove = 0;
    TheSplitPoint.counters[0] = TheSplitPoint.counters[1] = 0;
    TheSplitPoint.movePicker = movePicker;
    TheSplitPoint.stopped = 0;
    TheSplitPoint.active = 1;
  }

  // 5. At most one worker from the idle threads.
  for (std::uint64_t i = 0; i < Split.threadCount && record.workerCount == 0; ++i) {
    if (Split.threadWork[i] || i == self) continue;
    Position* worker = copyForWorker(i, record);
    if (!worker) continue;
    worker->threadIndex = i;
    worker->parent = &record;
    worker->stopFlag = 0;
    worker->splitPoint = &TheSplitPoint;
    record.workers[i] = worker;
    ++record.workerCount;
  }

  // 6. No worker: restore and go on alone.
  if (record.workerCount == 0) {
    Split.threadWork[self] = &record;
    { std::lock_guard<std::mutex> g(SplitPointLock); TheSplitPoint.active = 0; }
    SplitLock.unlock();
    return false;
  }

  // 7. Hand out the work, wait for the workers, read the result.
  for (std::uint64_t i = 0; i < Split.threadCount; ++i)
    if (record.workers[i]) {
      Split.threadWork[i] = record.workers[i];
      WakeEvent[i].set();
    }
  SplitLock.unlock();
  idleLoop(record, self);
  std::lock_guard<std::mutex> g1(SplitLock);
  std::lock_guard<std::mutex> g2(SplitPointLock);
  bestValue = TheSplitPoint.bestValue;
  TheSplitPoint.active = 0;
  return true;
}

void idleLoop(Position& record, std::uint64_t index) {
  for (;;) {
    std::unique_lock<std::mutex> lock(SplitLock);
    ++Split.idleCount;
    while (!Split.threadWork[index]) {
      if (record.workerCount == 0 || Split.sleepRequested[index]) break;
      lock.unlock();
      WakeEvent[index].wait();
      lock.lock();
    }
    if (Split.sleepRequested[index]) {
      Split.threadWork[index] = nullptr;
      --Split.idleCount;
      if (--Split.awakeCount == 1) SleepEvent[0].set();
      lock.unlock();
      SleepEvent[index].wait();
      lock.lock();
      Split.sleepRequested[index] = 0;
      ++Split.awakeCount;
      SleepEvent[index].set();
      continue;
    }
    --Split.idleCount;
    if (!Split.threadWork[index]) {
      Split.threadWork[index] = &record;
      WakeEvent[index].set();
      return;
    }
    Position& work = *Split.threadWork[index];
    lock.unlock();
    searchSplitPoint(work);
    lock.lock();
    Position& parent = *work.parent;
    std::lock_guard<std::mutex> parentGuard(RecordLock[parent.threadIndex < MaxThreads ? parent.threadIndex : 0]);
    mergeWorkerResult(parent, work);
    if (--parent.workerCount == 0) WakeEvent[parent.threadIndex].set();
    parent.workers[index] = nullptr;
    Split.threadWork[index] = nullptr;
    work.searchingSplit = 0;
  }
}

}  // namespace tavrin

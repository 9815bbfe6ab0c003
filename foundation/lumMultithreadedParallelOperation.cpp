#include "foundation/lumMultithreadedParallelOperation.h"

#include "foundation/lumDescribe.h"
#include "foundation/lumParameterMap.h"
#include "foundation/lumUtilityMultithread.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>

LUM_DESCRIBE(ClumMultithreadedParallelOperation)
{
  i_class.creates("()", &Self::create);
}

struct ClumMultithreadedParallelOperation::CBoard
{
  std::mutex mutex; ///< guards what the workers tell
  std::condition_variable changed;
};

/// One member's thread, and what it tells.
class ClumMultithreadedParallelOperation::CWorker
{
public:
  explicit CWorker(const ClumOperationShPtr& i_operation, const std::shared_ptr<CBoard>& i_board)
    : m_operation(i_operation), m_output(ClumParameterMap::create()), m_board(i_board)
  {
  }
  CWorker(const CWorker&) = delete;
  CWorker& operator=(const CWorker&) = delete;
  ~CWorker() { stopAndJoin(); }

  const ClumOperationShPtr& operation() const { return m_operation; }
  const ClumParameterMapShPtr& output() const { return m_output; }

  lmStatus start(const ClumParameterMapConstShPtr& i_parameters)
  {
    const lmStatus status = m_operation->start(i_parameters, m_output);
    if (status.failed())
      return status;
    note(lmStatus(), false);
    m_contexts = ClumUtilityMultithread::makeWorkerContexts();
    try
    {
      m_thread = std::thread([this] { run(); });
    }
    catch (const std::system_error&)
    {
      bool isFinished = false;
      m_operation->abort();
      m_operation->step(isFinished);
      return lmStatus(lmStatus::FAILURE);
    }
    return status;
  }

  lmStatus stopAndJoin()
  {
    m_operation->abort();
    if (m_thread.joinable())
      m_thread.join();
    return m_status;
  }

  // With the board's mutex held.
  bool hasEnded() const { return m_hasEnded; }
  const lmStatus& status() const { return m_status; }
  lmStatus getCompletion(double& o_completion) const
  {
    o_completion = m_hasEnded ? 1.0 : m_completion;
    return m_hasEnded ? lmStatus() : m_completionStatus;
  }
  lmStatus getDifficulty(double& o_difficulty) const
  {
    o_difficulty = m_difficulty;
    return m_difficultyStatus;
  }

private:
  void run()
  {
    for (const ClumWorkerContextShPtr& context : m_contexts)
      context->enter();
    bool isFinished = false;
    while (!isFinished)
    {
      const lmStatus status = m_operation->step(isFinished);
      note(status, isFinished);
    }
    for (auto context = m_contexts.rbegin(); context != m_contexts.rend(); ++context)
      (*context)->leave();
  }

  void note(const lmStatus& i_status, bool i_hasEnded)
  {
    double completion = 0.0, difficulty = 1.0;
    const lmStatus completionStatus = m_operation->computeCompletion(completion);
    const lmStatus difficultyStatus = m_operation->computeDifficulty(difficulty);
    const std::lock_guard<std::mutex> lock(m_board->mutex);
    m_status = i_status;
    m_hasEnded = i_hasEnded;
    m_completion = completion;
    m_completionStatus = completionStatus;
    m_difficulty = difficulty;
    m_difficultyStatus = difficultyStatus;
    if (i_hasEnded)
      m_board->changed.notify_all();
  }

  ClumOperationShPtr m_operation;
  ClumParameterMapShPtr m_output;
  std::shared_ptr<CBoard> m_board;
  std::vector<ClumWorkerContextShPtr> m_contexts;
  std::thread m_thread;
  lmStatus m_status;
  bool m_hasEnded = true; ///< or not begun
  double m_completion = 0.0;
  lmStatus m_completionStatus;
  double m_difficulty = 1.0;
  lmStatus m_difficultyStatus;
};

ClumMultithreadedParallelOperationShPtr ClumMultithreadedParallelOperation::create()
{
  return lumCreate<ClumMultithreadedParallelOperation>();
}

ClumMultithreadedParallelOperation::ClumMultithreadedParallelOperation() : m_board(new CBoard)
{
}

ClumMultithreadedParallelOperation::~ClumMultithreadedParallelOperation()
{
  for (const std::unique_ptr<CWorker>& worker : m_workers)
    worker->operation()->abort();
}

lmStatus ClumMultithreadedParallelOperation::init(const ClumMultithreadedParallelOperationWkPtr& i_weakPtr)
{
  return ClumParallelOperation::init(i_weakPtr);
}

bool ClumMultithreadedParallelOperation::canTake(const ClumOperation& i_operation) const
{
  return i_operation.threadSafety() == THREAD_SAFE;
}

ClumMultithreadedParallelOperation::CWorker*
ClumMultithreadedParallelOperation::workerOf(const ClumOperationShPtr& i_operation) const
{
  const auto at =
    std::find_if(m_workers.begin(), m_workers.end(),
                 [&](const std::unique_ptr<CWorker>& i_worker) { return i_worker->operation() == i_operation; });
  return at == m_workers.end() ? nullptr : at->get();
}

lmStatus ClumMultithreadedParallelOperation::startMember(const ClumOperationShPtr& i_operation)
{
  // One that was a member before, and was removed, comes back as a new one.
  m_workers.erase(std::remove_if(m_workers.begin(), m_workers.end(),
                                 [&](const std::unique_ptr<CWorker>& i_former)
                                 { return i_former->operation() == i_operation; }),
                  m_workers.end());
  std::unique_ptr<CWorker> worker(new CWorker(i_operation, m_board));
  const lmStatus status = worker->start(parameters());
  if (status.succeeded())
    m_workers.push_back(std::move(worker));
  return status;
}

/// The worker stays until the end of the run: the output of a member that was removed counts too.
lmStatus ClumMultithreadedParallelOperation::stopMember(const ClumOperationShPtr& i_operation)
{
  CWorker* const worker = workerOf(i_operation);
  return worker ? worker->stopAndJoin() : lmStatus();
}

lmStatus ClumMultithreadedParallelOperation::completionOf(const CMember& i_member, double& o_completion) const
{
  const CWorker* const worker = workerOf(i_member.operation);
  if (!worker)
    return ClumParallelOperation::completionOf(i_member, o_completion);
  const std::lock_guard<std::mutex> lock(m_board->mutex);
  return worker->getCompletion(o_completion);
}

lmStatus ClumMultithreadedParallelOperation::difficultyOf(const CMember& i_member, double& o_difficulty) const
{
  const CWorker* const worker = workerOf(i_member.operation);
  if (!worker)
    return ClumParallelOperation::difficultyOf(i_member, o_difficulty);
  const std::lock_guard<std::mutex> lock(m_board->mutex);
  return worker->getDifficulty(o_difficulty);
}

ClumParallelOperationShPtr ClumMultithreadedParallelOperation::makeFlat() const
{
  return create();
}

lmStatus ClumMultithreadedParallelOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  m_workers.clear();
  return ClumParallelOperation::doStart(o_output);
}

lmStatus ClumMultithreadedParallelOperation::doStep(bool& o_finished)
{
  const std::chrono::milliseconds longestWait(5);
  std::unique_lock<std::mutex> lock(m_board->mutex);
  const auto needsCare = [&]
  {
    return std::any_of(members().begin(), members().end(),
                       [&](const CMember& i_member)
                       { return !i_member.isFinished && workerOf(i_member.operation)->hasEnded(); });
  };
  m_board->changed.wait_for(lock, longestWait, needsCare);
  for (unsigned int rank = 0; rank < countOperations(); ++rank)
  {
    const CWorker& worker = *workerOf(operation(rank));
    if (!worker.hasEnded())
      continue;
    member(rank).isFinished = true;
    if (worker.status().failed())
      return worker.status();
  }
  o_finished = isAllFinished();
  return lmStatus();
}

lmStatus ClumMultithreadedParallelOperation::doFinish(const ClumParameterMapShPtr& o_output)
{
  // All are told to stop before the first is waited for.
  for (const std::unique_ptr<CWorker>& worker : m_workers)
    worker->operation()->abort();
  const lmStatus status = ClumParallelOperation::doFinish(o_output);
  for (const std::unique_ptr<CWorker>& worker : m_workers)
    o_output->inject(*worker->output());
  m_workers.clear();
  return status;
}

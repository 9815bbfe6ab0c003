#pragma once

#include "foundation/lumParallelOperation.h"

#include <memory>

/// Runs its members at the same time, each in a thread of its own.
///
/// Only operations that call themselves `THREAD_SAFE` are taken: what two members work on must be two things, such as
/// two clones of a device, or be guarded by themselves. The threads live from a member's start, which runs in the
/// caller's thread, to the member's end. A step of the composition only waits a little for one of them to end, so it is
/// short. A member whose thread cannot be made fails in its start. Each member writes an output map of its own; at the
/// end these are put into the composition's, in the order of the members. A member's notifications are sent in its own
/// thread, its `WILL_START` excepted.
///
/// Each thread draws random numbers from a generator of its own, seeded from the caller's in the order of the starts:
/// members that share nothing give the same result in every run, however the threads are scheduled.
class LUM_API ClumMultithreadedParallelOperation : public ClumParallelOperation
{
  LUM_CONCRETE(ClumMultithreadedParallelOperation, ClumParallelOperation);

public:
  static ClumMultithreadedParallelOperationShPtr create();
  /// Stops what still runs, and waits for it.
  ~ClumMultithreadedParallelOperation() override;

protected:
  ClumMultithreadedParallelOperation();
  lmStatus init(const ClumMultithreadedParallelOperationWkPtr& i_weakPtr);

  bool canTake(const ClumOperation& i_operation) const override;
  lmStatus startMember(const ClumOperationShPtr& i_operation) override;
  lmStatus stopMember(const ClumOperationShPtr& i_operation) override;
  /// As of the end of the member's last step.
  lmStatus completionOf(const CMember& i_member, double& o_completion) const override;
  lmStatus difficultyOf(const CMember& i_member, double& o_difficulty) const override;
  ClumParallelOperationShPtr makeFlat() const override;

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doStep(bool& o_finished) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;

private:
  struct CBoard;
  class CWorker;

  CWorker* workerOf(const ClumOperationShPtr& i_operation) const;

  std::shared_ptr<CBoard> m_board;                 ///< where the threads tell that they have ended
  std::vector<std::unique_ptr<CWorker>> m_workers; ///< of this run, in the order of their starts
};

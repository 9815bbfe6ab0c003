#pragma once

#include "foundation/lumParallelCooperativeOperation.h"

/// A cooperative parallel that gives more steps to the members that get more done.
///
/// What is done is told by a notification, the tuning signal: each one that comes during a member's step counts for
/// that member. After every hundred steps of all members together, a member's weight becomes its signals for each step,
/// relative to the best member's, but never less than a tenth, so that one that has come upon hard times is still tried
/// every tenth round; then half of what was counted is forgotten. Until the first signal all members are equal. Steps
/// are counted, not timed, so that a seeded run repeats.
///
/// The notificator is shared by copies; a coder keeps it by pointer, so it survives a copy in memory and is null in
/// what is read from a file: all members are equal then.
class LUM_API ClumAutotuningParallelCooperativeOperation : public ClumParallelCooperativeOperation
{
  LUM_CONCRETE(ClumAutotuningParallelCooperativeOperation, ClumParallelCooperativeOperation);

public:
  /// @param i_signal the id of the tuning signal. @return null without a notificator.
  static ClumAutotuningParallelCooperativeOperationShPtr create(const ClumNotificatorShPtr& i_notificator,
                                                                unsigned int i_signal);

  /// The share of steps of a member, relative to the best, between 0.1 and 1.
  double weight(unsigned int i_rank) const { return weightOf(i_rank); }

  void encodeWithCoder(const ClumCoderShPtr& i_coder) const override;
  lmStatus initWithCoder(const ClumCoderShPtr& i_coder, const ClumCodableShPtr& i_self) override;

protected:
  ClumAutotuningParallelCooperativeOperation() = default;
  ClumAutotuningParallelCooperativeOperation(const ClumNotificatorShPtr& i_notificator, unsigned int i_signal)
    : m_notificator(i_notificator), m_signal(i_signal)
  {
  }
  lmStatus init(const ClumAutotuningParallelCooperativeOperationWkPtr& i_weakPtr);

  lmStatus stepMember(const ClumOperationShPtr& i_operation, bool& o_finished) override;
  ClumParallelOperationShPtr makeFlat() const override;

  lmStatus doStart(const ClumParameterMapShPtr& o_output) override;
  lmStatus doFinish(const ClumParameterMapShPtr& o_output) override;

private:
  struct CRecord
  {
    ClumOperationWkPtr operation;
    double steps = 0.0;
    double signals = 0.0;
  };

  CRecord& recordOf(const ClumOperationShPtr& i_operation);
  void tune();
  void didReceiveSignal(const ShPtr<const ClumNotification>& i_notification);

  ClumNotificatorShPtr m_notificator;
  unsigned int m_signal = 0;
  unsigned int m_receivedSignals = 0;
  unsigned int m_stepsSinceTuning = 0;
  std::vector<CRecord> m_records; ///< of the members that have had a step in this run
};

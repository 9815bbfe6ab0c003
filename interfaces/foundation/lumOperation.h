#pragma once

#include "foundation/lumCodable.h"
#include "foundation/lumStringKey.h"

#include <atomic>
#include <vector>

/// Long work in short steps, which a caller can run to its end, advance, observe, stop and combine.
///
/// A run is `start`, `step` until it says finished, and the end. However the run ends (finished, failed in its start or
/// in a step, or aborted), `doFinish` is called once and `DID_STOP` is sent once; the first failure is what the caller
/// gets. The bool of a step means *finished*. A finished operation can be started again.
///
/// A subclass does its work in `doStart`, `doStep` and `doFinish`, or hands it to a delegate: while one is current,
/// each step of this operation steps the delegate instead of calling `doStep`.
///
/// Compositions hold their members and hand them their own parameters and output. They are made of the members as
/// `simplify` gives them, and are null if a member is. But for `multithreadedWith`, they run in the caller's thread and
/// are as thread-safe as their members.
///
/// One thread at a time works with an operation; another one may only call `abort`.
class LUM_API ClumOperation : public ClumMutableCodable
{
  LUM_ABSTRACT(ClumOperation, ClumMutableCodable);

public:
  enum EState
  {
    STATE_IDLE, ///< never started
    STATE_RUNNING,
    STATE_FINISHED,
    STATE_ABORTED,
    STATE_FAILED
  };
  enum EThreadSafety
  {
    THREAD_UNSAFE, ///< shares what it works on with others
    THREAD_SAFE    ///< may be stepped while other operations run in other threads
  };

  /// `WILL_START` carries the parameters of the run, as a const void handle, under `PARAMETERS_KEY`.
  static const unsigned int WILL_START;
  static const unsigned int DID_STOP;
  static const std::string PARAMETERS_KEY;

  ~ClumOperation() override;

  virtual ClumOperationShPtr then(const ClumOperationShPtr& i_next) const;
  virtual ClumOperationShPtr with(const ClumOperationShPtr& i_other) const;
  /// @param i_weight the other's share of steps, where this operation has 1.
  virtual ClumOperationShPtr withWeighted(const ClumOperationShPtr& i_other, double i_weight) const;
  /// Each in a thread of its own. @return null too if one of them is not thread-safe.
  virtual ClumOperationShPtr multithreadedWith(const ClumOperationShPtr& i_other) const;
  virtual ClumOperationShPtr finally(const ClumOperationShPtr& i_cleanUp) const;
  /// @return null for a count of 0.
  virtual ClumOperationShPtr loop(unsigned int i_count) const;
  virtual ClumOperationShPtr attempt(unsigned int i_count) const;
  virtual EThreadSafety threadSafety() const { return THREAD_UNSAFE; }
  /// An operation that does the same with fewer layers; by default this one. One with custom parameters stays as it is.
  virtual ClumOperationShPtr simplify() const { return self(); }

  /// @param i_parameters may be null. The operation's own `customParameters` are laid over them.
  /// @param o_output takes the results; may be null.
  /// @return -1, with no effect, if the operation is running; otherwise the first failure of the start.
  lmStatus start(const ClumParameterMapConstShPtr& i_parameters, const ClumParameterMapShPtr& o_output);
  /// @return -1, with `o_finished` true, if the operation is not running; otherwise the first failure of the step and,
  /// if it was the last one, of the end. A failure finishes the run.
  lmStatus step(bool& o_finished);
  lmStatus operate(const ClumParameterMapConstShPtr& i_parameters, const ClumParameterMapShPtr& o_output);
  /// Makes the next step end the run. No effect unless the operation is running. May be called by any thread.
  void abort();

  EState state() const { return m_state; }
  /// @param o_completion between 0 and 1. @return -1 where the operation cannot tell.
  lmStatus computeCompletion(double& o_completion) const { return doComputeCompletion(o_completion); }
  /// @param o_difficulty a relative estimate; 1 unless an operation knows better.
  lmStatus computeDifficulty(double& o_difficulty) const { return doComputeDifficulty(o_difficulty); }

  /// What the run was started with; null between runs.
  const ClumParameterMapConstShPtr& parameters() const { return m_parameters; }
  /// Parameters that belong to this operation and go before those of a start. Never null.
  const ClumParameterMapShPtr& customParameters() const { return m_customParameters; }
  /// The results of the run at hand or the last one; null before the first.
  const ClumParameterMapShPtr& outputParameters() const { return m_output; }

protected:
  ClumOperation();
  /// The copy is idle; it gets a copy of the custom parameters and the output wires.
  ClumOperation(const ClumOperation& i_other);
  lmStatus init(const ClumOperationWkPtr& i_weakPtr);

  /// @param o_output never null.
  virtual lmStatus doStart(const ClumParameterMapShPtr& o_output) = 0;
  /// A bounded, short piece of work.
  virtual lmStatus doStep(bool& o_finished) = 0;
  /// Runs after a failure and an abort too.
  virtual lmStatus doFinish(const ClumParameterMapShPtr& o_output) = 0;
  /// Safe between any two steps, and when not running.
  virtual lmStatus doComputeCompletion(double& o_completion) const = 0;
  virtual lmStatus doComputeDifficulty(double& o_difficulty) const;
  /// The default steps the delegate; when that has finished, copies its wired outputs and lets it go. A failing
  /// delegate fails this operation.
  virtual lmStatus doStepDelegate(bool& o_finished);

  /// Puts this operation and the other one, both in their simple forms, into an empty composition. @return null if it
  /// is null or refuses one of them.
  ClumOperationShPtr composed(const ClumParallelOperationShPtr& i_parallel, const ClumOperationShPtr& i_other) const;

  /// Starts an operation with this one's parameters and makes it current. @return -1 if it is null, if one is current
  /// already or if this operation is not running; otherwise its start's status.
  lmStatus startDelegateOperation(const ClumOperationShPtr& i_delegate);
  const ClumOperationShPtr& currentDelegateOperation() const { return m_delegate; }
  /// When a delegate finishes, its output `i_from` becomes this operation's output `i_to`.
  void wireDelegateOutput(const ClumStringKey& i_from, const ClumStringKey& i_to);
  void unwireDelegateOutput(const ClumStringKey& i_from);

  /// Ends an operation's run if it is running: `abort`, then the step that ends it.
  static lmStatus stop(const ClumOperationShPtr& i_operation);

private:
  struct COutputWire
  {
    ClumStringKey from;
    ClumStringKey to;
  };

  lmStatus endRun(const lmStatus& i_status);
  void notifyWillStart() const;
  void transferDelegateOutputs();

  EState m_state = STATE_IDLE;
  std::atomic<bool> m_isAborting{false};
  ClumParameterMapShPtr m_customParameters;
  ClumParameterMapConstShPtr m_parameters;
  ClumParameterMapShPtr m_output;
  ClumOperationShPtr m_delegate;
  ClumParameterMapShPtr m_delegateOutput;
  std::vector<COutputWire> m_wires;
};

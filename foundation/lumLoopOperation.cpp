#include "foundation/lumLoopOperation.h"

#include "foundation/lumDescribe.h"

LUM_DESCRIBE(ClumLoopOperation)
{
  i_class.creates("(const ClumOperationShPtr& i_operation, unsigned int i_count)", &Self::create);
}

LUM_DESCRIBE(ClumAttemptOperation)
{
  i_class.creates("(const ClumOperationShPtr& i_operation, unsigned int i_count)", &Self::create);
}

ClumLoopOperationShPtr ClumLoopOperation::create(const ClumOperationShPtr& i_operation, unsigned int i_count)
{
  return lumCreate<ClumLoopOperation>(i_operation, i_count);
}

lmStatus ClumLoopOperation::init(const ClumLoopOperationWkPtr& i_weakPtr)
{
  return ClumRepeatingOperation::init(i_weakPtr);
}

ClumParameterMapConstShPtr ClumLoopOperation::parametersOfRun(unsigned int) const
{
  return parameters();
}

lmStatus ClumLoopOperation::doStart(const ClumParameterMapShPtr& o_output)
{
  const lmStatus status = ClumRepeatingOperation::doStart(o_output);
  return status.failed() ? status : operation()->start(parametersOfRun(0), o_output);
}

lmStatus ClumLoopOperation::doStep(bool& o_finished)
{
  bool isRunFinished = false;
  const lmStatus status = operation()->step(isRunFinished);
  if (status.failed() || !isRunFinished)
    return status;
  noteDone();
  o_finished = countDone() == count();
  return o_finished ? status : operation()->start(parametersOfRun(countDone()), outputParameters());
}

lmStatus ClumLoopOperation::doComputeCompletion(double& o_completion) const
{
  double ofRun = 0.0;
  if (operation()->state() == STATE_RUNNING && operation()->computeCompletion(ofRun).failed())
    ofRun = 0.0;
  o_completion = (countDone() + ofRun) / count();
  return lmStatus();
}

lmStatus ClumLoopOperation::doComputeDifficulty(double& o_difficulty) const
{
  double ofRun = 1.0;
  const lmStatus status = operation()->computeDifficulty(ofRun);
  if (status.succeeded())
    o_difficulty = count() * ofRun;
  return status;
}

ClumAttemptOperationShPtr ClumAttemptOperation::create(const ClumOperationShPtr& i_operation, unsigned int i_count)
{
  return lumCreate<ClumAttemptOperation>(i_operation, i_count);
}

lmStatus ClumAttemptOperation::init(const ClumAttemptOperationWkPtr& i_weakPtr)
{
  return ClumRepeatingOperation::init(i_weakPtr);
}

lmStatus ClumAttemptOperation::doStep(bool& o_finished)
{
  // A step starts an attempt or advances the one that runs.
  lmStatus status;
  bool isRunFinished = false;
  if (operation()->state() == STATE_RUNNING)
    status = operation()->step(isRunFinished);
  else
    status = operation()->start(parameters(), outputParameters());
  o_finished = status.succeeded() && isRunFinished;
  if (status.succeeded())
    return status;
  noteDone();
  return countDone() == count() ? status : lmStatus();
}

lmStatus ClumAttemptOperation::doComputeCompletion(double& o_completion) const
{
  return operation()->computeCompletion(o_completion);
}

lmStatus ClumAttemptOperation::doComputeDifficulty(double& o_difficulty) const
{
  return operation()->computeDifficulty(o_difficulty);
}

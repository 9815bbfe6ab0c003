#include "foundation/lumUtilityMultithread.h"

#include "foundation/lumAssert.h"

#include <mutex>
#include <thread>

class ClumMutex
{
public:
  std::mutex mutex;
};

namespace
{
std::vector<ClumUtilityMultithread::TWorkerContextMaker>& workerContextMakers()
{
  static std::vector<ClumUtilityMultithread::TWorkerContextMaker> s_makers;
  return s_makers;
}
} // namespace

ClumMutexShPtr ClumUtilityMultithread::createMutex()
{
  return ClumMutexShPtr(new ClumMutex);
}

void ClumUtilityMultithread::lock(const ClumMutexShPtr& i_mutex)
{
  LUM_ASSERT(i_mutex);
  if (i_mutex)
    i_mutex->mutex.lock();
}

void ClumUtilityMultithread::unlock(const ClumMutexShPtr& i_mutex)
{
  LUM_ASSERT(i_mutex);
  if (i_mutex)
    i_mutex->mutex.unlock();
}

unsigned int ClumUtilityMultithread::atomicIncrement(unsigned int volatile& io_value)
{
  return __atomic_add_fetch(&io_value, 1u, __ATOMIC_SEQ_CST);
}

void ClumUtilityMultithread::yield()
{
  std::this_thread::yield();
}

void ClumUtilityMultithread::addWorkerContext(TWorkerContextMaker i_maker)
{
  workerContextMakers().push_back(i_maker);
}

std::vector<ClumWorkerContextShPtr> ClumUtilityMultithread::makeWorkerContexts()
{
  std::vector<ClumWorkerContextShPtr> contexts;
  for (const TWorkerContextMaker maker : workerContextMakers())
    contexts.push_back(maker());
  return contexts;
}

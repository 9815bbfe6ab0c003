#include "foundation/lumUtilityMultithread.h"

#include "foundation/lumAssert.h"

#include <mutex>
#include <thread>

class ClumMutex
{
public:
  std::mutex mutex;
};

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

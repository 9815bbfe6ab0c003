#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

/// What several threads need to share things, without a thread header in anybody's interface.
///
/// Each `lock` is paired by the caller with an `unlock` in the same thread; a mutex may not be locked twice by one
/// thread.
class LUM_API ClumUtilityMultithread
{
public:
  static ClumMutexShPtr createMutex();
  static void lock(const ClumMutexShPtr& i_mutex);
  static void unlock(const ClumMutexShPtr& i_mutex);
  /// Adds 1 as one indivisible step. @return the new value.
  static unsigned int atomicIncrement(unsigned int volatile& io_value);
  /// Lets other threads run.
  static void yield();
};

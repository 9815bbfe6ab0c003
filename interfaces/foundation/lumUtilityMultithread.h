#pragma once

#include "foundation/handles.h"
#include "foundation/lumExport.h"

#include <vector>

/// What a part of the library puts in force in a worker thread, such as a random generator of its own.
///
/// It is made in the thread that starts the worker, entered and left in the worker itself.
class LUM_API ClumWorkerContext
{
public:
  virtual ~ClumWorkerContext() = default;
  virtual void enter() = 0;
  virtual void leave() = 0;
};

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

  using TWorkerContextMaker = ClumWorkerContextShPtr (*)();
  /// Has a context made for each worker thread from now on. To be called while the library loads.
  static void addWorkerContext(TWorkerContextMaker i_maker);
  /// One of each kind, for a worker that the calling thread is about to start.
  static std::vector<ClumWorkerContextShPtr> makeWorkerContexts();
};

#pragma once

#include <pthread.h>

#include "util/export.h"

/// A lock of the process's threads. Lock() and UnLock() return 0 for success, an errno value otherwise.
class UTIL_API CCmMutexThreadBase {
 public:
  CCmMutexThreadBase(const CCmMutexThreadBase&) = delete;
  CCmMutexThreadBase& operator=(const CCmMutexThreadBase&) = delete;

  /// Waits until the calling thread owns the lock.
  int Lock() { return pthread_mutex_lock(&m_mutex); }
  /// REQUIRES: the calling thread owns the lock.
  int UnLock() { return pthread_mutex_unlock(&m_mutex); }

 protected:
  explicit CCmMutexThreadBase(int pthreadMutexType);
  ~CCmMutexThreadBase();

 private:
  pthread_mutex_t m_mutex;
};

/// Not recursive: a second Lock() by the owner returns EDEADLK and leaves the lock as it was.
class UTIL_API CCmMutexThread : public CCmMutexThreadBase {
 public:
  CCmMutexThread();
};

/// Recursive: its owner may lock it again, and unlocks it as often as it locked it.
class UTIL_API CCmMutexThreadRecursive : public CCmMutexThreadBase {
 public:
  CCmMutexThreadRecursive();
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

#include "util/export.h"

/// A lock of the process's threads; see CCmMutexThread and CCmMutexThreadRecursive.
///
/// @threads Any; it is destroyed by one owner, while nobody holds it or waits for it.
/// @par Example
/// @code{.cpp}
/// CCmMutexThread plain;
/// assert(plain.Lock() == 0);
/// assert(plain.Lock() != 0);  // its owner already, and not recursive
/// assert(plain.UnLock() == 0);
///
/// CCmMutexThreadRecursive recursive;
/// assert(recursive.Lock() == 0 && recursive.Lock() == 0);
/// assert(recursive.UnLock() == 0 && recursive.UnLock() == 0);
/// @endcode
class UTIL_API CCmMutexThreadBase {
 public:
  CCmMutexThreadBase(const CCmMutexThreadBase&) = delete;
  CCmMutexThreadBase& operator=(const CCmMutexThreadBase&) = delete;

  /// Waits, without a time limit, until the calling thread owns the lock.
  /// @return 0; EDEADLK when the calling thread already owns a lock that is not recursive; EAGAIN when it has
  /// locked a recursive one too often.
  int Lock() { return pthread_mutex_lock(&m_mutex); }
  /// Releases the lock, once.
  /// @pre The calling thread owns the lock.
  /// @return 0; EPERM when the calling thread does not own it.
  int UnLock() { return pthread_mutex_unlock(&m_mutex); }

 protected:
  /// @param pthreadMutexType  a kind as pthread_mutexattr_settype() takes it
  explicit CCmMutexThreadBase(int pthreadMutexType);
  ~CCmMutexThreadBase();

 private:
  pthread_mutex_t m_mutex;
};

/// Not recursive: a second Lock() by the owner returns EDEADLK and leaves the lock as it was.
class UTIL_API CCmMutexThread : public CCmMutexThreadBase {
 public:
  /// Not locked.
  CCmMutexThread();
};

/// Recursive: its owner may lock it again, and unlocks it as often as it locked it.
class UTIL_API CCmMutexThreadRecursive : public CCmMutexThreadBase {
 public:
  /// Not locked.
  CCmMutexThreadRecursive();
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

namespace kalStore::internal {

/// A mutex that its owner may lock again. Works before any constructor runs and after every destructor has,
/// whichever standard library is used: it is initialised at compile time, and has nothing to destroy.
class RecursiveMutex {
 public:
  // It fails only when one thread locks it some four thousand million times.
  void lock() { pthread_mutex_lock(&m_mutex); }
  void unlock() { pthread_mutex_unlock(&m_mutex); }

 private:
  pthread_mutex_t m_mutex = PTHREAD_RECURSIVE_MUTEX_INITIALIZER_NP;
};

}  // namespace kalStore::internal

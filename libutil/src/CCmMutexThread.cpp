// SPDX-License-Identifier: Apache-2.0
#include "util/CCmMutexThread.h"

CCmMutexThreadBase::CCmMutexThreadBase(int pthreadMutexType) {
  pthread_mutexattr_t attributes;
  pthread_mutexattr_init(&attributes);
  pthread_mutexattr_settype(&attributes, pthreadMutexType);
  pthread_mutex_init(&m_mutex, &attributes);
  pthread_mutexattr_destroy(&attributes);
}

CCmMutexThreadBase::~CCmMutexThreadBase() {
  pthread_mutex_destroy(&m_mutex);
}

CCmMutexThread::CCmMutexThread() : CCmMutexThreadBase(PTHREAD_MUTEX_ERRORCHECK) {}

CCmMutexThreadRecursive::CCmMutexThreadRecursive() : CCmMutexThreadBase(PTHREAD_MUTEX_RECURSIVE) {}

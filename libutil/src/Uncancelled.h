// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <pthread.h>

namespace cm::internal {

/// Puts off the cancellation of the calling thread (pthread_cancel) until the end of the scope: the first
/// cancellation point after it takes effect. Waits and writes are such points.
class Uncancelled {
 public:
  Uncancelled() { pthread_setcancelstate(PTHREAD_CANCEL_DISABLE, &m_before); }
  ~Uncancelled() { pthread_setcancelstate(m_before, nullptr); }
  Uncancelled(const Uncancelled&) = delete;
  Uncancelled& operator=(const Uncancelled&) = delete;

 private:
  int m_before = PTHREAD_CANCEL_ENABLE;
};

}  // namespace cm::internal

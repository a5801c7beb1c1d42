// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace kalStore::internal {

/// The next removal from a store on this thread, while it lives, does not wait for deliveries in progress:
/// one of them waits for this thread, and the caller has shut the callback off. One at a time in each thread.
class UnwaitedRemoval {
 public:
  UnwaitedRemoval() { t_isNext = true; }
  ~UnwaitedRemoval() { t_isNext = false; }
  UnwaitedRemoval(const UnwaitedRemoval&) = delete;
  UnwaitedRemoval& operator=(const UnwaitedRemoval&) = delete;

  /// Whether this removal is the one. What it calls may remove as well, and waits as usual.
  static bool Take() { return std::exchange(t_isNext, false); }

 private:
  static inline thread_local bool t_isNext = false;
};

}  // namespace kalStore::internal

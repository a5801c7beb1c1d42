// SPDX-License-Identifier: Apache-2.0
#include "facade/GuardedCallback.h"

namespace kalStore::internal {

// A posted run, in the count of its callback and in the list of those of this thread, innermost first.
class GuardedCallback::PostedRun {
 public:
  explicit PostedRun(GuardedCallback& callback) : m_callback(callback), m_outer(t_innermost) {
    t_innermost = this;
    m_callback.m_postedRuns.fetch_add(1);
  }
  ~PostedRun() {
    m_callback.m_postedRuns.fetch_sub(1);
    t_innermost = m_outer;
  }
  PostedRun(const PostedRun&) = delete;
  PostedRun& operator=(const PostedRun&) = delete;

  static int CountOf(const GuardedCallback& callback) {
    int count = 0;
    for (const PostedRun* run = t_innermost; run != nullptr; run = run->m_outer) {
      if (&run->m_callback == &callback) ++count;
    }
    return count;
  }

 private:
  static inline thread_local const PostedRun* t_innermost = nullptr;

  GuardedCallback& m_callback;
  const PostedRun* const m_outer;
};

void GuardedCallback::Run(const KalConfigEvent& event) {
  if (m_delivery == Delivery::kByStore) {
    if (IsOpen()) (*m_fn)(event);
    return;
  }
  // Counted first, then asked, against Remove(), which closes first and then reads the count: one of the two
  // sees the other. Both are a store followed by a load of another variable, which takes sequential
  // consistency.
  const PostedRun running(*this);
  if (IsOpen()) (*m_fn)(event);
}

int GuardedCallback::RunsOnThisThread() const {
  return PostedRun::CountOf(*this);
}

void GuardedCallback::awaitPostedRuns(long startMs) const {
  if (m_delivery == Delivery::kByStore) return;
  const int own = RunsOnThisThread();
  const WaitClock& clock = CurrentWaitClock();
  while (m_postedRuns.load() > own && ElapsedMs(startMs, clock.nowMs()) < kRemovalCeilingMs)
    clock.sleepOneMs();
}

}  // namespace kalStore::internal

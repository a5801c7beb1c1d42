// SPDX-License-Identifier: Apache-2.0
#include "facade/GuardedCallback.h"

#include "util/ACmThread.h"

namespace kalStore::internal {
namespace {

// Names this thread in a member while it lives.
class Mark {
 public:
  explicit Mark(std::atomic<unsigned long>& threadId) : m_threadId(threadId) {
    m_threadId.store(GetThreadSelfId());
  }
  ~Mark() { m_threadId.store(0); }
  Mark(const Mark&) = delete;
  Mark& operator=(const Mark&) = delete;

 private:
  std::atomic<unsigned long>& m_threadId;
};

}  // namespace

void GuardedCallback::Run(const KalConfigEvent& event) {
  if (!m_isPosted) {
    if (m_state.load() == State::kOpen) m_fn(event);
    return;
  }
  // Marked first, then asked, against Remove(), which closes first and then reads the mark: one of the two
  // sees the other. Both are a store followed by a load of another variable, which takes sequential
  // consistency.
  const Mark running(m_postedThreadId);
  if (m_state.load() == State::kOpen) m_fn(event);
}

void GuardedCallback::awaitPostedRun(long deadlineMs) const {
  if (!m_isPosted) return;
  const unsigned long self = GetThreadSelfId();
  for (;;) {
    const unsigned long running = m_postedThreadId.load();
    if (running == 0 || running == self || CurrentWaitClock().nowMs() >= deadlineMs) return;
    CurrentWaitClock().sleepOneMs();
  }
}

}  // namespace kalStore::internal

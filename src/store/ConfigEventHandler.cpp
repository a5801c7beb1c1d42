// SPDX-License-Identifier: Apache-2.0
#include "tessel/ConfigEventHandler.h"

#include <optional>

#include "store/CSwitchThreadEvent.h"
#include "store/WaitClock.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

constexpr unsigned int kPostPriority = 128;
constexpr long kSlowMs = 100;

// Raises a handler's call level while it lives.
class CallLevel {
 public:
  explicit CallLevel(std::atomic<std::int32_t>& level)
      : m_level(level), m_value(level.fetch_add(1, std::memory_order_relaxed) + 1) {}
  ~CallLevel() { m_level.fetch_sub(1, std::memory_order_relaxed); }
  CallLevel(const CallLevel&) = delete;
  CallLevel& operator=(const CallLevel&) = delete;

  std::int32_t Value() const { return m_value; }

 private:
  std::atomic<std::int32_t>& m_level;
  const std::int32_t m_value;
};

// Runs a callback of the handler at a raised call level, and reports one that overlaps another or is slow.
template <class Callback>
void RunCallback(const char* label, ConfigEventHandler& handler, const KalConfigEvent& event,
                 Callback callback) {
  std::optional<long> startMs;  // Nobody reads how long a callback took unless level 1 is traced.
  {
    const CallLevel level(handler.m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, label,
                   ", level=" << level.Value() << ", " << event.m_name << ", "
                              << KalConfigGroup2GroupName(event.m_group) << This{&handler});
    }
    if (IsTraced(1)) startMs = CurrentWaitClock().nowMs();
    callback();
  }
  if (!startMs) return;
  const long costMs = CurrentWaitClock().nowMs() - *startMs;
  if (costMs > kSlowMs) {
    TESSEL_TRACE(1, label,
                 ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                      << ", cost=" << static_cast<unsigned long>(costMs) << "ms" << This{&handler});
  }
}

// Calls, posts or hands over, as the subscription asks for.
void Deliver(ConfigEventHandler& handler, const KalConfigEvent& event) {
  ACmThread* const thread = handler.m_pRunThread;
  if (thread == nullptr) {
    handler.m_fnNotify(event);
  } else if (ICmEventQueue* const queue = thread->GetEventQueue(); queue == nullptr) {
    TESSEL_TRACE(0, "kalStore::ConfigEventHandler::Notify",
                 ", m_pRunThread=" << static_cast<void*>(thread) << ", EventQueue == NULL" << This{&handler});
  } else if (handler.m_bAsync) {
    queue->PostEvent(new CSwitchThreadEvent(event, handler.m_fnNotify), kPostPriority, 0);
  } else if (thread->GetThreadId() == GetThreadSelfId()) {
    handler.m_fnNotify(event);
  } else {
    queue->SendEvent(new CSwitchThreadEvent(event, handler.m_fnNotify), 0);
  }
}

}  // namespace

bool ConfigEventHandler::Notify(const KalConfigEvent& event) {
  if (!m_fnNotify) return false;
  RunCallback("kalStore::ConfigEventHandler::Notify", *this, event, [&] { Deliver(*this, event); });
  return true;
}

ConfigValue ConfigEventHandler::Invoke(const KalConfigEvent& event) {
  ConfigValue value;
  if (!m_fnInvoke) return value;
  RunCallback("kalStore::ConfigEventHandler::Invoke", *this, event, [&] { value = m_fnInvoke(event); });
  return value;
}

}  // namespace kalStore

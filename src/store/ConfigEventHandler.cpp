#include "tessel/ConfigEventHandler.h"

#include <optional>

#include "store/CSwitchThreadEvent.h"
#include "store/WaitClock.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

constexpr unsigned int kPostPriority = 128;

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

// Measures a callback, unless nobody would be told that it was slow.
class SlowCallback {
 public:
  bool IsSlow() {
    if (m_isTraced) m_costMs = CurrentWaitClock().nowMs() - m_startMs;
    return m_costMs > kSlowMs;
  }
  unsigned long CostMs() const { return static_cast<unsigned long>(m_costMs); }

 private:
  static constexpr long kSlowMs = 100;

  const bool m_isTraced = IsTraced(1);
  const long m_startMs = m_isTraced ? CurrentWaitClock().nowMs() : 0;
  long m_costMs = 0;
};

}  // namespace

bool ConfigEventHandler::Notify(const KalConfigEvent& event) {
  if (!m_fnNotify) return false;
  std::optional<SlowCallback> run;
  {
    const CallLevel level(m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, "kalStore::ConfigEventHandler::Notify",
                   ", level=" << level.Value() << ", " << event.m_name << ", "
                              << KalConfigGroup2GroupName(event.m_group) << This{this});
    }
    run.emplace();
    if (m_pRunThread == nullptr) {
      m_fnNotify(event);
    } else if (ICmEventQueue* queue = m_pRunThread->GetEventQueue(); queue == nullptr) {
      TESSEL_TRACE(
          0, "kalStore::ConfigEventHandler::Notify",
          ", m_pRunThread=" << static_cast<void*>(m_pRunThread) << ", EventQueue == NULL" << This{this});
    } else if (m_bAsync) {
      queue->PostEvent(new CSwitchThreadEvent(event, m_fnNotify), kPostPriority, 0);
    } else if (m_pRunThread->GetThreadId() == GetThreadSelfId()) {
      m_fnNotify(event);
    } else {
      queue->SendEvent(new CSwitchThreadEvent(event, m_fnNotify), 0);
    }
  }
  if (run->IsSlow()) {
    TESSEL_TRACE(1, "kalStore::ConfigEventHandler::Notify",
                 ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                      << ", cost=" << run->CostMs() << "ms" << This{this});
  }
  return true;
}

ConfigValue ConfigEventHandler::Invoke(const KalConfigEvent& event) {
  if (!m_fnInvoke) return {};
  ConfigValue value;
  std::optional<SlowCallback> run;
  {
    const CallLevel level(m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, "kalStore::ConfigEventHandler::Invoke",
                   ", level=" << level.Value() << ", " << event.m_name << ", "
                              << KalConfigGroup2GroupName(event.m_group) << This{this});
    }
    run.emplace();
    value = m_fnInvoke(event);
  }
  if (run->IsSlow()) {
    TESSEL_TRACE(1, "kalStore::ConfigEventHandler::Invoke",
                 ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                      << ", cost=" << run->CostMs() << "ms" << This{this});
  }
  return value;
}

}  // namespace kalStore

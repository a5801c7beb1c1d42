#include "tessel/ConfigEventHandler.h"

#include "CSwitchThreadEvent.h"
#include "Milliseconds.h"
#include "TraceLine.h"

namespace kalStore {
namespace {

constexpr long kSlowCallbackMs = 100;
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

}  // namespace

bool ConfigEventHandler::Notify(const KalConfigEvent& event) {
  if (!m_fnNotify) return false;
  long startMs = 0;
  {
    const CallLevel level(m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, ", level=" << level.Value() << ", " << event.m_name << ", "
                                 << KalConfigGroup2GroupName(event.m_group) << This{this});
    }
    startMs = NowMs();
    if (m_pRunThread == nullptr) {
      m_fnNotify(event);
    } else if (ICmEventQueue* queue = m_pRunThread->GetEventQueue(); queue == nullptr) {
      TESSEL_TRACE(
          0, ", m_pRunThread=" << static_cast<void*>(m_pRunThread) << ", EventQueue == NULL" << This{this});
    } else if (m_bAsync) {
      queue->PostEvent(new CSwitchThreadEvent(event, m_fnNotify), kPostPriority, 0);
    } else if (m_pRunThread->GetThreadId() == GetThreadSelfId()) {
      m_fnNotify(event);
    } else {
      queue->SendEvent(new CSwitchThreadEvent(event, m_fnNotify), 0);
    }
  }
  if (const long costMs = NowMs() - startMs; costMs > kSlowCallbackMs) {
    TESSEL_TRACE(1, ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                         << ", cost=" << static_cast<unsigned long>(costMs) << "ms" << This{this});
  }
  return true;
}

ConfigValue ConfigEventHandler::Invoke(const KalConfigEvent& event) {
  if (!m_fnInvoke) return {};
  ConfigValue value;
  long startMs = 0;
  {
    const CallLevel level(m_nCallLevel);
    if (level.Value() > 1) {
      TESSEL_TRACE(1, ", level=" << level.Value() << ", " << event.m_name << ", "
                                 << KalConfigGroup2GroupName(event.m_group) << This{this});
    }
    startMs = NowMs();
    value = m_fnInvoke(event);
  }
  if (const long costMs = NowMs() - startMs; costMs > kSlowCallbackMs) {
    TESSEL_TRACE(1, ", " << event.m_name << ", " << KalConfigGroup2GroupName(event.m_group)
                         << ", cost=" << static_cast<unsigned long>(costMs) << "ms" << This{this});
  }
  return value;
}

}  // namespace kalStore

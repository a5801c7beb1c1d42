// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigHelper.h"

#include "facade/Check.h"
#include "facade/KalConfigObserverHelper.h"
#include "journal/JournalSource.h"
#include "store/SessionGroup.h"
#include "tessel/KalConfigRegistry.h"
#include "trace/ForkedChild.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

KalConfigHelper::KalConfigHelper()
    : m_pConfigLock(std::make_unique<detail::Mutex<std::recursive_mutex>>()),
      m_pObserverHelper(std::make_unique<KalConfigObserverHelper>()) {}

// What throws here finds a constructed object, so that the destructor releases the store.
KalConfigHelper::KalConfigHelper(std::uint32_t callId) : KalConfigHelper() {
  const CallerScope caller(__builtin_return_address(0));
  if (callId != kNoCallId) createKalConfig(callId);
}

KalConfigHelper::~KalConfigHelper() {
  if (IsForkedChild()) {
    static_cast<void>(m_pObserverHelper.release());  // Its end would take locks.
    return;
  }
  const CallerScope caller(__builtin_return_address(0));
  // Callbacks that run to their end meanwhile still find the store here.
  IKalConfig* const pStore = m_pIKalConfig;
  try {
    if (pStore != nullptr) m_pObserverHelper->ForgetStore();
  } catch (...) {
    // The rest is released all the same.
  }
  m_pObserverHelper.reset();
  try {
    if (pStore != nullptr) ReleaseKalConfig(pStore);
  } catch (...) {
    // The registry's lock cannot be had: the reference stays.
  }
}

std::int32_t KalConfigHelper::InitKalConfig(std::uint32_t callId, kal::KalSessionType sessionType) {
  const CallerScope caller(__builtin_return_address(0));
  const std::int32_t callResult = SetCallId(callId);
  const std::int32_t sessionResult = SetKalSessionType(sessionType);
  return callResult == kResultOk && sessionResult == kResultOk ? kResultOk : kResultNotFound;
}

std::int32_t KalConfigHelper::SetCallId(std::uint32_t callId) {
  const CallerScope caller(__builtin_return_address(0));
  if (!Check(m_pConfigLock != nullptr, "m_pConfigLock != nullptr", 1246)) return kResultNotFound;
  {
    const detail::Lock lock(*m_pConfigLock);
    if (m_callId == kNoCallId && callId != kNoCallId) return createKalConfig(callId);
    if (m_callId == callId && m_pIKalConfig != nullptr) return kResultOk;
  }
  TESSEL_TRACE(0, "kalStore::KalConfigHelper::SetCallId",
               ", m_callId=" << m_callId.load() << ", callId=" << callId << This{this});
  return kResultNotFound;
}

std::uint32_t KalConfigHelper::GetCallId() const {
  return m_callId;
}

std::int32_t KalConfigHelper::createKalConfig(std::uint32_t callId) {
  if (!Check(m_pConfigLock != nullptr, "m_pConfigLock != nullptr", 1549)) return kResultNotFound;
  const detail::Lock lock(*m_pConfigLock);
  if (m_pIKalConfig != nullptr || callId == kNoCallId) return kResultNotFound;
  if (m_pObserverHelper == nullptr) return kResultNotFound;  // The facade is ending.
  // Set before the store is made, which traces: a trace sink that calls SetCallId() does not bind a second
  // time.
  m_callId = callId;
  IKalConfig* pStore = nullptr;
  try {
    CreateKalConfig(callId, &pStore);
  } catch (...) {
    m_callId = kNoCallId;
    throw;
  }
  if (pStore == nullptr) {
    m_callId = kNoCallId;
    return kResultNotFound;
  }
  // Before anyone sets through this facade, and before the callbacks, which may read a live value.
  m_pObserverHelper->Live().SetStore(*pStore);
  m_pIKalConfig = pStore;
  m_pObserverHelper->SetStore(*pStore);
  return kResultOk;
}

std::int32_t KalConfigHelper::SetKalSessionType(kal::KalSessionType sessionType) {
  const KalConfigGroup group = GroupOfSessionType(sessionType);
  if (group != KAL_CONFIG_GROUP_DEFAULT && (SetDefaultGroup(group) == kResultOk || m_defaultGroup == group)) {
    return kResultOk;
  }
  TESSEL_TRACE(0, "kalStore::KalConfigHelper::SetKalSessionType",
               ", " << KalConfigGroup2GroupName(m_defaultGroup)
                    << ", sessionType=" << static_cast<int>(sessionType) << This{this});
  return kResultNotFound;
}

kal::KalSessionType KalConfigHelper::GetKalSessionType() const {
  return SessionTypeOfGroup(m_defaultGroup);
}

std::int32_t KalConfigHelper::SetDefaultGroup(KalConfigGroup group) {
  // Without the helper, the facade is ending.
  const bool isSet = IsConfigGroup(group) && m_pObserverHelper != nullptr &&
                     m_pObserverHelper->Live().SetDefaultGroup(m_defaultGroup, group);
  return isSet ? kResultOk : kResultNotFound;
}

void KalConfigHelper::reportNoGroup(const char* label, const char* failure) const {
  TESSEL_TRACE(0, label, failure << Cid{m_callId} << This{this});
}

}  // namespace kalStore

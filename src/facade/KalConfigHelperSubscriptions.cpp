#include <utility>

#include "facade/KalConfigObserverHelper.h"
#include "tessel/KalConfigHelper.h"
#include "trace/Assertion.h"

// None of these needs the store: what is asked for before there is one is recorded.

namespace kalStore {
namespace {

constexpr const char* kNoGroup = "Error KalConfigGroup";
constexpr const char* kNoGroupBlank = " Error KalConfigGroup";  // Registrations trace it so.

}  // namespace

SubscribeId_t KalConfigHelper::SubscribeConfig(const char* szConfigName, fnConfigChangedCallBack cb,
                                               KalConfigGroup group, ACmThread* thread, bool async) {
  KAL_ASSERT_AT("KalConfig", __LINE__, (m_pObserverHelper != NULL) && (szConfigName != NULL));
  if (m_pObserverHelper == nullptr || szConfigName == nullptr) return 0;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::SubscribeConfig", kNoGroupBlank)) return 0;
  return m_pObserverHelper->SubscribeConfig(group, szConfigName, std::move(cb), thread, async);
}

SubscribeId_t KalConfigHelper::BindConfig(const char* szConfigName, fnConfigInvokeCallBack cb,
                                          KalConfigGroup group) {
  KAL_ASSERT_AT("KalConfig", __LINE__, (m_pObserverHelper != NULL) && (szConfigName != NULL));
  if (m_pObserverHelper == nullptr || szConfigName == nullptr) return 0;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::BindConfig", kNoGroupBlank)) return 0;
  return m_pObserverHelper->BindConfig(group, szConfigName, std::move(cb));
}

std::int32_t KalConfigHelper::UnsubscribeConfig(SubscribeId_t id) {
  KAL_ASSERT_AT("KalConfig", __LINE__, m_pObserverHelper != NULL);
  if (m_pObserverHelper == nullptr) return kResultBadArgument;
  return m_pObserverHelper->UnsubscribeConfig(id);
}

std::int32_t KalConfigHelper::UnsubscribeConfig(const char* szConfigName, KalConfigGroup group) {
  KAL_ASSERT_AT("KalConfig", __LINE__, m_pObserverHelper != NULL);
  if (m_pObserverHelper == nullptr) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::UnsubscribeConfig", kNoGroup)) return kResultNotFound;
  return m_pObserverHelper->UnsubscribeConfig(szConfigName, group);
}

}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "facade/Check.h"
#include "facade/KalConfigObserverHelper.h"
#include "journal/JournalSource.h"
#include "tessel/KalConfigHelper.h"

// None of these needs the store: what is asked for before there is one is recorded. A callback that is
// refused stays with the public operation, and so ends after its CallerScope: what it captured is the
// component's own.

namespace kalStore {

using namespace internal;

SubscribeId_t KalConfigHelper::SubscribeConfig(const char* szConfigName, fnConfigChangedCallBack cb,
                                               KalConfigGroup group, ACmThread* thread, bool async) {
  const CallerScope caller(__builtin_return_address(0));
  return subscribe(szConfigName, std::move(cb), group, thread, async);
}

SubscribeId_t KalConfigHelper::subscribe(const char* szConfigName, fnConfigChangedCallBack&& cb,
                                         KalConfigGroup group, ACmThread* thread, bool async) {
  const auto record = makeRecord(szConfigName, std::move(cb), group, thread, async);
  return record == nullptr ? 0 : m_pObserverHelper->File(record).value_or(0);
}

std::shared_ptr<ObserverRecord> KalConfigHelper::makeRecord(const char* szConfigName,
                                                            fnConfigChangedCallBack&& cb,
                                                            KalConfigGroup group, ACmThread* thread,
                                                            bool async) {
  if (!Check(m_pObserverHelper != nullptr && szConfigName != nullptr,
             "(m_pObserverHelper != NULL) && (szConfigName != NULL)")) {
    return nullptr;
  }
  if (!resolveGroup(group, "kalStore::KalConfigHelper::SubscribeConfig", kNoGroupAfterSpace)) return nullptr;
  return m_pObserverHelper->MakeRecord(group, szConfigName, std::move(cb), thread, async);
}

SubscribeId_t KalConfigHelper::BindConfig(const char* szConfigName, fnConfigInvokeCallBack cb,
                                          KalConfigGroup group) {
  const CallerScope caller(__builtin_return_address(0));
  if (!Check(m_pObserverHelper != nullptr && szConfigName != nullptr,
             "(m_pObserverHelper != NULL) && (szConfigName != NULL)")) {
    return 0;
  }
  if (!resolveGroup(group, "kalStore::KalConfigHelper::BindConfig", kNoGroupAfterSpace)) return 0;
  return m_pObserverHelper->BindConfig(group, szConfigName, std::move(cb));
}

std::int32_t KalConfigHelper::UnsubscribeConfig(SubscribeId_t id) {
  const CallerScope caller(__builtin_return_address(0));
  if (!Check(m_pObserverHelper != nullptr, "m_pObserverHelper != NULL")) return kResultBadArgument;
  return m_pObserverHelper->UnsubscribeConfig(id);
}

std::int32_t KalConfigHelper::UnsubscribeConfig(const char* szConfigName, KalConfigGroup group) {
  const CallerScope caller(__builtin_return_address(0));
  if (!Check(m_pObserverHelper != nullptr, "m_pObserverHelper != NULL")) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::UnsubscribeConfig", kNoGroup)) return kResultNotFound;
  return m_pObserverHelper->UnsubscribeConfig(szConfigName, group);
}

}  // namespace kalStore

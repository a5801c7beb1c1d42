// SPDX-License-Identifier: Apache-2.0
#include <utility>

#include "facade/Check.h"
#include "facade/KalConfigObserverHelper.h"
#include "journal/JournalSource.h"
#include "store/SessionGroup.h"
#include "tessel/KalConfigHelper.h"

// Each operation reads the store once: what was checked is what is used, also while another thread binds.
// Reads and writes by name check and resolve alike, and then call the store's operation.

namespace kalStore {

using namespace internal;

namespace {

bool CheckNameAndStore(const char* szConfigName, const IKalConfig* pStore,
                       unsigned int line = __builtin_LINE()) {
  return Check(szConfigName != nullptr && pStore != nullptr,
               "(szConfigName != NULL) && (m_pIKalConfig != NULL)", line);
}

bool CheckStore(const IKalConfig* pStore, unsigned int line = __builtin_LINE()) {
  return Check(pStore != nullptr, "(m_pIKalConfig != NULL)", line);
}

}  // namespace

std::int32_t KalConfigHelper::SetKalConfig(const char* szConfigName, ConfigData value, KalConfigGroup group,
                                           bool bForceNotify, bool bTransient) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::SetKalConfig", kNoGroup)) return kResultNotFound;
  return CallForCaller(
      [&] { return pStore->SetKalConfig(group, szConfigName, std::move(value), bForceNotify, bTransient); });
}

std::int32_t KalConfigHelper::SetKalConfig(kal::KalSessionType sessionType, const char* szConfigName,
                                           ConfigData value, bool bForceNotify, bool bTransient) {
  return CallForCaller([&] {
    return SetKalConfig(szConfigName, std::move(value), GroupOfSessionType(sessionType), bForceNotify,
                        bTransient);
  });
}

std::int32_t KalConfigHelper::GetKalConfig(const char* szConfigName, ConfigData& value,
                                           KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::GetKalConfig", kNoGroup)) return kResultNotFound;
  return pStore->GetKalConfig(group, szConfigName, value);
}

ConfigData KalConfigHelper::GetKalConfig(const char* szConfigName, KalConfigGroup group) {
  ConfigData value;
  GetKalConfig(szConfigName, value, group);
  return value;  // A failed read leaves it empty.
}

std::int32_t KalConfigHelper::GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName,
                                           ConfigData& value) {
  return GetKalConfig(szConfigName, value, GroupOfSessionType(sessionType));
}

ConfigData KalConfigHelper::GetKalConfig(kal::KalSessionType sessionType, const char* szConfigName) {
  return GetKalConfig(szConfigName, GroupOfSessionType(sessionType));
}

bool KalConfigHelper::HaveKalConfig(const char* szConfigName, KalConfigGroup group) {
  ConfigData scratch;
  return GetKalConfig(szConfigName, scratch, group) == kResultOk;
}

inline std::int32_t KalConfigHelper::getDynamicConfig(const char* szConfigName, ConfigData& value,
                                                      KalConfigGroup group, ConfigData&& defaultValue,
                                                      const void* caller) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::GetDynamicConfig", kNoGroup)) return kResultNotFound;
  return CallFor(
      caller, [&] { return pStore->GetDynamicConfig(group, szConfigName, value, std::move(defaultValue)); });
}

std::int32_t KalConfigHelper::GetDynamicConfig(const char* szConfigName, ConfigData& value,
                                               KalConfigGroup group, ConfigData defaultValue) {
  return getDynamicConfig(szConfigName, value, group, std::move(defaultValue), __builtin_return_address(0));
}

ConfigData KalConfigHelper::GetDynamicConfig(const char* szConfigName, KalConfigGroup group,
                                             ConfigData defaultValue) {
  ConfigData value;
  getDynamicConfig(szConfigName, value, group, std::move(defaultValue), __builtin_return_address(0));
  return value;  // A failed read leaves it empty.
}

std::int32_t KalConfigHelper::RemoveKalConfig(const char* szConfigName, KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::RemoveKalConfig", kNoGroup)) return kResultNotFound;
  return CallForCaller([&] { return pStore->RemoveKalConfig(group, szConfigName); });
}

std::int32_t KalConfigHelper::RemoveKalConfigByGroup(KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckStore(pStore)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::RemoveKalConfigByGroup", kNoGroup))
    return kResultNotFound;
  return CallForCaller([&] { return pStore->RemoveKalConfigByGroup(group); });
}

const char* KalConfigHelper::DumpKalConfigs(ConfigMultGroup_t groups) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckStore(pStore)) return nullptr;
  return pStore->DumpKalConfigs(groups);
}

std::int32_t KalConfigHelper::ApplyKalConfigs(const char* szJsonConfig) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!Check(szJsonConfig != nullptr && pStore != nullptr,
             "(szJsonConfig != NULL) && (m_pIKalConfig != NULL)")) {
    return kResultBadArgument;
  }
  return CallForCaller([&] { return pStore->ApplyKalConfigs(szJsonConfig); });
}

}  // namespace kalStore

#include <utility>

#include "facade/KalConfigObserverHelper.h"
#include "store/SessionGroup.h"
#include "tessel/KalConfigHelper.h"
#include "trace/Assertion.h"

// Each operation reads the store once: what was checked is what is used, also while another thread binds.
// Reads and writes by name check and resolve alike, and then call the store's operation.

namespace kalStore {

using namespace internal;

namespace {

constexpr const char* kNoGroup = "Error KalConfigGroup";

// Reports an argument check of the facade; readers of traces know it under this source name.
bool Check(bool holds, int line, const char* condition) {
  if (!holds) ReportAssertion("KalConfig", line, condition);
  return holds;
}

bool CheckNameAndStore(const char* szConfigName, const IKalConfig* pStore, int line) {
  return Check(szConfigName != nullptr && pStore != nullptr, line,
               "(szConfigName != NULL) && (m_pIKalConfig != NULL)");
}

bool CheckStore(const IKalConfig* pStore, int line) {
  return Check(pStore != nullptr, line, "(m_pIKalConfig != NULL)");
}

}  // namespace

std::int32_t KalConfigHelper::SetKalConfig(const char* szConfigName, ConfigData value, KalConfigGroup group,
                                           bool bForceNotify, bool bTransient) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore, __LINE__)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::SetKalConfig", kNoGroup)) return kResultNotFound;
  return pStore->SetKalConfig(group, szConfigName, std::move(value), bForceNotify, bTransient);
}

std::int32_t KalConfigHelper::SetKalConfig(kal::KalSessionType sessionType, const char* szConfigName,
                                           ConfigData value, bool bForceNotify, bool bTransient) {
  return SetKalConfig(szConfigName, std::move(value), GroupOfSessionType(sessionType), bForceNotify,
                      bTransient);
}

std::int32_t KalConfigHelper::GetKalConfig(const char* szConfigName, ConfigData& value,
                                           KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore, __LINE__)) return kResultBadArgument;
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

std::int32_t KalConfigHelper::GetDynamicConfig(const char* szConfigName, ConfigData& value,
                                               KalConfigGroup group, ConfigData defaultValue) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore, __LINE__)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::GetDynamicConfig", kNoGroup)) return kResultNotFound;
  return pStore->GetDynamicConfig(group, szConfigName, value, std::move(defaultValue));
}

ConfigData KalConfigHelper::GetDynamicConfig(const char* szConfigName, KalConfigGroup group,
                                             ConfigData defaultValue) {
  ConfigData value;
  GetDynamicConfig(szConfigName, value, group, std::move(defaultValue));
  return value;  // A failed read leaves it empty.
}

std::int32_t KalConfigHelper::RemoveKalConfig(const char* szConfigName, KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckNameAndStore(szConfigName, pStore, __LINE__)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::RemoveKalConfig", kNoGroup)) return kResultNotFound;
  return pStore->RemoveKalConfig(group, szConfigName);
}

std::int32_t KalConfigHelper::RemoveKalConfigByGroup(KalConfigGroup group) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckStore(pStore, __LINE__)) return kResultBadArgument;
  if (!resolveGroup(group, "kalStore::KalConfigHelper::RemoveKalConfigByGroup", kNoGroup))
    return kResultNotFound;
  return pStore->RemoveKalConfigByGroup(group);
}

const char* KalConfigHelper::DumpKalConfigs(ConfigMultGroup_t groups) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!CheckStore(pStore, __LINE__)) return nullptr;
  return pStore->DumpKalConfigs(groups);
}

std::int32_t KalConfigHelper::ApplyKalConfigs(const char* szJsonConfig) {
  IKalConfig* const pStore = m_pIKalConfig;
  if (!Check(szJsonConfig != nullptr && pStore != nullptr, __LINE__,
             "(szJsonConfig != NULL) && (m_pIKalConfig != NULL)")) {
    return kResultBadArgument;
  }
  return pStore->ApplyKalConfigs(szJsonConfig);
}

}  // namespace kalStore

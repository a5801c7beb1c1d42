// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <string>
#include <utility>
#include <vector>

#include "support/TraceLog.h"
#include "tessel/inspect.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"

namespace kalStore {

constexpr std::uint32_t kInspected = 4712;  ///< the call of the tests

/// Looks at everything that there is. Returns how many things it found.
inline std::size_t LookAtAll() {
  std::size_t found = 0;
  for (const InspectedCall& call : InspectCalls()) {
    found += 1 + InspectSettings(call.callId).size() + InspectSubscriptions(call.callId).size();
  }
  for (const InspectedStatistics& object : InspectStatistics()) {
    st_KalVideoTxBlock sent;
    InspectedAudio audio;
    const bool isVideo = InspectVideo(object.type, object.callId, sent) == kResultOk;
    const bool isAudio = InspectAudio(object.type, object.callId, audio) == kResultOk;
    if (isVideo || isAudio) ++found;
  }
  return found;
}

/// The references of a call's store; 0 without one.
inline std::uint32_t ReferencesOf(std::uint32_t callId) {
  for (const InspectedCall& call : InspectCalls()) {
    if (call.callId == callId) return call.references;
  }
  return 0;
}

/// "group name=value" of each setting.
inline std::vector<std::string> SettingsOf(std::uint32_t callId) {
  std::vector<std::string> settings;
  for (const InspectedSetting& setting : InspectSettings(callId)) {
    settings.push_back(KalConfigGroup2GroupName(setting.group) + ' ' + setting.name + '=' +
                       setting.value.ToString());
  }
  return settings;
}

/// "id group name" of each subscription, and "binding" behind it.
inline std::vector<std::string> SubscriptionsOf(std::uint32_t callId) {
  std::vector<std::string> subscriptions;
  for (const InspectedSubscription& found : InspectSubscriptions(callId)) {
    subscriptions.push_back(std::to_string(found.id) + ' ' + KalConfigGroup2GroupName(found.group) + ' ' +
                            found.name + (found.isBinding ? " binding" : ""));
  }
  return subscriptions;
}

/// A call with a store.
class InspectTest : public ::testing::Test {
 protected:
  CallStore m_call{kInspected, CallStore::kEndsCall};
  IKalConfig& m_store = *m_call;

  void set(KalConfigGroup group, const char* name, ConfigData value) {
    m_store.SetKalConfig(group, name, std::move(value), false, false);
  }
};

}  // namespace kalStore

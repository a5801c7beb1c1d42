// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gmock/gmock.h>

#include <condition_variable>
#include <cstdio>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "support/Gate.h"
#include "support/TraceLog.h"
#include "tessel/KalConfig.h"
#include "tessel/post.h"

namespace kalStore {

/// An address as trace lines print it.
inline std::string HexOf(const void* address) {
  char text[32];
  std::snprintf(text, sizeof text, "%lx", reinterpret_cast<unsigned long>(address));
  return text;
}

inline std::string ThisText(const void* object) {
  return " [this=0x" + HexOf(object) + "]";
}

/// What callbacks were notified, and on which threads. Threads: any.
class Recorder {
 public:
  struct Notification {
    KalConfigEvent event;
    unsigned long threadId;
  };

  fnConfigChangedCallBack Callback() {
    return [this](const KalConfigEvent& event) { Add(event); };
  }

  void Add(const KalConfigEvent& event) {
    std::lock_guard lock(m_mutex);
    m_notified.push_back({event, GetThreadSelfId()});
    m_changed.notify_all();
  }

  std::size_t Count() const {
    std::lock_guard lock(m_mutex);
    return m_notified.size();
  }
  Notification At(std::size_t index) const {
    std::lock_guard lock(m_mutex);
    return m_notified.at(index);
  }
  /// The new values in the order notified.
  std::vector<std::string> Values() const {
    std::lock_guard lock(m_mutex);
    std::vector<std::string> values;
    for (const Notification& notified : m_notified) values.emplace_back(notified.event.m_newValue.ToCstr());
    return values;
  }
  void WaitFor(std::size_t count) const {
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [&] { return m_notified.size() >= count; });
  }

 private:
  mutable std::mutex m_mutex;
  mutable std::condition_variable m_changed;
  std::vector<Notification> m_notified;
};

class StoreTest : public ::testing::Test {
 protected:
  static constexpr KalConfigGroup kAudio = KAL_CONFIG_GROUP_AUDIO;
  static constexpr KalConfigGroup kVideo = KAL_CONFIG_GROUP_VIDEO;

  static KalConfigGroup Group(int value) { return static_cast<KalConfigGroup>(value); }
  /// Groups that no store has.
  static std::vector<KalConfigGroup> NoGroups() {
    return {Group(13), Group(14),  Group(1000),           Group(0x7FFFFFFF),
            Group(-1), Group(-13), Group(-2147483647 - 1)};
  }

  std::int32_t Set(const char* name, ConfigData value, bool force = false, bool transient = false) {
    return m_store.SetKalConfig(kAudio, name, std::move(value), force, transient);
  }
  std::string Get(const char* name) { return Get(kAudio, name); }
  /// The stored string, or "(none)".
  std::string Get(KalConfigGroup group, const char* name) {
    ConfigData value;
    return m_store.GetKalConfig(group, name, value) == kResultOk ? value.ToCstr() : "(none)";
  }
  SubscribeId_t Subscribe(const char* name, fnConfigChangedCallBack fn, ACmThread* thread = nullptr,
                          bool async = false) {
    return m_store.SubscribeConfig(kAudio, name, std::move(fn), thread, async);
  }
  SubscribeId_t Bind(const char* name, fnConfigInvokeCallBack fn) {
    return m_store.BindConfig(kAudio, name, std::move(fn));
  }
  /// How many subscriptions and bindings the store counts, as its trace lines say.
  std::string TotalObservers() {
    TraceLog log(2);
    const SubscribeId_t probe = m_store.BindConfig(KAL_CONFIG_GROUP_UNIT_TEST, "probe",
                                                   [](const KalConfigEvent&) { return ConfigValue(); });
    m_store.UnsubscribeConfig(probe);
    const std::string line = log.Matching("bindConfig, probe, ").at(0);
    const std::string key = "m_TotalObservers=";
    const std::size_t start = line.find(key) + key.size();
    return line.substr(start, line.find(' ', start) - start);
  }
  /// What ends the lines of the store's members.
  std::string Suffix() const { return " [cid=5]" + ThisText(&m_store); }

  KalConfig m_store{5};
};

}  // namespace kalStore

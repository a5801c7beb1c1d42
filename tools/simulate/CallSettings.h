// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <utility>
#include <vector>

#include "SettingsDocument.h"
#include "Way.h"
#include "simulate/Ledger.h"
#include "simulate/Recorder.h"
#include "tessel/ConfigKey.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/KalFeatureToggleID.h"
#include "tessel/TypedValue.h"
#include "util/ACmThread.h"

namespace simulate {

/// What a component holds of its call's settings: a facade of its own, with everything that goes through it
/// entered in the call's books.
///
/// Threads: subscribe and bind, then Join(), by one owner; values by any thread afterwards. Callbacks run on
/// the setter's thread (kDirect) or on the component's. Lifetime: the thread and the ledger must outlive it.
/// A component has it as its last member, so that no callback uses a member that is gone.
class CallSettings {
 public:
  /// Without a thread there are only direct subscriptions.
  CallSettings(Ledger& ledger, Recorder& recorder, ACmThread* thread = nullptr)
      : m_ledger(ledger), m_recorder(recorder), m_thread(thread) {}
  CallSettings(const CallSettings&) = delete;
  CallSettings& operator=(const CallSettings&) = delete;

  /// Calls `react` with each change: the value, or the key's default where the string is no T.
  template <kalStore::ConfigType T>
  void Subscribe(const kalStore::ConfigKey<T>& key, Way way, std::function<void(const T&)> react) {
    subscribe({key.Group(), key.Name()}, way,
              [react = std::move(react), fallback = key.Default()](const ConfigData& value) {
                react(kalStore::ReadAs<T>(value).value_or(fallback));
              });
  }
  /// Has the value, or the key's default, kept in `value`, which must outlive this object.
  template <kalStore::ConfigType T>
  void Follow(const kalStore::ConfigKey<T>& key, Way way, std::atomic<T>& value) {
    Subscribe<T>(key, way, [&value](const T& now) { value = now; });
  }
  /// Has `compute` asked for the value whenever it is read with ReadComputed().
  void Bind(const kalStore::ConfigKey<double>& key, std::function<double()> compute);

  /// Binds the facade to the call; the subscriptions are made now.
  void Join(std::uint32_t callId);

  template <kalStore::ConfigType T>
  T Read(const kalStore::ConfigKey<T>& key) {
    ++m_recorder.reads;
    return key.Get(m_facade);
  }
  bool IsOn(kalStore::KalFeatureToggleID toggle) {
    ++m_recorder.reads;
    return m_facade.IsFeatureToggleDefaultOn(toggle);
  }
  double ReadComputed(const kalStore::ConfigKey<double>& key);
  template <kalStore::ConfigType T>
  void Set(const kalStore::ConfigKey<T>& key, T value) {
    set({key.Group(), key.Name()}, ConfigData(std::move(value)));
  }
  void Apply(const SettingsDocument& document);

 private:
  struct Subscription {
    SettingKey key;
    Subscriber& subscriber;
  };

  void subscribe(SettingKey key, Way way, std::function<void(const ConfigData&)> react);
  void set(const SettingKey& key, ConfigData value);

  Ledger& m_ledger;
  Recorder& m_recorder;
  ACmThread* const m_thread;
  std::vector<Subscription> m_subscriptions;
  kalStore::KalConfigHelper m_facade;
};

}  // namespace simulate

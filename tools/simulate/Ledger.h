// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "Way.h"
#include "simulate/Recorder.h"
#include "simulate/Subscriber.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/locking.h"

namespace simulate {

/// A setting's place in the store of a call.
using SettingKey = std::pair<kalStore::KalConfigGroup, std::string>;

/// The books of one call: who subscribes to each of its settings, and which deliveries are due.
///
/// Threads: Add() before anything is set; Settings() and Missing() after; the rest from any thread.
class Ledger {
 public:
  struct Setting {
    std::deque<Subscriber> subscribers;
    std::uint64_t notifiedChanges = 0;  ///< Changes that the subscribers are notified of.
  };

  explicit Ledger(Recorder& recorder) : m_recorder(recorder) {}

  /// A new subscription, which stays as long as the ledger.
  Subscriber& Add(const SettingKey& key, Way way);

  /// Held by each set, and while a document is applied: what it changes is known beforehand unless another
  /// thread sets meanwhile. So callbacks make no sets.
  kalStore::detail::Mutex<std::mutex> sets;

  /// A set is about to be made. Returns its number, for Keep() or Withdraw().
  std::uint64_t Announce(const SettingKey& key, const ConfigData& value);
  /// The set has changed the setting.
  void Keep(const SettingKey& key);
  /// The set has changed nothing.
  void Withdraw(const SettingKey& key, std::uint64_t set);

  // No lock: nothing is set any more.
  const std::map<SettingKey, Setting>& Settings() const TESSEL_LOCKING(no_thread_safety_analysis) {
    return m_settings;
  }
  /// Deliveries that are expected and have not arrived.
  std::size_t Missing() const;

 private:
  Recorder& m_recorder;
  mutable kalStore::detail::Mutex<std::mutex> m_mutex;
  // Subscribers are safe by themselves.
  std::map<SettingKey, Setting> m_settings TESSEL_LOCKING(guarded_by(m_mutex));
  std::uint64_t m_lastSet TESSEL_LOCKING(guarded_by(m_mutex)) = Subscriber::kInitial;
};

}  // namespace simulate

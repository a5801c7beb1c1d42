// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "Way.h"
#include "tessel/IKalConfig.h"
#include "util/ACmThread.h"

/// Subscriptions of a command, each change written to standard output as it arrives, with the thread that it
/// arrives on: the setter's, which is the program's main thread, or a worker that changes are posted to.
///
/// Between a change and the next Drain(), standard output belongs to the events.
class Watcher {
 public:
  enum class Form { kText, kJson };

  /// Changes arrive directly or are posted; the latter starts the worker. The store must outlive the watcher.
  Watcher(kalStore::IKalConfig& store, Way way, Form form);
  /// Ends the subscriptions, once all events have arrived.
  ~Watcher();
  Watcher(const Watcher&) = delete;
  Watcher& operator=(const Watcher&) = delete;

  void Watch(kalStore::KalConfigGroup group, const std::string& name);
  /// Returns when every event of the changes made so far has been written.
  void Drain();

 private:
  kalStore::IKalConfig& m_store;
  Form m_form;
  std::optional<ACmThread> m_worker;
  std::vector<kalStore::SubscribeId_t> m_subscriptions;
};

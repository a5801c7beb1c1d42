// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "SettingsDocument.h"
#include "simulate/BandwidthController.h"
#include "simulate/Component.h"
#include "simulate/JitterBuffer.h"
#include "simulate/Ledger.h"
#include "simulate/Link.h"
#include "simulate/Recorder.h"
#include "simulate/Reporter.h"
#include "tessel/CallStore.h"

namespace simulate {

/// One call: its link, its store, its components.
///
/// Threads: one owner.
class Call {
 public:
  static constexpr unsigned kOwnComponents = 7;

  /// Applies the document that the call starts with, if there is one; then every component joins, and so many
  /// listeners. Throws std::runtime_error when the system refuses a thread.
  Call(std::uint32_t callId, unsigned listeners, Recorder& recorder, std::unique_ptr<Link> link,
       const SettingsDocument* document);
  /// Waits until nothing runs any more.
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  /// A tick of the media clock.
  void Tick();
  /// How many ticks every component has worked.
  unsigned Ticks() const;
  void Receive(const SettingsDocument& document) { m_controller->Receive(document); }
  /// Waits until nothing runs any more, and has the statistics read a last time. No ticks after this.
  void Finish();

  /// Of a call that is finished.
  const Ledger& Books() const { return m_ledger; }

 private:
  template <class T, class... Arguments>
  T* add(Arguments... arguments);
  void quiesce();

  const kalStore::CallStore m_store;
  const std::unique_ptr<Link> m_link;
  Recorder& m_recorder;
  Ledger m_ledger;
  // The setters first: what they set arrives at the others.
  std::vector<std::unique_ptr<Component>> m_components;
  BandwidthController* m_controller;
  Reporter* m_reporter;
};

}  // namespace simulate

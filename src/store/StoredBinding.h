// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <utility>

#include "store/StoredHandler.h"

namespace kalStore::internal {

/// A binding of a store: what KalConfig::BindConfig() makes, and so every handler in its lists that has
/// m_fnInvoke.
struct StoredBinding : StoredHandler {
  /// What a read hands to the callback. Made once, since a name of 16 characters needs an allocation; between
  /// reads without a default.
  KalConfigEvent event;
  /// Whether a read has the event: only that read uses it.
  std::atomic<bool> isLent{false};
};

/// The event of a binding while one read has it. Others that ask meanwhile, the callback among them, make
/// their own.
class LentEvent {
 public:
  LentEvent() = default;
  ~LentEvent() {
    if (m_lender == nullptr) return;
    // Moved from, a string keeps no memory; assigned an empty one, it would.
    ConfigValue& value = m_lender->event.m_defaultValue;
    if (value.IsValid()) const ConfigValue ended = std::move(value);
    // Release pairs with the acquire in Borrow(): the next read finds the event as it is left here.
    m_lender->isLent.store(false, std::memory_order_release);
  }
  LentEvent(const LentEvent&) = delete;
  LentEvent& operator=(const LentEvent&) = delete;

  /// Takes the binding's event unless another read has it. Called once, under the manager's lock: nobody else
  /// takes it meanwhile, so that no locked instruction is needed. REQUIRES: the binding outlives this.
  void Borrow(StoredBinding& binding) {
    if (binding.isLent.load(std::memory_order_acquire)) return;
    binding.isLent.store(true, std::memory_order_relaxed);
    m_lender = &binding;
  }

  /// The event for a read with this default, which goes into it; null when another read has it.
  const KalConfigEvent* With(ConfigValue& defaultValue) {
    if (m_lender == nullptr) return nullptr;
    if (defaultValue.IsValid()) m_lender->event.m_defaultValue = std::move(defaultValue);
    return &m_lender->event;
  }

 private:
  StoredBinding* m_lender = nullptr;
};

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#include "tessel/Subscription.h"

#include <utility>

#include "facade/ConfigRegistration.h"
#include "journal/JournalSource.h"

namespace kalStore {

using namespace internal;

namespace {

std::shared_ptr<GuardedCallback> CallbackOf(const std::shared_ptr<ConfigRegistration>& registration) {
  return registration == nullptr ? nullptr : registration->Callback();
}

}  // namespace

Subscription::Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                           fnConfigChangedCallBack fn, ACmThread* pRunThread, bool bAsync)
    : Subscription(store, group, name, std::move(fn), pRunThread, bAsync, std::nullopt,
                   __builtin_return_address(0)) {}

Subscription::Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                           fnConfigChangedCallBack fn, ConfigExecutor executor)
    : Subscription(store, group, name, std::move(fn), nullptr, false, std::move(executor),
                   __builtin_return_address(0)) {}

Subscription::Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                           fnConfigChangedCallBack&& fn, ACmThread* pRunThread, bool bAsync,
                           std::optional<ConfigExecutor>&& executor, const void* caller) {
  const CallerScope scope(caller);
  if (store.m_facade != nullptr) {
    m_registration = std::make_shared<FacadeRegistration>(*store.m_facade, group, name, std::move(fn),
                                                          pRunThread, bAsync, std::move(executor));
  } else {
    m_registration = std::make_shared<StoreSubscription>(*store.m_store, group, name, std::move(fn),
                                                         pRunThread, bAsync, std::move(executor));
  }
  m_registration->Begin();
}

Subscription& Subscription::operator=(Subscription&& other) noexcept(false) {
  if (this == &other) return *this;
  const CallerScope caller(__builtin_return_address(0));
  // Held here too: what the callback of the old one captured may own this object, which then ends with it.
  const std::shared_ptr<ConfigRegistration> assigned = std::move(other.m_registration);
  std::shared_ptr<ConfigRegistration> old = std::exchange(m_registration, assigned);
  old.reset();
  const bool hasEnded = assigned.use_count() == 1;
  if (assigned == nullptr || assigned->IsMade() || hasEnded) return *this;
  try {
    assigned->Begin();
  } catch (...) {
    assigned->GiveUp();
    throw;
  }
  if (!assigned->IsMade()) assigned->GiveUp();
  return *this;
}

Subscription::~Subscription() {
  const CallerScope caller(__builtin_return_address(0));
  m_registration.reset();
}

void Subscription::Remove() {
  const CallerScope caller(__builtin_return_address(0));
  m_registration.reset();
}

Subscription::operator bool() const {
  return m_registration != nullptr && m_registration->IsMade();
}

std::int32_t Subscription::RefusalReason() const {
  return m_registration == nullptr ? kResultOk : m_registration->Result();
}

void Subscription::Pause() {
  if (const auto callback = CallbackOf(m_registration)) callback->Pause();
}

void Subscription::Resume() {
  if (const auto callback = CallbackOf(m_registration)) callback->Resume();
}

bool Subscription::IsPaused() const {
  const auto callback = CallbackOf(m_registration);
  return callback != nullptr && callback->IsPaused();
}

}  // namespace kalStore

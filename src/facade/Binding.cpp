// SPDX-License-Identifier: Apache-2.0
#include "tessel/Binding.h"

#include <utility>

#include "facade/ConfigRegistration.h"
#include "journal/JournalSource.h"

namespace kalStore {

using namespace internal;

Binding::Binding(ConfigRef store, KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn) {
  const CallerScope caller(__builtin_return_address(0));
  if (store.m_facade != nullptr) {
    m_registration = std::make_shared<FacadeRegistration>(*store.m_facade, group, name, std::move(fn));
  } else {
    m_registration = std::make_shared<StoreBinding>(*store.m_store, group, name, std::move(fn));
  }
  m_registration->Begin();
  if (!m_registration->IsMade()) m_registration->GiveUp();
}

Binding& Binding::operator=(Binding&& other) noexcept {
  if (this == &other) return *this;
  const CallerScope caller(__builtin_return_address(0));
  // Ends last: what its callback captured may own this object.
  const auto old = std::exchange(m_registration, std::move(other.m_registration));
  return *this;
}

Binding::~Binding() {
  const CallerScope caller(__builtin_return_address(0));
  m_registration.reset();
}

void Binding::Remove() {
  const CallerScope caller(__builtin_return_address(0));
  m_registration.reset();
}

Binding::operator bool() const {
  return m_registration != nullptr && m_registration->IsMade();
}

std::int32_t Binding::RefusalReason() const {
  return m_registration == nullptr ? kResultOk : m_registration->Result();
}

}  // namespace kalStore

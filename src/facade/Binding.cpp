// SPDX-License-Identifier: Apache-2.0
#include "tessel/Binding.h"

#include <utility>

#include "facade/ConfigRegistration.h"

namespace kalStore {

using namespace internal;

Binding::Binding(ConfigRef store, KalConfigGroup group, const char* name, fnConfigInvokeCallBack fn) {
  if (store.m_facade != nullptr) {
    m_registration = std::make_shared<FacadeRegistration>(*store.m_facade, group, name, std::move(fn));
  } else {
    m_registration = std::make_shared<StoreBinding>(*store.m_store, group, name, std::move(fn));
  }
  m_registration->Begin();
  if (!m_registration->IsMade()) m_registration->GiveUp();
}

Binding::operator bool() const {
  return m_registration != nullptr && m_registration->IsMade();
}

std::int32_t Binding::RefusalReason() const {
  return m_registration == nullptr ? kResultOk : m_registration->Result();
}

}  // namespace kalStore

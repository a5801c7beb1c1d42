// SPDX-License-Identifier: Apache-2.0
#include "tessel/LiveConfig.h"

#include "facade/KalConfigObserverHelper.h"

namespace kalStore::internal {

namespace {

void FollowStore(LiveRegistration& registration, KalConfig& store, KalConfigGroup group) {
  auto spare = std::make_unique<LiveRegistrations>();
  const detail::Lock lock(g_liveMutex);
  registration.Follow(store, group, spare);
}

}  // namespace

std::shared_ptr<LiveRegistration> LiveRegistrar::Follow(ConfigRef settings, KalConfigGroup group,
                                                        const char* name, LiveWrite write, void* cell) {
  if (settings.m_facade != nullptr) {
    auto registration = std::make_shared<LiveRegistration>(group, name, write, cell);
    settings.m_facade->m_pObserverHelper->Live().Add(*registration);
    return registration;
  }
  auto* const store = dynamic_cast<KalConfig*>(settings.m_store);
  if (store == nullptr || !IsConfigGroup(group)) return nullptr;
  auto registration = std::make_shared<LiveRegistration>(group, name, write, cell);
  FollowStore(*registration, *store, group);
  return registration;
}

}  // namespace kalStore::internal

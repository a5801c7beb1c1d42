// SPDX-License-Identifier: Apache-2.0
#include "tessel/LiveConfig.h"

#include <cstring>

#include "facade/KalConfigObserverHelper.h"

namespace kalStore::internal {

namespace {

// Null for a store that is not the library's own. One whose class was compiled without RTTI is not, and
// dynamic_cast must not see it: the word before its virtual functions, which points to the type, is null
// there.
KalConfig* OwnStore(IKalConfig& store) {
  const void* const* functions = nullptr;
  std::memcpy(&functions, static_cast<const void*>(&store), sizeof functions);
  return functions[-1] == nullptr ? nullptr : dynamic_cast<KalConfig*>(&store);
}

void FollowStore(LiveRegistration& registration, KalConfig& store, KalConfigGroup group) {
  auto spare = std::make_unique<LiveRegistrations>();
  const detail::Lock lock(g_liveMutex);
  registration.Follow(store, group, spare);
}

}  // namespace

std::shared_ptr<LiveRegistration> LiveRegistrar::Follow(ConfigRef settings, KalConfigGroup group,
                                                        const char* name, LiveWrite write, void* cell) {
  if (settings.m_facade != nullptr) {
    KalConfigObserverHelper* const helper = settings.m_facade->m_pObserverHelper.get();
    if (helper == nullptr) return nullptr;  // The facade is ending.
    auto registration = std::make_shared<LiveRegistration>(group, name, write, cell);
    helper->Live().Add(*registration);
    return registration;
  }
  KalConfig* const store = OwnStore(*settings.m_store);
  if (store == nullptr || !IsConfigGroup(group)) return nullptr;
  auto registration = std::make_shared<LiveRegistration>(group, name, write, cell);
  FollowStore(*registration, *store, group);
  return registration;
}

}  // namespace kalStore::internal

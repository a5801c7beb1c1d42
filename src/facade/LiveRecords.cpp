// SPDX-License-Identifier: Apache-2.0
#include "facade/LiveRecords.h"

#include <utility>

namespace kalStore::internal {

LiveRecords::~LiveRecords() {
  const detail::Lock lock(g_liveMutex);
  for (LiveRegistration* const registration : m_waiting) registration->Forget();
}

void LiveRecords::Add(LiveRegistration& registration) {
  auto spare = std::make_unique<LiveRegistrations>();
  LiveRegistration::List entry{&registration};
  const detail::Lock lock(g_liveMutex);
  registration.WaitIn(m_waiting, entry);
  if (m_spare == nullptr) m_spare = std::move(spare);
  followStore();
}

void LiveRecords::SetStore(IKalConfig& store) noexcept {
  const detail::Lock lock(g_liveMutex);
  m_store = dynamic_cast<KalConfig*>(&store);
  followStore();
}

bool LiveRecords::SetDefaultGroup(std::atomic<KalConfigGroup>& defaultGroup, KalConfigGroup group) noexcept {
  const detail::Lock lock(g_liveMutex);
  if (defaultGroup != KAL_CONFIG_GROUP_DEFAULT) return false;
  m_defaultGroup = group;
  followStore();
  defaultGroup = group;
  return true;
}

void LiveRecords::followStore() noexcept {
  if (m_store == nullptr) return;
  std::erase_if(
      m_waiting, [this](LiveRegistration* registration) TESSEL_LOCKING(requires_capability(g_liveMutex)) {
        const KalConfigGroup group =
            registration->Group() == KAL_CONFIG_GROUP_DEFAULT ? m_defaultGroup : registration->Group();
        if (group == KAL_CONFIG_GROUP_DEFAULT) return false;
        registration->Follow(*m_store, group, m_spare);
        return true;
      });
}

}  // namespace kalStore::internal

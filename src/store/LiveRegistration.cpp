// SPDX-License-Identifier: Apache-2.0
#include "store/LiveRegistration.h"

#include <utility>

namespace kalStore::internal {

// Usable before any constructor and after any destructor of a static object.
constinit detail::Mutex<std::mutex> g_liveMutex;

LiveRegistration::LiveRegistration(KalConfigGroup group, const char* name, LiveWrite write, void* cell)
    : m_write(write), m_cell(cell), m_group(group) {
  LiveRegistrations::Names names;
  m_node = names.extract(names.emplace(name, this));
}

void LiveRegistration::leave() noexcept {
  const detail::Lock lock(g_liveMutex);
  if (m_list != nullptr) m_list->erase(m_placeInList);
  if (m_store == nullptr) return;
  // A set or removal in progress ends before, and no later one finds the cell.
  const KalConfig::ConfigMap::Locked values(m_store->configsOf(m_group));
  m_node = m_store->m_live.load(std::memory_order_relaxed)->NamesOf(m_group).extract(m_place);
}

void LiveRegistration::WaitIn(List& list, List& entry) noexcept {
  m_placeInList = entry.begin();
  list.splice(list.end(), entry);
  m_list = &list;
}

void LiveRegistration::Follow(KalConfig& store, KalConfigGroup group,
                              std::unique_ptr<LiveRegistrations>& spare) noexcept {
  m_list = nullptr;
  m_store = &store;
  m_group = group;
  LiveRegistrations* live = store.m_live.load(std::memory_order_relaxed);  // Set under g_liveMutex alone.
  if (live == nullptr) {
    live = spare.release();
    // Pairs with the loads of sets and removals in other groups, whose lock this thread does not take.
    store.m_live.store(live, std::memory_order_release);
  }
  // One step for those who set and remove: what they stored before is read here, and what they store after
  // this they write themselves.
  KalConfig::ConfigMap::Locked values(store.configsOf(group));
  m_place = live->NamesOf(group).insert(std::move(m_node));
  const auto found = values->find(m_place->first);
  Write(found == values->end() ? nullptr : &found->second);
}

void LiveRegistration::ForgetStore(KalConfig& store) noexcept {
  const detail::Lock lock(g_liveMutex);
  LiveRegistrations& live = *store.m_live.load(std::memory_order_relaxed);
  for (int index = 0; index < KAL_CONFIG_GROUP_LAST; ++index) {
    const auto group = static_cast<KalConfigGroup>(index);
    const KalConfig::ConfigMap::Locked values(store.configsOf(group));
    LiveRegistrations::Names& names = live.NamesOf(group);
    for (const auto& [name, registration] : names) registration->Forget();
    names.clear();
  }
}

void LiveRegistration::Forget() noexcept {
  m_list = nullptr;
  m_store = nullptr;
}

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#include "statistics/ProcessRegistry.h"

#include <cstddef>
#include <new>

#include "statistics/EntityParts.h"
#include "statistics/RegistryGuard.h"

namespace kalStore {

// Storage without a constructor or a destructor of its own; kalTesselInstant is its name as an object.
[[maybe_unused]] alignas(CKalTessel) static constinit std::byte storage[sizeof(CKalTessel)] asm(
    "tesselRegistryStorage"){};
extern CKalTessel kalTesselInstant __attribute__((alias("tesselRegistryStorage")));

}  // namespace kalStore

namespace kalStore::internal {

// A function's static object: a static object that uses the registry in its constructor is destroyed before
// the registry is emptied.
CKalTessel& ProcessRegistry::Get() {
  static const ProcessRegistry made;
  return kalTesselInstant;
}

int ProcessRegistry::Release(KalTesselEntityType type, std::uint32_t callId, void* entity,
                             const void* caller) {
  return Get().release(type, callId, entity, caller);
}

void ProcessRegistry::ForEachEntity(const Look& look) {
  CKalTessel& registry = Get();
  const RegistryGuard guard(registry.m_mutex);
  for (const auto& [key, entity] : registry.m_entities) {
    const std::uint32_t references = EntityParts::Of(key.first, entity).references.ReferenceCount();
    if (references != 0) look(key.first, key.second, references, entity);
  }
}

ProcessRegistry::ProcessRegistry() {
  new (&kalTesselInstant) CKalTessel;
}

ProcessRegistry::~ProcessRegistry() {
  kalTesselInstant.forgetAll();
}

namespace {

// For those that use kalTesselInstant by its name: the registry is there when the library is loaded, in a
// static program before every constructor of a later priority.
[[gnu::constructor(101)]] void MakeEarly() {
  ProcessRegistry::Get();
}

}  // namespace

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#include "statistics/ProcessRegistry.h"

#include <algorithm>
#include <cstddef>
#include <new>

#include "statistics/EntityParts.h"
#include "statistics/RegistryGuard.h"
#include "trace/ForkedChild.h"

namespace kalStore {

// Storage without a constructor or a destructor of its own; kalTesselInstant is its name as an object.
[[maybe_unused]] alignas(CKalTessel) static constinit std::byte storage[sizeof(CKalTessel)] asm(
    "tesselRegistryStorage"){};
extern CKalTessel kalTesselInstant __attribute__((alias("tesselRegistryStorage")));

}  // namespace kalStore

namespace kalStore::internal {

constinit std::atomic<CKalTessel*> ProcessRegistry::s_registry{nullptr};

namespace {

// Where kalTesselInstant is. The dynamic linker has one place of that name, in the program itself where that
// uses the name. Where another copy of this library has made its registry there, this copy has its own.
void* RegistryPlace() {
  const auto* const bytes = reinterpret_cast<const unsigned char*>(&kalTesselInstant);
  const bool isFree = std::all_of(bytes, bytes + sizeof(CKalTessel), [](auto byte) { return byte == 0; });
  return isFree ? static_cast<void*>(&kalTesselInstant) : storage;
}

}  // namespace

// A function's static object: a static object that uses the registry in its constructor is destroyed before
// the registry is emptied.
CKalTessel& ProcessRegistry::make() {
  static const ProcessRegistry made;
  return *s_registry.load(std::memory_order_relaxed);
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
  s_registry.store(new (RegistryPlace()) CKalTessel, std::memory_order_release);
}

ProcessRegistry::~ProcessRegistry() {
  if (!IsForkedChild()) Get().forgetAll();
}

namespace {

// For those that use kalTesselInstant by its name: the registry is there when the library is loaded, in a
// static program before every constructor of a later priority.
[[gnu::constructor(101)]] void MakeEarly() {
  ProcessRegistry::Get();
}

}  // namespace

}  // namespace kalStore::internal

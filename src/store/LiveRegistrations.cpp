// SPDX-License-Identifier: Apache-2.0
#include "store/LiveRegistrations.h"

#include "store/LiveRegistration.h"

namespace kalStore::internal {

void LiveRegistrations::Write(KalConfigGroup group, std::string_view name,
                              const ConfigData* stored) noexcept {
  const auto [begin, end] = NamesOf(group).equal_range(name);
  for (auto at = begin; at != end; ++at) at->second->Write(stored);
}

void LiveRegistrations::WriteNothing(KalConfigGroup group) noexcept {
  for (const auto& [name, registration] : NamesOf(group)) registration->Write(nullptr);
}

}  // namespace kalStore::internal

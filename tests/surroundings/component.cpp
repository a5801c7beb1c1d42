// SPDX-License-Identifier: Apache-2.0
// A component that is linked with another version of the library than the program that loads it.

#include "tessel/KalConfigRegistry.h"

extern "C" [[gnu::visibility("default")]] std::uint32_t StoresOfComponent();

std::uint32_t StoresOfComponent() {
  return kalStore::GetKalConfigSizeForUT();
}

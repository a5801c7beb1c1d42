// SPDX-License-Identifier: Apache-2.0
#include "ForeignStore.h"

namespace kalStore {

IKalConfig* StoreWithoutRtti() {
  static ForeignStore<false> store;
  return &store;
}

}  // namespace kalStore

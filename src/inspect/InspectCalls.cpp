// SPDX-License-Identifier: Apache-2.0
#include "inspect/StoreParts.h"
#include "tessel/inspect.h"

namespace kalStore {

using namespace internal;

std::vector<InspectedCall> InspectCalls() {
  LockedCopy<InspectedCall> copy;
  copy.Make([&] {
    const detail::Lock lock(g_storesMutex);
    for (const auto& [callId, entry] : TheStores()) {
      copy.Put({callId, static_cast<std::uint32_t>(entry.counts), StoreParts::IsCleanedUp(*entry.store)});
    }
  });
  std::vector<InspectedCall> calls;
  copy.ForEach([&](const InspectedCall& call, auto...) { calls.push_back(call); });
  return calls;
}

}  // namespace kalStore

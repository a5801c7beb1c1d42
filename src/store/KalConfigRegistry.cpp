// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigRegistry.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <optional>
#include <utility>

#include "journal/JournalSource.h"
#include "store/StoreRegistry.h"
#include "trace/ForkedChild.h"
#include "trace/TraceLine.h"
#include "util/CCmUtilFuncTracer.h"

namespace kalStore {

using namespace internal;

constinit detail::Mutex<RecursiveMutex> internal::g_storesMutex;

namespace {

[[gnu::noinline, gnu::cold]] void WriteStore(JournalKind kind, std::uint32_t callId, int counts) {
  WriteJournal({.kind = kind,
                .callId = callId,
                .source = SourceOf(nullptr),
                .count = static_cast<std::uint32_t>(counts)});
}

// Stores that have ended under the registry's lock. Their values, of which there may be many, are freed with
// this, which therefore is declared before the lock.
using EndedStores = std::multimap<std::uint32_t, StoreEntry>;

// Ends every store, those of the highest ids first. What callbacks captured may call in when it ends: the
// registry is empty by then, and every store is still alive, since a callback may have captured a facade of
// another call.
void DropAll(EndedStores& ended) TESSEL_LOCKING(requires_capability(g_storesMutex)) {
  while (!TheStores().empty()) {
    Stores doomed = std::exchange(TheStores(), {});
    if (JournalIsOn()) {
      for (const auto& [callId, entry] : doomed) WriteStore(JournalKind::kStoreEnded, callId, 0);
    }
    for (const auto& [callId, entry] : doomed) entry.store->DropHandlers();
    for (auto at = doomed.rbegin(); at != doomed.rend(); ++at) at->second.store->End();
    ended.merge(doomed);
  }
}

// The registry's map: null until the first use, which may come from a static object that is constructed
// before this library is initialised. Never destroyed: what ends after the stores were dropped at exit still
// finds it.
constinit Stores* g_mapConfigs TESSEL_LOCKING(pt_guarded_by(g_storesMutex)) = nullptr;

Stores* MadeStores() {
  static const struct Lifetime {
    Lifetime() {
      g_mapConfigs = new Stores;
      NoticeForks();
    }
    ~Lifetime() {
      if (IsForkedChild()) return;
      const detail::Lock lock(g_storesMutex);
      DropAll(*endedAtExit);
    }
    // Never freed: threads that still run use them.
    EndedStores* const endedAtExit = new EndedStores;
  } lifetime;
  return g_mapConfigs;
}

// Made at the latest when the library is loaded, in a static program before every constructor of a later
// priority: static objects end before the stores do, whether or not they have used one by then. The registry
// of the statistics comes first.
[[gnu::constructor(102)]] void MakeEarly() {
  MadeStores();
}

// Takes one reference and returns how many are left; at none, ends the store, which `ended` then owns, and
// erases its entry.
int DropReference(Stores::iterator position, std::shared_ptr<KalConfig>& ended)
    TESSEL_LOCKING(requires_capability(g_storesMutex)) {
  const int counts = --position->second.counts;
  if (counts < 1) {
    if (JournalIsOn()) WriteStore(JournalKind::kStoreEnded, position->first, 0);
    // What callbacks captured may call in again when the store goes: the entry is gone by then.
    ended = std::move(position->second.store);
    TheStores().erase(position);
    ended->End();
  }
  return counts;
}

// Entry and exit of the rare operations are traced, for the first calls in the life of the process.
class LimitedTracer {
 public:
  template <class Compose>
  LimitedTracer(std::atomic<int>& calls, Compose compose) {
    if (!countCall(calls) || !IsTraced(2)) return;
    char buffer[256];
    CCmTextFormator text(buffer, sizeof(buffer));
    compose(text);
    try {
      m_tracer.emplace(2, text);
    } catch (...) {
      // The tracer may keep a copy of the text. Destructors call what is traced here: it does without the
      // lines.
    }
  }

 private:
  static bool countCall(std::atomic<int>& calls) {
    int count = calls.load(std::memory_order_relaxed);
    while (count < kTracedCalls) {
      if (calls.compare_exchange_weak(count, count + 1, std::memory_order_relaxed)) return true;
    }
    return false;
  }

  static constexpr int kTracedCalls = 150;
  std::optional<CCmUtilFuncTracer> m_tracer;
};

}  // namespace

Stores& internal::TheStores() {
  return *MadeStores();
}

std::int32_t CreateKalConfig(std::uint32_t callId, IKalConfig** ppConfig) {
  if (ppConfig == nullptr) return kResultBadArgument;
  TESSEL_TRACE(2, "kalStore::CreateKalConfig", Cid{callId});
  const detail::Lock lock(g_storesMutex);
  if (*ppConfig != nullptr) return kResultBadArgument;
  Stores& stores = TheStores();
  std::shared_ptr<KalConfig> made;
  auto found = stores.find(callId);
  if (found == stores.end()) {
    made = std::make_shared<KalConfig>(callId);
    // The sink of its line may have called in and created the call's store: that one is shared then.
    found = stores.try_emplace(callId, StoreEntry{made, 1}).first;
  }
  ++found->second.counts;
  if (JournalIsOn()) {
    const CallerScope caller(__builtin_return_address(0));
    const bool isMade = found->second.store == made;
    WriteStore(isMade ? JournalKind::kStoreMade : JournalKind::kStoreShared, callId, found->second.counts);
  }
  *ppConfig = found->second.store.get();
  return kResultOk;
}

std::int32_t ReleaseKalConfig(IKalConfig* pConfig) {
  if (pConfig == nullptr) return kResultBadArgument;
  std::shared_ptr<KalConfig> ended;  // Freed when the lock is free, like EndedStores.
  const detail::Lock lock(g_storesMutex);
  Stores& stores = TheStores();
  const auto found = std::find_if(stores.begin(), stores.end(),
                                  [&](const auto& entry) { return entry.second.store.get() == pConfig; });
  if (found == stores.end()) return kResultNoSuchOrExists;
  const std::uint32_t callId = found->first;
  const CallerScope caller(__builtin_return_address(0));
  const int counts = DropReference(found, ended);
  TESSEL_TRACE(2, "kalStore::ReleaseKalConfig", Cid{callId} << ", counts=" << counts);
  return kResultOk;
}

std::int32_t CleanUpKalConfig(std::uint32_t callId) {
  static std::atomic<int> calls{0};
  const LimitedTracer tracer(calls, [&](CCmTextFormator& text) {
    text << "int32_t kalStore::CleanUpKalConfig(uint32_t)"
         << ",line=" << 898 << ", callId=" << callId;
  });
  std::shared_ptr<KalConfig> ended;  // As above.
  const detail::Lock lock(g_storesMutex);
  const auto found = TheStores().find(callId);
  if (found == TheStores().end() || !found->second.store->MarkCleanedUp()) return kResultNoSuchOrExists;
  const CallerScope caller(__builtin_return_address(0));
  if (JournalIsOn()) WriteStore(JournalKind::kStoreCleanedUp, callId, found->second.counts - 1);
  const int counts = DropReference(found, ended);
  TESSEL_TRACE(2, "kalStore::CleanUpKalConfig", ", callId=" << callId << ", counts=" << counts);
  return kResultOk;
}

void DestroyKalConfig() {
  static std::atomic<int> calls{0};
  const LimitedTracer tracer(calls, [&](CCmTextFormator& text) {
    text << "void kalStore::DestroyKalConfig()"
         << ",line=" << __LINE__;
  });
  EndedStores ended;
  const detail::Lock lock(g_storesMutex);
  // By key: the sink may call in and change the map.
  const Stores& stores = TheStores();
  for (auto at = stores.begin(); at != stores.end();) {
    const std::uint32_t callId = at->first;
    TESSEL_TRACE(2, "kalStore::DestroyKalConfig", ", callId=" << callId << ", counts=" << at->second.counts);
    at = stores.upper_bound(callId);
  }
  const CallerScope caller(__builtin_return_address(0));
  // What ends with one store may have subscribed in another that had ended: until none has anything, since
  // all of them are freed then. At exit none is, and threads that still run may subscribe for ever.
  const auto endsSomething = [](const auto& entry) { return entry.second.store->End(); };
  do {
    DropAll(ended);
  } while (std::count_if(ended.rbegin(), ended.rend(), endsSomething) > 0);
}

std::uint32_t GetKalConfigSizeForUT() {
  const detail::Lock lock(g_storesMutex);
  return static_cast<std::uint32_t>(TheStores().size());
}

}  // namespace kalStore

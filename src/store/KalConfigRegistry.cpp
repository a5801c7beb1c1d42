#include "tessel/KalConfigRegistry.h"

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <utility>

#include "tessel/KalConfig.h"
#include "trace/TraceLine.h"
#include "util/CCmUtilFuncTracer.h"

namespace kalStore {

using namespace internal;

namespace {

struct StoreEntry {
  std::shared_ptr<KalConfig> store;  // The registry's ownership; users hold raw pointers.
  int counts;                        // References handed out, and the registry's own until clean-up.
};

// Usable before any constructor of another library runs.
constinit std::recursive_mutex g_mutex;
std::map<std::uint32_t, StoreEntry> g_mapConfigs;

using Position = decltype(g_mapConfigs)::iterator;

// What callbacks captured may call in again while the stores go: the registry is empty by then.
void DropAll() {
  std::lock_guard lock(g_mutex);
  const auto doomed = std::exchange(g_mapConfigs, {});
}

// Goes before the map does, at exit: stores that are left find it empty, but alive.
const struct DropAllAtExit {
  ~DropAllAtExit() { DropAll(); }
} g_dropAllAtExit;

// Takes one reference and returns how many are left; at none, destroys the store and its entry.
int DropReference(Position position) {
  const int counts = --position->second.counts;
  if (counts < 1) {
    // What callbacks captured may call in again when the store goes: the entry is gone by then.
    const auto store = std::move(position->second.store);
    g_mapConfigs.erase(position);
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
    m_tracer.emplace(2, text);
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

std::int32_t CreateKalConfig(std::uint32_t callId, IKalConfig** ppConfig) {
  if (ppConfig == nullptr) return kResultBadArgument;
  TESSEL_TRACE(2, "kalStore::CreateKalConfig", Cid{callId});
  std::lock_guard lock(g_mutex);
  if (*ppConfig != nullptr) return kResultBadArgument;
  if (const auto found = g_mapConfigs.find(callId); found != g_mapConfigs.end()) {
    ++found->second.counts;
    *ppConfig = found->second.store.get();
    return kResultOk;
  }
  auto store = std::make_shared<KalConfig>(callId);
  const auto added = g_mapConfigs.emplace(callId, StoreEntry{std::move(store), 2}).first;
  *ppConfig = added->second.store.get();
  return kResultOk;
}

std::int32_t ReleaseKalConfig(IKalConfig* pConfig) {
  if (pConfig == nullptr) return kResultBadArgument;
  std::lock_guard lock(g_mutex);
  const auto found = std::find_if(g_mapConfigs.begin(), g_mapConfigs.end(),
                                  [&](const auto& entry) { return entry.second.store.get() == pConfig; });
  if (found == g_mapConfigs.end()) return kResultNoSuchOrExists;
  const std::uint32_t callId = found->first;
  const int counts = DropReference(found);
  TESSEL_TRACE(2, "kalStore::ReleaseKalConfig", Cid{callId} << ", counts=" << counts);
  return kResultOk;
}

std::int32_t CleanUpKalConfig(std::uint32_t callId) {
  static std::atomic<int> calls{0};
  const LimitedTracer tracer(calls, [&](CCmTextFormator& text) {
    text << "int32_t kalStore::CleanUpKalConfig(uint32_t)"
         << ",line=" << 898 << ", callId=" << callId;
  });
  std::lock_guard lock(g_mutex);
  const auto found = g_mapConfigs.find(callId);
  if (found == g_mapConfigs.end() || !found->second.store->MarkCleanedUp()) return kResultNoSuchOrExists;
  const int counts = DropReference(found);
  TESSEL_TRACE(2, "kalStore::CleanUpKalConfig", ", callId=" << callId << ", counts=" << counts);
  return kResultOk;
}

void DestroyKalConfig() {
  static std::atomic<int> calls{0};
  const LimitedTracer tracer(calls, [&](CCmTextFormator& text) {
    text << "void kalStore::DestroyKalConfig()"
         << ",line=" << __LINE__;
  });
  std::lock_guard lock(g_mutex);
  for (const auto& entry : g_mapConfigs) {
    TESSEL_TRACE(2, "kalStore::DestroyKalConfig",
                 ", callId=" << entry.first << ", counts=" << entry.second.counts);
  }
  DropAll();
}

std::uint32_t GetKalConfigSizeForUT() {
  std::lock_guard lock(g_mutex);
  return static_cast<std::uint32_t>(g_mapConfigs.size());
}

}  // namespace kalStore

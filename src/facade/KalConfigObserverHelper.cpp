// SPDX-License-Identifier: Apache-2.0
#include "facade/KalConfigObserverHelper.h"

#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "facade/ExecutorDelivery.h"
#include "store/FirstError.h"
#include "store/WaitClock.h"
#include "trace/Assertion.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// The id of a record that is being registered. No store gives it: they count from 1.
constexpr SubscribeId_t kRegistering = std::numeric_limits<SubscribeId_t>::max();

constexpr int kCleanYields = 50000;

// One run of a wrapped callback, counted while it lasts.
class InFlight {
 public:
  explicit InFlight(int& counter) : m_counter(counter) { m_counter.fetch_add(1); }
  // Release pairs with waitForCallbacks(): what the run did happens before Clean() returns.
  ~InFlight() { m_counter.fetch_sub(1, std::memory_order_release); }
  InFlight(const InFlight&) = delete;
  InFlight& operator=(const InFlight&) = delete;

 private:
  std::atomic_ref<int> m_counter;
};

bool IsRecordable(KalConfigGroup group, const char* name) {
  return name != nullptr && *name != '\0' && IsConfigGroup(group);
}

// Where the record is, or the end: its name may be free, or another's.
template <class Map, class Record>
auto Find(Map& records, const Record& record) {
  const auto found = records.find(record->m_strName);
  return found != records.end() && found->second == record ? found : records.end();
}

}  // namespace

KalConfigObserverHelper::~KalConfigObserverHelper() {
  try {
    Clean();
    // What still waits for a store ends while every member lives: its callback may own a Subscription of this
    // facade.
    for (RecordsByName& records : m_records) {
      RecordsByName::Map waiting;  // Ends after the lock, like `replaced` in File().
      RecordsByName::Locked(records)->swap(waiting);
    }
  } catch (...) {
    // A destructor completes; the first thing that Clean() does shuts the callbacks off.
  }
}

void KalConfigObserverHelper::SetStore(IKalConfig& store) {
  // Before the first group is looked through: who records after that sees the store, see File().
  m_store.store(&store, std::memory_order_release);
  ReSubscribeConfig();
}

void KalConfigObserverHelper::ForgetStore() {
  Clean();
  m_store.store(nullptr, std::memory_order_relaxed);  // Who sees no store uses none.
}

SubscribeId_t KalConfigObserverHelper::BindConfig(KalConfigGroup group, const char* szConfigName,
                                                  fnConfigInvokeCallBack&& cb) {
  const Record record = MakeBinding(group, szConfigName, std::move(cb));
  return record == nullptr ? 0 : File(record).value_or(0);
}

KalConfigObserverHelper::Record KalConfigObserverHelper::MakeBinding(KalConfigGroup group,
                                                                     const char* szConfigName,
                                                                     fnConfigInvokeCallBack&& cb) {
  if (!IsRecordable(group, szConfigName) || !cb) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::BindConfig", "Error parameters" << This{this});
    return nullptr;
  }
  auto record = std::make_shared<ObserverRecord>();
  record->m_group = group;
  record->m_strName = szConfigName;
  record->m_fnInvoke = std::move(cb);
  return record;
}

KalConfigObserverHelper::Record KalConfigObserverHelper::MakeRecord(KalConfigGroup group,
                                                                    const char* szConfigName,
                                                                    fnConfigChangedCallBack&& cb,
                                                                    ACmThread* thread, bool async) {
  if (!IsRecordable(group, szConfigName) || !cb) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::SubscribeConfig", "Error parameters" << This{this});
    return nullptr;
  }
  auto record = std::make_shared<ObserverRecord>(std::move(cb), async && thread != nullptr);
  record->m_group = group;
  record->m_strName = szConfigName;
  record->m_pRunThread = thread;
  record->m_bAsync = async;
  return record;
}

std::optional<SubscribeId_t> KalConfigObserverHelper::File(const Record& record) {
  IKalConfig* store = nullptr;
  Record replaced;  // Ends after the lock: what its callback captured may call in again.
  {
    RecordsByName::Locked records(recordsOf(record->m_group));
    // Under the lock: Remove() finds the record here, or has closed it before. After Clean() nothing new
    // comes, so that it ends, whatever a trace sink subscribes meanwhile.
    if (record->m_callback->IsClosed() || !isAlive()) return std::nullopt;
    const auto [position, isNew] = records->try_emplace(record->m_strName, record);
    if (!isNew) {
      if (position->second->m_SubscribeId != 0) return std::nullopt;
      replaced = std::exchange(position->second, record);
    }
    // Under the lock: either SetStore() came first and the store is here, or it finds the record waiting.
    store = m_store.load(std::memory_order_acquire);
    if (store == nullptr) return 0;
    record->m_SubscribeId = kRegistering;
  }

  SubscribeId_t id = 0;
  try {
    id = registerWith(*store, record);
    record->m_isRefusedByStore.store(id == 0, std::memory_order_relaxed);
    if (id != 0) m_recordsById.Set(id, record);
  } catch (...) {
    // The store has taken it back, or does now, but may still deliver late.
    record->m_callback->Remove([&] { return id == 0 ? kResultOk : store->UnsubscribeConfig(id); });
    erase(record);
    throw;
  }
  {
    RecordsByName::Locked records(recordsOf(record->m_group));
    if (Find(*records, record) != records->end()) {
      record->m_SubscribeId = id;
      return id;
    }
  }
  // Removed in the meantime: Remove() waits for the end of this.
  UnsubscribeConfig(id);
  erase(record);
  return std::nullopt;
}

void KalConfigObserverHelper::Remove(const Record& record) {
  record->m_callback->Close();
  RecordsByName::Map::node_type erased;  // Ends after the lock, like `replaced` in File().
  SubscribeId_t id = 0;
  {
    RecordsByName::Locked records(recordsOf(record->m_group));
    const auto found = Find(*records, record);
    if (found == records->end()) return;
    id = record->m_SubscribeId;
    if (id == 0 || id == kRegistering) erased = records->extract(found);
  }
  if (id == 0) return;
  if (id != kRegistering && UnsubscribeConfig(id) != kResultNotFound) return;
  // What another thread registers, or removes already, ends there. That thread may wait for a posted run of
  // this one.
  record->m_callback->Remove([&] {
    if (record->m_callback->RunsOnThisThread() == 0) awaitEnd(*record);
    return kResultOk;
  });
}

void KalConfigObserverHelper::awaitEnd(const ObserverRecord& record) {
  const WaitClock& clock = CurrentWaitClock();
  const long startMs = clock.nowMs();
  const auto hasEnded = [&] {
    const RecordsByName::Locked records(recordsOf(record.m_group));
    return record.m_SubscribeId == 0;
  };
  while (!hasEnded() && ElapsedMs(startMs, clock.nowMs()) < kRemovalCeilingMs) clock.sleepOneMs();
}

SubscribeId_t KalConfigObserverHelper::registerWith(IKalConfig& store, const Record& record) const {
  const char* name = record->m_strName.c_str();
  if (record->m_fnInvoke) return store.BindConfig(record->m_group, name, record->m_fnInvoke);
  fnConfigChangedCallBack deliver = wrap(record);
  if (record->m_executor) {
    deliver = DeliverOn(ConfigExecutor(*record->m_executor), record->m_callback, std::move(deliver));
  }
  return store.SubscribeConfig(record->m_group, name, std::move(deliver), record->m_pRunThread,
                               record->m_bAsync);
}

// What is copied with each posted delivery is one pointer.
fnConfigChangedCallBack KalConfigObserverHelper::wrap(const Record& record) const {
  struct Wrapped {
    std::shared_ptr<bool> alive;
    std::shared_ptr<int> inFlight;
    std::shared_ptr<GuardedCallback> callback;
  };
  return [wrapped = std::make_shared<const Wrapped>(Wrapped{m_alive, m_inFlight, record->m_callback})](
             const KalConfigEvent& event) {
    // Counted first, then asked, against Clean(), which says no first and then reads the count: one of the
    // two sees the other. Both are a store followed by a load of another variable, which takes sequential
    // consistency.
    const InFlight run(*wrapped->inFlight);
    if (std::atomic_ref(*wrapped->alive).load()) wrapped->callback->Run(event);
  };
}

std::int32_t KalConfigObserverHelper::UnsubscribeConfig(SubscribeId_t id) {
  Record record;  // The last to go: what its callback captured may own the facade.
  {
    RecordsById::Locked records(m_recordsById);
    if (auto node = records->extract(id)) record = std::move(node.mapped());
  }
  if (record == nullptr) return kResultNotFound;
  const auto unsubscribe = [&] {
    // A record by id is registered, so there is a store, which the lock of the records orders before this.
    return m_store.load(std::memory_order_relaxed)->UnsubscribeConfig(id);
  };
  const bool isCleaning = !isAlive();
  // Clean() has waited for what runs, as long as it may.
  if (isCleaning) record->m_callback->Close();
  const std::int32_t result = isCleaning ? unsubscribe() : record->m_callback->Remove(unsubscribe);
  erase(record);
  return result;
}

std::int32_t KalConfigObserverHelper::UnsubscribeConfig(const char* szConfigName, KalConfigGroup group) {
  if (!IsRecordable(group, szConfigName)) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::UnsubscribeConfig", "Error parameters" << This{this});
    return kResultBadArgument;
  }
  std::optional<SubscribeId_t> id;
  {
    RecordsByName::Locked records(recordsOf(group));
    const auto found = records->find(std::string_view(szConfigName));
    if (found != records->end()) id = found->second->m_SubscribeId;
  }
  if (!id) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::UnsubscribeConfig", "Failed" << This{this});
    return kResultNotFound;
  }
  return UnsubscribeConfig(*id);
}

// Ends the record's time here: its name is free again, unless another record has taken it already.
void KalConfigObserverHelper::erase(const Record& record) {
  RecordsByName::Map::node_type erased;  // Ends after the lock, like `replaced` in File().
  RecordsByName::Locked records(recordsOf(record->m_group));
  const auto found = Find(*records, record);
  if (found != records->end()) erased = records->extract(found);
  record->m_SubscribeId = 0;
}

void KalConfigObserverHelper::ReSubscribeConfig() {
  FirstError error;
  for (int idx = 0; idx < KAL_CONFIG_GROUP_LAST; ++idx) {
    RecordsByName::Map waiting;  // The very nodes: taking them out cannot fail and lose one.
    {
      RecordsByName::Locked records(recordsOf(static_cast<KalConfigGroup>(idx)));
      for (auto at = records->begin(); at != records->end();) {
        const auto next = std::next(at);
        // What a callback or another thread registers by itself stays where it is.
        if (at->second->m_SubscribeId == 0) waiting.insert(records->extract(at));
        at = next;
      }
    }
    for (const auto& [name, handler] : waiting) {
      KAL_ASSERT(idx == handler->m_group);
      try {
        File(handler);
      } catch (...) {
        // The exception of one callback must not leave the other records without their subscription.
        if (!error.Keep()) throw;
      }
    }
  }
  error.Rethrow();
}

void KalConfigObserverHelper::Clean() {
  // Pairs with wrap(). A clean that follows another has nothing to wait for that the first did not give up
  // on.
  if (std::atomic_ref(*m_alive).exchange(false) && !waitForCallbacks()) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::Clean",
                 "Clean() spin-wait exceeded ceiling, breaking to avoid hang" << This{this});
  }

  for (;;) {
    SubscribeId_t id = 0;
    {
      RecordsById::Locked records(m_recordsById);
      if (records->empty()) return;
      id = records->begin()->first;
    }
    UnsubscribeConfig(id);
  }
}

// False when it gave up.
bool KalConfigObserverHelper::waitForCallbacks() const {
  const std::atomic_ref<int> inFlight(*m_inFlight);
  for (int left = kCleanYields + 1; inFlight.load() > 0;) {
    if (--left == 0) return false;
    CurrentWaitClock().yield();
  }
  return true;
}

bool KalConfigObserverHelper::isAlive() const {
  return std::atomic_ref(*m_alive).load();
}

}  // namespace kalStore

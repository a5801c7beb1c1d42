#include "facade/KalConfigObserverHelper.h"

#include <exception>
#include <iterator>
#include <limits>
#include <string_view>
#include <utility>

#include "store/WaitClock.h"
#include "trace/Assertion.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// The id of a record while it is being made. No store gives it: they count from 1.
constexpr SubscribeId_t kRegistering = std::numeric_limits<SubscribeId_t>::max();

constexpr int kCleanYields = 50000;

// One run of a wrapped callback, counted while it lasts.
class InFlight {
 public:
  explicit InFlight(int& counter) : m_counter(counter) { m_counter.fetch_add(1); }
  ~InFlight() { m_counter.fetch_sub(1); }
  InFlight(const InFlight&) = delete;
  InFlight& operator=(const InFlight&) = delete;

 private:
  std::atomic_ref<int> m_counter;
};

bool IsRecordable(KalConfigGroup group, const char* name) {
  return name != nullptr && *name != '\0' && IsConfigGroup(group);
}

ConfigEventHandler::Ptr MakeRecord(KalConfigGroup group, const char* name) {
  auto record = std::make_shared<ConfigEventHandler>();
  record->m_group = group;
  record->m_strName = name;
  return record;
}

}  // namespace

KalConfigObserverHelper::~KalConfigObserverHelper() {
  try {
    Clean();
  } catch (...) {
    // A destructor completes; the callbacks are kept from user code by the first thing that Clean() does.
  }
}

void KalConfigObserverHelper::SetStore(IKalConfig& store) {
  // Before the first group is looked through: who records after that sees the store, see file().
  m_store.store(&store, std::memory_order_release);
  ReSubscribeConfig();
}

void KalConfigObserverHelper::ForgetStore() {
  Clean();
  m_store.store(nullptr, std::memory_order_release);
}

SubscribeId_t KalConfigObserverHelper::SubscribeConfig(KalConfigGroup group, const char* szConfigName,
                                                       fnConfigChangedCallBack cb, ACmThread* thread,
                                                       bool async) {
  if (!IsRecordable(group, szConfigName) || !cb) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::SubscribeConfig", "Error parameters" << This{this});
    return 0;
  }
  const Record record = MakeRecord(group, szConfigName);
  record->m_fnNotify = std::move(cb);
  record->m_pRunThread = thread;
  record->m_bAsync = async;
  return file(record);
}

SubscribeId_t KalConfigObserverHelper::BindConfig(KalConfigGroup group, const char* szConfigName,
                                                  fnConfigInvokeCallBack cb) {
  if (!IsRecordable(group, szConfigName) || !cb) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::BindConfig", "Error parameters" << This{this});
    return 0;
  }
  const Record record = MakeRecord(group, szConfigName);
  record->m_fnInvoke = std::move(cb);
  return file(record);
}

// Puts the record in its place and makes it if there is a store.
SubscribeId_t KalConfigObserverHelper::file(const Record& record) {
  IKalConfig* store = nullptr;
  Record replaced;  // Ends after the lock: what its callback captured may call in again.
  {
    RecordsByName::Locked records(recordsOf(record->m_group));
    const auto [position, isNew] = records->try_emplace(record->m_strName, record);
    if (!isNew) {
      if (position->second->m_SubscribeId != 0) return 0;
      replaced = std::exchange(position->second, record);
    }
    // Under the lock: either SetStore() came first and the store is here, or it finds the record waiting.
    store = m_store.load(std::memory_order_acquire);
    if (store == nullptr) return 0;
    record->m_SubscribeId = kRegistering;
  }

  SubscribeId_t id = 0;
  try {
    id = registerWith(*store, *record);
    if (id != 0) m_recordsById.Set(id, record);
  } catch (...) {
    if (id != 0) store->UnsubscribeConfig(id);
    erase(record);
    throw;
  }
  const RecordsByName::Locked records(recordsOf(record->m_group));
  record->m_SubscribeId = id;
  return id;
}

SubscribeId_t KalConfigObserverHelper::registerWith(IKalConfig& store,
                                                    const ConfigEventHandler& record) const {
  const char* name = record.m_strName.c_str();
  if (record.m_fnInvoke) return store.BindConfig(record.m_group, name, record.m_fnInvoke);
  return store.SubscribeConfig(record.m_group, name, wrap(record.m_fnNotify), record.m_pRunThread,
                               record.m_bAsync);
}

// What is copied with each posted delivery is one pointer.
fnConfigChangedCallBack KalConfigObserverHelper::wrap(fnConfigChangedCallBack cb) const {
  struct Wrapped {
    std::shared_ptr<bool> alive;
    std::shared_ptr<int> inFlight;
    fnConfigChangedCallBack cb;
  };
  return [wrapped = std::make_shared<const Wrapped>(Wrapped{m_alive, m_inFlight, std::move(cb)})](
             const KalConfigEvent& event) {
    // Counted first, then asked, against Clean(), which says no first and then reads the count: one of the
    // two sees the other. Both are a store followed by a load of another variable, which takes sequential
    // consistency.
    const InFlight run(*wrapped->inFlight);
    if (std::atomic_ref(*wrapped->alive).load()) wrapped->cb(event);
  };
}

std::int32_t KalConfigObserverHelper::UnsubscribeConfig(SubscribeId_t id) {
  Record record;
  {
    RecordsById::Locked records(m_recordsById);
    if (auto node = records->extract(id)) record = std::move(node.mapped());
  }
  if (record == nullptr) return kResultNotFound;
  // A record by id is made, so there is a store.
  const std::int32_t result = m_store.load(std::memory_order_acquire)->UnsubscribeConfig(id);
  erase(record);
  return result;
}

std::int32_t KalConfigObserverHelper::UnsubscribeConfig(const char* szConfigName, KalConfigGroup group) {
  if (!IsRecordable(group, szConfigName)) {
    TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::UnsubscribeConfig", "Error parameters" << This{this});
    return kResultBadArgument;
  }
  SubscribeId_t id = 0;
  {
    RecordsByName::Locked records(recordsOf(group));
    const auto found = records->find(std::string_view(szConfigName));
    if (found == records->end()) {
      TESSEL_TRACE(0, "kalStore::KalConfigObserverHelper::UnsubscribeConfig", "Failed" << This{this});
      return kResultNotFound;
    }
    id = found->second->m_SubscribeId;
  }
  return UnsubscribeConfig(id);
}

void KalConfigObserverHelper::erase(const Record& record) {
  RecordsByName::Map::node_type erased;  // Ends after the lock, like `replaced` in file().
  RecordsByName::Locked records(recordsOf(record->m_group));
  const auto found = records->find(record->m_strName);
  if (found != records->end() && found->second == record) erased = records->extract(found);
}

void KalConfigObserverHelper::ReSubscribeConfig() {
  std::exception_ptr firstError;
  for (std::size_t idx = 0; idx < m_records.size(); ++idx) {
    RecordsByName::Map waiting;  // The very nodes: taking them out cannot fail and lose one.
    {
      RecordsByName::Locked records(m_records[idx]);
      for (auto at = records->begin(); at != records->end();) {
        const auto next = std::next(at);
        // What a callback or another thread makes by itself stays where it is.
        if (at->second->m_SubscribeId == 0) waiting.insert(records->extract(at));
        at = next;
      }
    }
    for (const auto& [name, handler] : waiting) {
      KAL_ASSERT(idx == static_cast<std::size_t>(handler->m_group));
      try {
        file(handler);
      } catch (...) {
        // One callback's exception must not keep the others from being told.
        if (!firstError) firstError = std::current_exception();
      }
    }
  }
  if (firstError) std::rethrow_exception(firstError);
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

}  // namespace kalStore

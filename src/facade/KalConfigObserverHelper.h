// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "facade/GuardedCallback.h"
#include "facade/LiveRecords.h"
#include "store/StoredHandler.h"
#include "tessel/ConfigExecutor.h"
#include "tessel/IKalConfig.h"
#include "tessel/atomMap.h"

namespace kalStore {

namespace internal {

/// One subscription or binding as a facade records it. Its change callback is in m_callback, not in
/// m_fnNotify: what is registered with the store shares it, and runs what it still allows. It does not
/// share the record, whose executor may own the queue in which deliveries wait.
struct ObserverRecord : StoredHandler {
  explicit ObserverRecord(fnConfigChangedCallBack&& cb = nullptr, bool isPosted = false)
      : m_callback(std::make_shared<GuardedCallback>(std::move(cb), isPosted)) {}
  ~ObserverRecord() {
    const ComponentScope component;
    m_executor.reset();
  }

  const std::shared_ptr<GuardedCallback> m_callback;
  std::optional<ConfigExecutor> m_executor;  // Before it is filed; then constant.
  std::atomic<bool> m_isRefusedByStore{false};
};

}  // namespace internal

/// The subscriptions and bindings of one facade: recorded at once, registered with the store once there is
/// one, and removed together. The facade resolves groups; a group above 12 is refused here.
///
/// A record, by its m_SubscribeId (guarded by the lock of its group's map):
///   0             waits for a store, or was refused by it; a second call for its name replaces it
///   kRegistering  some thread is registering it with the store; a second call for its name is refused
///   an id         is registered, and in m_recordsById too; a second call for its name is refused
///
/// Threads: any operation but the destructor, from any thread. No lock is held while the store is called or a
/// line is traced, and so none while a callback or a trace sink runs.
class KalConfigObserverHelper {
 public:
  using Record = std::shared_ptr<internal::ObserverRecord>;

  KalConfigObserverHelper() = default;
  KalConfigObserverHelper(const KalConfigObserverHelper&) = delete;
  KalConfigObserverHelper& operator=(const KalConfigObserverHelper&) = delete;
  /// Cleans first.
  virtual ~KalConfigObserverHelper();

  /// Gives the helper its store, once, and registers what was recorded so far. The store must outlive the
  /// helper, or the next ForgetStore(). Throws what the first failing record threw, after all others were
  /// registered.
  void SetStore(IKalConfig& store);
  /// Cleans and forgets the store.
  void ForgetStore();

  /// A subscription, to be filed. Null for bad arguments.
  Record MakeRecord(KalConfigGroup group, const char* szConfigName, fnConfigChangedCallBack&& cb,
                    ACmThread* thread, bool async);
  /// A binding, likewise.
  Record MakeBinding(KalConfigGroup group, const char* szConfigName, fnConfigInvokeCallBack&& cb);
  /// Puts the record in its place and registers it if there is a store. Returns the id; 0 when it waits for
  /// the store; nothing when its name is taken, or when it was removed. What is refused can be filed again.
  std::optional<SubscribeId_t> File(const Record& record);
  /// Removes this very record, whether it waits or is registered. Waits like UnsubscribeConfig() by id.
  void Remove(const Record& record);

  /// The id, or 0: refused, already there, or recorded for later.
  SubscribeId_t BindConfig(KalConfigGroup group, const char* szConfigName, fnConfigInvokeCallBack&& cb);
  /// Waits like the store's removal, and within the same 3000 ms for a posted run on another thread.
  std::int32_t UnsubscribeConfig(SubscribeId_t id);
  /// A record that was never registered has no id to remove by: kResultNotFound, and it stays.
  std::int32_t UnsubscribeConfig(const char* szConfigName, KalConfigGroup group);

  /// Registers every record that waits. A name that a callback has subscribed in the meantime keeps that one.
  void ReSubscribeConfig();

  /// The live values of the facade.
  internal::LiveRecords& Live() { return m_live; }

  /// Keeps change callbacks from user code from now on, waits for those that run, at most 50000 yields, and
  /// removes every subscription and binding from the store.
  void Clean();

 private:
  using RecordsByName = atomMap<std::string, Record>;
  using RecordsById = atomMap<SubscribeId_t, Record>;

  RecordsByName& recordsOf(KalConfigGroup group) { return m_records[static_cast<std::size_t>(group)]; }
  SubscribeId_t registerWith(IKalConfig& store, const Record& record) const;
  fnConfigChangedCallBack wrap(const Record& record) const;
  void awaitEnd(const internal::ObserverRecord& record);
  void erase(const Record& record);
  bool waitForCallbacks() const;
  bool isAlive() const;

  RecordsById m_recordsById;
  std::array<RecordsByName, KAL_CONFIG_GROUP_LAST> m_records;
  internal::LiveRecords m_live;
  std::atomic<IKalConfig*> m_store{nullptr};
  // Shared with every wrapped callback, which may outlive the helper in a thread's queue. Accessed
  // atomically.
  const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
  const std::shared_ptr<int> m_inFlight = std::make_shared<int>(0);
};

}  // namespace kalStore

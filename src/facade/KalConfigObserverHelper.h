#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>

#include "tessel/ConfigEventHandler.h"
#include "tessel/IKalConfig.h"
#include "tessel/atomMap.h"

namespace kalStore {

/// The subscriptions and bindings of one facade: recorded at once, made with the store as soon as there is
/// one, and removed together. Groups are resolved by the facade; a group above 12 is refused here.
///
/// A record, by its m_SubscribeId (guarded by the lock of its group's map):
///   0             waits for a store, or was refused by it; a second call for its name replaces it
///   kRegistering  is being made with the store on some thread; a second call for its name is refused
///   an id         is made, and in m_recordsById too; a second call for its name is refused
///
/// Threads: any operation but the destructor, from any thread. No lock is held while the store is called, and
/// so none while a callback runs.
class KalConfigObserverHelper {
 public:
  KalConfigObserverHelper() = default;
  KalConfigObserverHelper(const KalConfigObserverHelper&) = delete;
  KalConfigObserverHelper& operator=(const KalConfigObserverHelper&) = delete;
  /// Cleans first.
  virtual ~KalConfigObserverHelper();

  /// Gives the helper its store, once, and makes what was recorded so far. The store must outlive the helper,
  /// or the next ForgetStore(). Throws what the first failing record threw, after all others were made.
  void SetStore(IKalConfig& store);
  /// Cleans and forgets the store.
  void ForgetStore();

  /// The id, or 0: refused, already there, or recorded for later.
  SubscribeId_t SubscribeConfig(KalConfigGroup group, const char* szConfigName, fnConfigChangedCallBack cb,
                                ACmThread* thread, bool async);
  SubscribeId_t BindConfig(KalConfigGroup group, const char* szConfigName, fnConfigInvokeCallBack cb);
  std::int32_t UnsubscribeConfig(SubscribeId_t id);
  /// A record that was never made has no id to remove by: 0x46004001, and it stays.
  std::int32_t UnsubscribeConfig(const char* szConfigName, KalConfigGroup group);

  /// Makes every record that waits. A name that a callback has made in the meantime keeps what it made.
  void ReSubscribeConfig();

  /// Keeps change callbacks from user code from now on, waits for those that run, at most 50000 yields, and
  /// removes every subscription and binding from the store.
  void Clean();

 private:
  using Record = ConfigEventHandler::Ptr;
  using RecordsByName = atomMap<std::string, Record>;
  using RecordsById = atomMap<SubscribeId_t, Record>;

  RecordsByName& recordsOf(KalConfigGroup group) { return m_records[static_cast<std::size_t>(group)]; }
  SubscribeId_t file(const Record& record);
  SubscribeId_t registerWith(IKalConfig& store, const ConfigEventHandler& record) const;
  void erase(const Record& record);
  fnConfigChangedCallBack wrap(fnConfigChangedCallBack cb) const;
  bool waitForCallbacks() const;

  RecordsById m_recordsById;
  std::array<RecordsByName, KAL_CONFIG_GROUP_LAST> m_records;
  std::atomic<IKalConfig*> m_store{nullptr};
  // Shared with every wrapped callback, which may outlive the helper in a thread's queue. Accessed
  // atomically.
  const std::shared_ptr<bool> m_alive = std::make_shared<bool>(true);
  const std::shared_ptr<int> m_inFlight = std::make_shared<int>(0);
};

}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <utility>

#include "facade/Check.h"
#include "facade/ExecutorDelivery.h"
#include "facade/GuardedCallback.h"
#include "facade/KalConfigObserverHelper.h"
#include "tessel/KalConfigHelper.h"
#include "tessel/ResultCode.h"

namespace kalStore::internal {

/// What a Subscription or Binding owns. Its end is the removal.
class ConfigRegistration {
 public:
  ConfigRegistration() = default;
  ConfigRegistration(const ConfigRegistration&) = delete;
  ConfigRegistration& operator=(const ConfigRegistration&) = delete;
  virtual ~ConfigRegistration() = default;

  /// A refused registration can be begun again: the name may be free by then.
  virtual void Begin() {}
  /// A refused one is not begun again: what its callback captured ends. The callback may own the handle.
  virtual void GiveUp() {}
  /// kResultOk, or why it was refused.
  virtual std::int32_t Result() const = 0;
  bool IsMade() const { return Result() == kResultOk; }
  /// The change callback. Null once nothing notifies it any more. Not owned for longer: it may own the
  /// handle, and both end when the store or facade lets the callback go.
  virtual std::shared_ptr<GuardedCallback> Callback() const { return nullptr; }
};

class StoreSubscription final : public ConfigRegistration {
 public:
  StoreSubscription(IKalConfig& store, KalConfigGroup group, const char* name, fnConfigChangedCallBack&& fn,
                    ACmThread* pRunThread, bool bAsync, std::optional<ConfigExecutor>&& executor)
      : m_store(store) {
    const auto callback = std::make_shared<GuardedCallback>(std::move(fn), bAsync && pRunThread != nullptr);
    fnConfigChangedCallBack guarded;  // The store refuses an empty one itself.
    if (!callback->IsEmpty()) {
      guarded = RunsHandleCallback{callback};
      if (executor) {
        callback->DeliveredByExecutor();
        guarded = DeliverOn(*std::move(executor), callback, std::move(guarded));
      }
    }
    try {
      m_id = m_store.SubscribeConfig(group, name, std::move(guarded), pRunThread, bAsync);
    } catch (...) {
      // The store has taken it back, but may still deliver late.
      callback->Remove([] { return kResultOk; });
      throw;
    }
    m_callback = callback;
  }
  ~StoreSubscription() override {
    const auto callback = Callback();
    if (callback == nullptr) return;
    // Without the store, a delivery on its way to another thread is all that is left.
    callback->Remove([&] { return callback->HasStore() ? m_store.UnsubscribeConfig(m_id) : kResultOk; });
  }

  std::int32_t Result() const override { return m_id != 0 ? kResultOk : kResultBadArgument; }
  std::shared_ptr<GuardedCallback> Callback() const override { return m_callback.lock(); }

 private:
  IKalConfig& m_store;
  std::weak_ptr<GuardedCallback> m_callback;  // Owned by what the store holds.
  SubscribeId_t m_id = 0;
};

class StoreBinding final : public ConfigRegistration {
 public:
  StoreBinding(IKalConfig& store, KalConfigGroup group, const char* name, fnConfigInvokeCallBack&& fn)
      : m_store(store) {
    fnConfigInvokeCallBack shared;  // The store refuses an empty one itself.
    if (fn) {
      const auto callback = std::make_shared<const BoundCallback>(std::move(fn));
      m_callback = callback;
      shared = [callback](const KalConfigEvent& event) { return (**callback)(event); };
    }
    const bool isBindable = shared && name != nullptr && *name != '\0' && IsConfigGroup(group);
    m_refusal = isBindable ? kResultNoSuchOrExists : kResultBadArgument;
    m_id = m_store.BindConfig(group, name, std::move(shared));
  }
  ~StoreBinding() override {
    if (m_id != 0 && !m_callback.expired()) m_store.UnsubscribeConfig(m_id);
  }

  std::int32_t Result() const override { return m_id != 0 ? kResultOk : m_refusal; }

 private:
  using BoundCallback = OfComponent<fnConfigInvokeCallBack>;

  IKalConfig& m_store;
  std::weak_ptr<const BoundCallback> m_callback;  // Owned by what the store holds: see Callback().
  std::int32_t m_refusal = kResultOk;
  SubscribeId_t m_id = 0;
};

class FacadeRegistration final : public ConfigRegistration {
 public:
  FacadeRegistration(KalConfigHelper& facade, KalConfigGroup group, const char* name,
                     fnConfigChangedCallBack&& fn, ACmThread* pRunThread, bool bAsync,
                     std::optional<ConfigExecutor>&& executor)
      : m_helper(facade.m_pObserverHelper.get()),
        m_unfiled(facade.makeRecord(name, std::move(fn), group, pRunThread, bAsync)),
        m_result(resultBefore(facade, group)) {
    if (m_unfiled == nullptr || !executor) return;
    m_unfiled->m_callback->DeliveredByExecutor();
    m_unfiled->m_executor = std::move(executor);
  }
  FacadeRegistration(KalConfigHelper& facade, KalConfigGroup group, const char* name,
                     fnConfigInvokeCallBack&& fn)
      : m_helper(facade.m_pObserverHelper.get()),
        m_unfiled(makeBinding(facade, group, name, std::move(fn))),
        m_result(resultBefore(facade, group)) {}
  ~FacadeRegistration() override {
    if (const auto record = m_filed.lock()) m_helper->Remove(record);
  }

  void Begin() override {
    if (m_unfiled == nullptr || !m_helper->File(m_unfiled)) return;
    m_filed = std::exchange(m_unfiled, nullptr);
    m_result = kResultOk;
  }
  void GiveUp() override { const auto ending = std::exchange(m_unfiled, nullptr); }
  std::int32_t Result() const override {
    const auto record = m_filed.lock();
    return record != nullptr && record->m_isRefusedByStore.load(std::memory_order_relaxed)
               ? kResultNoSuchOrExists
               : m_result;
  }
  std::shared_ptr<GuardedCallback> Callback() const override {
    const auto record = m_filed.lock();
    return record == nullptr ? nullptr : record->m_callback;
  }

 private:
  using Record = KalConfigObserverHelper::Record;

  static Record makeBinding(KalConfigHelper& facade, KalConfigGroup group, const char* name,
                            fnConfigInvokeCallBack&& fn) {
    if (!Check(facade.m_pObserverHelper != nullptr && name != nullptr,
               "(m_pObserverHelper != NULL) && (szConfigName != NULL)"))
      return nullptr;
    if (!facade.resolveGroup(group, "kalStore::KalConfigHelper::BindConfig", kNoGroupAfterSpace))
      return nullptr;
    return facade.m_pObserverHelper->MakeBinding(group, name, std::move(fn));
  }

  // What cannot be filed is refused for its arguments, all else for its name.
  std::int32_t resultBefore(const KalConfigHelper& facade, KalConfigGroup group) const {
    if (m_unfiled != nullptr) return kResultNoSuchOrExists;
    const bool lacksGroup =
        group == KAL_CONFIG_GROUP_DEFAULT && facade.m_defaultGroup == KAL_CONFIG_GROUP_DEFAULT;
    return lacksGroup ? kResultNotFound : kResultBadArgument;
  }

  KalConfigObserverHelper* const m_helper;      // Null when the facade is ending.
  Record m_unfiled;                             // Until the facade has it,
  std::weak_ptr<Record::element_type> m_filed;  // and from then on.
  std::int32_t m_result;
};

}  // namespace kalStore::internal

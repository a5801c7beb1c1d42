// SPDX-License-Identifier: Apache-2.0
#include "tessel/Subscription.h"

#include <utility>

#include "facade/GuardedCallback.h"
#include "facade/KalConfigObserverHelper.h"

namespace kalStore {
namespace internal {

/// What a Subscription owns. Its end is the removal.
class SubscriptionRegistration {
 public:
  SubscriptionRegistration() = default;
  SubscriptionRegistration(const SubscriptionRegistration&) = delete;
  SubscriptionRegistration& operator=(const SubscriptionRegistration&) = delete;
  virtual ~SubscriptionRegistration() = default;

  /// A refused registration can be begun again: the name may be free by then.
  void Begin() { m_isSubscribed = subscribe(); }
  bool IsSubscribed() const { return m_isSubscribed; }
  /// Null once nothing notifies it any more. Not owned for longer: the callback may own the Subscription, and
  /// both end when the store or facade lets the callback go.
  virtual std::shared_ptr<GuardedCallback> Callback() const = 0;

 private:
  virtual bool subscribe() = 0;

  bool m_isSubscribed = false;
};

class StoreRegistration final : public SubscriptionRegistration {
 public:
  StoreRegistration(IKalConfig& store, KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                    ACmThread* pRunThread, bool bAsync)
      : m_store(store) {
    const auto callback = std::make_shared<GuardedCallback>(std::move(fn), bAsync && pRunThread != nullptr);
    fnConfigChangedCallBack guarded;  // The store refuses an empty one itself.
    if (!callback->IsEmpty()) {
      guarded = [callback](const KalConfigEvent& event) { callback->Run(event); };
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
  ~StoreRegistration() override {
    if (const auto callback = Callback()) {
      callback->Remove([this] { return m_store.UnsubscribeConfig(m_id); });
    }
  }

  std::shared_ptr<GuardedCallback> Callback() const override { return m_callback.lock(); }

 private:
  bool subscribe() override { return m_id != 0; }

  IKalConfig& m_store;
  std::weak_ptr<GuardedCallback> m_callback;  // Owned by what the store holds.
  SubscribeId_t m_id = 0;
};

class FacadeRegistration final : public SubscriptionRegistration {
 public:
  FacadeRegistration(KalConfigHelper& facade, KalConfigGroup group, const char* name,
                     fnConfigChangedCallBack fn, ACmThread* pRunThread, bool bAsync)
      : m_helper(facade.m_pObserverHelper.get()),
        m_unfiled(facade.makeRecord(name, std::move(fn), group, pRunThread, bAsync)) {}
  ~FacadeRegistration() override {
    if (const auto record = m_filed.lock()) m_helper->Remove(record);
  }

  std::shared_ptr<GuardedCallback> Callback() const override {
    const auto record = m_filed.lock();
    return record == nullptr ? nullptr : std::shared_ptr<GuardedCallback>(record, &record->m_callback);
  }

 private:
  bool subscribe() override {
    if (m_unfiled == nullptr || !m_helper->File(m_unfiled)) return false;
    m_filed = std::exchange(m_unfiled, nullptr);
    return true;
  }

  KalConfigObserverHelper* const m_helper;                               // Null when the facade is ending.
  KalConfigObserverHelper::Record m_unfiled;                             // Until the facade has it,
  std::weak_ptr<KalConfigObserverHelper::Record::element_type> m_filed;  // and from then on.
};

}  // namespace internal

using namespace internal;

namespace {

std::shared_ptr<GuardedCallback> CallbackOf(const std::shared_ptr<SubscriptionRegistration>& registration) {
  return registration == nullptr ? nullptr : registration->Callback();
}

}  // namespace

Subscription::Subscription(ConfigRef store, KalConfigGroup group, const char* name,
                           fnConfigChangedCallBack fn, ACmThread* pRunThread, bool bAsync) {
  if (store.m_facade != nullptr) {
    m_registration =
        std::make_shared<FacadeRegistration>(*store.m_facade, group, name, std::move(fn), pRunThread, bAsync);
  } else {
    m_registration =
        std::make_shared<StoreRegistration>(*store.m_store, group, name, std::move(fn), pRunThread, bAsync);
  }
  m_registration->Begin();
}

Subscription& Subscription::operator=(Subscription&& other) noexcept(false) {
  if (this == &other) return *this;
  // Held here too: what the callback of the old one captured may own this object, which then ends with it.
  const std::shared_ptr<SubscriptionRegistration> assigned = std::move(other.m_registration);
  std::shared_ptr<SubscriptionRegistration> old = std::exchange(m_registration, assigned);
  if (old == nullptr) return *this;
  old.reset();
  const bool hasEnded = assigned.use_count() == 1;
  if (assigned != nullptr && !assigned->IsSubscribed() && !hasEnded) assigned->Begin();
  return *this;
}

Subscription::operator bool() const {
  return m_registration != nullptr && m_registration->IsSubscribed();
}

void Subscription::Pause() {
  if (const auto callback = CallbackOf(m_registration)) callback->Pause();
}

void Subscription::Resume() {
  if (const auto callback = CallbackOf(m_registration)) callback->Resume();
}

bool Subscription::IsPaused() const {
  const auto callback = CallbackOf(m_registration);
  return callback != nullptr && callback->IsPaused();
}

}  // namespace kalStore

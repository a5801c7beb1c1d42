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
  virtual GuardedCallback& Callback() = 0;

 private:
  virtual bool subscribe() = 0;

  bool m_isSubscribed = false;
};

class StoreRegistration final : public SubscriptionRegistration {
 public:
  StoreRegistration(IKalConfig& store, KalConfigGroup group, const char* name, fnConfigChangedCallBack fn,
                    ACmThread* pRunThread, bool bAsync)
      : m_store(store),
        m_callback(std::make_shared<GuardedCallback>(std::move(fn), bAsync && pRunThread != nullptr)) {
    fnConfigChangedCallBack guarded;  // The store refuses an empty one itself.
    if (!m_callback->IsEmpty()) {
      guarded = [callback = m_callback](const KalConfigEvent& event) { callback->Run(event); };
    }
    m_id = m_store.SubscribeConfig(group, name, std::move(guarded), pRunThread, bAsync);
  }
  ~StoreRegistration() override {
    if (m_id != 0) m_callback->Remove([this] { return m_store.UnsubscribeConfig(m_id); });
  }

  GuardedCallback& Callback() override { return *m_callback; }

 private:
  bool subscribe() override { return m_id != 0; }

  IKalConfig& m_store;
  const std::shared_ptr<GuardedCallback> m_callback;
  SubscribeId_t m_id = 0;
};

class FacadeRegistration final : public SubscriptionRegistration {
 public:
  FacadeRegistration(KalConfigHelper& facade, KalConfigGroup group, const char* name,
                     fnConfigChangedCallBack fn, ACmThread* pRunThread, bool bAsync)
      : m_helper(*facade.m_pObserverHelper),
        m_record(facade.makeRecord(name, std::move(fn), group, pRunThread, bAsync)) {}
  ~FacadeRegistration() override {
    if (m_record != nullptr) m_helper.Remove(m_record);
  }

  GuardedCallback& Callback() override { return m_record->m_callback; }

 private:
  bool subscribe() override { return m_record != nullptr && m_helper.File(m_record).has_value(); }

  KalConfigObserverHelper& m_helper;
  const KalConfigObserverHelper::Record m_record;
};

}  // namespace internal

using namespace internal;

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

Subscription& Subscription::operator=(Subscription&& other) {
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
  if (*this) m_registration->Callback().Pause();
}

void Subscription::Resume() {
  if (*this) m_registration->Callback().Resume();
}

bool Subscription::IsPaused() const {
  return *this && m_registration->Callback().IsPaused();
}

}  // namespace kalStore

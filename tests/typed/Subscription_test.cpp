// SPDX-License-Identifier: Apache-2.0
#include "tessel/Subscription.h"

#include <atomic>
#include <functional>
#include <future>
#include <memory>
#include <new>
#include <stdexcept>
#include <thread>
#include <type_traits>
#include <utility>

#include "ForeignStore.h"
#include "TypedTest.h"
#include "support/AllocationCount.h"
#include "support/TraceLog.h"
#include "tessel/post.h"

namespace {

// Empty with static storage, before any constructor runs.
[[maybe_unused]] constinit Subscription g_empty;
// What the new one's callback throws at its initial delivery leaves the assignment.
static_assert(!std::is_nothrow_move_assignable_v<Subscription>);

class Subscriptions : public TypedTest {
 protected:
  void Set(int value) { m_facade.SetKalConfig("A", value, KAL_CONFIG_GROUP_AUDIO); }

  template <class Store>
  Subscription Counting(Store& store) {
    return Subscription(store, KAL_CONFIG_GROUP_AUDIO, "A", [this](const KalConfigEvent&) { ++m_notified; });
  }

  static std::weak_ptr<Subscription> OwnedByItsCallback(ConfigRef store) {
    const auto owner = std::make_shared<Subscription>();
    *owner = Subscription(store, KAL_CONFIG_GROUP_AUDIO, "A", [owner](const KalConfigEvent&) {});
    return owner;
  }

  CallStore m_call{kCall};
  KalConfigHelper m_facade{kCall};
  std::atomic<int> m_notified{0};
};

}  // namespace

TEST_F(Subscriptions, NotifyUntilTheirEnd) {
  {
    const Subscription direct = Counting(*m_call);
    const Subscription viaFacade = Counting(m_facade);
    EXPECT_TRUE(direct);
    EXPECT_TRUE(viaFacade);
    Set(1);
    EXPECT_EQ(m_notified, 2);
  }
  Set(2);
  EXPECT_EQ(m_notified, 2);
}

TEST_F(Subscriptions, ReleaseWhatTheirCallbackCaptured) {
  const auto captured = std::make_shared<int>(0);
  {
    const Subscription subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "A",
                                    [captured](const KalConfigEvent&) {});
    EXPECT_EQ(captured.use_count(), 2);
  }
  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(Subscriptions, AreEmptyWhenRefused) {
  const TraceLog silent;
  const fnConfigChangedCallBack fn = [](const KalConfigEvent&) {};
  EXPECT_FALSE(Subscription());
  EXPECT_FALSE(Subscription(*m_call, KAL_CONFIG_GROUP_LAST, "A", fn));
  EXPECT_FALSE(Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "", fn));
  EXPECT_FALSE(Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, nullptr, fn));
  EXPECT_FALSE(Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "A", nullptr));
  EXPECT_FALSE(Subscription(m_facade, KAL_CONFIG_GROUP_DEFAULT, "A", fn));

  const Subscription first = Counting(m_facade);
  {
    const Subscription second = Counting(m_facade);  // One per name and facade.
    EXPECT_TRUE(first);
    EXPECT_FALSE(second);
  }
  Set(1);
  EXPECT_EQ(m_notified, 1);
}

TEST_F(Subscriptions, MoveWithoutBeingRemoved) {
  Subscription first = Counting(*m_call);
  Subscription second = std::move(first);
  EXPECT_FALSE(first);  // NOLINT(bugprone-use-after-move): empty, as documented
  EXPECT_TRUE(second);
  Set(1);
  EXPECT_EQ(m_notified, 1);
  first = std::move(second);
  Set(2);
  EXPECT_EQ(m_notified, 2);
}

TEST_F(Subscriptions, RemoveWhatAnAssignmentReplaces) {
  Subscription subscription = Counting(*m_call);
  int other = 0;
  subscription = Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) { ++other; });
  Set(1);
  EXPECT_EQ(m_notified, 0);
  EXPECT_EQ(other, 1);

  Subscription& itself = subscription;
  subscription = std::move(itself);
  Set(2);
  EXPECT_EQ(other, 2);

  subscription = {};
  Set(3);
  EXPECT_EQ(other, 2);
}

TEST_F(Subscriptions, CanBeRemovedEarlyAndTwice) {
  Subscription subscription = Counting(m_facade);
  subscription.Remove();
  EXPECT_FALSE(subscription);
  subscription.Remove();
  Set(1);
  EXPECT_EQ(m_notified, 0);

  subscription = Counting(m_facade);  // The name is free again: the initial delivery.
  EXPECT_EQ(m_notified, 1);
}

TEST_F(Subscriptions, DropChangesWhilePaused) {
  Subscription subscription = Counting(*m_call);
  EXPECT_FALSE(subscription.IsPaused());
  subscription.Pause();
  EXPECT_TRUE(subscription);
  EXPECT_TRUE(subscription.IsPaused());
  Set(1);
  subscription.Resume();
  EXPECT_FALSE(subscription.IsPaused());
  EXPECT_EQ(m_notified, 0);
  Set(2);
  EXPECT_EQ(m_notified, 1);

  Subscription empty;
  empty.Pause();
  empty.Resume();
  EXPECT_FALSE(empty.IsPaused());
}

TEST_F(Subscriptions, CanPauseInsideTheirCallback) {
  Subscription subscription;
  subscription = Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) {
    ++m_notified;
    subscription.Pause();
  });
  Set(1);
  Set(2);
  EXPECT_EQ(m_notified, 1);
}

TEST_F(Subscriptions, AreNotMadeWhenTheInitialDeliveryThrows) {
  Set(1);
  const fnConfigChangedCallBack fn = [](const KalConfigEvent&) { throw std::runtime_error("no"); };
  EXPECT_THROW(const Subscription made(*m_call, KAL_CONFIG_GROUP_AUDIO, "A", fn), std::runtime_error);
  EXPECT_NO_THROW(Set(2));
}

TEST_F(Subscriptions, AreMadeWholeOrNotAtAllWhenAnAllocationFails) {
  for (std::size_t n = 1;; ++n) {
    FailAllocation nth(n);
    try {
      const Subscription subscription = Counting(m_facade);
    } catch (const std::bad_alloc&) {
      EXPECT_EQ(m_facade.SetKalConfig("A", static_cast<int>(n), KAL_CONFIG_GROUP_AUDIO), kResultNobody);
    }
    if (!nth.Fired()) break;
  }
  m_notified = 0;
  const Subscription subscription = Counting(m_facade);
  EXPECT_TRUE(subscription);
  EXPECT_EQ(m_notified, 1);
}

TEST_F(Subscriptions, WaitForAFacadeToBeBound) {
  KalConfigHelper late;
  {
    const Subscription subscription = Counting(late);
    EXPECT_TRUE(subscription);
    late.SetCallId(kCall);
    Set(1);
    EXPECT_EQ(m_notified, 1);
  }
  Set(2);
  EXPECT_EQ(m_notified, 1);
  const Subscription again = Counting(late);  // The name is free again.
  EXPECT_TRUE(again);
}

TEST_F(Subscriptions, NeverRunWhenRemovedBeforeTheFacadeIsBound) {
  KalConfigHelper late;
  Counting(late).Remove();
  late.SetCallId(kCall);
  Set(1);
  EXPECT_EQ(m_notified, 0);
}

TEST_F(Subscriptions, RemovedBeforeTheFacadeIsBoundReleaseWhatTheirCallbackCaptured) {
  KalConfigHelper late;
  const auto captured = std::make_shared<int>();
  Subscription subscription(late, KAL_CONFIG_GROUP_AUDIO, "A", [captured](const KalConfigEvent&) {});
  EXPECT_EQ(captured.use_count(), 2);
  subscription.Remove();
  EXPECT_EQ(captured.use_count(), 1) << "while the facade lives";
}

TEST_F(Subscriptions, AreReplacedByALaterOneOfAFacadeThatIsNotBound) {
  KalConfigHelper late;
  int earlierNotified = 0;
  {
    const Subscription earlier(late, KAL_CONFIG_GROUP_AUDIO, "A",
                               [&](const KalConfigEvent&) { ++earlierNotified; });
    const Subscription later = Counting(late);
    EXPECT_TRUE(later);
    EXPECT_FALSE(Subscription(late, KAL_CONFIG_GROUP_AUDIO, nullptr, [](const KalConfigEvent&) {}));
    late.SetCallId(kCall);
    Set(1);
    EXPECT_EQ(m_notified, 1);
  }
  EXPECT_EQ(earlierNotified, 0);
}

TEST_F(Subscriptions, LeaveTheNameFreeWhenRemovedBeforeTheFacadeIsBound) {
  KalConfigHelper late;
  Counting(late).Remove();
  late.SetCallId(kCall);
  EXPECT_NE(late.SubscribeConfig("A", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO), 0U);
  EXPECT_EQ(m_notified, 0);
}

TEST_F(Subscriptions, LeaveTheNameFreeWhenACallbackRemovesThemWhileTheFacadeBinds) {
  m_facade.SetKalConfig("A", 1, KAL_CONFIG_GROUP_AUDIO);
  m_facade.SetKalConfig("A", 1, KAL_CONFIG_GROUP_VIDEO);
  KalConfigHelper late;
  Subscription sameGroup(late, KAL_CONFIG_GROUP_AUDIO, "B", [this](const KalConfigEvent&) { ++m_notified; });
  Subscription laterGroup(late, KAL_CONFIG_GROUP_VIDEO, "A", [this](const KalConfigEvent&) { ++m_notified; });
  const Subscription first(late, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) {
    sameGroup.Remove();
    laterGroup.Remove();
  });
  late.SetCallId(kCall);
  EXPECT_EQ(m_facade.SetKalConfig("B", 2, KAL_CONFIG_GROUP_AUDIO), kResultNobody);
  EXPECT_EQ(m_facade.SetKalConfig("A", 2, KAL_CONFIG_GROUP_VIDEO), kResultNobody);
  EXPECT_EQ(m_notified, 0);
  EXPECT_TRUE(Subscription(late, KAL_CONFIG_GROUP_AUDIO, "B", [](const KalConfigEvent&) {}));
  EXPECT_TRUE(Subscription(late, KAL_CONFIG_GROUP_VIDEO, "A", [](const KalConfigEvent&) {}));
}

TEST_F(Subscriptions, RemoveNobodyElses) {
  const auto count = [this](const KalConfigEvent&) { ++m_notified; };
  KalConfigHelper late;
  Subscription replaced = Counting(late);
  late.SubscribeConfig("A", count, KAL_CONFIG_GROUP_AUDIO);
  replaced.Remove();
  late.SetCallId(kCall);
  EXPECT_EQ(m_facade.SetKalConfig("A", 1, KAL_CONFIG_GROUP_AUDIO), kResultOk);
  EXPECT_EQ(m_notified, 1);

  Subscription removedByName = Counting(m_facade);
  m_facade.UnsubscribeConfig("A", KAL_CONFIG_GROUP_AUDIO);
  m_facade.SubscribeConfig("A", count, KAL_CONFIG_GROUP_AUDIO);
  removedByName.Remove();
  m_notified = 0;
  Set(2);
  EXPECT_EQ(m_notified, 2);

  Subscription recorded;
  KalConfigHelper later;
  recorded = Counting(later);
  later.SetCallId(kCall);
  later.UnsubscribeConfig("A", KAL_CONFIG_GROUP_AUDIO);
  later.SubscribeConfig("A", count, KAL_CONFIG_GROUP_AUDIO);
  recorded.Remove();
  m_notified = 0;
  Set(3);
  EXPECT_EQ(m_notified, 3);
}

TEST_F(Subscriptions, AreReplacedByAssignmentOnAFacade) {
  Subscription subscription = Counting(m_facade);
  int second = 0;
  subscription =
      Subscription(m_facade, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) { ++second; });
  EXPECT_TRUE(subscription);
  Set(1);
  EXPECT_EQ(m_notified, 0);
  EXPECT_EQ(second, 1);

  Subscription refused = Counting(m_facade);
  EXPECT_FALSE(refused);
  refused.Pause();
  EXPECT_FALSE(refused.IsPaused());
  subscription = std::move(refused);
  EXPECT_EQ(m_notified, 1) << "the initial delivery";
  Set(2);
  EXPECT_EQ(m_notified, 2);
  EXPECT_EQ(second, 1);
}

TEST_F(Subscriptions, SayWhyTheyWereRefused) {
  const TraceLog silent;
  const fnConfigChangedCallBack fn = [](const KalConfigEvent&) {};
  const auto reasonOf = [&](ConfigRef store, KalConfigGroup group, const char* name) {
    return Subscription(store, group, name, fn).RefusalReason();
  };
  for (const ConfigRef store : {ConfigRef(*m_call), ConfigRef(m_facade)}) {
    EXPECT_EQ(reasonOf(store, KAL_CONFIG_GROUP_AUDIO, "B"), kResultOk);
    EXPECT_EQ(reasonOf(store, KAL_CONFIG_GROUP_AUDIO, ""), kResultBadArgument);
    EXPECT_EQ(reasonOf(store, KAL_CONFIG_GROUP_AUDIO, nullptr), kResultBadArgument);
    EXPECT_EQ(reasonOf(store, KAL_CONFIG_GROUP_LAST, "A"), kResultBadArgument);
    EXPECT_EQ(Subscription(store, KAL_CONFIG_GROUP_AUDIO, "A", nullptr).RefusalReason(), kResultBadArgument);
  }
  EXPECT_EQ(reasonOf(m_facade, KAL_CONFIG_GROUP_DEFAULT, "A"), kResultNotFound);
  EXPECT_EQ(Subscription().RefusalReason(), kResultOk);

  Subscription first = Counting(m_facade);
  EXPECT_EQ(first.RefusalReason(), kResultOk);
  EXPECT_EQ(reasonOf(m_facade, KAL_CONFIG_GROUP_AUDIO, "A"), kResultNoSuchOrExists);
  EXPECT_EQ(reasonOf(*m_call, KAL_CONFIG_GROUP_AUDIO, "A"), kResultOk) << "a store has as many as one likes";
  first.Remove();
  EXPECT_EQ(first.RefusalReason(), kResultOk);
}

TEST_F(Subscriptions, RefusedAgainByAnAssignmentReleaseWhatTheirCallbackCaptured) {
  const Subscription taken = Counting(m_facade);
  const std::weak_ptr<Subscription> owner = OwnedByItsCallback(m_facade);
  EXPECT_TRUE(owner.expired()) << "the callback owned it for ever";

  const auto captured = std::make_shared<int>();
  Subscription refused(m_facade, KAL_CONFIG_GROUP_AUDIO, "A", [captured](const KalConfigEvent&) {});
  EXPECT_EQ(captured.use_count(), 2) << "for an assignment";
  Subscription target;
  target = std::move(refused);
  EXPECT_EQ(captured.use_count(), 1);
  EXPECT_EQ(target.RefusalReason(), kResultNoSuchOrExists);
}

TEST_F(Subscriptions, WhoseReplacementThrewReleaseWhatItsCallbackCaptured) {
  Set(1);
  const auto captured = std::make_shared<int>();
  Subscription subscription = Counting(m_facade);
  Subscription replacement(m_facade, KAL_CONFIG_GROUP_AUDIO, "A",
                           [captured](const KalConfigEvent&) { throw std::runtime_error("no"); });
  EXPECT_THROW(subscription = std::move(replacement), std::runtime_error);
  EXPECT_EQ(captured.use_count(), 1);
}

TEST_F(Subscriptions, AreEmptyWhenTheInitialDeliveryOfAReplacementThrows) {
  Set(1);
  Subscription subscription = Counting(m_facade);
  Subscription replacement(m_facade, KAL_CONFIG_GROUP_AUDIO, "A",
                           [](const KalConfigEvent&) { throw std::runtime_error("no"); });
  EXPECT_THROW(subscription = std::move(replacement), std::runtime_error);
  EXPECT_FALSE(subscription);
  EXPECT_EQ(m_facade.SetKalConfig("A", 2, KAL_CONFIG_GROUP_AUDIO), kResultNobody);
  EXPECT_TRUE(Counting(m_facade));
}

TEST_F(Subscriptions, CanMoveInsideTheirCallback) {
  Subscription first, second;
  first = Subscription(*m_call, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) {
    ++m_notified;
    std::swap(first, second);
  });
  Set(1);
  EXPECT_FALSE(first);
  EXPECT_TRUE(second);
  Set(2);
  EXPECT_EQ(m_notified, 2);
  EXPECT_TRUE(first);
}

TEST_F(Subscriptions, CanBelongToTheirOwnCallback) {
  const auto subscribe = &Subscriptions::OwnedByItsCallback;
  for (const ConfigRef store : {ConfigRef(*m_call), ConfigRef(m_facade)}) {
    std::weak_ptr<Subscription> subscription = subscribe(store);
    subscription.lock().get()->Remove();
    EXPECT_TRUE(subscription.expired());

    Subscription* raw = (subscription = subscribe(store)).lock().get();
    raw->Remove();
    EXPECT_TRUE(subscription.expired());

    raw = (subscription = subscribe(store)).lock().get();
    *raw = {};
    EXPECT_TRUE(subscription.expired());

    raw = (subscription = subscribe(store)).lock().get();
    *raw = Subscription(store, KAL_CONFIG_GROUP_AUDIO, "A", [this](const KalConfigEvent&) { ++m_notified; });
    EXPECT_TRUE(subscription.expired());
    EXPECT_EQ(m_facade.SetKalConfig("A", 1, KAL_CONFIG_GROUP_AUDIO, true), kResultNobody);
  }
  EXPECT_EQ(m_notified, 0);
}

TEST_F(Subscriptions, OwnedByTheirOwnCallbackEndWithTheStoreOrFacade) {
  std::weak_ptr<Subscription> subscription;
  {
    const CallStore call(kCall + 1, CallStore::kEndsCall);
    subscription = OwnedByItsCallback(*call);
    EXPECT_FALSE(subscription.expired());
  }
  EXPECT_TRUE(subscription.expired());
  for (const std::uint32_t callId : {kCall, kNoCallId}) {
    {
      KalConfigHelper facade(callId);
      subscription = OwnedByItsCallback(facade);
      EXPECT_FALSE(subscription.expired());
    }
    EXPECT_TRUE(subscription.expired()) << callId;
  }
}

TEST_F(Subscriptions, OwnedByTheirOwnCallbackCanBeRemovedInItOnceTheStoreHasEnded) {
  ACmThread thread;
  thread.Start();
  std::promise<void> end;
  Post(thread, [ended = end.get_future().share()] { ended.wait(); });
  const auto subscribe = [this](ACmThread* runThread, std::unique_ptr<CallStore>& call) {
    const auto owner = std::make_shared<Subscription>();
    *owner = Subscription(
        **call, KAL_CONFIG_GROUP_AUDIO, "A",
        [this, owner, &call](const KalConfigEvent&) {
          ++m_notified;
          call.reset();
          owner->Remove();
        },
        runThread, true);
    return std::weak_ptr(owner);
  };
  auto posted = std::make_unique<CallStore>(kCall + 1, CallStore::kEndsCall);
  auto direct = std::make_unique<CallStore>(kCall + 2, CallStore::kEndsCall);
  const std::weak_ptr<Subscription> late = subscribe(&thread, posted), inside = subscribe(nullptr, direct);

  (*posted)->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "A", 1, false, false);
  posted.reset();
  end.set_value();
  thread.Stop();
  EXPECT_EQ(m_notified, 1);
  EXPECT_TRUE(late.expired());

  (*direct)->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "A", 1, false, false);
  EXPECT_EQ(m_notified, 2);
  EXPECT_TRUE(inside.expired());
}

// The store is not the library's own, and ends as any other: with what it was given.
TEST_F(Subscriptions, LeaveAStoreAloneThatEndedBeforeADeliveryOnItsWay) {
  struct Store : ForeignStore<true> {
    explicit Store(int& removals) : m_removals(removals) {}
    SubscribeId_t SubscribeConfig(KalConfigGroup, const char*, fnConfigChangedCallBack fn, ACmThread*,
                                  bool) override {
      m_fn = std::move(fn);
      return 1;
    }
    std::int32_t UnsubscribeConfig(SubscribeId_t) override { return ++m_removals; }

    int& m_removals;
    fnConfigChangedCallBack m_fn;
  };
  int removals = 0;
  std::function<void()> task;
  auto store = std::make_unique<Store>(removals);
  Subscription subscription(
      *store, KAL_CONFIG_GROUP_AUDIO, "A", [](const KalConfigEvent&) {},
      [&](std::function<void()> posted) { task = std::move(posted); });
  store->m_fn(KalConfigEvent());
  EXPECT_TRUE(task);
  store.reset();
  subscription.Remove();
  EXPECT_EQ(removals, 0);
}

TEST_F(Subscriptions, OwnedByACallbackOfTheSameFacadeEndWithItWhetherOrNotItIsBound) {
  const KalConfigGroup kOwner = KAL_CONFIG_GROUP_VIDEO;
  for (const std::uint32_t callId : {kCall, kNoCallId}) {
    for (const KalConfigGroup owned : {KAL_CONFIG_GROUP_AUDIO, kOwner, KAL_CONFIG_GROUP_UNIT_TEST}) {
      for (const char* owner : {"A", "C"}) {
        std::weak_ptr<Subscription> watch;
        {
          KalConfigHelper facade(callId);
          auto subscription =
              std::make_shared<Subscription>(facade, owned, "B", [](const KalConfigEvent&) {});
          watch = subscription;
          facade.SubscribeConfig(owner, [subscription](const KalConfigEvent&) {}, kOwner);
        }
        EXPECT_TRUE(watch.expired()) << callId << ", " << owned << ", " << owner;
      }
    }
  }
}

TEST_F(Subscriptions, AreRefusedByAFacadeThatEndsWhatACallbackOwned) {
  struct Owned {
    KalConfigHelper& facade;
    bool& isRefused;
    ~Owned() {
      isRefused = !Subscription(facade, KAL_CONFIG_GROUP_AUDIO, "B", [](const KalConfigEvent&) {});
    }
  };
  const TraceLog silent(-1);
  bool isRefused = false;
  {
    KalConfigHelper facade;
    const auto owned = std::shared_ptr<Owned>(new Owned{facade, isRefused});
    facade.SubscribeConfig("A", [owned](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO);
  }
  EXPECT_TRUE(isRefused);
}

TEST_F(Subscriptions, DropAPostedDeliveryThatHasNotBegun) {
  ACmThread thread;
  thread.Start();
  std::promise<void> blocked;
  std::promise<void> goOn;
  Subscription blocker(
      *m_call, KAL_CONFIG_GROUP_AUDIO, "Block",
      [&](const KalConfigEvent&) {
        blocked.set_value();
        goOn.get_future().wait();
      },
      &thread, true);
  Subscription posted(
      *m_call, KAL_CONFIG_GROUP_AUDIO, "A", [&](const KalConfigEvent&) { ++m_notified; }, &thread, true);
  m_facade.SetKalConfig("Block", 1, KAL_CONFIG_GROUP_AUDIO);
  blocked.get_future().wait();
  Set(1);
  posted.Remove();
  goOn.set_value();
  thread.Stop();
  EXPECT_EQ(m_notified, 0);
}

TEST_F(Subscriptions, CanBeRemovedInsideAPostedDelivery) {
  ACmThread thread;
  thread.Start();
  Subscription posted;
  posted = Subscription(
      *m_call, KAL_CONFIG_GROUP_AUDIO, "A",
      [&](const KalConfigEvent&) {
        ++m_notified;
        posted.Remove();
      },
      &thread, true);
  Set(1);
  Set(2);
  thread.Stop();
  EXPECT_EQ(m_notified, 1);
}

TEST_F(Subscriptions, ArePausedAndResumedWhileOthersSet) {
  Subscription subscription = Counting(*m_call);
  std::thread setter([&] {
    for (int value = 0; value < 2000; ++value) Set(value);
  });
  for (int i = 0; i < 2000; ++i) {
    subscription.Pause();
    subscription.Resume();
  }
  setter.join();
  const int before = m_notified;
  EXPECT_LE(before, 2000);
  Set(-1);
  EXPECT_EQ(m_notified, before + 1);
}

TEST_F(Subscriptions, AreSilentOnceRemovedWhileOthersSet) {
  const TraceLog silent(-1);
  ACmThread thread;
  thread.Start();
  std::atomic<bool> done{false};
  std::thread setter([&] {
    for (int value = 0; !done; ++value) Set(value);
  });
  for (int i = 0; i < 200; ++i) {
    // What the callback uses ends with the scope: a late run would be a use after its end.
    auto notified = std::make_unique<std::atomic<int>>(0);
    const Subscription subscription(
        *m_call, KAL_CONFIG_GROUP_AUDIO, "A",
        [notified = notified.get()](const KalConfigEvent&) { notified->fetch_add(1); },
        i % 2 == 0 ? &thread : nullptr, i % 4 == 0);
    std::this_thread::yield();
  }
  done = true;
  setter.join();
}

// SPDX-License-Identifier: Apache-2.0
// A delivery can be overtaken by the removal of its subscription: it waits in the queue of the run thread, or
// for the subscribers that are notified before it. The store then gives up waiting for it, and calls late.
// Whichever way the subscription was removed, user code is not reached.
#include <atomic>
#include <functional>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>

#include "WaysToSubscribe.h"
#include "tessel/post.h"

namespace kalStore {
namespace {

class LateDelivery : public FacadeTest, public testing::WithParamInterface<WayToSubscribe> {
 protected:
  LateDelivery() { m_thread.Start(); }

  std::function<void()> Subscribe(bool isAsync) {
    return GetParam().subscribe([this](const KalConfigEvent&) { ++m_notified; }, &m_thread, isAsync);
  }

  // Subscribes to "a" before the others, so that this callback runs on the setter's thread once the delivery
  // is announced to all of them.
  void OnAnnounced(fnConfigChangedCallBack fn) { m_setter.SubscribeConfig("a", std::move(fn), kGroup); }

  // Keeps the thread busy until `work` has run and returned there.
  void Occupy(std::function<void()> work) {
    Gate begun;
    Post(m_thread, [&begun, work = std::move(work)] {
      begun.Open();
      work();
    });
    begun.Wait();
  }

  TestClock m_clock;
  const TraceLog m_log{0};
  ACmThread m_thread{"subscriber"};
  KalConfigHelper m_setter{kCall};
  std::atomic<int> m_notified{0};
};

TEST_P(LateDelivery, HandedOverToTheThreadThatRemovesIsDropped) {
  Gate announced;
  OnAnnounced([&](const KalConfigEvent&) { announced.Open(); });
  std::function<void()> remove = Subscribe(false);
  Occupy([&] {
    announced.Wait();
    remove();
  });
  m_setter.SetKalConfig("a", 1, kGroup);  // Waits in the queue, behind the removal.
  m_thread.Stop();
  EXPECT_EQ(m_notified, 0);
}

TEST_P(LateDelivery, HandedOverToABusyThreadIsDropped) {
  Gate announced, goOn;
  OnAnnounced([&](const KalConfigEvent&) { announced.Open(); });
  std::function<void()> remove = Subscribe(false);
  Occupy([&] { goOn.Wait(); });
  std::thread setter([&] { m_setter.SetKalConfig("a", 1, kGroup); });
  announced.Wait();
  remove();
  goOn.Open();
  setter.join();
  m_thread.Stop();
  EXPECT_EQ(m_notified, 0);
}

TEST_P(LateDelivery, PostedToTheThreadThatRemovesIsDropped) {
  Gate posted;
  std::function<void()> remove = Subscribe(true);
  Occupy([&] {
    posted.Wait();
    remove();
  });
  m_setter.SetKalConfig("a", 1, kGroup);
  posted.Open();
  m_thread.Stop();
  EXPECT_EQ(m_notified, 0);
  EXPECT_EQ(m_clock.Sleeps(), 0) << "a posted delivery is not waited for";
}

TEST_P(LateDelivery, PostedToABusyThreadIsDropped) {
  Gate goOn;
  std::function<void()> remove = Subscribe(true);
  Occupy([&] { goOn.Wait(); });
  m_setter.SetKalConfig("a", 1, kGroup);
  remove();
  goOn.Open();
  m_thread.Stop();
  EXPECT_EQ(m_notified, 0);
  EXPECT_EQ(m_clock.Sleeps(), 0) << "a posted delivery is not waited for";
}

TEST_P(LateDelivery, ThatAnEarlierSubscribersCallbackRemovesIsDropped) {
  std::function<void()> remove;
  OnAnnounced([&](const KalConfigEvent&) { remove(); });
  remove = GetParam().subscribe([this](const KalConfigEvent&) { ++m_notified; }, nullptr, false);
  m_setter.SetKalConfig("a", 1, kGroup);
  EXPECT_EQ(m_notified, 0);
}

TEST_P(LateDelivery, BehindTheCallbackThatRemovesItselfIsDropped) {
  for (const bool isAsync : {false, true}) {
    m_notified = 0;
    Gate goOn;
    std::atomic<int> announced{0};
    OnAnnounced([&](const KalConfigEvent&) { ++announced; });
    std::function<void()> remove;
    remove = GetParam().subscribe(
        [&](const KalConfigEvent&) {
          if (++m_notified > 1) return;
          goOn.Wait();
          remove();
        },
        &m_thread, isAsync);
    std::thread setters[2];
    for (std::thread& setter : setters) {
      setter = std::thread([&] { m_setter.SetKalConfig("a", 1, kGroup, true); });
    }
    while (announced < 2) LetOthersRun();
    goOn.Open();
    for (std::thread& setter : setters) setter.join();
    Send(m_thread, [] {});
    EXPECT_EQ(m_notified, 1) << isAsync;
    m_setter.UnsubscribeConfig("a", kGroup);
    m_setter.RemoveKalConfig("a", kGroup);
  }
}

// What the initial delivery throws takes the subscription back, like a removal on that thread.
TEST_F(LateDelivery, HandedOverWhileTheInitialDeliveryThrowsIsDropped) {
  const CallStore store(kCall);
  KalConfigHelper facade(kCall);
  Subscription replaced;
  const std::function<void(fnConfigChangedCallBack)> subscribers[] = {
      [&](fnConfigChangedCallBack fn) { facade.SubscribeConfig("a", std::move(fn), kGroup, &m_thread); },
      [&](fnConfigChangedCallBack fn) {
        const Subscription made(facade, kGroup, "a", std::move(fn), &m_thread);
      },
      [&](fnConfigChangedCallBack fn) {
        replaced = Subscription(facade, kGroup, "a", [](const KalConfigEvent&) {});
        replaced = Subscription(facade, kGroup, "a", std::move(fn), &m_thread);
      },
      [&](fnConfigChangedCallBack fn) {
        const Subscription made(*store, kGroup, "a", std::move(fn), &m_thread);
      }};
  for (const auto& subscribe : subscribers) {
    m_setter.SetKalConfig("a", 0, kGroup);
    Gate goOn, announced;
    OnAnnounced([&](const KalConfigEvent& event) {
      if (event.m_newValue == ConfigData(1)) announced.Open();
    });
    std::thread setter([&] {
      goOn.Wait();
      m_setter.SetKalConfig("a", 1, kGroup);
    });
    m_notified = 0;
    bool hasThrown = false;
    Send(m_thread, [&] {
      try {
        subscribe([&](const KalConfigEvent&) {
          ++m_notified;
          goOn.Open();
          announced.Wait();
          throw std::runtime_error("initial");
        });
      } catch (const std::runtime_error&) {
        hasThrown = true;
      }
    });
    setter.join();
    EXPECT_TRUE(hasThrown);
    EXPECT_EQ(m_notified, 1) << &subscribe - subscribers;
    m_setter.UnsubscribeConfig("a", kGroup);
  }
}

INSTANTIATE_TEST_SUITE_P(Removed, LateDelivery, testing::ValuesIn(kWaysToSubscribe),
                         [](const auto& row) { return std::string(row.param.name); });

}  // namespace
}  // namespace kalStore

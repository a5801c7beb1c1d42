// SPDX-License-Identifier: Apache-2.0
// Threads that end, by pthread_exit or by cancellation, where the libraries have called a component's code or
// wait. Both unwind the stack.

#include <gtest/gtest.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <functional>
#include <future>
#include <ostream>
#include <string>
#include <thread>

#include "libutil/TestEvents.h"
#include "support/CallingSink.h"
#include "support/ThreadState.h"
#include "tessel/inspect.h"
#include "tessel/tessel.h"
#include "tessel/typed.h"

namespace kalStore {
namespace {

constexpr std::uint32_t kCall = 7;
constexpr KalConfigGroup kAudio = KAL_CONFIG_GROUP_AUDIO;

[[noreturn]] void ExitThread() {
  pthread_exit(nullptr);
}

[[noreturn, gnu::noinline]] void FailToEndThread() {
  ADD_FAILURE() << "the thread goes on";
  ExitThread();
}

/// Ends the thread, whose cancellation has been asked for. AddressSanitizer clears its marks on the stack
/// before a call that does not return, and does not see what a cancellation unwinds: this one has nothing on
/// the stack.
[[noreturn, gnu::noinline]] void EndByCancellation() {
  pthread_testcancel();
  FailToEndThread();
}

void CancelThread() {
  pthread_cancel(pthread_self());
  EndByCancellation();
}

/// Where cancellation is disabled.
void TryToCancelThread() {
  pthread_cancel(pthread_self());
  pthread_testcancel();
}

/// Runs on a thread of its own, which ends in it.
void RunUntilTheThreadEnds(const std::function<void()>& work) {
  std::thread([&] {
    work();
    FailToEndThread();
  }).join();
}

struct NamedEnd {
  const char* name;
  void (*run)();

  friend void PrintTo(const NamedEnd& end, std::ostream* out) { *out << end.name; }
};

/// How a thread ends itself.
class ThreadEnd : public testing::TestWithParam<NamedEnd> {
 protected:
  ThreadEnd() { CreateKalConfig(kCall, &m_store); }
  ~ThreadEnd() override {
    EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
    EXPECT_EQ(ReleaseKalConfig(m_store), kResultOk);
    EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
  }

  static void End() { GetParam().run(); }
  std::int32_t Set(const char* name, const char* value) {
    return m_store->SetKalConfig(kAudio, name, value, false, false);
  }
  std::string Get(const char* name) {
    ConfigData value;
    m_store->GetKalConfig(kAudio, name, value);
    return value.ToCstr();
  }
  /// That no delivery is left for which a removal would wait.
  static void ExpectNoDelivery() {
    for (const InspectedSubscription& subscription : InspectSubscriptions(kCall)) {
      EXPECT_EQ(subscription.deliveries, 0U);
      EXPECT_EQ(subscription.deliveringThreadId, 0U);
    }
  }

  IKalConfig* m_store = nullptr;
};

INSTANTIATE_TEST_SUITE_P(Ways, ThreadEnd,
                         testing::Values(NamedEnd{"Exit", &ExitThread}, NamedEnd{"Cancel", &CancelThread}),
                         [](const auto& way) { return std::string(way.param.name); });

TEST_P(ThreadEnd, InACallbackEndsTheSetAndItsDeliveries) {
  bool isFirst = true;
  int later = 0;
  const auto end = [&](const KalConfigEvent&) {
    if (std::exchange(isFirst, false)) End();
  };
  const SubscribeId_t ending = m_store->SubscribeConfig(kAudio, "name", end, nullptr, false);
  const SubscribeId_t after =
      m_store->SubscribeConfig(kAudio, "name", [&](const KalConfigEvent&) { ++later; }, nullptr, false);
  RunUntilTheThreadEnds([&] { Set("name", "1"); });
  EXPECT_EQ(Get("name"), "1");
  EXPECT_EQ(later, 0);
  ExpectNoDelivery();
  EXPECT_EQ(Set("name", "2"), kResultOk);
  EXPECT_EQ(later, 1);
  EXPECT_EQ(m_store->UnsubscribeConfig(ending), kResultOk);
  EXPECT_EQ(m_store->UnsubscribeConfig(after), kResultOk);
}

TEST_P(ThreadEnd, InACallbackOfAnImportEndsTheImport) {
  const auto end = [](const KalConfigEvent&) { End(); };
  const SubscribeId_t id = m_store->SubscribeConfig(kAudio, "b", end, nullptr, false);
  RunUntilTheThreadEnds([&] {
    m_store->ApplyKalConfigs(R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"1"},)"
                             R"({"key":"c","value":"1"}]})");
  });
  EXPECT_EQ(Get("a") + Get("b") + Get("c"), "11");
  ExpectNoDelivery();
  EXPECT_EQ(m_store->UnsubscribeConfig(id), kResultOk);
}

TEST_P(ThreadEnd, InABindingEndsTheRead) {
  const SubscribeId_t id =
      m_store->BindConfig(kAudio, "name", [](const KalConfigEvent&) -> ConfigValue { return End(), "1"; });
  ConfigData value("before");
  RunUntilTheThreadEnds([&] { m_store->GetDynamicConfig(kAudio, "name", value, {}); });
  EXPECT_STREQ(value.ToCstr(), "before");
  ExpectNoDelivery();
  EXPECT_EQ(m_store->UnsubscribeConfig(id), kResultOk);
}

TEST_P(ThreadEnd, InAnInitialDeliveryTakesTheSubscriptionBack) {
  Set("name", "1");
  RunUntilTheThreadEnds([&] {
    m_store->SubscribeConfig(kAudio, "name", [](const KalConfigEvent&) { End(); }, nullptr, false);
  });
  EXPECT_TRUE(InspectSubscriptions(kCall).empty());
}

TEST_P(ThreadEnd, InAnInitialDeliveryWhileAFacadeBindsLeavesTheFacadeUsable) {
  Set("name", "1");
  KalConfigHelper facade;
  bool isFirst = true;
  facade.SubscribeConfig(
      "name",
      [&](const KalConfigEvent&) {
        if (std::exchange(isFirst, false)) End();
      },
      kAudio);
  RunUntilTheThreadEnds([&] { facade.SetCallId(kCall); });
  EXPECT_STREQ(facade.GetKalConfig("name", kAudio).ToCstr(), "1");
  EXPECT_NE(facade.SetKalConfig("name", "2", kAudio), kResultBadArgument);
  ExpectNoDelivery();
}

TEST_P(ThreadEnd, InAnExecutorEndsTheSet) {
  Subscription subscription(
      *m_store, kAudio, "name", [](const KalConfigEvent&) {},
      ConfigExecutor([](const std::function<void()>&) { return End(), true; }));
  RunUntilTheThreadEnds([&] { Set("name", "1"); });
  ExpectNoDelivery();
  EXPECT_EQ(Get("name"), "1");
}

TEST(ThreadEndInAnEvent, EndsTheQueueAndReleasesEverySender) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  ICmEventQueue* const queue = thread.GetEventQueue();
  EventCounts ending;
  EventCounts left;
  Gate gate(*queue);
  queue->PostEvent(new CountedEvent(ending, &ExitThread), ICmEventQueue::kDefaultPriority, 0);
  for (int i = 0; i < 3; ++i) queue->PostEvent(new CountedEvent(left), ICmEventQueue::kDefaultPriority, 0);
  std::future<int> sent =
      std::async(std::launch::async, [&] { return queue->SendEvent(new CountedEvent(left), 0); });
  gate.Open();
  EXPECT_EQ(sent.get(), ESHUTDOWN);
  EXPECT_EQ(queue->PostEvent(new CountedEvent(left), ICmEventQueue::kDefaultPriority, 0), ESHUTDOWN);
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(thread.GetThreadId(), 0U);
  EXPECT_EQ(ending.fired, 1);
  EXPECT_EQ(ending.ended, 1);
  EXPECT_EQ(left.fired, 0);
  EXPECT_EQ(left.ended, 5);

  EXPECT_EQ(thread.Start(), 0);
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(ending), 0), 0);
  EXPECT_EQ(ending.fired, 2);
}

TEST(ThreadEndInAnEvent, CancelsItsSender) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EventCounts counts;
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(counts, &ExitThread), 0), ECANCELED);
  EXPECT_EQ(counts.ended, 1);
  EXPECT_EQ(thread.Stop(), 0);
}

TEST(ThreadEndInAnEvent, MayFollowTheEndOfItsOwnThreadObject) {
  auto* const thread = new ACmThread;
  ASSERT_EQ(thread->Start(), 0);
  EventCounts counts;
  const auto endBoth = [&] {
    delete thread;
    pthread_exit(nullptr);
  };
  EXPECT_EQ(thread->GetEventQueue()->SendEvent(new CountedEvent(counts, endBoth), 0), ECANCELED);
  EXPECT_EQ(counts.ended, 1);
}

TEST(ThreadEndInAnEvent, IsNotBroughtAboutByCancellation) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EventCounts counts;
  pthread_cancel(thread.GetThreadId());
  EXPECT_EQ(thread.GetEventQueue()->SendEvent(new CountedEvent(counts, &TryToCancelThread), 0), 0);
  EXPECT_EQ(thread.Stop(), 0);
  EXPECT_EQ(counts.fired, 1);
}

/// Cancels a thread while it waits, lets what it waits for happen, and expects that it goes on until its next
/// cancellation point.
template <class Wait, class LetItGo>
void CancelDuring(Wait wait, std::future<void> isWaiting, LetItGo letItGo) {
  std::atomic<bool> hasWaited{false};
  std::atomic<pid_t> id{0};
  std::thread waiting([&] {
    id = gettid();
    wait();
    hasWaited = true;
    EndByCancellation();
  });
  isWaiting.wait();
  while (StateOf(id) != 'S') std::this_thread::yield();
  pthread_cancel(waiting.native_handle());
  letItGo();
  waiting.join();
  EXPECT_TRUE(hasWaited);
}

TEST(Cancellation, TakesEffectWhenASenderHasItsResult) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EventCounts counts;
  int result = -1;
  std::promise<void> isFired;
  std::promise<void> go;
  const auto wait = [&] {
    const auto work = [&] {
      isFired.set_value();
      go.get_future().wait();
    };
    result = thread.GetEventQueue()->SendEvent(new CountedEvent(counts, work), 0);
  };
  CancelDuring(wait, isFired.get_future(), [&] { go.set_value(); });
  EXPECT_EQ(result, 0);
  EXPECT_EQ(counts.ended, 1);
}

TEST(Cancellation, TakesEffectWhenAChangeHasBeenHandedOver) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  KalConfigHelper facade(kCall);
  std::promise<void> isDelivered;
  std::promise<void> go;
  const auto callback = [&](const KalConfigEvent&) {
    isDelivered.set_value();
    go.get_future().wait();
  };
  facade.SubscribeConfig("name", callback, kAudio, &thread, false);
  CancelDuring([&] { EXPECT_EQ(facade.SetKalConfig("name", 1, kAudio), kResultOk); },
               isDelivered.get_future(), [&] { go.set_value(); });
  CleanUpKalConfig(kCall);
}

TEST(Cancellation, TakesEffectWhenARemovalHasWaited) {
  KalConfigHelper facade(kCall);
  std::promise<void> isDelivered;
  std::promise<void> go;
  const auto callback = [&](const KalConfigEvent&) {
    isDelivered.set_value();
    go.get_future().wait();
  };
  auto subscription = std::make_unique<Subscription>(facade, kAudio, "name", callback);
  std::thread setter([&] { facade.SetKalConfig("name", 1, kAudio); });
  isDelivered.get_future().wait();
  std::promise<void> isRemoved;
  const auto remove = [&] {
    isRemoved.set_value();
    subscription.reset();
  };
  CancelDuring(remove, isRemoved.get_future(), [&] { go.set_value(); });
  setter.join();
  CleanUpKalConfig(kCall);
}

TEST(Cancellation, TakesEffectWhenAThreadHasStopped) {
  ACmThread thread;
  ASSERT_EQ(thread.Start(), 0);
  EventCounts counts;
  std::promise<void> isFired;
  std::promise<void> go;
  const auto work = [&] {
    isFired.set_value();
    go.get_future().wait();
  };
  thread.GetEventQueue()->PostEvent(new CountedEvent(counts, work), ICmEventQueue::kDefaultPriority, 0);
  isFired.get_future().wait();
  std::promise<void> isStopping;
  const auto stop = [&] {
    isStopping.set_value();
    EXPECT_EQ(thread.Stop(), 0);
  };
  CancelDuring(stop, isStopping.get_future(), [&] { go.set_value(); });
  EXPECT_EQ(counts.ended, 1);
}

TEST(Cancellation, TakesEffectWhenTheSinkHasReturned) {
  KalConfigHelper facade(kCall);
  {
    const CallingSink sink("[cid=7]", &TryToCancelThread);
    RunUntilTheThreadEnds([&] {
      EXPECT_EQ(facade.SetKalConfig("name", 1, kAudio), kResultNobody);
      EndByCancellation();
    });
    EXPECT_GT(sink.Calls(), 0);
  }
  EXPECT_STREQ(facade.GetKalConfig("name", kAudio).ToCstr(), "1");
  CleanUpKalConfig(kCall);
}

TEST(ThreadEndInTheSink, ReleasesTheLocksOfTheLine) {
  for (const char* part :
       {"kalStore::CreateKalConfig", "KalConfig::KalConfig", "kalStore::ReleaseKalConfig"}) {
    SCOPED_TRACE(part);
    {
      const CallingSink sink(part, &ExitThread);
      RunUntilTheThreadEnds([] {
        IKalConfig* store = nullptr;
        CreateKalConfig(kCall, &store);
        CleanUpKalConfig(kCall);
        ReleaseKalConfig(store);
      });
      EXPECT_EQ(sink.Calls(), 1);
    }
    EXPECT_EQ(GetKalConfigSizeForUT(), 0U);  // On another thread than the one that ended.
  }
}

}  // namespace
}  // namespace kalStore

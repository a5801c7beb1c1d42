// SPDX-License-Identifier: Apache-2.0
#include <chrono>

#include "StoreFixture.h"

namespace kalStore {
namespace {

class StoreExceptions : public StoreTest {
 protected:
  static fnConfigChangedCallBack Throwing(const char* text) {
    return [text](const KalConfigEvent&) { throw std::runtime_error(text); };
  }
  /// What leaves the operation, or "(nothing)".
  template <class Operation>
  static std::string ThrownBy(Operation operation) {
    try {
      operation();
    } catch (const std::runtime_error& error) {
      return error.what();
    }
    return "(nothing)";
  }
  /// A removal that finds a delivery in progress would take three seconds.
  void ExpectRemovedAtOnce(SubscribeId_t id) {
    TraceLog log(1);
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
    EXPECT_TRUE(log.Lines().empty());
  }
};

TEST_F(StoreExceptions, LeaveTheSetAfterTheOthersWereNotified) {
  Recorder notified;
  const SubscribeId_t before = Subscribe("name", notified.Callback());
  const SubscribeId_t first = Subscribe("name", Throwing("first"));
  const SubscribeId_t between = Subscribe("name", notified.Callback());
  const SubscribeId_t second = Subscribe("name", Throwing("second"));
  const SubscribeId_t after = Subscribe("name", notified.Callback());
  EXPECT_EQ("first", ThrownBy([&] { Set("name", "1"); }));
  EXPECT_EQ(3U, notified.Count());
  EXPECT_EQ("1", Get("name"));
  for (const SubscribeId_t id : {before, first, between, second, after}) ExpectRemovedAtOnce(id);
  EXPECT_EQ("0", TotalObservers());
}

TEST_F(StoreExceptions, LeaveNoMarkThatALaterDeliveryWouldTrip) {
  bool isThrowing = true;
  Recorder notified;
  const SubscribeId_t id = Subscribe("name", [&](const KalConfigEvent& event) {
    if (isThrowing) throw std::runtime_error("once");
    notified.Add(event);
  });
  EXPECT_EQ("once", ThrownBy([&] { Set("name", "1"); }));
  isThrowing = false;
  TraceLog log(1);
  EXPECT_EQ(kResultOk, Set("name", "2"));
  EXPECT_TRUE(log.Lines().empty());  // Neither "Multiple notification" nor "level".
  EXPECT_EQ(1U, notified.Count());
  ExpectRemovedAtOnce(id);
}

TEST_F(StoreExceptions, MayBeOfAnyType) {
  Subscribe("name", [](const KalConfigEvent&) { throw 7; });
  EXPECT_THROW(Set("name", "1"), int);
}

TEST_F(StoreExceptions, LeaveASubscribeThatLeavesNothingBehind) {
  Set("name", "1");
  auto captured = std::make_shared<int>(1);
  EXPECT_EQ("initial", ThrownBy([&] {
              Subscribe("name", [captured](const KalConfigEvent&) { throw std::runtime_error("initial"); });
            }));
  EXPECT_EQ(1, captured.use_count());
  EXPECT_EQ("0", TotalObservers());
  EXPECT_EQ(kResultNotFound, m_store.UnsubscribeConfig(1));
  EXPECT_EQ(kResultNobody, Set("name", "2"));
  Recorder notified;
  EXPECT_GT(Subscribe("name", notified.Callback()), 1U);
}

TEST_F(StoreExceptions, DoNotReachTheSetterFromARunThread) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  Recorder notified;
  const SubscribeId_t handedOver = Subscribe("name", Throwing("handed over"), &thread, false);
  const SubscribeId_t posted = Subscribe("name", Throwing("posted"), &thread, true);
  const SubscribeId_t last = Subscribe("name", notified.Callback(), &thread, false);
  TraceLog log(0);
  EXPECT_EQ(kResultOk, Set("name", "1"));
  EXPECT_EQ(1U, notified.Count());
  EXPECT_EQ(1U, log.Count("OnEventFire threw, eventId=0, what=handed over"));
  EXPECT_EQ(1U, log.Count("OnEventFire threw, eventId=0, what=posted"));
  for (const SubscribeId_t id : {handedOver, posted, last}) {
    EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  }
  EXPECT_EQ(2U, log.CountLevel(0));
  Send(thread, [&] { notified.Add({}); });  // The thread goes on.
  EXPECT_EQ(2U, notified.Count());
}

TEST_F(StoreExceptions, LeaveTheSetWhenTheRunThreadIsTheSetters) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  const SubscribeId_t id = Subscribe("name", Throwing("direct"), &thread, false);
  std::string thrown;
  Send(thread, [&] { thrown = ThrownBy([&] { Set("name", "1"); }); });
  EXPECT_EQ("direct", thrown);
  ExpectRemovedAtOnce(id);
}

TEST_F(StoreExceptions, OfABindingLeaveTheReadWithTheOutputUntouched) {
  const SubscribeId_t id =
      Bind("name", [](const KalConfigEvent&) -> ConfigValue { throw std::runtime_error("bound"); });
  ConfigData value("before");
  EXPECT_EQ("bound", ThrownBy([&] { m_store.GetDynamicConfig(kAudio, "name", value, {}); }));
  EXPECT_STREQ("before", value.ToCstr());
  TraceLog log(1);
  EXPECT_EQ("bound", ThrownBy([&] { m_store.GetDynamicConfig(kAudio, "name", value, {}); }));
  EXPECT_TRUE(log.Lines().empty());
  ExpectRemovedAtOnce(id);
}

TEST_F(StoreExceptions, LeaveAnImportWithTheEntriesAfterItNotSet) {
  Subscribe("b", Throwing("b"));
  EXPECT_EQ("b", ThrownBy([&] {
              m_store.ApplyKalConfigs(
                  R"({"Audio":[{"key":"a","value":"1"},{"key":"b","value":"2"},{"key":"c","value":"3"}]})");
            }));
  EXPECT_EQ("1", Get("a"));
  EXPECT_EQ("2", Get("b"));
  EXPECT_EQ("(none)", Get("c"));
}

TEST_F(StoreExceptions, OfANestedSetReachTheOuterCallback) {
  Subscribe("inner", Throwing("inner"));
  std::string thrown;
  Subscribe("outer", [&](const KalConfigEvent&) { thrown = ThrownBy([&] { Set("inner", "1"); }); });
  EXPECT_EQ(kResultOk, Set("outer", "1"));
  EXPECT_EQ("inner", thrown);
}

TEST_F(StoreExceptions, LowerTheCallLevel) {
  ConfigEventHandler handler;
  handler.m_fnNotify = Throwing("notify");
  handler.m_fnInvoke = [](const KalConfigEvent&) -> ConfigValue { throw std::runtime_error("invoke"); };
  EXPECT_EQ("notify", ThrownBy([&] { handler.Notify({}); }));
  EXPECT_EQ("invoke", ThrownBy([&] { handler.Invoke({}); }));
  EXPECT_EQ(0, handler.m_nCallLevel);
}

}  // namespace
}  // namespace kalStore

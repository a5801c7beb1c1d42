// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <atomic>
#include <cstddef>
#include <iterator>
#include <latch>
#include <string>
#include <thread>

#include "Watchdog.h"
#include "tessel/CKalTessel.h"
#include "tessel/tessel.h"
#include "util/util.h"

// Every pair of operations from two threads at once, on one facade and one store, with subscribers notified
// in all ways.

using namespace kalStore;

namespace {

constexpr std::uint32_t kCall = 40;
constexpr std::uint32_t kOtherCall = 41;
constexpr KalConfigGroup kGroup = KAL_CONFIG_GROUP_AUDIO;
constexpr KalConfigGroup kLeafGroup = KAL_CONFIG_GROUP_METRICS;  // Nobody listens there.
constexpr auto kToggle = static_cast<KalFeatureToggleID>(5);
constexpr int kRounds = 400;

void Discard(void*, int, const char*, const char*, unsigned int) {}
void DiscardToo(void*, int, const char*, const char*, unsigned int) {}

struct Stage {
  ACmThread posted{"posted"};
  ACmThread handedOver{"handedOver"};
  std::atomic<long> notified{0};
  std::atomic<int> next{0};
  KalConfigHelper facade{kCall};
  KalConfigHelper listener{kCall};

  Stage() {
    set_util_trace_sink(&Discard, nullptr);
    EXPECT_EQ(posted.Start(), 0);
    EXPECT_EQ(handedOver.Start(), 0);
    facade.SetDefaultGroup(kGroup);
    listener.SetDefaultGroup(kGroup);
    listener.SubscribeConfig("direct", Callback());
    listener.SubscribeConfig("posted", Callback(), kGroup, &posted, true);
    listener.SubscribeConfig("handedOver", Callback(), kGroup, &handedOver);
    listener.BindConfig("bound", [this](const KalConfigEvent&) { return facade.GetKalConfig("direct"); });
  }
  ~Stage() {
    // No callback runs any more when the facades end, and the call ends last.
    posted.Stop();
    handedOver.Stop();
    EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
    set_external_trace_mask(0);
    set_util_trace_sink(nullptr, nullptr);
  }

  // What a subscriber does: uses the store from inside the delivery.
  fnConfigChangedCallBack Callback() {
    return [this](const KalConfigEvent& event) {
      ++notified;
      facade.GetKalConfig(event.m_name.c_str());
      facade.SetKalConfig("leaf", event.m_newValue, kLeafGroup);
      facade.GetDynamicConfig("bound");
      facade.DumpKalConfigs(1U << kLeafGroup);
    };
  }
  ConfigData NextValue() { return next++; }
};

struct Operation {
  const char* name;
  void (*run)(Stage& stage);
};

const Operation kOperations[] = {
    {"SetDirect", [](Stage& stage) { stage.facade.SetKalConfig("direct", stage.NextValue()); }},
    {"SetPosted", [](Stage& stage) { stage.facade.SetKalConfig("posted", stage.NextValue()); }},
    {"SetHandedOver", [](Stage& stage) { stage.facade.SetKalConfig("handedOver", stage.NextValue()); }},
    {"SetTransient",
     [](Stage& stage) { stage.facade.SetKalConfig("direct", stage.NextValue(), kGroup, true, true); }},
    {"Get", [](Stage& stage) { stage.facade.GetKalConfig("direct"); }},
    {"GetDynamic", [](Stage& stage) { stage.facade.GetDynamicConfig("bound"); }},
    {"Remove", [](Stage& stage) { stage.facade.RemoveKalConfig("direct"); }},
    {"RemoveByGroup", [](Stage& stage) { stage.facade.RemoveKalConfigByGroup(kLeafGroup); }},
    {"Dump", [](Stage& stage) { stage.facade.DumpKalConfigs(); }},
    {"Apply",
     [](Stage& stage) {
       const std::string value = stage.NextValue().ToString();
       const std::string text = R"({"Audio":[{"key":"direct","value":")" + value +
                                R"("},{"key":"handedOver","value":")" + value + R"("}]})";
       stage.facade.ApplyKalConfigs(text.c_str());
     }},
    {"SubscribeDirect",
     [](Stage& stage) {
       stage.facade.SubscribeConfig("direct", stage.Callback());
       stage.facade.UnsubscribeConfig("direct", kGroup);
     }},
    {"SubscribePosted",
     [](Stage& stage) {
       stage.facade.UnsubscribeConfig(
           stage.facade.SubscribeConfig("posted", stage.Callback(), kGroup, &stage.posted, true));
     }},
    {"SubscribeHandedOver",
     [](Stage& stage) {
       stage.facade.UnsubscribeConfig(
           stage.facade.SubscribeConfig("handedOver", stage.Callback(), kGroup, &stage.handedOver));
     }},
    {"Bind",
     [](Stage& stage) {
       stage.facade.UnsubscribeConfig(stage.facade.BindConfig(
           "leaf", [](const KalConfigEvent& event) { return event.m_defaultValue; }, kLeafGroup));
     }},
    {"Facade",
     [](Stage& stage) {
       KalConfigHelper facade(kCall);
       facade.SubscribeConfig("direct", stage.Callback(), kGroup);
       facade.SubscribeConfig("posted", stage.Callback(), kGroup, &stage.posted, true);
       facade.SubscribeConfig("handedOver", stage.Callback(), kGroup, &stage.handedOver);
     }},
    {"LateFacade",
     [](Stage& stage) {
       KalConfigHelper facade;
       facade.SubscribeConfig("direct", stage.Callback(), kGroup);
       facade.BindConfig("leaf", [](const KalConfigEvent&) { return ConfigData(1); }, kLeafGroup);
       facade.SetCallId(kCall);
     }},
    {"Toggle",
     [](Stage& stage) {
       stage.facade.SubscribeFeatureToggle(kToggle, [](const KalConfigEvent&) {});
       stage.facade.SetFeatureToggle(kToggle, stage.NextValue());
       stage.facade.IsFeatureToggleDefaultOn(kToggle);
       stage.facade.RemoveFeatureToggle(kToggle);
       stage.facade.UnsubscribeFeatureToggle(kToggle);
     }},
    {"OtherCall",
     [](Stage&) {
       IKalConfig* store = nullptr;
       CreateKalConfig(kOtherCall, &store);
       CleanUpKalConfig(kOtherCall);
       ReleaseKalConfig(store);
     }},
    {"ReadOfACall",
     [](Stage&) {
       ConfigData value;
       GetKalConfigValueEx(kGroup, "direct", value, kCall);
       GetKalConfigSizeForUT();
     }},
    {"Statistics",
     [](Stage&) {
       void* entity = nullptr;
       createTesselEntity(KAL_TESSEL_VIDEO, kCall, &entity);
       releaseTesselEntity(KAL_TESSEL_VIDEO, kCall, entity);
     }},
    {"Trace",
     [](Stage& stage) {
       set_external_trace_mask(stage.next % 3);
       set_util_trace_sink(stage.next % 2 == 0 ? &Discard : &DiscardToo, nullptr);
     }},
    {"RestartThreads",
     [](Stage& stage) {
       if (stage.next++ % 16 != 0) return;
       stage.posted.Stop();
       stage.handedOver.Stop();
       stage.posted.Start();
       stage.handedOver.Start();
     }},
};

// By the place of an operation, which is paired with itself and those after it: so each pair is played once.
class OperationPairs : public testing::TestWithParam<std::size_t> {};

TEST_P(OperationPairs, EndAtOnceAndLeaveEverythingUsable) {
  const Watchdog watchdog(kDeadlockLimit);
  const Operation& operation = kOperations[GetParam()];
  for (std::size_t place = GetParam(); place < std::size(kOperations); ++place) {
    const Operation& other = kOperations[place];
    SCOPED_TRACE(other.name);
    {
      Stage stage;
      std::latch bothAreHere(2);
      const auto repeat = [&](const Operation& repeated) {
        bothAreHere.arrive_and_wait();
        for (int round = 0; round < kRounds; ++round) repeated.run(stage);
      };
      std::thread beside([&] { repeat(other); });
      repeat(operation);
      beside.join();

      const long notified = stage.notified;
      stage.facade.SetKalConfig("direct", "last", kGroup, true);
      EXPECT_GT(stage.notified, notified);
      EXPECT_EQ(stage.facade.GetKalConfig("direct").ToString(), "last");
    }
    EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
  }
}

INSTANTIATE_TEST_SUITE_P(All, OperationPairs, testing::Range<std::size_t>(0, std::size(kOperations)),
                         [](const testing::TestParamInfo<std::size_t>& place) {
                           return kOperations[place.param].name;
                         });

}  // namespace

// SPDX-License-Identifier: Apache-2.0
#include <functional>
#include <memory>
#include <thread>

#include "JournalTest.h"
#include "component.h"
#include "support/AllocationCount.h"

namespace kalStore {
namespace {

using ::testing::AnyOf;
using ::testing::Each;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class JournalOrigins : public JournalStoreTest {
 protected:
  JournalOrigins() { Events(); }

  /// The function of the component that each event names; what is in another module is that one's path.
  std::vector<std::string> Callers() {
    std::vector<std::string> callers;
    for (const JournalEvent& event : Events()) {
      const CodePlace place = FindCodePlace(event.caller);
      const bool isComponent = place.module.find("libjournal_component") != std::string::npos;
      callers.push_back(isComponent ? place.symbol : "in " + place.module);
    }
    EXPECT_THAT(callers, Not(IsEmpty()));
    return callers;
  }

  KalConfigHelper m_facade{kCall};
};

TEST_F(JournalOrigins, AreTheFunctionThatCalledTheStore) {
  component::SetInStore(m_store, 15);
  EXPECT_THAT(Callers(), Each(std::string("component::SetInStore(kalStore::IKalConfig&, int)")));
}

TEST_F(JournalOrigins, AreTheCallerOfTheFacadeAndNotTheFacade) {
  component::SetInFacade(m_facade, 15);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SetInFacade(")));
  component::SetBySession(m_facade);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SetBySession(")));
  component::SetToggle(m_facade);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SetToggle(")));
}

TEST_F(JournalOrigins, OfATypedKeyAreInTheComponent) {
  component::SetWithKey(m_store, 15);
  // Where the compiler does not inline the header's function, the component exports no name for it.
  EXPECT_THAT(Callers(), Each(AnyOf(StartsWith("component::SetWithKey("), IsEmpty())));
}

TEST_F(JournalOrigins, OfAnImportAreItsCaller) {
  component::Apply(m_facade, R"({"Video":[{"key":"MaxFps","value":"15"},{"key":"MaxWidth","value":"640"}]})");
  EXPECT_THAT(Callers(), Each(StartsWith("component::Apply(")));
}

TEST_F(JournalOrigins, OfReadsOfABindingAreTheReader) {
  m_facade.BindConfig("MaxFps", [](const KalConfigEvent&) { return ConfigData(1); }, kVideo);
  Events();
  component::Ask(m_facade);
  EXPECT_THAT(Callers(), Each(StartsWith("component::Ask(")));
}

TEST_F(JournalOrigins, OfSubscriptionsAreWhoeverHoldsThem) {
  component::SubscribeAndEnd(m_store);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SubscribeAndEnd(")));
  component::SubscribeAndEndInFacade(m_facade);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SubscribeAndEndInFacade(")));
  component::HoldSubscription(m_store);
  EXPECT_THAT(Callers(), Each(StartsWith("component::HoldSubscription(")));
  component::HoldBinding(m_store);
  EXPECT_THAT(Callers(), Each(StartsWith("component::HoldBinding(")));
}

TEST_F(JournalOrigins, OfEveryWayToRegisterAndToLetGoAreWhoeverDoesIt) {
  component::UseCaptures(m_facade, m_store, [] { return nullptr; });
  EXPECT_THAT(Callers(), Each(StartsWith("component::UseCaptures(")));
}

TEST_F(JournalOrigins, OfTheOtherEntriesAreTheirCaller) {
  component::UseOtherEntries(m_store, 9);
  EXPECT_THAT(Callers(), Each(StartsWith("component::UseOtherEntries(")));
}

TEST_F(JournalOrigins, OfAFacadesWholeLifeAreItsOwner) {
  component::HoldFacade(8);
  EXPECT_THAT(Callers(), Each(StartsWith("component::HoldFacade(")));
}

TEST_F(JournalOrigins, OfStatisticsObjectsAreWhoeverMakesAndReleasesThem) {
  component::HoldStatistics(8);
  const auto callers = Callers();
  EXPECT_THAT(callers, Each(StartsWith("component::HoldStatistics(")));
  EXPECT_EQ(callers.size(), 5u);
}

TEST_F(JournalOrigins, OfASetInACallbackAreTheCallbacks) {
  m_facade.SetKalConfig("Width", 1, kVideo);
  Events();
  component::SetInCallback(m_facade);  // In an initial delivery, within the facade's subscription.
  std::vector<std::string> setters;
  for (const JournalEvent& event : Events({JournalKind::kSet})) {
    setters.push_back(FindCodePlace(event.caller).symbol);
  }
  EXPECT_THAT(setters, ::testing::ElementsAre(StartsWith("component::SetInFacade(")));
}

TEST_F(JournalOrigins, OfWhatEndsWithItsStoreAreWhoeverEndedThat) {
  IKalConfig* store = nullptr;
  CreateKalConfig(8, &store);
  ReleaseKalConfig(store);
  // What a callback captured asks for itself.
  auto last = std::shared_ptr<int>(new int, [this](int* owned) {
    delete owned;
    component::SetInStore(m_store, 15);
  });
  store->SubscribeConfig(kVideo, "MaxFps", [last](const KalConfigEvent&) {}, nullptr, false);
  last.reset();
  Events();
  component::EndStore(8);
  EXPECT_THAT(Callers(), ::testing::ElementsAre(
                             StartsWith("component::EndStore("), StartsWith("component::EndStore("),
                             StartsWith("component::EndStore("), StartsWith("component::SetInStore(")));
}

using JournalOriginsOfAllStores = JournalTest;

TEST_F(JournalOriginsOfAllStores, AreWhoeverEndsThem) {
  IKalConfig* store = nullptr;
  CreateKalConfig(8, &store);
  store->SubscribeConfig(kVideo, "MaxFps", [](const KalConfigEvent&) {}, nullptr, false);
  Events();
  component::EndAllStores();
  const std::vector<JournalEvent> events = Events();
  EXPECT_FALSE(events.empty());
  for (const JournalEvent& event : events) {
    EXPECT_THAT(FindCodePlace(event.caller).symbol, StartsWith("component::EndAllStores("));
  }
}

TEST_F(JournalOrigins, OfWhatCapturesDoAsTheyEndAreTheirOwn) {
  int captured = 0, ended = 0;
  component::UseCaptures(m_facade, m_store, [&] {
    ++captured;
    return std::shared_ptr<int>(new int, [&](int* owned) {
      delete owned;
      component::SetInStore(m_store, ++ended);
    });
  });
  EXPECT_GT(captured, 0);
  EXPECT_EQ(ended, captured);
  std::vector<std::string> setters;
  for (const JournalEvent& event : Events({JournalKind::kSet})) {
    setters.push_back(FindCodePlace(event.caller).symbol);
  }
  EXPECT_EQ(setters.size(), static_cast<std::size_t>(ended));
  EXPECT_THAT(setters, Each(StartsWith("component::SetInStore(")));
}

TEST_F(JournalOrigins, OfWhatATraceSinkDoesAreItsOwn) {
  const auto inSinkOf = [this](const std::string& operation, const std::function<void()>& call) {
    Events();
    {
      // Each operation traces something; what its first line lets the sink do counts.
      const InTraceLine within("", [this] { component::SetInStore(m_store, 15); });
      call();
    }
    std::vector<std::string> setters;
    for (const JournalEvent& event : Events({JournalKind::kSet, JournalKind::kTransientSet})) {
      if (event.name.text != "MaxFps") continue;
      setters.push_back(FindCodePlace(event.caller).symbol);
      EXPECT_EQ(event.line, 0u) << operation;
      EXPECT_EQ(event.document.text, "") << operation;
    }
    EXPECT_THAT(setters, ::testing::ElementsAre(StartsWith("component::SetInStore("))) << operation;
  };
  const JournalDocument document("lab.json");
  SubscribeId_t id = 0;
  inSinkOf("set", [&] { m_facade.SetKalConfig("Width", 1, kVideo); });
  inSinkOf("toggle", [&] { m_facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, true); });
  inSinkOf("refused set", [&] { m_facade.SetKalConfig("Width", {}, kVideo); });
  inSinkOf("removal", [&] { m_facade.RemoveKalConfig("Width", kVideo); });
  inSinkOf("removal of a group", [&] { m_facade.RemoveKalConfigByGroup(KAL_CONFIG_GROUP_AUDIO); });
  inSinkOf("subscription",
           [&] { id = m_facade.SubscribeConfig("Width", [](const KalConfigEvent&) {}, kVideo); });
  inSinkOf("end", [&] { m_facade.UnsubscribeConfig(id); });
  inSinkOf("binding", [&] {
    id = m_facade.BindConfig("Width", [](const KalConfigEvent&) { return ConfigData(1); }, kVideo);
  });
  inSinkOf("read", [&] { m_facade.GetDynamicConfig("Width", kVideo); });
  inSinkOf("end of the binding", [&] { m_facade.UnsubscribeConfig(id); });
  inSinkOf("import", [&] { m_facade.ApplyKalConfigs(R"({"Video":[{"key":"Width","value":"15"}]})"); });
  inSinkOf("facade", [&] { KalConfigHelper facade(8); });
  inSinkOf("end of the store", [&] { CleanUpKalConfig(8); });
  void* entity = nullptr;
  inSinkOf("statistics", [&] { createTesselEntity(KAL_TESSEL_AUDIO, 8, &entity); });
  inSinkOf("their release", [&] { releaseTesselEntity(KAL_TESSEL_AUDIO, 8, entity); });
}

TEST_F(JournalOrigins, OfAnImportInWhichACallbackStartsTheJournalAreNotTheLibrary) {
  StopJournal();
  m_facade.SubscribeConfig(
      "MaxFps",
      [this](const KalConfigEvent&) {
        if (StartJournal(1024) != kResultOk) return;
        component::SetInFacade(m_facade, 15);
        m_store.SetKalConfig(kVideo, "Height", 1, false, false);
      },
      kVideo);
  component::Apply(m_facade, R"({"Video":[{"key":"MaxFps","value":"30"},{"key":"MaxWidth","value":"640"}]})");
  std::vector<std::string> setters;
  for (const JournalEvent& event : Events({JournalKind::kSet})) {
    const std::string symbol = FindCodePlace(event.caller).symbol;
    setters.push_back(event.name.text + (event.caller == nullptr ? " by nobody" : " by " + symbol));
    EXPECT_EQ(event.line, 0u);
  }
  EXPECT_THAT(setters, ::testing::ElementsAre(StartsWith("MaxFps by component::SetInFacade("),
                                              "Height by nobody", "MaxWidth by nobody"));
}

TEST_F(JournalOrigins, OfAFacadeInWhoseCallbackTheJournalStartsAreItsCaller) {
  m_facade.SetKalConfig("MaxFps", 1, kVideo);
  Events();
  StopJournal();
  KalConfigHelper facade;
  facade.SubscribeConfig(
      "MaxFps",
      [this](const KalConfigEvent&) {
        if (StartJournal(1024) != kResultOk) return;
        component::SetInStore(m_store, 15);
      },
      kVideo);
  facade.SubscribeConfig("MaxWidth", [](const KalConfigEvent&) {}, kVideo);
  component::Bind(facade, kCall);
  std::vector<std::string> callers;
  for (const JournalEvent& event : Events({JournalKind::kSet, JournalKind::kSubscribed})) {
    callers.push_back(FindCodePlace(event.caller).symbol);
  }
  EXPECT_THAT(callers,
              ::testing::ElementsAre(StartsWith("component::SetInStore("), StartsWith("component::Bind(")));
}

TEST_F(JournalOrigins, DoNotOutliveARefusedCall) {
  const auto noGroup = static_cast<KalConfigGroup>(13);
  m_facade.SetKalConfig("", 1, kVideo);
  m_facade.RemoveKalConfig("", kVideo);
  ConfigData value;
  m_facade.GetDynamicConfig("", value, kVideo);
  m_facade.SetKalConfig("MaxFps", 1, noGroup);
  KalConfigHelper().SetKalConfig("MaxFps", 1, kVideo);
  m_facade.SetKalConfig("MaxFps", 1);  // Without a default group.
  Events();
  component::SetInStore(m_store, 15);
  EXPECT_THAT(Callers(), Each(StartsWith("component::SetInStore(")));
}

TEST_F(JournalOrigins, DoNotOutliveACallThatRanOutOfMemory) {
  const std::string longer(100, 'x');
  const ConfigData value(longer);
  for (std::size_t n = 1;; ++n) {
    bool hasFired = false;
    {
      FailAllocation nth(n);
      try {
        m_facade.SetKalConfig("MaxFps", value, kVideo);
        m_facade.SetKalConfig(("MaxFps" + longer).c_str(), value, kVideo);
        m_facade.ApplyKalConfigs(R"({"Video":[{"key":"MaxFps","value":"15"}]})");
      } catch (const std::bad_alloc&) {
      }
      hasFired = nth.Fired();
    }
    Events();
    component::SetInStore(m_store, static_cast<int>(n));
    const auto events = Events();
    ASSERT_EQ(events.size(), 1u);
    EXPECT_THAT(FindCodePlace(events[0].caller).symbol, StartsWith("component::SetInStore(")) << n;
    EXPECT_EQ(events[0].line, 0u);
    if (!hasFired) break;
  }
}

TEST_F(JournalOrigins, HaveTheInnermostLabelOfTheThread) {
  const auto labelOfSet = [this] {
    m_store.SetKalConfig(kVideo, "MaxFps", 1, true, false);
    return Events().at(0).label.text;
  };
  EXPECT_EQ(labelOfSet(), "");
  {
    const JournalOrigin outer("outer");
    EXPECT_EQ(labelOfSet(), "outer");
    {
      const JournalOrigin inner("inner");
      EXPECT_EQ(labelOfSet(), "inner");
      std::thread([&] { EXPECT_EQ(labelOfSet(), ""); }).join();
    }
    EXPECT_EQ(labelOfSet(), "outer");
  }
  EXPECT_EQ(labelOfSet(), "");
}

TEST_F(JournalOrigins, HaveLabelsOfScopesThatBeganWhileTheJournalWasOff) {
  StopJournal();
  const JournalOrigin origin("early");
  StartJournal(1024);
  m_store.SetKalConfig(kVideo, "MaxFps", 1, true, false);
  EXPECT_EQ(Events().at(0).label.text, "early");
}

TEST(CodePlaceOf, NothingIsEmpty) {
  EXPECT_THAT(FindCodePlace(nullptr).module, IsEmpty());
  int local = 0;
  const CodePlace place = FindCodePlace(&local);
  EXPECT_THAT(place.module, IsEmpty());
  EXPECT_THAT(place.symbol, IsEmpty());
  EXPECT_EQ(place.offset, 0u);
}

TEST(CodePlaceOf, AReturnAddressAtTheEndOfAFunctionIsThatFunction) {
  const auto address = reinterpret_cast<const char*>(&component::SetInStore);
  const CodePlace place = FindCodePlace(address + 1);
  EXPECT_THAT(place.module, HasSubstr("libjournal_component"));
  EXPECT_THAT(place.symbol, StartsWith("component::SetInStore("));
  EXPECT_EQ(place.offset, 1u);
  EXPECT_THAT(FindCodePlace(address).symbol, Not(StartsWith("component::SetInStore(")));
}

}  // namespace
}  // namespace kalStore

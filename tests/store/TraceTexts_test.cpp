// SPDX-License-Identifier: Apache-2.0
#include <thread>

#include "StoreFixture.h"
#include "support/TestClock.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;
using ::testing::MatchesRegex;

class StoreTraceTexts : public StoreTest {
 protected:
  static std::string Store(const std::string& method) { return "kalStore::KalConfig::" + method; }

  // On the system's clock a callback that is interrupted for long would be slow, which has a line.
  const TestClock m_clock;
};

TEST_F(StoreTraceTexts, OfASubscription) {
  ACmThread thread;
  Recorder notified;
  TraceLog log;
  Subscribe("name", notified.Callback());
  m_store.SubscribeConfig(KAL_CONFIG_GROUP_TA_ONLY, "other", notified.Callback(), &thread, true);
  EXPECT_THAT(
      log.Matching(""),
      ElementsAre(
          Store("subscribeConfig, Audio, name, 1, m_TotalObservers=0, pRunThread=0x0, bAsync=0") + Suffix(),
          Store("subscribeConfig, TAOnly, other, 2, m_TotalObservers=1, pRunThread=0x") + HexOf(&thread) +
              ", bAsync=1" + Suffix()));
  EXPECT_EQ(2U, log.CountLevel(2));
}

TEST_F(StoreTraceTexts, OfABindingARefusalAndARemoval) {
  TraceLog log;
  const auto bound = [](const KalConfigEvent&) { return ConfigValue("1"); };
  const SubscribeId_t id = Bind("name", bound);
  EXPECT_EQ(0U, Bind("name", bound));
  EXPECT_EQ(kResultOk, m_store.UnsubscribeConfig(id));
  EXPECT_THAT(log.Matching(""),
              ElementsAre(Store("bindConfig, name, 1, m_TotalObservers=0") + Suffix(),
                          Store("bindConfig, name, 2, m_TotalObservers=1") + Suffix(),
                          Store("unsubscribeConfig, Audio, name, 1, m_TotalObservers=1") + Suffix()));
  EXPECT_EQ(3U, log.CountLevel(2));
}

TEST_F(StoreTraceTexts, CountNoSubscriptionsThatHaveEndedWithTheStore) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Bind("name", [](const KalConfigEvent&) { return ConfigValue("1"); });
  EXPECT_TRUE(m_store.End());
  TraceLog log;
  Subscribe("name", notified.Callback());
  EXPECT_EQ(1U, log.Count(", 3, m_TotalObservers=0, "));
}

TEST_F(StoreTraceTexts, OfASet) {
  Recorder notified;
  Subscribe("name", notified.Callback());
  Subscribe("name", notified.Callback());
  TraceLog log;
  Set("name", "1");
  Set("name", "1");
  Set("name", "1", true);
  Set("name", "2", false, true);
  Set("nobody", "3");
  EXPECT_THAT(log.Matching(""), ElementsAre(Store("fireEvents, name,  -> 1, bForceNotify=0") + Suffix(),
                                            Store("fireEvents, nObservers=2") + Suffix(),
                                            Store("fireEvents, name, 1 -> 1, bForceNotify=1") + Suffix(),
                                            Store("fireEvents, nObservers=2") + Suffix(),
                                            Store("fireEvents, name, 1 -> 2, bForceNotify=0") + Suffix(),
                                            Store("fireEvents, nObservers=2") + Suffix(),
                                            Store("fireEvents, nobody,  -> 3, bForceNotify=0") + Suffix()));
  EXPECT_EQ(7U, log.CountLevel(2));
}

TEST_F(StoreTraceTexts, OfADynamicRead) {
  Bind("name", [](const KalConfigEvent&) { return ConfigValue("1"); });
  TraceLog log;
  ConfigData value;
  m_store.GetDynamicConfig(kAudio, "name", value, "7");
  EXPECT_THAT(log.Matching(""), ElementsAre(Store("invokeEvent, name, 7") + Suffix()));
  EXPECT_EQ(1U, log.CountLevel(2));
}

TEST_F(StoreTraceTexts, OfAReadThereIsNone) {
  Set("name", "1");
  TraceLog log;
  Get("name");
  Get("other");
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreTraceTexts, OfARecursiveSet) {
  Subscribe("name", [this](const KalConfigEvent& event) {
    if (event.m_newValue.ToInt() == 1) Set("name", "2");
  });
  TraceLog log(1);
  Set("name", "1");
  ASSERT_EQ(2U, log.Lines().size());
  EXPECT_EQ(2U, log.CountLevel(1));
  EXPECT_EQ(Store("fireEvents, fireEvents Multiple notification") + Suffix(), log.Lines()[0].text);
  EXPECT_THAT(
      log.Lines()[1].text,
      MatchesRegex("kalStore::ConfigEventHandler::Notify, level=2, name, Audio \\[this=0x[0-9a-f]+\\]"));
}

TEST_F(StoreTraceTexts, OfTwoThreadsInOneCallback) {
  Gate inside;
  Gate go;
  Subscribe("name", [&](const KalConfigEvent& event) {
    if (event.m_newValue.ToInt() == 1) {
      inside.Open();
      go.Wait();
    }
  });
  std::thread setter([&] { Set("name", "1"); });
  inside.Wait();
  TraceLog log(1);
  Set("name", "2");
  go.Open();
  setter.join();
  EXPECT_EQ(1U, log.Count("level=2, name, Audio"));
  EXPECT_EQ(1U, log.Count("fireEvents Multiple notification"));
}

TEST_F(StoreTraceTexts, OfTwoThreadsInOneBinding) {
  Gate inside;
  Gate go;
  Bind("name", [&](const KalConfigEvent& event) {
    if (event.m_defaultValue.ToInt() == 1) {
      inside.Open();
      go.Wait();
    }
    return event.m_defaultValue;
  });
  ConfigData first;
  std::thread reader([&] { m_store.GetDynamicConfig(kAudio, "name", first, 1); });
  inside.Wait();
  TraceLog log(1);
  ConfigData second;
  EXPECT_EQ(kResultOk, m_store.GetDynamicConfig(kAudio, "name", second, 2));
  go.Open();
  reader.join();
  ASSERT_EQ(2U, log.CountLevel(1));
  EXPECT_EQ(Store("invokeEvent, invokeEvent Multiple notification") + Suffix(), log.Lines()[0].text);
  EXPECT_THAT(
      log.Lines()[1].text,
      MatchesRegex("kalStore::ConfigEventHandler::Invoke, level=2, name, Audio \\[this=0x[0-9a-f]+\\]"));
}

TEST_F(StoreTraceTexts, OfASlowCallbackAndBinding) {
  long costMs = 101;
  const auto slow = [&] { TestClock::PassMs(costMs); };
  Subscribe("name", [&](const KalConfigEvent&) { slow(); });
  Bind("name", [&](const KalConfigEvent&) {
    slow();
    return ConfigValue("1");
  });
  TraceLog log(1);
  Set("name", "1");
  ConfigData value;
  m_store.GetDynamicConfig(kAudio, "name", value, {});
  ASSERT_EQ(2U, log.Lines().size());
  EXPECT_EQ(2U, log.CountLevel(1));
  EXPECT_THAT(log.Lines()[0].text,
              MatchesRegex("kalStore::ConfigEventHandler::Notify, name, Audio, cost=101ms "
                           "\\[this=0x[0-9a-f]+\\]"));
  EXPECT_THAT(log.Lines()[1].text,
              MatchesRegex("kalStore::ConfigEventHandler::Invoke, name, Audio, cost=101ms "
                           "\\[this=0x[0-9a-f]+\\]"));

  log.Clear();
  costMs = 100;
  Set("name", "2");
  m_store.GetDynamicConfig(kAudio, "name", value, {});
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreTraceTexts, OfAQuickCallbackThereIsNone) {
  Subscribe("name", [](const KalConfigEvent&) {});
  TraceLog log(1);
  Set("name", "1");
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreTraceTexts, AreCutAtTheEndOfTheLine) {
  TraceLog log;
  const std::string name(2000, 'n');
  Set(name.c_str(), "1");
  EXPECT_EQ(1023U, log.Lines().at(0).text.size());
}

TEST_F(StoreTraceTexts, ThereAreNoneWithANegativeMask) {
  TraceLog log(-1);
  Set(nullptr, "1");
  Subscribe("", nullptr);
  m_store.UnsubscribeConfig(9);
  EXPECT_TRUE(log.Lines().empty());
}

}  // namespace
}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigRegistry.h"

#include <thread>

#include "StoreFixture.h"

namespace kalStore {
namespace {

using ::testing::ElementsAre;

class StoreRegistry : public ::testing::Test {
 protected:
  StoreRegistry() { DestroyKalConfig(); }
  ~StoreRegistry() override { DestroyKalConfig(); }

  static IKalConfig* Create(std::uint32_t callId) {
    IKalConfig* store = nullptr;
    EXPECT_EQ(kResultOk, CreateKalConfig(callId, &store));
    return store;
  }
  /// The lines without those of the function tracer.
  static std::vector<std::string> PlainLines(const TraceLog& log) {
    std::vector<std::string> lines;
    for (std::string& line : log.Matching("")) {
      if (line.find("()") == std::string::npos && line.find("(uint32_t)") == std::string::npos) {
        lines.push_back(std::move(line));
      }
    }
    return lines;
  }
};

TEST_F(StoreRegistry, SharesOneStorePerCall) {
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  IKalConfig* store = Create(5);
  ASSERT_NE(nullptr, store);
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(store, Create(5));
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_NE(store, Create(6));
  EXPECT_EQ(2U, GetKalConfigSizeForUT());
}

TEST_F(StoreRegistry, StartsWithTwoReferencesAndCountsEachCreate) {
  IKalConfig* store = Create(5);
  Create(5);
  TraceLog log;
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultNoSuchOrExists, ReleaseKalConfig(store));
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::ReleaseKalConfig [cid=5], counts=2",
                                            "kalStore::ReleaseKalConfig [cid=5], counts=1",
                                            "kalStore::KalConfig::~KalConfig [cid=5]" + ThisText(store),
                                            "kalStore::ReleaseKalConfig [cid=5], counts=0"));
  EXPECT_EQ(4U, log.CountLevel(2));
}

TEST_F(StoreRegistry, TracesACreateBeforeTheStore) {
  TraceLog log;
  IKalConfig* store = Create(4294967294U);
  EXPECT_THAT(log.Matching(""),
              ElementsAre("kalStore::CreateKalConfig [cid=4294967294]",
                          "kalStore::KalConfig::KalConfig [cid=4294967294]" + ThisText(store)));
  log.Clear();
  Create(4294967294U);
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::CreateKalConfig [cid=4294967294]"));
  EXPECT_EQ(1U, log.CountLevel(2));
}

TEST_F(StoreRegistry, RefusesANullSlotWithoutALine) {
  TraceLog log;
  EXPECT_EQ(kResultBadArgument, CreateKalConfig(5, nullptr));
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST_F(StoreRegistry, NeverOverwritesASlot) {
  IKalConfig* store = Create(5);
  IKalConfig* slot = store;
  TraceLog log;
  EXPECT_EQ(kResultBadArgument, CreateKalConfig(5, &slot));
  EXPECT_EQ(kResultBadArgument, CreateKalConfig(6, &slot));
  EXPECT_EQ(store, slot);
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  EXPECT_THAT(log.Matching("Create"),
              ElementsAre("kalStore::CreateKalConfig [cid=5]", "kalStore::CreateKalConfig [cid=6]"));
}

TEST_F(StoreRegistry, RefusesToReleaseWhatItDoesNotHold) {
  KalConfig own(5);
  Create(5);
  TraceLog log;
  EXPECT_EQ(kResultBadArgument, ReleaseKalConfig(nullptr));
  EXPECT_EQ(kResultNoSuchOrExists, ReleaseKalConfig(&own));
  EXPECT_TRUE(log.Lines().empty());
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
}

TEST_F(StoreRegistry, DropsItsOwnReferenceOnce) {
  IKalConfig* store = Create(5);
  TraceLog log;
  EXPECT_EQ(kResultOk, CleanUpKalConfig(5));
  EXPECT_EQ(kResultNoSuchOrExists, CleanUpKalConfig(5));
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  EXPECT_THAT(PlainLines(log), ElementsAre("kalStore::CleanUpKalConfig, callId=5, counts=1"));
  log.Clear();
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  EXPECT_EQ("kalStore::ReleaseKalConfig [cid=5], counts=0", log.Matching("Release").at(0));
}

TEST_F(StoreRegistry, SharesACleanedUpStoreWhileItIsHeld) {
  IKalConfig* store = Create(5);
  store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", "1", false, false);
  CleanUpKalConfig(5);
  EXPECT_EQ(store, Create(5));
  EXPECT_EQ(kResultNoSuchOrExists, CleanUpKalConfig(5));
  ReleaseKalConfig(store);
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  ReleaseKalConfig(store);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST_F(StoreRegistry, MakesAFreshStoreAfterTheLastReference) {
  IKalConfig* store = Create(5);
  store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", "1", false, false);
  ReleaseKalConfig(store);
  EXPECT_EQ(store, Create(5));  // The registry's own reference kept it.
  ReleaseKalConfig(store);
  EXPECT_EQ(kResultOk, CleanUpKalConfig(5));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  store = Create(5);
  ConfigData value;
  EXPECT_EQ(kResultNotFound, store->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", value));
  EXPECT_EQ(kResultOk, CleanUpKalConfig(5));  // The fresh store has not been cleaned up.
}

TEST_F(StoreRegistry, DestroysTheStoreThatACleanUpLeavesWithoutReferences) {
  IKalConfig* store = Create(5);
  ReleaseKalConfig(store);
  TraceLog log;
  EXPECT_EQ(kResultOk, CleanUpKalConfig(5));
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  EXPECT_THAT(PlainLines(log).back(), "kalStore::CleanUpKalConfig, callId=5, counts=0");
  EXPECT_EQ(1U, log.Count("~KalConfig [cid=5]"));
}

TEST_F(StoreRegistry, RefusesToCleanUpAnUnknownCall) {
  Create(5);
  TraceLog log;
  EXPECT_EQ(kResultNoSuchOrExists, CleanUpKalConfig(6));
  EXPECT_TRUE(PlainLines(log).empty());
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
}

TEST_F(StoreRegistry, DestroysEveryStoreWhateverItsReferences) {
  IKalConfig* first = Create(7);
  Create(7);
  Create(3);
  CleanUpKalConfig(3);
  TraceLog log;
  DestroyKalConfig();
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  const std::vector<std::string> lines = log.Matching("DestroyKalConfig, ");
  EXPECT_THAT(lines, ElementsAre("kalStore::DestroyKalConfig, callId=3, counts=1",
                                 "kalStore::DestroyKalConfig, callId=7, counts=3"));
  EXPECT_EQ(2U, log.Count("~KalConfig"));
  EXPECT_EQ(log.Lines().size(), log.CountLevel(2));
  EXPECT_EQ(kResultNoSuchOrExists, ReleaseKalConfig(first));
  DestroyKalConfig();
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
  EXPECT_NE(nullptr, Create(7));
}

TEST_F(StoreRegistry, WritesNoLineOfInformationBelowMaskTwo) {
  TraceLog log(1);
  IKalConfig* store = Create(5);
  ReleaseKalConfig(store);
  CleanUpKalConfig(5);
  Create(5);
  DestroyKalConfig();
  EXPECT_TRUE(log.Lines().empty());
}

TEST_F(StoreRegistry, AcceptsTheIdThatMeansNoCall) {
  EXPECT_NE(nullptr, Create(kNoCallId));
  EXPECT_EQ(kResultOk, CleanUpKalConfig(kNoCallId));
}

TEST_F(StoreRegistry, MayBeCalledByWhatItDestroys) {
  std::uint32_t seen = 99;
  std::int32_t released = 0;
  for (int way = 0; way < 3; ++way) {
    IKalConfig* store = Create(5);
    std::shared_ptr<int> token(new int, [&seen, &released, store](const int* number) {
      delete number;
      seen = GetKalConfigSizeForUT();
      released = ReleaseKalConfig(store);
    });
    store->SubscribeConfig(KAL_CONFIG_GROUP_AUDIO, "name", [token](const KalConfigEvent&) {}, nullptr, false);
    token.reset();
    seen = 99;
    if (way == 0) {
      ReleaseKalConfig(store);
      ReleaseKalConfig(store);
    } else if (way == 1) {
      ReleaseKalConfig(store);
      CleanUpKalConfig(5);
    } else {
      DestroyKalConfig();
    }
    EXPECT_EQ(0U, seen) << way;
    EXPECT_EQ(kResultNoSuchOrExists, released) << way;
  }
}

[[noreturn]] void ExitWithAStoreThatCallsIn() {
  static IKalConfig* store = nullptr;
  CreateKalConfig(5, &store);
  const auto callIn = [](const int* number) {
    delete number;
    const bool isGone = GetKalConfigSizeForUT() == 0 && ReleaseKalConfig(store) == kResultNoSuchOrExists;
    std::fputs(isGone ? "called in" : "still there", stderr);
  };
  std::shared_ptr<int> token(new int, callIn);
  store->SubscribeConfig(KAL_CONFIG_GROUP_AUDIO, "name", [token](const KalConfigEvent&) {}, nullptr, false);
  token.reset();
  std::exit(0);
}

TEST(StoreRegistryDeathTest, MayBeCalledByWhatIsLeftAtExit) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(ExitWithAStoreThatCallsIn(), ::testing::ExitedWithCode(0), "called in");
}

[[noreturn]] void CountTracedCleanUps() {
  TraceLog log;
  for (int i = 0; i < 200; ++i) CleanUpKalConfig(77);
  for (int i = 0; i < 200; ++i) DestroyKalConfig();
  const std::string cleanUp = "int32_t kalStore::CleanUpKalConfig(uint32_t),line=898, callId=77";
  const bool isLimited = log.Count(cleanUp) == 300 && log.Matching("").front() == cleanUp + " enter" &&
                         log.Matching("")[1] == cleanUp + " leave" &&
                         log.Count("void kalStore::DestroyKalConfig(),line=") == 300;
  std::fputs(isLimited ? "limited" : "not limited", stderr);
  std::exit(0);
}

TEST(StoreRegistryDeathTest, TracesEntryAndExitOfTheFirst150CallsAlone) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  EXPECT_EXIT(CountTracedCleanUps(), ::testing::ExitedWithCode(0), "^limited");
}

TEST_F(StoreRegistry, MayBeUsedFromSeveralThreadsAtOnce) {
  const auto work = [] {
    for (std::uint32_t i = 0; i < 300; ++i) {
      IKalConfig* store = nullptr;
      EXPECT_EQ(kResultOk, CreateKalConfig(i % 3, &store));
      store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "name", static_cast<int>(i), false, false);
      if (i % 5 == 0) CleanUpKalConfig(i % 3);
      EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
      GetKalConfigSizeForUT();
    }
  };
  std::thread first(work);
  std::thread second(work);
  work();
  first.join();
  second.join();
  for (std::uint32_t callId = 0; callId < 3; ++callId) CleanUpKalConfig(callId);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

}  // namespace
}  // namespace kalStore

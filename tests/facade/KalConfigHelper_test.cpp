// SPDX-License-Identifier: Apache-2.0
#include "tessel/KalConfigHelper.h"

#include <gmock/gmock.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include "FacadeTest.h"
#include "support/CallingSink.h"

namespace kalStore {
namespace {

using KalConfigHelperTest = FacadeTest;
using testing::ElementsAre;
using testing::IsEmpty;

static_assert(!std::is_copy_constructible_v<KalConfigHelper> && !std::is_copy_assignable_v<KalConfigHelper>);
static_assert(std::has_virtual_destructor_v<KalConfigHelper>);

TEST_F(KalConfigHelperTest, BindsAtConstructionWithACallId) {
  const KalConfigHelper facade(kCall);
  EXPECT_EQ(facade.GetCallId(), kCall);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
}

TEST_F(KalConfigHelperTest, HasNoCallAndNoStoreWithoutACallId) {
  const KalConfigHelper unbound;
  const KalConfigHelper refused(kNoCallId);
  EXPECT_EQ(unbound.GetCallId(), kNoCallId);
  EXPECT_EQ(refused.GetCallId(), kNoCallId);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore);
}

TEST_F(KalConfigHelperTest, DoesNotBindWhileItEnds) {
  struct Owned {
    KalConfigHelper& facade;
    std::int32_t& result;
    ~Owned() { result = facade.SetCallId(kCall); }
  };
  std::int32_t result = kResultOk;
  {
    KalConfigHelper facade;
    const auto owned = std::shared_ptr<Owned>(new Owned{facade, result});
    facade.SubscribeConfig("name", [owned](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO);
  }
  EXPECT_EQ(result, kResultNotFound);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore);
}

TEST_F(KalConfigHelperTest, StillKnowsItsSubscriptionsWhileTheyEnd) {
  struct Owned {
    KalConfigHelper& facade;
    std::int32_t& result;
    ~Owned() { result = facade.UnsubscribeConfig(99); }
  };
  std::int32_t result = kResultOk;
  TraceLog log(0);
  {
    KalConfigHelper facade(kCall);
    const auto owned = std::shared_ptr<Owned>(new Owned{facade, result});
    facade.SubscribeConfig("name", [owned](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_AUDIO);
  }
  EXPECT_EQ(result, kResultNotFound);
  EXPECT_THAT(log.Matching("Assert"), IsEmpty());
}

TEST_F(KalConfigHelperTest, BindsLater) {
  KalConfigHelper facade;
  TraceLog log(0);
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
  EXPECT_EQ(facade.GetCallId(), kCall);
  EXPECT_EQ(facade.SetKalConfig("a", 1, KAL_CONFIG_GROUP_COMMON), kResultNobody);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(KalConfigHelperTest, AcceptsItsOwnCallIdAgainAndNoOther) {
  KalConfigHelper facade;
  EXPECT_EQ(facade.SetCallId(7), kResultOk);
  EXPECT_EQ(facade.SetCallId(7), kResultOk);
  TraceLog log;
  EXPECT_EQ(facade.SetCallId(8), kResultNotFound);
  EXPECT_EQ(facade.GetCallId(), 7U);
  ASSERT_THAT(log.Lines(), testing::SizeIs(1));
  EXPECT_EQ(log.Lines()[0].level, 0);
  EXPECT_EQ(log.Lines()[0].module, "UTIL");
  EXPECT_EQ(log.Lines()[0].text,
            "kalStore::KalConfigHelper::SetCallId, m_callId=7, callId=8" + ThisSuffix(&facade));
  EXPECT_EQ(facade.SetCallId(kNoCallId), kResultNotFound);
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
}

TEST_F(KalConfigHelperTest, AcceptsTheCallIdItWasBuiltWith) {
  KalConfigHelper facade(kCall);
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
}

TEST_F(KalConfigHelperTest, RefusesNoCallWhileNotBound) {
  KalConfigHelper facade;
  TraceLog log;
  EXPECT_EQ(facade.SetCallId(kNoCallId), kResultNotFound);
  EXPECT_THAT(log.Matching(""), ElementsAre("kalStore::KalConfigHelper::SetCallId, m_callId=4294967295, "
                                            "callId=4294967295" +
                                            ThisSuffix(&facade)));
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
}

TEST_F(KalConfigHelperTest, FailsInSilenceUnderANegativeMask) {
  KalConfigHelper facade;
  TraceLog log(-1);
  EXPECT_EQ(facade.SetCallId(kNoCallId), kResultNotFound);
  EXPECT_EQ(facade.SetKalSessionType(Session(6)), kResultNotFound);
  EXPECT_THAT(log.Lines(), IsEmpty());
}

TEST_F(KalConfigHelperTest, SharesTheStoreOfItsCall) {
  KalConfigHelper one(kCall);
  KalConfigHelper other(kCall);
  one.SetKalConfig("a", "x", KAL_CONFIG_GROUP_COMMON);
  EXPECT_EQ(other.GetKalConfig("a", KAL_CONFIG_GROUP_COMMON), ConfigData("x"));
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
}

TEST_F(KalConfigHelperTest, ReleasesItsReferenceAtItsEnd) {
  {
    const KalConfigHelper facade(kCall);
    EXPECT_EQ(CleanUpKalConfig(kCall), kResultOk);
    EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
  }
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore);
}

TEST_F(KalConfigHelperTest, IsBoundOnceByManyThreads) {
  KalConfigHelper facade;
  std::thread threads[4];
  std::atomic<int> bound{0};
  for (std::thread& thread : threads) {
    thread = std::thread([&] {
      facade.GetKalConfig("a", KAL_CONFIG_GROUP_COMMON);
      if (facade.SetCallId(kCall) == 0) ++bound;
      facade.GetCallId();
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(bound, 4);
}

TEST_F(KalConfigHelperTest, BindsOnceWhenATraceSinkBindsItMeanwhile) {
  for (const std::uint32_t other : {kCall, kCall + 1}) {
    KalConfigHelper facade;
    int notified = 0;
    facade.SubscribeConfig("a", [&](const KalConfigEvent&) { ++notified; }, KAL_CONFIG_GROUP_COMMON);
    {
      const CallingSink sink("CreateKalConfig", [&] {
        EXPECT_EQ(facade.SetCallId(other), kResultNotFound);
        EXPECT_EQ(facade.GetCallId(), kCall);
      });
      EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
      EXPECT_GT(sink.Calls(), 0);
    }
    EXPECT_EQ(facade.SetKalConfig("a", 1, KAL_CONFIG_GROUP_COMMON), kResultOk);
    EXPECT_EQ(notified, 1);
    EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore + 1);
    CleanUpKalConfig(kCall);
  }
  EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore) << "one reference each, and given back";
}

TEST_F(KalConfigHelperTest, HoldsNoLockWhileItTracesAFailure) {
  KalConfigHelper facade(kCall);
  // Another thread would wait for a lock that the tracing thread holds, which waits for it here.
  const CallingSink sink(
      "",
      [&] {
        std::thread([&] {
          EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
          const SubscribeId_t id =
              facade.SubscribeConfig("a", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_COMMON);
          EXPECT_EQ(facade.UnsubscribeConfig(id), kResultOk);
        }).join();
      },
      0);
  EXPECT_EQ(facade.SetCallId(kCall + 1), kResultNotFound);
  EXPECT_EQ(facade.UnsubscribeConfig("a", KAL_CONFIG_GROUP_COMMON), kResultNotFound);
  EXPECT_EQ(facade.UnsubscribeConfig("", KAL_CONFIG_GROUP_COMMON), kResultBadArgument);
  EXPECT_EQ(facade.SubscribeConfig("", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_COMMON), 0U);
  EXPECT_EQ(facade.SubscribeConfig("a", [](const KalConfigEvent&) {}), 0U);
  EXPECT_EQ(facade.GetKalConfig(nullptr).IsValid(), false);
  EXPECT_EQ(facade.SetKalSessionType(Session(6)), kResultNotFound);
  EXPECT_EQ(sink.Calls(), 7);
}

TEST_F(KalConfigHelperTest, EndsUnderATraceSinkThatSubscribes) {
  auto facade = std::make_unique<KalConfigHelper>(kCall);
  KalConfigHelper* const raw = facade.get();
  const auto ignore = [](const KalConfigEvent&) {};
  raw->SubscribeConfig("a", ignore, KAL_CONFIG_GROUP_COMMON);
  int name = 0;
  const CallingSink sink(
      "", [&] { raw->SubscribeConfig(std::to_string(++name).c_str(), ignore, KAL_CONFIG_GROUP_COMMON); });
  facade.reset();
  EXPECT_GT(sink.Calls(), 0);
}

struct SessionRow {
  std::uint32_t session;
  std::uint32_t group;
};
constexpr SessionRow kSessions[] = {{0, 3}, {1, 5}, {2, 6}, {3, 4}, {4, 7}, {5, 8}, {14, 9}};

TEST_F(KalConfigHelperTest, TakesTheGroupOfItsSessionType) {
  for (const SessionRow& row : kSessions) {
    KalConfigHelper facade(kCall);
    EXPECT_EQ(facade.SetKalSessionType(Session(row.session)), kResultOk);
    EXPECT_EQ(facade.GetKalSessionType(), Session(row.session));
    facade.SetKalConfig("a", ConfigData(row.session));
    EXPECT_EQ(facade.GetKalConfig("a", Group(row.group)), ConfigData(row.session));
  }
}

TEST_F(KalConfigHelperTest, KeepsItsSessionType) {
  KalConfigHelper facade;
  EXPECT_EQ(facade.SetKalSessionType(Session(1)), kResultOk);
  TraceLog log;
  EXPECT_EQ(facade.SetKalSessionType(Session(1)), kResultOk);
  EXPECT_THAT(log.Lines(), IsEmpty());
  EXPECT_EQ(facade.SetKalSessionType(Session(0)), kResultNotFound);
  EXPECT_EQ(facade.SetKalSessionType(Session(6)), kResultNotFound);
  EXPECT_EQ(facade.SetKalSessionType(Session(15)), kResultNotFound);
  EXPECT_EQ(facade.GetKalSessionType(), Session(1));
  const std::string label = "kalStore::KalConfigHelper::SetKalSessionType, Video, sessionType=";
  EXPECT_THAT(log.Matching(""),
              ElementsAre(label + "0" + ThisSuffix(&facade), label + "6" + ThisSuffix(&facade),
                          label + "15" + ThisSuffix(&facade)));
  EXPECT_EQ(log.CountLevel(0), 3U);
}

TEST_F(KalConfigHelperTest, RefusesSessionTypesWithoutAGroup) {
  for (const std::uint32_t session : {6U, 7U, 8U, 9U, 10U, 11U, 12U, 13U, 15U, 16U, 0x7FFFFFFFU}) {
    KalConfigHelper facade;
    TraceLog log;
    EXPECT_EQ(facade.SetKalSessionType(Session(session)), kResultNotFound);
    EXPECT_THAT(log.Matching(""),
                ElementsAre("kalStore::KalConfigHelper::SetKalSessionType, Undefined_Group, "
                            "sessionType=" +
                            std::to_string(session) + ThisSuffix(&facade)));
    EXPECT_EQ(facade.GetKalSessionType(), kal::KAL_SESSION_NONE);
    EXPECT_EQ(facade.SetKalSessionType(Session(0)), kResultOk) << "the group must still be unset";
  }
}

TEST_F(KalConfigHelperTest, SetsItsDefaultGroupOnce) {
  KalConfigHelper facade;
  TraceLog log;
  EXPECT_EQ(facade.SetDefaultGroup(Group(13)), kResultNotFound);
  EXPECT_EQ(facade.SetDefaultGroup(Group(0xFFFFFFFF)), kResultNotFound);
  EXPECT_EQ(facade.SetDefaultGroup(Group(12)), kResultOk);
  EXPECT_EQ(facade.SetDefaultGroup(Group(12)), kResultNotFound);
  EXPECT_EQ(facade.SetDefaultGroup(Group(5)), kResultNotFound);
  EXPECT_THAT(log.Lines(), IsEmpty());
  EXPECT_EQ(facade.SetCallId(kCall), kResultOk);
  facade.SetKalConfig("a", 1);
  EXPECT_TRUE(facade.HaveKalConfig("a", Group(12)));
}

TEST_F(KalConfigHelperTest, RefusesADefaultGroupAfterASessionType) {
  KalConfigHelper facade;
  EXPECT_EQ(facade.SetKalSessionType(Session(1)), kResultOk);
  EXPECT_EQ(facade.SetDefaultGroup(Group(5)), kResultNotFound);
  EXPECT_EQ(facade.GetKalSessionType(), Session(1));
}

TEST_F(KalConfigHelperTest, AcceptsTheSessionTypeOfItsDefaultGroup) {
  KalConfigHelper facade;
  EXPECT_EQ(facade.SetDefaultGroup(KAL_CONFIG_GROUP_VIDEO), kResultOk);
  EXPECT_EQ(facade.SetKalSessionType(kal::KAL_SESSION_VIDEO), kResultOk);
  EXPECT_EQ(facade.SetKalSessionType(kal::KAL_SESSION_AUDIO), kResultNotFound);
}

TEST_F(KalConfigHelperTest, ReportsTheSessionTypeOfItsDefaultGroup) {
  EXPECT_EQ(KalConfigHelper().GetKalSessionType(), Session(15));
  for (std::uint32_t group = 0; group < 13; ++group) {
    std::uint32_t expected = 15;
    for (const SessionRow& row : kSessions) {
      if (row.group == group) expected = row.session;
    }
    KalConfigHelper facade;
    EXPECT_EQ(facade.SetDefaultGroup(Group(group)), kResultOk);
    EXPECT_EQ(facade.GetKalSessionType(), Session(expected));
  }
}

TEST_F(KalConfigHelperTest, InitialisesBothAlways) {
  KalConfigHelper fine;
  EXPECT_EQ(fine.InitKalConfig(kCall, Session(0)), 0);
  EXPECT_EQ(fine.InitKalConfig(kCall, Session(0)), 0);

  KalConfigHelper badCall;
  EXPECT_EQ(badCall.InitKalConfig(kNoCallId, Session(1)), kResultNotFound);
  EXPECT_EQ(badCall.GetKalSessionType(), Session(1));

  KalConfigHelper badSession;
  EXPECT_EQ(badSession.InitKalConfig(kCall, Session(6)), kResultNotFound);
  EXPECT_EQ(badSession.GetCallId(), kCall);
}

}  // namespace
}  // namespace kalStore

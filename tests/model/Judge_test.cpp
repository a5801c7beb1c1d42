// SPDX-License-Identifier: Apache-2.0
// What a simulation's judge says to histories: to those that a store can have, nothing, and to each that it
// cannot have, what is wrong.
#include <gtest/gtest.h>

#include <cerrno>
#include <string>

#include "simulation/Judge.h"

namespace {

using namespace simulation;
using fuzz::Text;
using fuzz::Way;

class JudgeTest : public testing::Test {
 protected:
  // What a thread does, from one moment to another, in the order of their ends.
  Done& Did(int thread, Moment begin, Moment end, Action action, std::int64_t result = fuzz::kResultOk) {
    m_history.done.push_back(
        {.thread = thread, .action = std::move(action), .begin = begin, .end = end, .result = result});
    return m_history.done.back();
  }
  Done& Set(Moment begin, Moment end, const char* value, std::int64_t result = fuzz::kResultNobody) {
    m_history.last[0] = value;
    m_history.live = std::atoi(value);
    return Did(0, begin, end, {.kind = Kind::kSet, .value = value}, result);
  }
  void Subscribed(Moment begin, Moment end, int subject, Way way = Way::kDirect) {
    Did(1, begin, end, {.kind = Kind::kSubscribe, .way = way, .subject = subject}, 1);
  }
  void Ended(Moment begin, Moment end, int subject) {
    Did(1, begin, end, {.kind = Kind::kEnd, .through = Through::kHandle, .subject = subject});
  }
  void Received(Moment at, int tag, const Text& oldValue, const Text& newValue) {
    m_history.deliveries.push_back({at, {tag, "First", oldValue, newValue, {}, 3, 0}});
  }
  std::string Verdict() const { return Judge(m_plan, m_history, m_recording); }

  Plan m_plan;
  History m_history;
  std::string m_recording;
};

TEST_F(JudgeTest, TakesNothingForAFault) {
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, KnowsWhatAReadMaySee) {
  Set(1, 2, "100");
  Set(3, 6, "101");
  Done& read = Did(1, 4, 5, {.kind = Kind::kGet});
  read.value = "100";
  EXPECT_EQ(Verdict(), "");
  read.value = "101";
  EXPECT_EQ(Verdict(), "") << "it may come after the second set";
  read.begin = 7;
  read.end = 8;
  read.value = "100";
  EXPECT_EQ(Verdict(), "no order of the operations explains their results and deliveries");
}

TEST_F(JudgeTest, KnowsWhichSetsChangeNothing) {
  Set(1, 2, "100");
  Done& again = Set(3, 4, "100", fuzz::kResultUnchanged);
  EXPECT_EQ(Verdict(), "");
  again.result = fuzz::kResultNobody;
  EXPECT_NE(Verdict(), "");
}

TEST_F(JudgeTest, ComparesTheLastValue) {
  Set(1, 2, "100");
  m_history.last[0] = "101";
  EXPECT_NE(Verdict(), "");
}

TEST_F(JudgeTest, ComparesTheLiveValue) {
  Set(1, 2, "100");
  m_history.live = 0;
  EXPECT_EQ(Verdict(), "the live value is not what the store has");
}

TEST_F(JudgeTest, WantsEachChangeWithASubscriberOnce) {
  m_plan.subscribers = {{0, Way::kPosted, false}};
  m_plan.subjects = 1;
  Set(1, 2, "100", fuzz::kResultOk);
  EXPECT_NE(Verdict(), "") << "it is lost";
  Received(3, 0, {}, "100");
  EXPECT_EQ(Verdict(), "");
  Received(4, 0, {}, "100");
  EXPECT_NE(Verdict(), "") << "it comes twice";
}

TEST_F(JudgeTest, LetsASetWithoutMemoryBeDoneOrNot) {
  Done& set = Set(1, 2, "100");
  set.outcome = Done::Outcome::kOutOfMemory;
  EXPECT_EQ(Verdict(), "");
  m_history.last[0] = std::nullopt;
  m_history.live = 0;
  EXPECT_EQ(Verdict(), "");
  m_history.last[0] = "10";
  m_history.live = 10;
  EXPECT_NE(Verdict(), "") << "half of a value";
}

// What the callback threw leaves the set, and not that there was no memory for the next subscriber.
TEST_F(JudgeTest, LetsASubscriberMissWhatAnotherThrewAtWhenMemoryIsShort) {
  m_plan.subscribers = {{0, Way::kDirect, true}, {0, Way::kPosted, false}};
  m_plan.subjects = 2;
  Set(1, 3, "100").outcome = Done::Outcome::kCallbackThrew;
  Received(2, 0, {}, "100");
  EXPECT_NE(Verdict(), "") << "there was memory";
  m_plan.refusals.allocations.count = 1;
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, WantsNothingAfterARemoval) {
  Subscribed(1, 2, 0);
  Ended(3, 4, 0);
  Set(5, 7, "100");
  EXPECT_EQ(Verdict(), "");
  Received(6, 0, {}, "100");
  EXPECT_NE(Verdict(), "");
}

TEST_F(JudgeTest, LetsAChangeBesideARemovalComeOrNot) {
  Subscribed(1, 2, 0);
  Set(3, 7, "100");
  Ended(4, 6, 0);
  EXPECT_EQ(Verdict(), "");
  Received(5, 0, {}, "100");
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, WantsWhatIsSetWhileASubscriptionIsThere) {
  Subscribed(1, 2, 0);
  Set(3, 5, "100", fuzz::kResultOk);
  EXPECT_EQ(Verdict(), "a subscription misses a change");
  Received(4, 0, {}, "100");
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, WantsTheLastValueOfWhatIsSetBesideASubscription) {
  Set(1, 4, "100");
  Subscribed(2, 5, 0);
  EXPECT_EQ(Verdict(), "a subscription does not have the last value");
  Received(3, 0, {}, "100");
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, WantsValuesThatWereSet) {
  Set(1, 2, "100");
  Subscribed(3, 5, 0);
  Received(4, 0, {}, "99");
  EXPECT_NE(Verdict(), "");
}

TEST_F(JudgeTest, WantsPostedChangesInTheOrderOfTheirSets) {
  m_plan.subscribers = {{0, Way::kPosted, false}};
  m_plan.subjects = 1;
  Set(1, 2, "100", fuzz::kResultOk);
  Set(3, 4, "101", fuzz::kResultOk);
  Received(5, 0, "100", "101");
  Received(6, 0, {}, "100");
  EXPECT_EQ(Verdict(), "a subscriber receives changes in another order than that of their sets");
}

TEST_F(JudgeTest, WantsEachEventThatIsTakenOnceInItsOrder) {
  Did(0, 1, 2, {.kind = Kind::kPost, .subject = 0}, 0);
  Did(0, 3, 4, {.kind = Kind::kPost, .subject = 1}, 0);
  EXPECT_NE(Verdict(), "") << "they are lost";
  m_history.fired = {{5, 0}, {6, 1}};
  EXPECT_EQ(Verdict(), "");
  m_history.fired = {{5, 1}, {6, 0}};
  EXPECT_EQ(Verdict(), "events fire in another order than that of their posts");
  m_history.fired = {{5, 0}, {6, 1}, {7, 1}};
  EXPECT_EQ(Verdict(), "an event fires twice");
}

TEST_F(JudgeTest, WantsASendToReturnAfterItsEvent) {
  Did(0, 1, 2, {.kind = Kind::kSend, .subject = 0}, 0);
  m_history.fired = {{3, 0}};
  EXPECT_EQ(Verdict(), "a send returns before its event has fired");
}

TEST_F(JudgeTest, WantsNothingAfterAStop) {
  Did(0, 1, 6, {.kind = Kind::kPost, .subject = 0}, 0);
  Did(1, 2, 3, {.kind = Kind::kStop}, 0);
  m_history.fired = {{5, 0}};
  EXPECT_EQ(Verdict(), "an event fires after the thread has stopped");
  Did(1, 4, 7, {.kind = Kind::kStart}, 0);
  EXPECT_EQ(Verdict(), "");
}

TEST_F(JudgeTest, WantsRefusalsThatAreDocumented) {
  Did(0, 1, 2, {.kind = Kind::kPost, .subject = 0}, ESHUTDOWN);
  EXPECT_EQ(Verdict(), "a running thread refuses an event");
  m_plan.hasRunThread = false;
  EXPECT_EQ(Verdict(), "");
  m_history.done[0].result = EINVAL;
  EXPECT_NE(Verdict(), "");
}

TEST_F(JudgeTest, WantsTheNumbersOfTheJournalInTheOrderOfTheChanges) {
  Set(1, 3, "100");
  Set(2, 4, "101");
  m_history.isJournalWhole = true;
  m_history.journal = {{Journalled::Kind::kSet, "First", {}, "100"},
                       {Journalled::Kind::kSet, "First", "100", "101"}};
  EXPECT_EQ(Verdict(), "");
  std::swap(m_history.journal[0], m_history.journal[1]);
  EXPECT_NE(Verdict(), "");
  m_history.journal = {{Journalled::Kind::kSet, "First", {}, "101"}};
  EXPECT_EQ(Verdict(), "the journal does not have each set once");
}

TEST_F(JudgeTest, WantsARecordingWholeAndEachSetInIt) {
  const std::string end = "{\"type\":\"recording\",\"t\":1,\"event\":\"ended\"}\n";
  const std::string set = "{\"type\":\"set\",\"t\":1,\"number\":1,\"call\":7,\"new\":\"100\"}\n";
  m_plan.isRecorded = true;
  Set(1, 2, "100");
  m_recording = set + end;
  EXPECT_EQ(Verdict(), "");
  m_recording = end;
  EXPECT_EQ(Verdict(), "the recording does not have each set once");
  m_recording = set;
  EXPECT_EQ(Verdict(), "the recording does not end as it should");
  m_recording = set + end + "{\"type\"";
  EXPECT_EQ(Verdict(), "the recording's last line is cut off");
}

TEST_F(JudgeTest, KnowsWhatAnExportMaySeeOfAnImport) {
  Set(1, 8, "100", fuzz::kResultOk).action.isImported = true;
  Did(0, 2, 9, {.kind = Kind::kSet, .name = 1, .value = "101", .isImported = true}).after = 0;
  m_history.last[1] = "101";
  Done& exported = Did(1, 3, 4, {.kind = Kind::kExport});
  const auto sees = [&](const std::string& entries) {
    exported.value = "{\"Audio\":[" + entries + "]}";
    return Verdict().empty();
  };
  const std::string first = R"({"key":"First","value":"100"})", second = R"({"key":"Second","value":"101"})";
  EXPECT_TRUE(sees(""));
  EXPECT_TRUE(sees(first));
  EXPECT_TRUE(sees(first + "," + second));
  EXPECT_FALSE(sees(second)) << "an import sets one after the other";
  exported.begin = 10;
  exported.end = 11;
  EXPECT_FALSE(sees(first)) << "the import has ended";
  EXPECT_TRUE(sees(first + "," + second));
  m_history.done[0].result = fuzz::kResultNotFound;
  EXPECT_EQ(Verdict(), "a document is refused");
}

TEST_F(JudgeTest, WantsNoStoreLeft) {
  m_history.callsLeft = 1;
  EXPECT_EQ(Verdict(), "a call's store is left");
}

TEST_F(JudgeTest, WantsStatisticsWhileTheyAreHeldAndNoLonger) {
  Done& shared = Did(0, 1, 2, {.kind = Kind::kShareStatistics}, 1);
  EXPECT_EQ(Verdict(), "");
  shared.result = 0;
  EXPECT_EQ(Verdict(), "a statistics object is lost while it is held");
  shared.result = 1;
  m_history.statisticsLeft = 1;
  EXPECT_EQ(Verdict(), "a statistics object is left");
}

TEST(Plan, IsTheSameForANumberEachTime) {
  for (const std::uint64_t seed : {1U, 2U, 1000U})
    EXPECT_EQ(Describe(MakePlan(seed)), Describe(MakePlan(seed)));
  EXPECT_NE(Describe(MakePlan(1)), Describe(MakePlan(2)));
}

}  // namespace

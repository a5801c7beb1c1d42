// SPDX-License-Identifier: Apache-2.0
#include <cerrno>

#include "JournalTest.h"
#include "store/DeliveryJournal.h"

namespace kalStore {
namespace {

using ::testing::SizeIs;

using JournalRefusals = JournalTest;
using JournalPosts = JournalTest;

ICmEvent* PostedDelivery(const KalConfigEvent& event, const fnConfigChangedCallBack& callback) {
  const internal::ChangeInJournal change{
      .callId = 7, .source = {.label = "setter"}, .timeNs = 1000, .nowNs = 1000, .cause = 3};
  return new internal::SwitchEventInJournal(change, 5, JournalWay::kPosted, event, callback);
}

// Between the look at the queue and the post, which no set can be made to meet.
TEST_F(JournalRefusals, OfAQueueThatStoppedMeanwhileAreDroppedDeliveries) {
  ACmThread worker("worker");
  worker.Start();
  ICmEventQueue* const queue = worker.GetEventQueue();
  worker.Stop();
  KalConfigEvent event;
  event.m_name = "MaxFps";
  event.m_newValue = 15;
  bool hasRun = false;
  EXPECT_EQ(queue->PostEvent(PostedDelivery(event, [&](const KalConfigEvent&) { hasRun = true; }),
                             ICmEventQueue::kDefaultPriority, 0),
            ESHUTDOWN);
  EXPECT_FALSE(hasRun);
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(1));
  EXPECT_EQ(events[0].kind, JournalKind::kDelivered);
  EXPECT_EQ(events[0].way, JournalWay::kDropped);
  EXPECT_EQ(events[0].id, 5u);
  EXPECT_EQ(events[0].cause, 3u);
  EXPECT_EQ(events[0].label.text, "setter");
  EXPECT_EQ(events[0].timeNs - events[0].waitedNs, 1000);
  EXPECT_GT(events[0].waitedNs, 0);
}

// The change is older than the machine.
TEST_F(JournalPosts, BeginWhenTheyRun) {
  ACmThread worker("worker");
  worker.Start();
  EXPECT_EQ(worker.GetEventQueue()->SendEvent(PostedDelivery({}, [](const KalConfigEvent&) {}), 0), 0);
  const auto events = Events();
  ASSERT_THAT(events, SizeIs(1));
  EXPECT_EQ(events[0].timeNs - events[0].waitedNs, 1000);
  EXPECT_GT(events[0].waitedNs, 0);
}

}  // namespace
}  // namespace kalStore

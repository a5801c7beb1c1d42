// SPDX-License-Identifier: Apache-2.0
#include "simulate/Subscriber.h"

#include <gtest/gtest.h>

namespace {

using simulate::Recorder;
using simulate::Subscriber;

struct SubscriberTest : testing::Test {
  Recorder recorder;
  Subscriber subscriber{recorder, Way::kPosted};
};

TEST_F(SubscriberTest, MeasuresWhatArrivesInTheWayThatItWasToArrive) {
  subscriber.Expect(1, 10);
  subscriber.Expect(2, 20);
  EXPECT_EQ(subscriber.Missing(), 2U);
  subscriber.Arrive(10);
  subscriber.Arrive(20);
  EXPECT_EQ(subscriber.Missing(), 0U);
  EXPECT_EQ(subscriber.Arrived(), 2U);
  EXPECT_EQ(recorder.Latencies(Way::kPosted).Count(), 2U);
  EXPECT_EQ(recorder.Latencies(Way::kDirect).Count(), 0U);
  EXPECT_EQ(recorder.expectedDeliveries, 2U);
  EXPECT_EQ(recorder.deliveriesOutOfOrder, 0U);
}

TEST_F(SubscriberTest, MeasuresFromTheSetToTheArrival) {
  constexpr simulate::RunTime kThousandSeconds = 1'000'000'000'000;
  recorder.AddDelivery(Way::kDirect, -kThousandSeconds);
  EXPECT_GE(recorder.Latencies(Way::kDirect).Greatest(), kThousandSeconds);
}

TEST_F(SubscriberTest, MissesWhatDoesNotArrive) {
  subscriber.Expect(1, 10);
  subscriber.Expect(2, 20);
  subscriber.Arrive(10);
  EXPECT_EQ(subscriber.Missing(), 1U);
}

TEST_F(SubscriberTest, NoticesWhatWasNotSetAndWhatArrivesTwice) {
  subscriber.Expect(1, 10);
  subscriber.Arrive(11);
  EXPECT_EQ(recorder.unexpectedDeliveries, 1U);
  subscriber.Arrive(10);
  subscriber.Arrive(10);
  EXPECT_EQ(recorder.unexpectedDeliveries, 2U);
  EXPECT_EQ(subscriber.Arrived(), 1U);
}

TEST_F(SubscriberTest, NoticesWhatArrivesOutOfOrder) {
  subscriber.Expect(1, 10);
  subscriber.Expect(2, 20);
  subscriber.Arrive(20);
  subscriber.Arrive(10);
  EXPECT_EQ(recorder.deliveriesOutOfOrder, 1U);
  EXPECT_EQ(subscriber.Missing(), 0U);
}

TEST_F(SubscriberTest, ForgetsASetThatChangedNothing) {
  subscriber.Expect(1, 10);
  subscriber.Expect(2, 10);
  subscriber.Withdraw(2);
  EXPECT_EQ(recorder.expectedDeliveries, 1U);
  subscriber.Arrive(10);
  EXPECT_EQ(subscriber.Missing(), 0U);
}

TEST_F(SubscriberTest, CountsTheDeliveryOfSubscribingApart) {
  subscriber.Expect(Subscriber::kInitial, 10);
  subscriber.Arrive(10);
  EXPECT_EQ(recorder.initialDeliveries, 1U);
  EXPECT_EQ(recorder.Latencies(Way::kPosted).Count(), 0U);
  EXPECT_EQ(subscriber.Arrived(), 0U);
}

}  // namespace

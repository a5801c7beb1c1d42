// SPDX-License-Identifier: Apache-2.0
#include "simulate/Link.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>

namespace {

using simulate::Link;
using simulate::Media;
using simulate::RunTime;

constexpr RunTime kMillisecond = 1000000;

// Sends at this rate for so long, and returns what became of it.
Link::Traffic Send(Link& link, RunTime from, RunTime until, double bitrate) {
  const Link::Traffic before = link.Received(Media::kVideo);
  for (RunTime now = from; now < until; now += 10 * kMillisecond) {
    link.Send(Media::kVideo, now, 10, bitrate * 0.01);
  }
  const Link::Traffic after = link.Received(Media::kVideo);
  return {after.received - before.received, after.lost - before.lost, after.bits - before.bits};
}

TEST(Link, GetsWorseAndBetterOnceInACycle) {
  Link link(10, 0);
  const Link::State good = link.Now(2000 * kMillisecond);
  const Link::State bad = link.Now(6000 * kMillisecond);
  const Link::State better = link.Now(9500 * kMillisecond);
  EXPECT_GT(good.capacity, 5 * bad.capacity);
  EXPECT_GT(better.capacity, 5 * bad.capacity);
}

TEST(Link, BeginsInThePhaseThatItIsGiven) {
  Link good(10, 0), bad(10, 0.5);
  EXPECT_GT(good.Now(kMillisecond).capacity, 5 * bad.Now(kMillisecond).capacity);
}

TEST(Link, LosesFewPacketsBelowItsCapacity) {
  Link link(10, 0);
  const Link::Traffic traffic = Send(link, 0, 3000 * kMillisecond, 1e6);
  EXPECT_EQ(traffic.received + traffic.lost, 3000U);
  EXPECT_LT(traffic.lost, 60U);
  const Link::State state = link.Now(3000 * kMillisecond);
  EXPECT_LT(state.delayMs, 50);
  EXPECT_GT(state.jitterMs, 0.1);
  EXPECT_LT(state.jitterMs, 5);
}

TEST(Link, LosesMorePacketsWhereItIsBad) {
  Link link(10, 0);
  const Link::Traffic good = Send(link, kMillisecond, 3001 * kMillisecond, 1e5);
  EXPECT_EQ(good.lost, 12U);
  const Link::Traffic bad = Send(link, 5000 * kMillisecond, 7000 * kMillisecond, 1e5);
  EXPECT_EQ(bad.received + bad.lost, 2000U);
  EXPECT_NEAR(bad.lost, 2000 * (0.004 + 0.02), 8);
}

TEST(Link, DelaysAndLosesWhatItCannotCarry) {
  Link link(10, 0);
  Send(link, 0, 5000 * kMillisecond, 1e6);
  const Link::Traffic traffic = Send(link, 5000 * kMillisecond, 7000 * kMillisecond, 1e6);
  EXPECT_EQ(traffic.received + traffic.lost, 2000U);
  EXPECT_GT(traffic.lost, 1000U);
  const Link::State state = link.Now(7000 * kMillisecond);
  EXPECT_GT(state.delayMs, 200);
  EXPECT_LT(state.delayMs, 600);
  EXPECT_GT(state.loss, 0.3);
}

TEST(Link, DelaysAndVariesMoreWhereItIsBad) {
  Link link(10, 0);
  double least[] = {1000, 1000}, most[] = {0, 0};
  for (RunTime now = kMillisecond; now < 7000 * kMillisecond; now += kMillisecond) {
    const double delayMs = link.Now(now).delayMs;
    if (now > 4000 * kMillisecond && now < 5000 * kMillisecond) continue;
    const bool isBad = now >= 5000 * kMillisecond;
    least[isBad] = std::min(least[isBad], delayMs);
    most[isBad] = std::max(most[isBad], delayMs);
  }
  for (const bool isBad : {false, true}) {
    EXPECT_GE(least[isBad], 18);
    EXPECT_LT(least[isBad], 18.1);
    EXPECT_LT(most[isBad], isBad ? 33 : 19);
    EXPECT_GT(most[isBad], isBad ? 32.9 : 18.9);
  }
}

TEST(Link, LosesAllThatFindsNoRoomAndNoMore) {
  Link link(10, 0);
  link.Now(kMillisecond);
  for (int i = 0; i < 100; ++i) link.Send(Media::kVideo, kMillisecond, 1000, 1e18);
  EXPECT_LE(link.Received(Media::kVideo).received, 1U);
  const double loss = link.Now(kMillisecond).loss;
  EXPECT_GT(loss, 0.999);
  EXPECT_LE(loss, 1);
}

TEST(Link, IsTheSameForEveryRun) {
  Link one(10, 0.5);
  Link other(10, 0.5);
  const Link::Traffic first = Send(one, 0, 10000 * kMillisecond, 2e6);
  const Link::Traffic second = Send(other, 0, 10000 * kMillisecond, 2e6);
  EXPECT_EQ(first.lost, second.lost);
  EXPECT_EQ(first.bits, second.bits);
}

}  // namespace

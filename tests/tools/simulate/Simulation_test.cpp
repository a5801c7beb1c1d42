// SPDX-License-Identifier: Apache-2.0
#include "simulate/Simulation.h"

#include <gtest/gtest.h>
#include <tessel/tessel.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <stdexcept>
#include <thread>
#include <utility>

#include "simulate/Keys.h"
#include "tessel/StatsRef.h"

namespace {

constexpr std::uint32_t kFirstCall = 1;

struct DisturbedSimulation : testing::Test {
  // Calls `disturb` when the controller sets the bandwidth first.
  void Run(std::function<void()> disturb) {
    kalStore::KalConfigHelper settings(kFirstCall);
    const auto& key = simulate::kTargetBandwidth;
    settings.SubscribeConfig(
        key.Name(),
        [&](const kalStore::KalConfigEvent&) {
          if (const auto once = std::exchange(disturb, nullptr)) once();
        },
        key.Group());
    simulation.Run(isInterrupted);
    EXPECT_FALSE(disturb);
  }

  std::atomic<bool> isInterrupted{false};
  simulate::SimulationPlan plan{.seconds = 0.2, .calls = 1, .listeners = 0, .documents = {}};
  simulate::Simulation simulation{plan};
};

}  // namespace

TEST(SimulationPlan, IsWhatTheHelpSaysOfTheDefaults) {
  const simulate::SimulationPlan plan;
  EXPECT_EQ(plan.seconds, 5);
  EXPECT_EQ(plan.calls, 2U);
  EXPECT_EQ(plan.listeners, 0U);
}

TEST_F(DisturbedSimulation, IsSoundWhereNothingIsChanged) {
  Run([] {});
  EXPECT_TRUE(simulation.IsSound());
}

TEST_F(DisturbedSimulation, IsNotSoundWhereSomebodyIsNotifiedOfASetThatItDidNotMake) {
  kalStore::KalConfigHelper other(kFirstCall);
  Run([&] { simulate::kVideoMaxFps.Set(other, 17); });
  EXPECT_EQ(simulation.LostDeliveries(), 0U);
  EXPECT_EQ(simulation.Records().framesReported, simulation.Records().framesSent);
  EXPECT_FALSE(simulation.IsSound());
}

// What a callback throws ends the import before the set that somebody would be notified of.
TEST_F(DisturbedSimulation, IsNotSoundWhereADeliveryIsLost) {
  plan.documents = {{"first", "{}"},
                    {"later", R"({"Video":[{"key":"Codec","value":"AV1"},{"key":"MaxFps","value":"17"}]})"}};
  kalStore::KalConfigHelper other(kFirstCall);
  other.SubscribeConfig(
      "Codec", [](const kalStore::KalConfigEvent&) { throw std::runtime_error("no such codec"); },
      kalStore::KAL_CONFIG_GROUP_VIDEO);
  Run([] {});
  EXPECT_EQ(simulation.LostDeliveries(), 1U);
  EXPECT_EQ(simulation.Records().unexpectedDeliveries, 0U);
  EXPECT_EQ(simulation.Records().framesReported, simulation.Records().framesSent);
  EXPECT_FALSE(simulation.IsSound());
}

TEST_F(DisturbedSimulation, IsNotSoundWhereTheStatisticsLackAFrame) {
  const kalStore::StatsRef<kalStore::VideoStats> statistics(kFirstCall);
  Run([&] {  // Takes one away.
    kalStore::st_KalVideoTxBlock block{};
    while (block.layer[0].counterDelta == 0) {
      std::this_thread::yield();
      statistics->GetTxMediaInfo(&block, true);
    }
  });
  EXPECT_EQ(simulation.LostDeliveries(), 0U);
  EXPECT_EQ(simulation.Records().unexpectedDeliveries, 0U);
  EXPECT_FALSE(simulation.IsSound());
}

TEST_F(DisturbedSimulation, DelaysWhatItsFirstCallReceives) {
  const kalStore::StatsRef<kalStore::AudioStats> statistics(kFirstCall);
  Run([] {});
  kalStore::st_KalAudioBlock block;
  statistics->GetRxAudioInfo(&block, 0, false);
  // By the path, and by what waits before it.
  EXPECT_GE(block.e2eDelay[1], 18U);
  EXPECT_LE(block.e2eDelay[1], 5000U);
}

// The second of so many comes soon, however long the run is.
TEST_F(DisturbedSimulation, ReceivesADocumentOnceItsPartOfTheRunIsOver) {
  plan.seconds = 100;
  plan.documents.assign(1000, {"later", R"({"Video":[{"key":"MaxFps","value":"17"}]})"});
  plan.documents.front() = {"first", "{}"};
  kalStore::KalConfigHelper other(kFirstCall);
  const auto& key = simulate::kVideoMaxFps;
  other.SubscribeConfig(
      key.Name(), [&](const kalStore::KalConfigEvent&) { isInterrupted = true; }, key.Group());
  simulation.Run(isInterrupted);
  EXPECT_TRUE(isInterrupted);
  EXPECT_TRUE(simulation.IsSound());
}

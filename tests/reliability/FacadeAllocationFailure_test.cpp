// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <memory>
#include <thread>

#include "FailEachAllocation.h"
#include "StoreProbe.h"
#include "Watchdog.h"
#include "tessel/tessel.h"

using namespace kalStore;

namespace {

constexpr std::uint32_t kCall = 7;

// A facade, and the store of its call at the end of the call.
struct Stage {
  std::array<int, 3> notified{};
  std::unique_ptr<KalConfigHelper> facade;
  SubscribeId_t id = 0;

  ~Stage() {
    facade.reset();
    CleanUpKalConfig(kCall);
    EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
  }

  // Names 0 and 1 share a group; 2 is bound.
  SubscribeId_t Subscribe(std::size_t index) {
    const std::string name = kLongName + std::to_string(index);
    if (index == 2) {
      const auto compute = [this](const KalConfigEvent&) { return ConfigData(++notified[2]); };
      return facade->BindConfig(name.c_str(), compute, KAL_CONFIG_GROUP_VIDEO);
    }
    const auto count = [this, index](const KalConfigEvent&) { ++notified[index]; };
    return facade->SubscribeConfig(name.c_str(), count, KAL_CONFIG_GROUP_AUDIO);
  }
  void SubscribeAll() {
    for (std::size_t index = 0; index < notified.size(); ++index) Subscribe(index);
  }
  void ExpectAllNotifiedOnce() {
    notified = {};
    for (std::size_t index = 0; index < notified.size(); ++index) {
      const std::string name = kLongName + std::to_string(index);
      if (index == 2) {
        facade->GetDynamicConfig(name.c_str(), KAL_CONFIG_GROUP_VIDEO);
      } else {
        facade->SetKalConfig(name.c_str(), kNewText.c_str(), KAL_CONFIG_GROUP_AUDIO, true);
      }
      EXPECT_EQ(notified[index], 1) << index;
    }
  }
  void ExpectUsable() {
    IKalConfig* store = nullptr;
    ASSERT_EQ(CreateKalConfig(kCall, &store), kResultOk);
    UseFromAnotherThread(*store);
    EXPECT_EQ(ReleaseKalConfig(store), kResultOk);
    std::thread([this] { EXPECT_EQ(facade->SetCallId(kCall), kResultOk); }).join();
  }
};

std::unique_ptr<Stage> NotBound() {
  auto stage = std::make_unique<Stage>();
  stage->facade = std::make_unique<KalConfigHelper>();
  return stage;
}

std::unique_ptr<Stage> Bound() {
  auto stage = NotBound();
  EXPECT_EQ(stage->facade->SetCallId(kCall), kResultOk);
  return stage;
}

class FacadeAllocationFailure : public testing::Test {
 private:
  const Watchdog m_watchdog{kDeadlockLimit};
};

TEST_F(FacadeAllocationFailure, AFailedConstructionHoldsNoReference) {
  const std::size_t failed =
      FailEachAllocation([] { return std::make_unique<Stage>(); },
                         [](auto& stage) { stage->facade = std::make_unique<KalConfigHelper>(kCall); },
                         [](auto& stage, bool done) {
                           EXPECT_EQ(stage->facade != nullptr, done);
                           EXPECT_EQ(GetKalConfigSizeForUT(), done ? 1U : 0U);
                           if (!done) stage->facade = std::make_unique<KalConfigHelper>(kCall);
                           stage->ExpectUsable();
                         });
  EXPECT_GT(failed, 5U);
}

TEST_F(FacadeAllocationFailure, SubscribingIsMadeWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      &Bound,
      [](auto& stage) {
        for (std::size_t index = 0; index < 3; ++index) stage->id = stage->Subscribe(index);
      },
      [](auto& stage, bool done) {
        EXPECT_EQ(stage->id != 0 && stage->Subscribe(2) == 0, done);
        stage->SubscribeAll();  // What was made is refused; what was not is made now.
        stage->ExpectAllNotifiedOnce();
        stage->ExpectUsable();
      });
  EXPECT_GT(failed, 20U);
}

TEST_F(FacadeAllocationFailure, RecordingIsMadeWholeOrNotAtAll) {
  const std::size_t failed = FailEachAllocation(
      &NotBound, [](auto& stage) { stage->SubscribeAll(); },
      [](auto& stage, bool) {
        stage->SubscribeAll();
        EXPECT_EQ(stage->facade->SetCallId(kCall), kResultOk);
        stage->ExpectAllNotifiedOnce();
        stage->ExpectUsable();
      });
  EXPECT_GT(failed, 9U);
}

TEST_F(FacadeAllocationFailure, BindingToACallCanBeRepeated) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = NotBound();
        stage->SubscribeAll();
        return stage;
      },
      [](auto& stage) { stage->facade->SetCallId(kCall); },
      [](auto& stage, bool done) {
        EXPECT_EQ(stage->facade->SetCallId(kCall), kResultOk);
        if (!done) stage->SubscribeAll();
        stage->ExpectAllNotifiedOnce();
        stage->ExpectUsable();
      });
  EXPECT_GT(failed, 20U);
}

TEST_F(FacadeAllocationFailure, OneFailureWhileBindingCostsAtMostOneSubscription) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = NotBound();
        stage->SubscribeAll();
        return stage;
      },
      [](auto& stage) { stage->facade->SetCallId(kCall); },
      [](auto& stage, bool) {
        EXPECT_EQ(stage->facade->SetCallId(kCall), kResultOk);
        int missing = 0;
        for (std::size_t index = 0; index < 3; ++index) missing += stage->Subscribe(index) != 0 ? 1 : 0;
        EXPECT_LE(missing, 1);
      });
  EXPECT_GT(failed, 20U);
}

TEST_F(FacadeAllocationFailure, TeardownAllocatesNothing) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = Bound();
        stage->SubscribeAll();
        return stage;
      },
      [](auto& stage) { stage->facade.reset(); },
      [](auto&, bool done) {
        EXPECT_TRUE(done);
        EXPECT_EQ(GetKalConfigSizeForUT(), 1U);
      });
  EXPECT_EQ(failed, 0U);
}

TEST_F(FacadeAllocationFailure, ValuesAndTogglesKeepWhatWasThere) {
  const std::size_t failed = FailEachAllocation(
      [] {
        auto stage = Bound();
        stage->facade->SetFeatureToggle(static_cast<KalFeatureToggleID>(5), kOldText.c_str());
        return stage;
      },
      [](auto& stage) {
        const auto toggle = static_cast<KalFeatureToggleID>(5);
        stage->facade->SetFeatureToggle(toggle, kNewText.c_str());
        stage->facade->IsFeatureToggleDefaultOn(toggle);
        stage->facade->DumpKalConfigs();
      },
      [](auto& stage, bool done) {
        const std::string text =
            stage->facade->GetFeatureToggle(static_cast<KalFeatureToggleID>(5)).ToString();
        EXPECT_TRUE(text == kNewText || (!done && text == kOldText)) << text;
        stage->ExpectUsable();
      });
  EXPECT_GT(failed, 3U);
}

TEST_F(FacadeAllocationFailure, AFailedReadOfACallHoldsNoReference) {
  const std::size_t failed = FailEachAllocation(
      [] { return ConfigData(); },
      [](ConfigData& value) { GetKalConfigValueEx(KAL_CONFIG_GROUP_AUDIO, kLongName.c_str(), value, kCall); },
      [](const ConfigData&, bool done) {
        EXPECT_TRUE(!done || GetKalConfigSizeForUT() == 1);
        CleanUpKalConfig(kCall);  // Gives the registry's own reference back: it was the only one.
        EXPECT_EQ(GetKalConfigSizeForUT(), 0U);
      });
  EXPECT_GT(failed, 5U);
}

}  // namespace

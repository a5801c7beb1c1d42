// SPDX-License-Identifier: Apache-2.0
#include <new>
#include <optional>

#include "FacadeTest.h"
#include "support/AllocationCount.h"
#include "support/CallingSink.h"

namespace kalStore {
namespace {

using AllocationTest = FacadeTest;

constexpr const char* kLongName = "A.Name.Beyond.What.A.Short.String.Holds";

TEST_F(AllocationTest, ReadsOfAShortValueTakeNothing) {
  KalConfigHelper facade(kCall);
  ASSERT_EQ(facade.SetKalSessionType(kal::KAL_SESSION_AUDIO), kResultOk);
  facade.SetKalConfig(kLongName, 32000);
  facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, true);
  ConfigData value;
  const AllocationCount allocations;
  EXPECT_EQ(facade.GetKalConfig(kLongName, value), kResultOk);
  EXPECT_TRUE(facade.GetKalConfig(kLongName).IsValid());
  EXPECT_EQ(facade.GetKalConfig(kal::KAL_SESSION_AUDIO, kLongName, value), kResultOk);
  EXPECT_TRUE(facade.HaveKalConfig(kLongName));
  EXPECT_FALSE(facade.HaveKalConfig("missing"));
  EXPECT_TRUE(facade.IsFeatureToggleDefaultOn(KAL_FT_EnableMusicDetection));
  EXPECT_TRUE(facade.GetFeatureToggle(KAL_FT_EnableMusicDetection).IsValid());
  EXPECT_EQ(allocations.Count(), 0U);
}

TEST_F(AllocationTest, OverwritesWithAShortValueTakeNothing) {
  KalConfigHelper facade(kCall);
  ASSERT_EQ(facade.SetKalSessionType(kal::KAL_SESSION_AUDIO), kResultOk);
  facade.SetKalConfig(kLongName, 32000);
  facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, true);
  const AllocationCount allocations;
  EXPECT_EQ(facade.SetKalConfig(kLongName, "fifteen letters"), kResultNobody);
  EXPECT_EQ(facade.SetKalConfig(kal::KAL_SESSION_AUDIO, kLongName, 48000), kResultNobody);
  EXPECT_EQ(facade.SetFeatureToggle(KAL_FT_EnableMusicDetection, false), kResultNobody);
  EXPECT_EQ(allocations.Count(), 0U);
}

TEST_F(AllocationTest, AConstructorThatFailsLeavesNoReferenceBehind) {
  for (std::size_t n = 1;; ++n) {
    FailAllocation nth(n);
    try {
      const KalConfigHelper facade(kCall);
    } catch (const std::bad_alloc&) {
    }
    if (!nth.Fired()) break;
    CleanUpKalConfig(kCall);
    EXPECT_EQ(GetKalConfigSizeForUT(), m_sizeBefore) << "allocation " << n;
  }
}

TEST_F(AllocationTest, ASubscriptionThatFailsIsNotThereAndCanBeMadeAgain) {
  const auto ignore = [](const KalConfigEvent&) {};
  for (std::size_t n = 1;; ++n) {
    CleanUpKalConfig(kCall);
    KalConfigHelper facade(kCall);  // Of a store that has given no id yet.
    bool fired = false;
    {
      const CallingSink removal("::unsubscribeConfig", [&] {
        EXPECT_EQ(facade.SubscribeConfig(kLongName, ignore, kGroup), 0U) << "the name is taken till the end";
      });
      FailAllocation nth(n);
      try {
        facade.SubscribeConfig(kLongName, ignore, kGroup);
      } catch (const std::bad_alloc&) {
      }
      fired = nth.Fired();
    }
    if (!fired) break;
    EXPECT_EQ(facade.SetKalConfig(kLongName, 1, kGroup, false, true), kResultNobody) << "allocation " << n;
    EXPECT_NE(facade.SubscribeConfig(kLongName, ignore, kGroup), 0U) << "allocation " << n;
    EXPECT_EQ(facade.SetKalConfig(kLongName, 1, kGroup, false, true), kResultOk);
    EXPECT_EQ(facade.UnsubscribeConfig(kLongName, kGroup), kResultOk);
  }
}

TEST_F(AllocationTest, AFacadeThatCouldNotBeBoundCanBeBoundLater) {
  for (std::size_t n = 1;; ++n) {
    KalConfigHelper facade;
    int notified = 0;
    facade.SubscribeConfig(kLongName, [&](const KalConfigEvent&) { ++notified; }, kGroup);
    std::optional<FailAllocation> nth(n);
    bool hasThrown = false;
    try {
      facade.SetCallId(kCall);
    } catch (const std::bad_alloc&) {
      hasThrown = true;
    }
    const bool fired = nth->Fired();
    nth.reset();
    EXPECT_EQ(fired, hasThrown);
    const bool wasBound = facade.GetCallId() == kCall;
    EXPECT_EQ(facade.SetCallId(kCall), kResultOk) << "allocation " << n;
    // Bound before the failure, the facade is without the subscription, and said so by throwing.
    facade.SetKalConfig(kLongName, 1, kGroup, false, true);
    EXPECT_EQ(notified, wasBound && hasThrown ? 0 : 1) << "allocation " << n;
    if (!fired) break;
  }
}

}  // namespace
}  // namespace kalStore

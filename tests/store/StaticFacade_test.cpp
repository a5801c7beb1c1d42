// SPDX-License-Identifier: Apache-2.0
// Objects with static storage that are constructed before those of a program that have no priority, and what
// they find when they end. A fault ends the process early or late.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/Subscription.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kAudio = KAL_CONFIG_GROUP_AUDIO;

// Constructed in this order; the registry is made between the first and the second, where nobody uses it
// earlier.
#define INITIALISED_EARLY(order) __attribute__((init_priority(100 + (order))))

// Ends after the stores have been dropped.
INITIALISED_EARLY(1) const struct UsesTheRegistryLast {
  ~UsesTheRegistryLast() {
    IKalConfig* store = nullptr;
    const bool works = GetKalConfigSizeForUT() == 0 && CreateKalConfig(7, &store) == kResultOk &&
                       CleanUpKalConfig(7) == kResultOk && ReleaseKalConfig(store) == kResultOk &&
                       GetKalConfigSizeForUT() == 0;
    if (!works) std::abort();
  }
} g_usesTheRegistryLast;

// Ends before the stores are dropped, like a facade that is bound later, though it does not use the registry
// when it is constructed.
INITIALISED_EARLY(3) const struct FindsTheStores {
  ~FindsTheStores() {
    if (GetKalConfigSizeForUT() == 0) std::abort();
  }
} g_findsTheStores;

int g_notified = 0;
INITIALISED_EARLY(4) KalConfigHelper g_facade(77);
INITIALISED_EARLY(5)
Subscription g_subscription(g_facade, kAudio, "name", [](const KalConfigEvent&) { ++g_notified; });

TEST(StaticFacade, WorksFromItsConstructionOn) {
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  KalConfigHelper other(77);
  EXPECT_EQ(kResultOk, other.SetKalConfig("name", "1", kAudio));
  EXPECT_EQ(1, g_notified);
  EXPECT_STREQ("1", g_facade.GetKalConfig("name", kAudio).ToCstr());
}

}  // namespace
}  // namespace kalStore

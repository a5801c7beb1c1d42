// Objects with static storage that use the registry before its source is initialised, and after the stores
// are dropped, as those of a program that links the library statically may. A fault ends the process early or
// late.

#include <gtest/gtest.h>

#include <cstdlib>

#include "tessel/KalConfigHelper.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/Subscription.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kAudio = KAL_CONFIG_GROUP_AUDIO;

// Constructed before the library's own static objects, in this order.
#define INITIALISED_EARLY(order) __attribute__((init_priority(1000 + (order))))

// Constructed before the registry is made, so it ends after the stores have been dropped.
INITIALISED_EARLY(1) const struct UsesTheRegistryLast {
  ~UsesTheRegistryLast() {
    IKalConfig* store = nullptr;
    const bool works = GetKalConfigSizeForUT() == 0 && CreateKalConfig(7, &store) == kResultOk &&
                       CleanUpKalConfig(7) == kResultOk && ReleaseKalConfig(store) == kResultOk &&
                       GetKalConfigSizeForUT() == 0;
    if (!works) std::abort();
  }
} g_usesTheRegistryLast;

int g_notified = 0;
INITIALISED_EARLY(2) KalConfigHelper g_facade(77);
INITIALISED_EARLY(3)
Subscription g_subscription(g_facade, kAudio, "name", [](const KalConfigEvent&) { ++g_notified; });

TEST(StaticFacade, MayBeConstructedBeforeTheRegistryIsInitialised) {
  EXPECT_EQ(1U, GetKalConfigSizeForUT());
  KalConfigHelper other(77);
  EXPECT_EQ(kResultOk, other.SetKalConfig("name", "1", kAudio));
  EXPECT_EQ(1, g_notified);
  EXPECT_STREQ("1", g_facade.GetKalConfig("name", kAudio).ToCstr());
}

}  // namespace
}  // namespace kalStore

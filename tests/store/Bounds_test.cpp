// SPDX-License-Identifier: Apache-2.0
// What is freed, of which there may be much, is freed when no lock is held for it that others wait for. A
// fault waits for ever.

#include <functional>
#include <string>
#include <thread>

#include "StoreFixture.h"
#include "support/AllocationCount.h"
#include "tessel/KalConfigRegistry.h"

namespace kalStore {
namespace {

constexpr std::size_t kLarge = 100000;

/// A store with a large value.
IKalConfig* MakeStoreToFree(std::uint32_t callId) {
  IKalConfig* store = nullptr;
  EXPECT_EQ(kResultOk, CreateKalConfig(callId, &store));
  store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "large", std::string(kLarge, 'x'), false, false);
  store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "name", "1", false, false);
  return store;
}

/// Calls `operation`, and `other` on another thread while the large value is freed.
void ExpectFreedBeside(const std::function<void()>& operation, const std::function<void()>& other) {
  const AtDeletion atDeletion(kLarge, [&] { std::thread(other).join(); });
  operation();
  EXPECT_TRUE(atDeletion.Fired());
}

void UseTheRegistry() {
  IKalConfig* store = nullptr;
  EXPECT_EQ(kResultOk, CreateKalConfig(8, &store));
  EXPECT_EQ(kResultOk, CleanUpKalConfig(8));
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
}

TEST(StoreBounds, TheLastReleaseFreesTheValuesBesideTheRegistry) {
  IKalConfig* const store = MakeStoreToFree(7);
  EXPECT_EQ(kResultOk, CleanUpKalConfig(7));
  ExpectFreedBeside([&] { EXPECT_EQ(kResultOk, ReleaseKalConfig(store)); }, &UseTheRegistry);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST(StoreBounds, TheLastCleanUpFreesTheValuesBesideTheRegistry) {
  IKalConfig* const store = MakeStoreToFree(7);
  EXPECT_EQ(kResultOk, ReleaseKalConfig(store));
  ExpectFreedBeside([&] { EXPECT_EQ(kResultOk, CleanUpKalConfig(7)); }, &UseTheRegistry);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST(StoreBounds, TheEndOfAllStoresFreesTheirValuesBesideTheRegistry) {
  MakeStoreToFree(6);
  MakeStoreToFree(7);
  ExpectFreedBeside(&DestroyKalConfig, &UseTheRegistry);
  EXPECT_EQ(0U, GetKalConfigSizeForUT());
}

TEST(StoreBounds, TheRemovalOfAGroupFreesItsValuesBesideTheGroup) {
  IKalConfig* const store = MakeStoreToFree(7);
  const auto use = [&] {
    ConfigData value;
    EXPECT_EQ(kResultNotFound, store->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "large", value));
    store->SetKalConfig(KAL_CONFIG_GROUP_AUDIO, "after", "1", false, false);
  };
  ExpectFreedBeside([&] { EXPECT_EQ(kResultOk, store->RemoveKalConfigByGroup(KAL_CONFIG_GROUP_AUDIO)); },
                    use);
  ConfigData value;
  EXPECT_EQ(kResultOk, store->GetKalConfig(KAL_CONFIG_GROUP_AUDIO, "after", value));
  EXPECT_EQ(kResultOk, store->GetKalConfig(KAL_CONFIG_GROUP_VIDEO, "name", value));
  DestroyKalConfig();
}

}  // namespace
}  // namespace kalStore

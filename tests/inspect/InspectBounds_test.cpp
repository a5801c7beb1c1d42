// SPDX-License-Identifier: Apache-2.0
// A look that waits for the lock of a group holds no other. A fault waits for ever.

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <optional>
#include <thread>

#include "inspect/StoreParts.h"
#include "support/ThreadState.h"
#include "tessel/KalConfigRegistry.h"
#include "tessel/inspect.h"

namespace kalStore {
namespace {

using internal::StoreParts;

template <class Guarded>
void ExpectLookBesideTheRegistry(Guarded& guarded, void (*look)()) {
  std::optional<typename Guarded::Locked> locked(guarded);
  std::atomic<pid_t> id{0};
  std::thread looking([&] {
    id = gettid();
    look();
  });
  while (id == 0 || StateOf(id) != 'S') std::this_thread::yield();
  std::thread([] { EXPECT_EQ(GetKalConfigSizeForUT(), 1U); }).join();
  locked.reset();
  looking.join();
}

TEST(InspectBounds, ALookHoldsTheLockOfOneGroupAndNotTheRegistrys) {
  IKalConfig* store = nullptr;
  ASSERT_EQ(CreateKalConfig(7, &store), kResultOk);
  auto& own = dynamic_cast<KalConfig&>(*store);
  ExpectLookBesideTheRegistry(StoreParts::ValuesOf(own, KAL_CONFIG_GROUP_AUDIO),
                              [] { EXPECT_TRUE(InspectSettings(7).empty()); });
  ExpectLookBesideTheRegistry(StoreParts::ObserversOf(own, KAL_CONFIG_GROUP_AUDIO),
                              [] { EXPECT_TRUE(InspectSubscriptions(7).empty()); });
  DestroyKalConfig();
}

}  // namespace
}  // namespace kalStore

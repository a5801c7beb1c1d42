// SPDX-License-Identifier: Apache-2.0
#include <array>

#include "StoreFixture.h"
#include "support/AllocationCount.h"

namespace kalStore {
namespace {

// Strings of up to 15 characters need no memory of their own; the names and values here are shorter.
class StoreAllocations : public StoreTest {
 protected:
  template <class Operation>
  static std::size_t AllocationsOf(Operation operation) {
    const AllocationCount allocations;
    operation();
    return allocations.Count();
  }
};

TEST_F(StoreAllocations, OfASetAreTheEntryOnceAndNoneAfterwards) {
  EXPECT_EQ(1U, AllocationsOf([&] { Set("name", "1"); }));
  EXPECT_EQ(0U, AllocationsOf([&] { Set("name", "2"); }));
  EXPECT_EQ(0U, AllocationsOf([&] { Set("name", "2"); }));
  EXPECT_EQ(0U, AllocationsOf([&] { Set("name", 3, true); }));
  EXPECT_EQ(0U, AllocationsOf([&] { Set("other", "1", false, true); }));
}

TEST_F(StoreAllocations, OfASetOfALongStringAreTheArgumentAndWhatIsStored) {
  const std::string name(100, 'n');
  Set(name.c_str(), "1");
  EXPECT_EQ(2U, AllocationsOf([&] { Set(name.c_str(), std::string(100, 'x')); }));
}

TEST_F(StoreAllocations, OfAReadAreNone) {
  Set("name", "1");
  const std::string longName(100, 'n');
  Set(longName.c_str(), "1");
  ConfigData value;
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetKalConfig(kAudio, "name", value); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetKalConfig(kAudio, longName.c_str(), value); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetKalConfig(kAudio, "missing", value); }));
}

TEST_F(StoreAllocations, OfARemovalAreNone) {
  Set("name", "1");
  const SubscribeId_t id = Subscribe("name", [](const KalConfigEvent&) {});
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.UnsubscribeConfig(id); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.RemoveKalConfig(kAudio, "name"); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.RemoveKalConfigByGroup(kAudio); }));
}

TEST_F(StoreAllocations, OfASetNotifiedDirectlyAreOneAfterTheSubscribersChangedAndNoneAfterwards) {
  Set("name", "0");
  std::size_t notified = 0;
  for (int subscribers = 1; subscribers <= 100; ++subscribers) {
    Subscribe("name", [&notified](const KalConfigEvent&) { ++notified; });
    notified = 0;
    EXPECT_EQ(subscribers == 1 ? 0U : 1U, AllocationsOf([&] { Set("name", subscribers); })) << subscribers;
    EXPECT_EQ(0U, AllocationsOf([&] { Set("name", -subscribers); })) << subscribers;
    EXPECT_EQ(2 * static_cast<std::size_t>(subscribers), notified);
  }
}

TEST_F(StoreAllocations, OfASetNotifiedToOneBesideABindingAreNone) {
  Set("name", "0");
  Bind("name", [](const KalConfigEvent&) { return ConfigValue("1"); });
  Subscribe("name", [](const KalConfigEvent&) {});
  EXPECT_EQ(0U, AllocationsOf([&] { Set("name", "1"); }));
}

TEST_F(StoreAllocations, OfADynamicReadAreNone) {
  Bind("name", [](const KalConfigEvent&) { return ConfigValue("1"); });
  ConfigData value;
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetDynamicConfig(kAudio, "name", value, 7); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetDynamicConfig(kAudio, "other", value, 7); }));
}

TEST_F(StoreAllocations, OfADynamicReadByALongNameAreNoneUnlessTheBindingIsAskedAlready) {
  const std::string name(40, 'n');
  std::size_t inner = 0;
  Bind(name.c_str(), [&](const KalConfigEvent& event) {
    ConfigData value;
    if (event.m_defaultValue.IsValid()) {
      inner = AllocationsOf([&] { m_store.GetDynamicConfig(kAudio, name.c_str(), value, {}); });
    }
    return ConfigValue();
  });
  ConfigData value;
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.GetDynamicConfig(kAudio, name.c_str(), value, {}); }));
  const long before = LiveAllocations();
  m_store.GetDynamicConfig(kAudio, name.c_str(), value, std::string(40, 'd'));
  EXPECT_EQ(1U, inner);
  EXPECT_EQ(before, LiveAllocations());
}

TEST_F(StoreAllocations, OfAPostOrAHandOverAreTheEventAndTheCallbacksCopy) {
  ACmThread thread;
  ASSERT_EQ(0, thread.Start());
  const std::array<long, 8> large{};
  for (const bool async : {false, true}) {
    m_store.RemoveKalConfigByGroup(kAudio);
    Set("small", "0");
    Set("large", "0");
    Subscribe("small", [this](const KalConfigEvent&) { (void)this; }, &thread, async);
    Subscribe("large", [large](const KalConfigEvent&) { (void)large; }, &thread, async);
  }
  Set("small", 2);  // The subscribers changed: after that, the first set collects them.
  Set("large", 2);
  EXPECT_EQ(2U, AllocationsOf([&] { Set("small", 1); }));  // Two subscribers, one event each.
  EXPECT_EQ(4U, AllocationsOf([&] { Set("large", 1); }));  // What the callback captured is copied with it.
}

TEST_F(StoreAllocations, OfTracedOperationsAreNoneForTheirLines) {
  set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
  set_external_trace_mask(2);
  Set("name", "1");
  EXPECT_EQ(0U, AllocationsOf([&] { Set("name", "2"); }));
  EXPECT_EQ(0U, AllocationsOf([&] { m_store.UnsubscribeConfig(9); }));
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
}

}  // namespace
}  // namespace kalStore

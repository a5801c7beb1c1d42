// SPDX-License-Identifier: Apache-2.0
#include "tessel/atomMap.h"

#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "tessel/ConfigEventHandler.h"

namespace kalStore {
namespace {

TEST(AtomMap, GivesWhatWasSet) {
  atomMap<std::string, ConfigData> map;
  map.Set("name", "1");
  ConfigData value;
  EXPECT_TRUE(map.Get("name", value));
  EXPECT_STREQ("1", value.ToCstr());
  EXPECT_TRUE(map.Find("name"));
}

TEST(AtomMap, LeavesTheOutputAloneForAnAbsentKey) {
  atomMap<std::string, ConfigData> map;
  map.Set("name", "1");
  ConfigData value("before");
  EXPECT_FALSE(map.Get("nam", value));
  EXPECT_STREQ("before", value.ToCstr());
  EXPECT_FALSE(map.Find("nam"));
}

TEST(AtomMap, OverwritesWithSet) {
  atomMap<unsigned long, int> map;
  map.Set(7, 1);
  map.Set(7, 2);
  int value = 0;
  EXPECT_TRUE(map.Get(7, value));
  EXPECT_EQ(2, value);
}

TEST(AtomMap, KeepsThePresentValueWithSetEx) {
  atomMap<unsigned long, int> map;
  EXPECT_TRUE(map.SetEx(7, 1));
  EXPECT_FALSE(map.SetEx(7, 2));
  int value = 0;
  EXPECT_TRUE(map.Get(7, value));
  EXPECT_EQ(1, value);
}

TEST(AtomMap, OrdersStringKeysByByte) {
  atomMap<std::string, int> map;
  for (const char* key : {"b", "\xff", "B", "a", "aa", ""}) map.Set(key, 0);
  std::vector<std::string> keys;
  atomMap<std::string, int>::Locked locked(map);
  for (const auto& [key, value] : *locked) keys.push_back(key);
  EXPECT_EQ((std::vector<std::string>{"", "B", "a", "aa", "b", "\xff"}), keys);
}

TEST(AtomMap, MayBeUsedByTheThreadThatHoldsIt) {
  atomMap<unsigned long, ConfigEventHandler::Ptr> map;
  atomMap<unsigned long, ConfigEventHandler::Ptr>::Locked locked(map);
  map.Set(1, std::make_shared<ConfigEventHandler>());
  EXPECT_TRUE(map.Find(1));
  EXPECT_FALSE(map.SetEx(1, nullptr));
}

TEST(AtomMap, HasAVirtualDestructor) {
  static_assert(std::has_virtual_destructor_v<atomMap<std::string, ConfigData>>);
  static_assert(std::has_virtual_destructor_v<atomMap<std::string, ConfigEventHandler::Ptr>>);
  static_assert(std::has_virtual_destructor_v<atomMap<unsigned long, ConfigEventHandler::Ptr>>);
}

TEST(AtomMap, LosesNothingUnderConcurrentUse) {
  atomMap<unsigned long, int> map;
  constexpr unsigned long kEach = 500;
  std::atomic<int> inserted{0};
  std::vector<std::thread> threads;
  for (int t = 0; t < 4; ++t) {
    threads.emplace_back([&] {
      for (unsigned long key = 0; key < kEach; ++key) {
        if (map.SetEx(key, 1)) ++inserted;
        map.Set(key, 2);
        int value = 0;
        EXPECT_TRUE(map.Get(key, value));
        EXPECT_EQ(2, value);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(static_cast<int>(kEach), inserted);
}

}  // namespace
}  // namespace kalStore

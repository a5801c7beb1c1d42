// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "support/AllocationCount.h"
#include "tessel/json.h"

namespace {

// As the library decides; without blocks each node is allocated by itself.
constexpr bool kHasBlocks = __STDCPP_DEFAULT_NEW_ALIGNMENT__ >= 16 && sizeof(void*) == 8;

std::string ObjectOf(int members) {
  std::string text = "{";
  for (int i = 0; i < members; ++i)
    text += "\"k" + std::to_string(i) + "\":{\"inner\":" + std::to_string(i) + "},";
  text.back() = '}';
  return text;
}

TEST(NodeBlocks, AParsedDocumentTakesFewAllocations) {
  const std::string text = ObjectOf(1000);  // 2000 members, in 1001 objects
  const AllocationCount count;
  const json::Value document = json::Deserialize(text);
  EXPECT_LT(count.Count(), kHasBlocks ? 150U : 3100U);
  EXPECT_EQ(document.size(), 1000U);
}

TEST(NodeBlocks, AllIsFreedWithTheDocument) {
  const std::string text = ObjectOf(1000);
  const long before = LiveAllocations();
  json::Deserialize(text);
  EXPECT_EQ(LiveAllocations(), before);
}

TEST(NodeBlocks, APartThatIsTakenOutOutlivesItsDocument) {
  const std::string text = ObjectOf(100);
  const long before = LiveAllocations();
  {
    json::Object part;
    {
      json::Value document = json::Deserialize(text);
      part = std::move(document["k42"].ToObject());
      part["another"] = std::move(document["k7"]);
      part.Erase("nothing");
      document.ToObject().Erase("k42");
    }
    EXPECT_EQ(json::Serialize(part), R"({"another":{"inner":7},"inner":42})");
    EXPECT_EQ(part.Erase("inner"), 1U);
    part["inner"] = "by hand";
    EXPECT_EQ(json::Serialize(part), R"({"another":{"inner":7},"inner":"by hand"})");
  }
  EXPECT_EQ(LiveAllocations(), before);
}

TEST(NodeBlocks, AreFreedWithTheirLastNodeWhoeverTakesItOut) {
  json::Object part;
  {
    json::Value document = json::Deserialize(R"({"a":{"inner":1}})");
    part = std::move(document["a"].ToObject());
  }
  const long before = LiveAllocations();
  part.Erase("inner");
  EXPECT_EQ(LiveAllocations(), before - 1);
}

TEST(NodeBlocks, PartsAreFreedOnAnyThread) {
  const std::string text = ObjectOf(400);
  const long before = LiveAllocations();
  {
    json::Value document = json::Deserialize(text);
    std::vector<json::Object> parts(4);
    for (int i = 0; i < 400; ++i) {
      const std::string key = "k" + std::to_string(i);
      parts[i % 4][key] = std::move(document[key]);
    }
    std::vector<std::thread> threads;
    for (json::Object& part : parts)
      threads.emplace_back([taken = std::move(part)]() mutable { taken.Clear(); });
    document.Clear();
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(LiveAllocations(), before);
}

TEST(NodeBlocks, WhatAReadGivesUpIsFreed) {
  const std::string cut = ObjectOf(100).substr(0, 1000);
  const long before = LiveAllocations();
  EXPECT_EQ(json::Deserialize(cut).GetType(), json::NullVal);
  EXPECT_EQ(json::Serialize(json::Deserialize(R"({"a":{"b":{"c":1}},"a":[{"d":1}],"a":{"e":2}})")),
            R"({"a":{"e":2}})");
  EXPECT_EQ(LiveAllocations(), before);
}

TEST(NodeBlocks, AValueMadeByHandIsAllocatedByItself) {
  json::Value document = json::Deserialize(R"({"a":1})");
  const long before = LiveAllocations();
  const AllocationCount count;
  document["b"] = 1;
  EXPECT_EQ(count.Count(), 1U);
  EXPECT_EQ(document.ToObject().Erase("b"), 1U);
  EXPECT_EQ(LiveAllocations(), before);
}

TEST(NodeBlocks, ACopyKeepsNothingOfWhatWasParsed) {
  const std::string text = ObjectOf(100);
  const long before = LiveAllocations();
  json::Value document = json::Deserialize(text);
  const json::Value copy = document["k1"];
  document.Clear();
  EXPECT_EQ(LiveAllocations() - before, 2);  // an object and its member
  EXPECT_EQ(json::Serialize(copy), R"({"inner":1})");
}

TEST(NodeBlocks, AFreeingInsideADeletionOfAnotherOneFreesAll) {
  const std::string text = ObjectOf(100);
  const long before = LiveAllocations();
  {
    json::Value inner = json::Deserialize(text);
    json::Value outer = json::Deserialize(text);
    const AtDeletion place(kHasBlocks ? 2000 : 1, [&] { inner.Clear(); });
    outer.Clear();
    EXPECT_TRUE(place.Fired());
  }
  EXPECT_EQ(LiveAllocations(), before);
}

// A program's own operator delete may make values: they lie in no block that ends. Here the last block of a
// read that gives up, with more room or less.
TEST(NodeBlocks, AValueMadeInsideTheEndOfABlockOutlivesIt) {
  bool hasFired = false;
  for (int members = 1; members <= 20; ++members) {
    const std::string whole = ObjectOf(members);
    const std::string cut = whole.substr(0, whole.size() - 1);
    for (const std::size_t block : {500, 1000, 2000}) {
      const long before = LiveAllocations();
      {
        json::Value made = json::Object();
        {
          const AtDeletion place(block, [&] { made["k"] = 42; });
          json::Deserialize(cut);
          if (!place.Fired()) continue;
        }
        hasFired = true;
        EXPECT_EQ(json::Serialize(made.ToObject()), R"({"k":42})");
      }
      EXPECT_EQ(LiveAllocations(), before);
    }
  }
  EXPECT_EQ(hasFired, kHasBlocks);
}

// And here a block whose nodes were those of a member that came a second time, once the next one is begun:
// for that, the last of them has to be at its very end.
TEST(NodeBlocks, ValuesMadeInsideTheEndOfABlockFindRoomBehindTheNextOne) {
  bool hasFired = false;
  for (int members = 1; members <= 10; ++members) {
    for (int objects = 0; objects <= members; ++objects) {
      std::string first = "{";
      for (int i = 0; i < members; ++i)
        first += "\"" + std::to_string(i) + (i < objects ? "\":{}," : "\":1,");
      first.back() = '}';
      const long before = LiveAllocations();
      {
        json::Value made = json::Object();
        json::Value document;
        {
          const AtDeletion place(1000, [&] {
            for (int i = 0; i < 100; ++i) made["k" + std::to_string(i)] = i;
          });
          document = json::Deserialize(R"({"k":)" + first + R"(,"k":{"inner":{}}})");
          if (!place.Fired()) continue;
        }
        hasFired = true;
        EXPECT_EQ(json::Serialize(document), R"({"k":{"inner":{}}})");
        ASSERT_EQ(made.size(), 100U);
        for (int i = 0; i < 100; ++i) EXPECT_EQ(made["k" + std::to_string(i)], i);
      }
      EXPECT_EQ(LiveAllocations(), before);
    }
  }
  EXPECT_EQ(hasFired, kHasBlocks);
}

TEST(NodeBlocks, AReadInsideAnAllocationOfAnotherOneHasItsOwn) {
  const std::string text = ObjectOf(100);
  const std::string expected = json::Serialize(json::Deserialize(text));
  const long before = LiveAllocations();
  {
    json::Value inner;
    json::Value outer;
    {
      const AtAllocation place(kHasBlocks ? 2000 : 1, [&] { inner = json::Deserialize(text); });
      outer = json::Deserialize(text);
      EXPECT_TRUE(place.Fired());
    }
    EXPECT_EQ(json::Serialize(outer), expected);
    outer.Clear();
    EXPECT_EQ(json::Serialize(inner), expected);
  }
  EXPECT_EQ(LiveAllocations(), before);
}

}  // namespace

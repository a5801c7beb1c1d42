// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <new>
#include <string>
#include <utility>

#include "tessel/json.h"

namespace {

// How far from a multiple of 16 memory may lie.
constexpr std::size_t kShift = 8;

// Whether all memory does, or only that of sizes for which nothing has a larger alignment.
bool g_shiftsAll = false;
long g_live = 0;

std::byte* Unshifted(void* memory) {
  auto* const begin = static_cast<std::byte*>(memory);
  return begin - kShift * std::to_integer<std::size_t>(begin[-1]);
}

}  // namespace

// The byte before the memory says how many shifts are before it.
void* operator new(std::size_t size) {
  const std::size_t shifts = g_shiftsAll || size % (2 * kShift) != 0 ? 1 : 2;
  void* const memory = std::malloc(size + shifts * kShift);
  if (memory == nullptr) throw std::bad_alloc();
  ++g_live;
  std::byte* const begin = static_cast<std::byte*>(memory) + shifts * kShift;
  begin[-1] = std::byte(shifts);
  return begin;
}

void operator delete(void* memory) noexcept {
  if (memory == nullptr) return;
  --g_live;
  std::free(Unshifted(memory));
}
void operator delete(void* memory, std::size_t) noexcept {
  operator delete(memory);
}

namespace {

void UseJson() {
  json::Object taken;
  {
    json::Value document = json::Deserialize(R"({"a":{"b":[1,{"c":2}]},"d":[[]],"e":{}})");
    document.ToObject().insert_or_assign("f", json::Array());
    document["e"]["g"] = document["a"];
    taken = std::move(document["e"].ToObject());
    EXPECT_EQ(document.ToObject().Erase("a"), 1U);
    EXPECT_EQ(json::Serialize(document), R"({"d":[[]],"e":{},"f":[]})");
  }
  taken["h"] = json::Deserialize("[{}]");
  EXPECT_EQ(json::Serialize(taken), R"({"g":{"b":[1,{"c":2}]},"h":[{}]})");
}

TEST(OwnOperatorNew, MayAlignMemoryAsItsSizeDemands) {
  const long before = g_live;
  UseJson();
  EXPECT_EQ(g_live, before);
}

TEST(OwnOperatorNew, MayPutAWordBeforeAllMemory) {
  const long before = g_live;
  g_shiftsAll = true;
  UseJson();
  g_shiftsAll = false;
  EXPECT_EQ(g_live, before);
}

}  // namespace

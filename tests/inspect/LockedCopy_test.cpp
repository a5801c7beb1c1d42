// SPDX-License-Identifier: Apache-2.0
#include "inspect/LockedCopy.h"

#include <gmock/gmock.h>

#include <string>

#include "support/AllocationCount.h"

namespace kalStore::internal {
namespace {

TEST(LockedCopyTest, GivesRecordsAsTheyWerePut) {
  LockedCopy<int> copy;
  copy.Make([&] {
    copy.Put(1, "first", "second");
    copy.Put(2);
    copy.Put(3, "", std::string_view("\0", 1));
  });
  std::string found;
  copy.ForEach([&](int head, std::string_view first, std::string_view second) {
    found += std::to_string(head) + ':' + std::string(first) + ',' + std::to_string(second.size()) + ' ';
  });
  EXPECT_EQ(found, "1:first,6 2:,0 3:,1 ");
}

TEST(LockedCopyTest, WalksAgainUntilAllFitsAndGivesTheLastWalkAlone) {
  LockedCopy<int> copy;
  const std::string contents[] = {std::string(10000, 'a'), std::string(20000, 'b'), "c"};
  int walks = 0;
  copy.Make([&] {
    copy.Put(walks, contents[walks]);
    copy.Put(walks, "after");
    ++walks;
  });
  EXPECT_EQ(walks, 3);
  std::string found;
  copy.ForEach([&](int head, std::string_view first, std::string_view) {
    found += std::to_string(head) + std::string(first) + ' ';
  });
  EXPECT_EQ(found, "2c 2after ");
}

// Its head and sizes take some of the room: one of these strings fills what is left to the last byte.
TEST(LockedCopyTest, GivesARecordThatJustHasRoom) {
  for (std::size_t size = 4000; size < 4100; ++size) {
    LockedCopy<int> copy;
    const std::string put(size, 'x');
    copy.Make([&] { copy.Put(1, "", put); });
    std::string found;
    copy.ForEach([&](int, std::string_view, std::string_view second) { found += second; });
    ASSERT_EQ(found, put) << size;
  }
}

TEST(LockedCopyTest, AllocatesNothingWhileItIsPutInto) {
  LockedCopy<int> copy;
  const std::string big(100000, 'x');
  std::size_t during = 0;
  copy.Make([&] {
    const AllocationCount allocations;
    copy.Put(1, big, big);
    during += allocations.Count();
  });
  EXPECT_EQ(during, 0u);
}

TEST(LockedCopyTest, IsMadeAgainWithNothingOfTheLastTime) {
  LockedCopy<int> copy;
  copy.Make([&] { copy.Put(1, "first"); });
  copy.Make([] {});
  copy.ForEach([](int, auto...) { ADD_FAILURE(); });
}

}  // namespace
}  // namespace kalStore::internal

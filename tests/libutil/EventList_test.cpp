// SPDX-License-Identifier: Apache-2.0
#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <vector>

#include "libutil/TestEvents.h"

namespace {

struct Entry {
  unsigned int priority;
  int number;
  bool operator==(const Entry&) const = default;
};

/// The order in which events of these priorities fire, all queued before the first fires.
std::vector<Entry> FiringOrder(const std::vector<unsigned int>& priorities) {
  EventCounts counts;
  std::vector<Entry> order;
  ACmThread thread;
  EXPECT_EQ(thread.Start(), 0);
  ICmEventQueue* queue = thread.GetEventQueue();
  Gate gate(*queue);
  int number = 0;
  for (unsigned int priority : priorities) {
    const Entry entry{priority, number++};
    EXPECT_EQ(
        queue->PostEvent(new CountedEvent(counts, [&order, entry] { order.push_back(entry); }), priority, 0),
        0);
  }
  gate.Open();
  EXPECT_EQ(thread.Stop(), 0);
  return order;
}

std::vector<Entry> ExpectedOrder(const std::vector<unsigned int>& priorities) {
  std::vector<Entry> entries;
  int number = 0;
  for (unsigned int priority : priorities) entries.push_back({priority, number++});
  std::ranges::stable_sort(entries, {}, &Entry::priority);
  return entries;
}

}  // namespace

TEST(EventList, IsFirstInFirstOutWithinAPriority) {
  const std::vector<unsigned int> priorities(1000, 128);
  EXPECT_EQ(FiringOrder(priorities), ExpectedOrder(priorities));
}

TEST(EventList, FiresSmallerNumbersFirst) {
  constexpr unsigned int kLast = std::numeric_limits<unsigned int>::max();
  const std::vector<unsigned int> priorities{kLast, 128, 0, 200, 1, 128, kLast, 0, 127, 129};
  EXPECT_EQ(FiringOrder(priorities), ExpectedOrder(priorities));
}

TEST(EventList, AgreesWithAStableSortForEveryShortSequence) {
  // All sequences of up to five events of three priorities.
  for (int length = 1; length <= 5; ++length) {
    int sequences = 1;
    for (int i = 0; i < length; ++i) sequences *= 3;
    for (int code = 0; code < sequences; ++code) {
      std::vector<unsigned int> priorities;
      for (int i = 0, rest = code; i < length; ++i, rest /= 3) {
        priorities.push_back(static_cast<unsigned int>(rest % 3) * 100);
      }
      ASSERT_EQ(FiringOrder(priorities), ExpectedOrder(priorities))
          << "sequence " << code << " of " << length;
    }
  }
}

TEST(EventList, AgreesWithAStableSortForRandomPriorities) {
  std::mt19937 random(20);
  for (unsigned int distinct : {2u, 5u, 50u}) {
    std::vector<unsigned int> priorities(2000);
    for (unsigned int& priority : priorities) priority = static_cast<unsigned int>(random() % distinct);
    EXPECT_EQ(FiringOrder(priorities), ExpectedOrder(priorities)) << distinct << " priorities";
  }
}

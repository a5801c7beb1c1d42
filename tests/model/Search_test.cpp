// SPDX-License-Identifier: Apache-2.0
// What a search leaves out: schedules that differ only in when operations were executed that do not depend on
// each other. It finds every outcome all the same.
#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <set>
#include <thread>

#include <fcntl.h>
#include <unistd.h>

#include "checker/Checker.h"
#include "checker/Explore.h"

namespace {

using model::Check;

// Of all executions. They begin alike, but for what this points at.
std::set<std::array<int, 6>>* g_outcomes = nullptr;

// Each thread finds who was at either place before it.
void ThreeAtTwoPlaces() {
  std::array<int, 6> found{};
  std::atomic<int> first{0}, second{0};
  const auto visit = [&](int number) {
    const auto at = static_cast<std::size_t>(2 * number);
    found[at] = first.exchange(number + 1);
    found[at + 1] = second.exchange(number + 1);
  };
  std::thread one([&] { visit(1); });
  std::thread two([&] { visit(2); });
  visit(0);
  one.join();
  two.join();
  const model::Aside aside;
  g_outcomes->insert(found);
}

TEST(Search, FindsEveryOutcome) {
  std::set<std::array<int, 6>> outcomes;
  g_outcomes = &outcomes;
  const model::Outcome all = model::Explore({"", &ThreeAtTwoPlaces}, {.preemptions = 4, .oddities = 0}, 0);
  EXPECT_EQ(all.preemptions, 4) << all.failure;
  // Three threads can come to a place in six orders, and to the other in any of these as well.
  EXPECT_EQ(outcomes.size(), 36U);
}

template <bool areShared>
void TwoCount() {
  std::atomic<int> first{0}, second{0};
  const auto count = [](std::atomic<int>& counter) {
    for (int i = 0; i < 8; ++i) ++counter;
  };
  // This thread makes a difference to either, for all that the checker knows later.
  ++first;
  ++second;
  std::thread one([&] { count(first); });
  std::thread two([&] { count(areShared ? first : second); });
  one.join();
  two.join();
  Check(first + second == 18, "all are counted");
}

TEST(Search, TriesIndependentOperationsInOneOrder) {
  const model::Limits limits{.preemptions = 4, .oddities = 0};
  const model::Outcome independent = model::Explore({"", &TwoCount<false>}, limits, 0);
  const model::Outcome dependent = model::Explore({"", &TwoCount<true>}, limits, 0);
  EXPECT_EQ(independent.preemptions, 4) << independent.failure;
  EXPECT_EQ(dependent.preemptions, 4) << dependent.failure;
  EXPECT_LT(independent.searched, dependent.searched / 4);
}

void CountBesideAnOpenFile() {
  const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
  TwoCount<true>();
  close(file);
}

// The lowest that is free.
int NextFile() {
  const int file = open("/dev/null", O_RDONLY | O_CLOEXEC);
  close(file);
  return file;
}

TEST(Search, LeavesNoExecutionBeforeItsEnd) {
  const int before = NextFile();
  const model::Outcome all =
      model::Explore({"", &CountBesideAnOpenFile}, {.preemptions = 2, .oddities = 0}, 0);
  EXPECT_EQ(all.failure, "");
  EXPECT_EQ(NextFile(), before);
}

}  // namespace

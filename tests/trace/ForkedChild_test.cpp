// SPDX-License-Identifier: Apache-2.0
#include "trace/ForkedChild.h"

#include <gtest/gtest.h>

namespace kalStore::internal {
namespace {

TEST(ForkedChild, FindsTheFlagOfAThreadThatExits) {
  const struct {
    const char* thread;
    bool isExiting;
  } threads[] = {
      {"7 (name) S 1 2 3 4 5 4 0", true},        {"7 (name) S 1 2 3 4 5 4194380 0", true},
      {"7 (name) S 4 4 4 4 4 0 4", false},       {"7 (name) S 1 2 3 4 5 4194304 0", false},
      {"7 (name) S 1 2 3 4 5 64 0", false},      {"7 (name) S 1 2 3 4 5 1 0", false},
      {"7 (a) S 1 2 3 4 5 4) S 0 0 0", false},   {"7 () S 1 2 3 4 5 0) S 1 2 3 4 5 4 0", true},
      {"7 (name) S 1 2 3 4 -1 4", true},         {"7 (name) S 1 2 3 4 4", false},
      {"7 (na me) S 1 2 3 4 -1 4194560", false}, {"", false},
  };
  for (const auto& [thread, isExiting] : threads) EXPECT_EQ(IsExiting(thread), isExiting) << thread;
}

}  // namespace
}  // namespace kalStore::internal

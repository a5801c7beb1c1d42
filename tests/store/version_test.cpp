// SPDX-License-Identifier: Apache-2.0
#include "tessel/version.h"

#include <gtest/gtest.h>

namespace {

// Of another version, as each part of this one may be zero.
#undef TESSEL_VERSION_MAJOR
#undef TESSEL_VERSION_MINOR
#undef TESSEL_VERSION_PATCH
#define TESSEL_VERSION_MAJOR 1
#define TESSEL_VERSION_MINOR 2
#define TESSEL_VERSION_PATCH 3

TEST(Version, HasANumberThatGrowsWithEachPart) {
  EXPECT_EQ(TESSEL_VERSION_NUMBER, 10203);
}

}  // namespace

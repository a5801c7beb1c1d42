// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdint>

#include "tessel/typed.h"

using namespace kalStore;  // As in a program that uses the library, and as the examples are written.

/// Ends with every store gone.
class TypedTest : public testing::Test {
 protected:
  ~TypedTest() override { DestroyKalConfig(); }

  static constexpr std::uint32_t kCall = 7;
};

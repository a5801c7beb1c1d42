// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>
#include <tessel/KalConfigRegistry.h>

/// Each example finds no store, and leaves none behind.
class Example : public testing::Test {
 protected:
  ~Example() override { kalStore::DestroyKalConfig(); }
};

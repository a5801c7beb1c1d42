#pragma once

// What a fragment of the documentation may use without saying so.

#include <gtest/gtest.h>
#include <tessel/post.h>
#include <tessel/tessel.h>
#include <tessel/typed.h>
#include <util/util.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// In a release build, too.
#undef NDEBUG
#include <cassert>

using namespace kalStore;

/// Each fragment finds no store, and leaves none behind.
class Example : public testing::Test {
 protected:
  ~Example() override { DestroyKalConfig(); }
};

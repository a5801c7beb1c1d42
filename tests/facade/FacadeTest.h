// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <cstdio>
#include <string>

#include "support/TraceLog.h"
#include "tessel/tessel.h"

constexpr std::uint32_t kCall = 7;
constexpr kalStore::KalConfigGroup kGroup = kalStore::KAL_CONFIG_GROUP_AUDIO;

inline kalStore::KalConfigGroup Group(std::uint32_t value) {
  return static_cast<kalStore::KalConfigGroup>(value);
}
inline kal::KalSessionType Session(std::uint32_t value) {
  return static_cast<kal::KalSessionType>(value);
}
inline kalStore::KalFeatureToggleID Toggle(std::uint32_t value) {
  return static_cast<kalStore::KalFeatureToggleID>(value);
}

/// " [this=0x...]"
inline std::string ThisSuffix(const void* object) {
  char text[40];
  std::snprintf(text, sizeof(text), " [this=0x%lx]", reinterpret_cast<unsigned long>(object));
  return text;
}

/// " [cid=N] [this=0x...]"
inline std::string CallSuffix(std::uint32_t callId, const void* object) {
  return " [cid=" + std::to_string(callId) + "]" + ThisSuffix(object);
}

/// Tests that leave the registry as they found it: no store is left behind by a facade.
class FacadeTest : public testing::Test {
 protected:
  ~FacadeTest() override {
    kalStore::CleanUpKalConfig(kCall);
    EXPECT_EQ(kalStore::GetKalConfigSizeForUT(), m_sizeBefore);
  }

  const std::uint32_t m_sizeBefore = kalStore::GetKalConfigSizeForUT();
};

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tessel/tessel.h"

/// The group that the benchmarks use.
inline constexpr kalStore::KalConfigGroup kGroup = kalStore::KAL_CONFIG_GROUP_AUDIO;

/// A call with an empty store of its own, which ends with it.
class Call {
 public:
  Call();
  ~Call();
  Call(const Call&) = delete;
  Call& operator=(const Call&) = delete;

  std::uint32_t Id() const { return m_id; }
  kalStore::IKalConfig& Store() { return *m_store; }

 private:
  const std::uint32_t m_id;
  kalStore::IKalConfig* m_store = nullptr;
};

/// Names of 16 characters, in order: one more than a std::string stores without an allocation.
std::vector<std::string> NamesOf(std::int64_t count);

/// A settings document of so many entries, spread evenly over all groups in turn, as a store exports it:
/// numbers, flags, and short and longer strings.
std::string SettingsDocument(std::int64_t entries);

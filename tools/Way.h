// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>

#include "tessel/journal.h"

/// How a change reaches a subscriber, see kalStore::IKalConfig::SubscribeConfig(); here, one of kWays.
using Way = kalStore::JournalWay;

inline constexpr std::array kWays = {Way::kDirect, Way::kPosted, Way::kHandedOver};

/// One of something for each way.
template <class T>
using PerWay = std::array<T, kWays.size()>;

constexpr std::size_t IndexOf(Way way) {
  return static_cast<std::size_t>(way) - static_cast<std::size_t>(kWays.front());
}

/// In words: "direct", "posted", "handed over".
constexpr const char* NameOf(Way way) {
  constexpr PerWay<const char*> kNames = {"direct", "posted", "handed over"};
  return kNames[IndexOf(way)];
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <cstdint>

#include "tessel/IKalConfig.h"

/// The trace sinks of a soak run: they count what they receive and print nothing.
class SoakTrace {
 public:
  SoakTrace();
  ~SoakTrace();
  SoakTrace(const SoakTrace&) = delete;
  SoakTrace& operator=(const SoakTrace&) = delete;

  /// Another sink, another mask. Called by one thread.
  static void Change(unsigned int choice);
  static std::uint64_t Lines();

  /// The store's count of subscriptions and bindings, as its trace lines say it. Called by the thread that
  /// changes the sink and mask.
  static unsigned int TotalObservers(kalStore::IKalConfig& store);
};

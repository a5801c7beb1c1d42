// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

namespace model {

/// Which requests of one kind the system refuses: those with these numbers, from 0.
struct Refused {
  std::uint32_t first = 0;
  std::uint32_t count = 0;
  std::uint32_t number = 0;  ///< of the next one

  /// Whether this request is refused.
  bool Take() { return number++ - first < count; }
};

/// What the system refuses in an execution.
struct Refusals {
  Refused allocations;
  Refused threads;
};

}  // namespace model

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <stdexcept>

namespace kalStore::internal {

/// Why a recording ends although nobody asked for it.
class RecordingFault : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

}  // namespace kalStore::internal

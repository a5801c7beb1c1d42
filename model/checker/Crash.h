// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <vector>

namespace model {

/// Makes a crash of an execution, or its end by std::terminate(), a failure of it. One at a time.
class Crash {
 public:
  Crash();
  ~Crash();
  Crash(const Crash&) = delete;
  Crash& operator=(const Crash&) = delete;

 private:
  std::vector<std::byte> m_stack;  // The scenario's may be what is broken.
};

}  // namespace model

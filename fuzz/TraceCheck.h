#pragma once

namespace fuzz {

/// From the first call on, every trace line is composed, checked for its form, and dropped.
void CheckTraceLines();

}  // namespace fuzz

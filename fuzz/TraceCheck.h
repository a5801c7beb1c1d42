// SPDX-License-Identifier: Apache-2.0
#pragma once

namespace fuzz {

/// After the first call every trace line is composed, its form is checked, and it is dropped.
void CheckTraceLines();

}  // namespace fuzz

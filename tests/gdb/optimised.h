// SPDX-License-Identifier: Apache-2.0
#pragma once

/// Stops in a function whose values the compiler may split or leave out.
void ShowOptimised(int count);

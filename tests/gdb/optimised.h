#pragma once

/// Stops in a function whose values the compiler may keep in pieces, or not at all.
void showOptimised(int count);

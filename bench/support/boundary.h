#pragma once

/// A flag behind the boundary of a shared library: the least that a disabled trace line can cost.
__attribute__((visibility("default"))) int ReadBoundaryFlag();

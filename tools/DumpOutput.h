// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string_view>

/// Writes a dump to standard output, on a line: byte by byte where a program reads it; a person sees the same
/// values.
void PrintDump(std::string_view dump);

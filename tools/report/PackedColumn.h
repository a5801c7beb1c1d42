// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <vector>

/// Numbers as JSON: {"length","base","scale","bytes","data"}. Number i is (base + data[i]) / scale, exactly,
/// where `data` has `bytes` bytes for each, the lowest first, in base64. With 8 bytes, data[i] is the number
/// itself, as IEEE 754 has it; with 0, all are the same. web/packedColumn.js is the reader.
std::string PackedColumn(const std::vector<double>& numbers);

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <vector>

/// One number or string of a raw statistics block.
struct StatisticsMember {
  std::string name;    ///< As the block's structure has it; array elements with their index.
  const char* unit;    ///< "" for a bare number.
  std::size_t offset;  ///< Bytes from the start of the section.
  bool isText;
  std::string (*shown)(const char* bytes);  ///< The value at `bytes` as a string.
};

/// Members of a block that belong together.
struct StatisticsSection {
  std::string title;
  std::size_t offset;  ///< Bytes from the start of the block.
  std::size_t size;
  bool isLayer;
  const std::vector<StatisticsMember>* members;
};

/// A kind of blocks.
struct StatisticsKind {
  const char* name;
  std::size_t blockSize;
  std::vector<StatisticsSection> sections;
};

/// All kinds: "video", "audio".
std::span<const StatisticsKind> StatisticsKinds();

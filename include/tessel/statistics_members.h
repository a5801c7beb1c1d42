// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The members of raw statistics blocks by name, with their units, for what shows, stores or sends them. In
/// libtessel_record.so (CMake tessel::record, pkg-config tessel-record).
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// #include <tessel/statistics_members.h>
/// st_KalVideoTxBlock block{};
/// block.encoderFps = 29.5F;
/// const StatisticsKind& video = StatisticsKinds().front();
/// assert(video.blockSize == sizeof block);
/// for (const StatisticsSection& section : video.sections) {
///   const char* const bytes = reinterpret_cast<const char*>(&block) + section.offset;
///   for (const StatisticsMember& member : *section.members) {
///     const std::string text = member.shown(bytes + member.offset);
///     assert(member.name != "encoderFps" || (text == "29.5" && std::string(member.unit) == "fps"));
///   }
/// }
/// @endcode

#include <cstddef>
#include <span>
#include <string>
#include <vector>

#include "tessel/export.h"

namespace kalStore {

/// One number or string of a raw statistics block.
struct StatisticsMember {
  std::string name;    ///< as the block's structure has it; array elements with their index
  const char* unit;    ///< "" for a bare number
  std::size_t offset;  ///< bytes from the start of the section
  std::size_t size;    ///< in bytes
  bool isText;         ///< whether it is a string
  std::string (*shown)(const char* bytes);  ///< the value at `bytes` as a string; any alignment
};

/// Members of a block that belong together.
struct StatisticsSection {
  std::string title;                             ///< "layer0", for example
  std::size_t offset;                            ///< bytes from the start of the block
  std::size_t size;                              ///< in bytes
  bool isLayer;                                  ///< whether it is a layer of a video block
  const std::vector<StatisticsMember>* members;  ///< valid as long as the library is loaded
};

/// A kind of blocks.
struct StatisticsKind {
  const char* name;       ///< "video" or "audio"
  std::size_t blockSize;  ///< in bytes
  /// Of a video block the call's and each layer's; of an audio block what both directions have, what is sent
  /// and what is received.
  std::vector<StatisticsSection> sections;
};

/// @return All kinds: st_KalVideoTxBlock, then st_KalAudioBlock. Valid as long as the library is loaded.
TESSEL_API std::span<const StatisticsKind> StatisticsKinds();

}  // namespace kalStore

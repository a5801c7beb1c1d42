// SPDX-License-Identifier: Apache-2.0
#include "record/StatisticsChanges.h"

#include <array>
#include <charconv>
#include <cstddef>
#include <cstring>
#include <type_traits>
#include <utility>

#include "record/EventLines.h"
#include "record/LineText.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/statistics_members.h"

namespace kalStore::internal {

namespace {

static_assert(std::is_trivially_copyable_v<InspectedAudio> && std::is_standard_layout_v<InspectedAudio>);

// Where members of an object's blocks are, and their names as a line has them.
struct Place {
  std::size_t offset;
  std::size_t size;
  const std::vector<StatisticsMember>* members;
  std::vector<std::string> names;
};
using Places = std::vector<Place>;

Place PlaceOf(const std::string& prefix, std::size_t offset, std::size_t size,
              const std::vector<StatisticsMember>& members) {
  Place place{offset, size, &members, {}};
  for (const StatisticsMember& member : members) place.names.push_back('"' + prefix + member.name + "\":");
  return place;
}

std::string ShownUnsigned(const char* bytes) {
  std::uint32_t number;
  std::memcpy(&number, bytes, sizeof number);
  return std::to_string(number);
}

const std::vector<StatisticsMember>& SyncMembers() {
  static const auto& all = *new std::vector<StatisticsMember>([] {
    constexpr std::size_t kSize = sizeof(std::uint32_t);
    std::vector<StatisticsMember> members;
    for (std::size_t i = 0; i < sizeof(kal::_tagSyncStatistics) / kSize; ++i) {
      members.push_back({"value[" + std::to_string(i) + "]", "", i * kSize, kSize, false, &ShownUnsigned});
    }
    return members;
  }());
  return all;
}

Places VideoPlaces() {
  Places places;
  for (const StatisticsSection& section : StatisticsKinds()[0].sections) {
    places.push_back(PlaceOf(section.title + ".", section.offset, section.size, *section.members));
  }
  return places;
}

Places AudioPlaces() {
  Places places;
  // What both directions have, what is sent, what is received.
  const std::vector<StatisticsSection>& sections = StatisticsKinds()[1].sections;
  const auto add = [&](const std::string& prefix, std::size_t offset, const StatisticsSection& section) {
    places.push_back(PlaceOf(prefix + ".", offset, section.size, *section.members));
  };
  add("sent", offsetof(InspectedAudio, sent), sections[0]);
  add("sent", offsetof(InspectedAudio, sent), sections[1]);
  for (std::size_t i = 0; i < kAudioStreamCount; ++i) {
    const std::size_t offset = offsetof(InspectedAudio, received) + i * sizeof(st_KalAudioBlock);
    add("received" + std::to_string(i), offset, sections[0]);
    add("received" + std::to_string(i), offset, sections[2]);
  }
  for (std::size_t i = 0; i < kAudioStreamCount; ++i) {
    constexpr std::size_t kSize = sizeof(kal::_tagSyncStatistics);
    const std::size_t offset = offsetof(InspectedAudio, avSync) + i * kSize;
    places.push_back(PlaceOf("avSync" + std::to_string(i) + ".", offset, kSize, SyncMembers()));
  }
  return places;
}

bool HoldsVideo(KalTesselEntityType type) {
  return type == KAL_TESSEL_VIDEO || type == KAL_TESSEL_CONTENT_VIDEO;
}

// Never destroyed: a recording may end with the process.
const Places& PlacesOf(KalTesselEntityType type) {
  static const Places& video = *new Places(VideoPlaces());
  static const Places& audio = *new Places(AudioPlaces());
  return HoldsVideo(type) ? video : audio;
}

// "" when the object has ended.
std::string BytesOf(const InspectedStatistics& object) {
  const auto copy = [&](auto blocks, auto inspect) {
    if (inspect(object.type, object.callId, blocks) != kResultOk) return std::string();
    return std::string(reinterpret_cast<const char*>(&blocks), sizeof blocks);
  };
  return HoldsVideo(object.type) ? copy(st_KalVideoTxBlock{}, &InspectVideo)
                                 : copy(InspectedAudio{}, &InspectAudio);
}

// A number that JSON does not have is a string.
void AppendMemberValue(LineBuffer& out, const StatisticsMember& member, const char* bytes) {
  const std::string text = member.shown(bytes);
  const std::size_t first = text.find_first_not_of('-');
  const bool isNumber =
      !member.isText && first != std::string::npos && text[first] >= '0' && text[first] <= '9';
  if (isNumber) {
    out += text;
  } else {
    AppendJsonString(out, text);
  }
}

// Appends a JSON object of the members that changed. False when there are none.
bool AppendMembers(LineBuffer& out, const Places& places, const std::string& now, const std::string& before) {
  bool hasChanged = false;
  for (const Place& place : places) {
    const char* const bytes = now.data() + place.offset;
    const char* const old = before.data() + place.offset;
    if (std::memcmp(bytes, old, place.size) == 0) continue;
    for (std::size_t i = 0; i < place.members->size(); ++i) {
      const StatisticsMember& member = (*place.members)[i];
      if (std::memcmp(bytes + member.offset, old + member.offset, member.size) == 0) continue;
      out += std::exchange(hasChanged, true) ? ',' : '{';
      out += place.names[i];
      AppendMemberValue(out, member, bytes + member.offset);
    }
  }
  out += hasChanged ? "}" : "{}";
  return hasChanged;
}

}  // namespace

std::vector<StatisticsCopy> CopyStatistics() {
  std::vector<StatisticsCopy> copies;
  for (const InspectedStatistics& object : InspectStatistics()) {
    std::string bytes = BytesOf(object);
    if (!bytes.empty()) copies.push_back({object, std::move(bytes)});
  }
  return copies;
}

void StatisticsChanges::Append(LineBuffer& out, std::int64_t timeNs,
                               const std::vector<StatisticsCopy>& copies) {
  append(out, timeNs, copies, Lines::kChanges);
}

void StatisticsChanges::AppendPicture(LineBuffer& out, std::int64_t timeNs,
                                      const std::vector<StatisticsCopy>& copies) {
  m_looked.clear();
  append(out, timeNs, copies, Lines::kPicture);
}

void StatisticsChanges::Forget(std::int32_t type, std::uint32_t callId) {
  m_looked.erase({type, callId});
}

void StatisticsChanges::append(LineBuffer& out, std::int64_t timeNs,
                               const std::vector<StatisticsCopy>& copies, Lines lines) {
  decltype(m_looked) looked;
  for (const auto& [object, bytes] : copies) {
    const std::pair key(static_cast<std::int32_t>(object.type), object.callId);
    std::string& before = m_looked[key];
    before.resize(bytes.size(), '\0');
    looked[key] = bytes;
    const std::size_t begin = out.Size();
    LineText line(out, "statistics", timeNs);
    line.Number("call", object.callId).Word("entity", EntityName(object.type)).Raw("members", "");
    if (!AppendMembers(out, PlacesOf(object.type), bytes, before) && lines == Lines::kChanges) {
      out.Cut(begin);
      continue;
    }
    if (lines == Lines::kPicture) line.Number("references", object.references).True("picture");
    line.End();
  }
  m_looked = std::move(looked);
}

}  // namespace kalStore::internal

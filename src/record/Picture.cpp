// SPDX-License-Identifier: Apache-2.0
#include "record/Picture.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "record/LineText.h"

namespace kalStore::internal {

namespace {

// A line has at most 1 MiB, and a byte at most six characters.
constexpr std::size_t kLongestName = std::size_t{32} << 10;
constexpr std::size_t kLongestValue = std::size_t{128} << 10;

// What of a string goes into a line: all of it, or its beginning, up to a character's end.
std::string_view Beginning(std::string_view text, std::size_t longest) {
  if (text.size() <= longest) return text;
  std::size_t size = longest;
  while (size > longest - 4 && (static_cast<unsigned char>(text[size]) & 0xC0) == 0x80) --size;
  return text.substr(0, size);
}

}  // namespace

void WriteSetting(LineText& line, KalConfigGroup group, std::string_view name, const ConfigData& value,
                  RecordingShows shows) {
  std::array<const char*, 2> cut{}, hidden{};
  std::size_t cutCount = 0, hiddenCount = 0;
  const auto write = [&](const char* member, std::string_view text, std::size_t longest,
                         RecordingShows least) {
    if (shows > least) {
      hidden[hiddenCount++] = member;
      return;
    }
    line.String(member, Beginning(text, longest));
    if (text.size() > longest) cut[cutCount++] = member;
  };
  line.Word("group", KalConfigGroup2GroupName(group));
  write("name", name, kLongestName, RecordingShows::kName);
  if (value.IsValid()) write("new", value.ToString(), kLongestValue, RecordingShows::kAll);
  if (cutCount != 0) line.Strings("cut", {cut.data(), cutCount});
  if (hiddenCount != 0) line.Strings("hidden", {hidden.data(), hiddenCount});
}

Picture::Picture() : m_statistics(CopyStatistics()) {
  for (const InspectedCall& call : InspectCalls()) {
    m_calls.push_back({call, InspectSettings(call.callId), InspectSubscriptions(call.callId)});
  }
}

void Picture::Append(LineBuffer& out, std::int64_t timeNs, EventLines& lines,
                     StatisticsChanges& statistics) const {
  for (const auto& [call, settings, subscriptions] : m_calls) {
    const std::uint32_t id = call.callId;
    LineText(out, "call", timeNs)
        .Number("call", id)
        .Number("references", call.references)
        .True("picture")
        .End();
    for (const InspectedSetting& setting : settings) {
      LineText line(out, "set", timeNs);
      line.Number("call", id).True("picture");
      WriteSetting(line, setting.group, setting.name, setting.value,
                   lines.Shows(id, setting.group, setting.name));
      if (setting.lastChange) {
        if (const std::string_view origin = lines.Origin(*setting.lastChange); !origin.empty()) {
          line.Raw("origin", origin);
        }
      }
      line.End();
    }
    for (const InspectedSubscription& subscription : subscriptions) {
      LineText line(out, subscription.isBinding ? "bind" : "subscribe", timeNs);
      line.Number("call", id).True("picture");
      WriteSetting(line, subscription.group, subscription.name, {},
                   lines.Shows(id, subscription.group, subscription.name));
      line.Number("id", subscription.id).End();
    }
  }
  statistics.AppendPicture(out, timeNs, m_statistics);
}

}  // namespace kalStore::internal

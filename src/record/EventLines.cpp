// SPDX-License-Identifier: Apache-2.0
#include "record/EventLines.h"

#include <array>
#include <cstddef>
#include <optional>

#include "record/LineText.h"
#include "tessel/CKalTessel.h"

namespace kalStore::internal {

namespace {

// The names of the members that a line does not have, or not whole.
class MemberNames {
 public:
  void Add(const char* name) { m_names[m_count++] = name; }
  void Write(LineText& line, const char* member) const {
    if (m_count != 0) line.Strings(member, {m_names.data(), m_count});
  }

 private:
  std::array<const char*, 6> m_names{};
  std::size_t m_count = 0;
};

const char* TypeOf(JournalKind kind) {
  switch (kind) {
    case JournalKind::kSet:
    case JournalKind::kTransientSet:
      return "set";
    case JournalKind::kRemoved:
    case JournalKind::kGroupRemoved:
      return "remove";
    case JournalKind::kApplied:
      return "apply";
    case JournalKind::kSubscribed:
      return "subscribe";
    case JournalKind::kEnded:
      return "unsubscribe";
    case JournalKind::kBound:
    case JournalKind::kAsked:
      return "bind";
    case JournalKind::kDelivered:
      return "deliver";
    case JournalKind::kStoreMade:
    case JournalKind::kStoreShared:
    case JournalKind::kStoreCleanedUp:
    case JournalKind::kStoreEnded:
      return "call";
    case JournalKind::kStatisticsMade:
    case JournalKind::kStatisticsReleased:
    case JournalKind::kStatisticsEnded:
      return "statistics";
  }
  return "";
}

// Null: the type says it.
const char* EventOf(JournalKind kind) {
  switch (kind) {
    case JournalKind::kBound:
      return "bound";
    case JournalKind::kAsked:
      return "asked";
    case JournalKind::kStoreMade:
    case JournalKind::kStatisticsMade:
      return "made";
    case JournalKind::kStoreShared:
      return "shared";
    case JournalKind::kStoreCleanedUp:
      return "cleaned up";
    case JournalKind::kStatisticsReleased:
      return "released";
    case JournalKind::kStoreEnded:
    case JournalKind::kStatisticsEnded:
      return "ended";
    default:
      return nullptr;
  }
}

bool IsSet(JournalKind kind) {
  return kind == JournalKind::kSet || kind == JournalKind::kTransientSet;
}

bool IsAboutAnEntity(JournalKind kind) {
  return kind >= JournalKind::kStatisticsMade;
}

// Whether the event is about a value, or a group of them.
bool HasGroup(const JournalEvent& event) {
  if (event.kind == JournalKind::kDelivered) return !event.name.text.empty();
  return event.kind < JournalKind::kStoreMade && event.kind != JournalKind::kApplied;
}

const char* ResultOf(const JournalEvent& event) {
  if (!IsSet(event.kind)) return event.result == kResultOk ? nullptr : "refused";
  switch (event.result) {
    case kResultOk:
      return "told";
    case kResultNobody:
      return "nobody";
    case kResultUnchanged:
      return "unchanged";
    default:
      return "refused";
  }
}

const char* WayOf(JournalWay way) {
  switch (way) {
    case JournalWay::kDirect:
      return "direct";
    case JournalWay::kPosted:
      return "posted";
    case JournalWay::kHandedOver:
      return "handed over";
    case JournalWay::kNone:
    case JournalWay::kDropped:
      break;
  }
  return nullptr;
}

// What `count` of the event counts; null: nothing.
const char* CountName(JournalKind kind) {
  if (IsSet(kind)) return "told";
  if (kind == JournalKind::kRemoved || kind == JournalKind::kGroupRemoved || kind == JournalKind::kApplied)
    return "count";
  return kind >= JournalKind::kStoreMade ? "references" : nullptr;
}

// The parts of an event that its setting is in. A set that was refused may have no group.
class SettingText {
 public:
  SettingText(LineText& line, const JournalEvent& event, RecordingShows shows)
      : m_line(line), m_event(event), m_shows(shows) {}

  void Write() {
    if (HasGroup(m_event)) {
      if (IsConfigGroup(m_event.group)) m_line.Word("group", KalConfigGroup2GroupName(m_event.group));
      if (m_event.kind != JournalKind::kGroupRemoved) string("name", m_event.name, RecordingShows::kName);
      string("old", m_event.oldValue);
      string("new", m_event.newValue);
    }
    string("threw", m_event.thrown);
    if (m_event.label.isCut) m_cut.Add("label");
    if (m_event.document.isCut) m_cut.Add("document");
    m_cut.Write(m_line, "cut");
    m_hidden.Write(m_line, "hidden");
  }

 private:
  void string(const char* name, const std::optional<JournalString>& text) {
    if (text) string(name, *text, RecordingShows::kAll);
  }
  void string(const char* name, const JournalString& text, RecordingShows least) {
    if (m_shows > least) {
      m_hidden.Add(name);
      return;
    }
    m_line.String(name, text.text);
    if (text.isCut) m_cut.Add(name);
  }

  LineText& m_line;
  const JournalEvent& m_event;
  const RecordingShows m_shows;
  MemberNames m_cut, m_hidden;
};

void AppendMember(std::string& members, const char* name, std::string_view json) {
  members += members.empty() ? "\"" : ",\"";
  members += name;
  members += "\":";
  members += json;
}

void AppendStringMember(std::string& members, const char* name, std::string_view text) {
  if (text.empty()) return;
  LineBuffer json;
  AppendJsonString(json, text);
  AppendMember(members, name, json.Text());
}

// An origin; "" without members.
std::string OriginOf(std::string members, const JournalEvent& event) {
  AppendStringMember(members, "label", event.label.text);
  AppendStringMember(members, "document", event.document.text);
  if (event.line != 0) {
    AppendMember(members, "line", std::to_string(event.line));
    AppendMember(members, "column", std::to_string(event.column));
  }
  return members.empty() ? "" : "{" + members + "}";
}

}  // namespace

const char* EntityName(std::int32_t type) {
  switch (type) {
    case KAL_TESSEL_AUDIO:
      return "audio";
    case KAL_TESSEL_VIDEO:
      return "video";
    case KAL_TESSEL_CONTENT_VIDEO:
      return "content video";
    default:
      return "content audio";
  }
}

RecordingShows EventLines::Shows(std::uint32_t callId, KalConfigGroup group, std::string_view name) const {
  if (!m_filter) return RecordingShows::kAll;
  try {
    return m_filter(callId, group, name);
  } catch (...) {
    return RecordingShows::kNothing;
  }
}

void EventLines::Append(LineBuffer& out, const JournalEvent& event) {
  const std::int64_t timeNs = event.timeNs - m_startNs;
  if (event.missed != 0) AppendLost(out, timeNs, event.missed);
  const RecordingShows shows = showsOf(event);

  LineText line(out, TypeOf(event.kind), timeNs);
  line.Number("number", event.number);
  if (event.cause != 0) line.Number("cause", event.cause);
  line.Number("call", event.callId);
  if (IsAboutAnEntity(event.kind)) line.Word("entity", EntityName(event.entityType));
  if (const char* const what = EventOf(event.kind)) line.Word("event", what);
  SettingText(line, event, shows).Write();
  if (event.kind == JournalKind::kTransientSet) line.True("transient");
  if (const char* const result = ResultOf(event)) line.Word("result", result);
  if (const char* const name = CountName(event.kind)) line.Number(name, event.count);
  if (event.id != 0) line.Number("id", event.id);
  if (event.kind == JournalKind::kDelivered) {
    if (const char* const way = WayOf(event.way)) {
      line.Word("way", way);
    } else {
      line.True("dropped");
    }
    line.Microseconds("wait_us", event.waitedNs);
  }
  if (event.ranNs != 0) line.Microseconds("run_us", event.ranNs);
  line.Number("thread", event.threadId);
  if (const std::string_view origin = Origin(event); !origin.empty()) line.Raw("origin", origin);
  line.End();
}

// Of a setting that is not known, what a callback threw is not shown: it may name the value.
RecordingShows EventLines::showsOf(const JournalEvent& event) const {
  if (HasGroup(event) && event.kind != JournalKind::kGroupRemoved)
    return Shows(event.callId, event.group, event.name.text);
  return m_filter && event.thrown ? RecordingShows::kNothing : RecordingShows::kAll;
}

void EventLines::AppendLost(LineBuffer& out, std::int64_t timeNs, std::uint64_t count) const {
  LineText(out, "lost", timeNs).Number("count", count).End();
}

// Few pairs of caller and label do nearly all.
std::string_view EventLines::Origin(const JournalEvent& event) {
  constexpr std::size_t kMostLabels = 8;
  Code& code = codeOf(event.caller);
  const bool isOfDocument = !event.document.text.empty() || event.line != 0;
  if (!isOfDocument) {
    for (const auto& [label, origin] : code.origins) {
      if (label == event.label.text) return origin;
    }
  }
  if (isOfDocument || code.origins.size() == kMostLabels) return m_origin = OriginOf(code.members, event);
  return code.origins.emplace_back(event.label.text, OriginOf(code.members, event)).second;
}

EventLines::Code& EventLines::codeOf(const void* caller) {
  const auto [place, isNew] = m_code.try_emplace(caller);
  if (isNew) {
    const CodePlace code = m_loaderWait.Run([&] { return FindCodePlace(caller); });
    AppendStringMember(place->second.members, "module", code.module);
    AppendStringMember(place->second.members, "symbol", code.symbol);
  }
  return place->second;
}

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordingEvent.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>

namespace {

using kalStore::KalConfigGroup;
using Names = std::initializer_list<const char*>;

// Takes members out of an object. The first one of a wrong kind is the fault.
class MemberReader {
 public:
  explicit MemberReader(const json::Object& object) : m_object(object) {}

  const std::string& Fault() const { return m_fault; }

  void Read(const char* name, std::optional<std::string>& text) {
    const json::Value* const value = find(name, json::StringVal, "a string");
    if (value != nullptr) text = value->ToString();
  }
  void Read(const char* name, std::optional<std::string>& text, Names choices) {
    Read(name, text);
    if (text && std::ranges::find(choices, *text) == choices.end()) fail(name, "unknown");
  }
  void Read(const char* name, std::optional<double>& number) {
    const json::Value* const value = find(name);
    if (value == nullptr) return;
    if (!IsNumber(*value) || !std::isfinite(value->ToDouble()) || value->ToDouble() < 0) {
      fail(name, "expected a number, 0 or more");
    } else {
      number = value->ToDouble();
    }
  }
  void Read(const char* name, std::optional<std::uint64_t>& number,
            double most = std::numeric_limits<std::uint32_t>::max()) {
    const json::Value* const value = find(name);
    if (value == nullptr) return;
    const double given = IsNumber(*value) ? value->ToDouble() : -1;
    if (given < 0 || given > most || given != std::floor(given)) {
      fail(name, "expected a whole number, 0 or more");
    } else {
      number = static_cast<std::uint64_t>(given);
    }
  }
  void Read(const char* name, bool& flag) {
    const json::Value* const value = find(name, json::BoolVal, "true or false");
    if (value != nullptr) flag = value->ToBool();
  }
  void Read(const char* name, std::vector<std::string>& texts) {
    const json::Value* const value = find(name, json::ArrayVal, "an array");
    if (value == nullptr) return;
    for (const json::Value& text : value->ToArray()) {
      if (text.GetType() != json::StringVal) return fail(name, "expected strings");
      texts.push_back(text.ToString());
    }
  }
  void Read(const char* name, std::optional<KalConfigGroup>& group) {
    std::optional<std::string> text;
    Read(name, text);
    if (!text) return;
    const KalConfigGroup found = kalStore::GroupName2KalConfigGroup(*text);
    if (!kalStore::IsConfigGroup(found)) return fail(name, "unknown");
    group = found;
  }
  void Read(const char* name, json::Object& object) {
    const json::Value* const value = find(name, json::ObjectVal, "an object");
    if (value != nullptr) object = value->ToObject();
  }

  static bool IsNumber(const json::Value& value) {
    switch (value.GetType()) {
      case json::IntVal:
      case json::UnsignedIntVal:
      case json::Int64Val:
      case json::DoubleVal:
        return true;
      default:
        return false;
    }
  }

  void Require(Names names) {
    for (const char* const name : names) {
      if (!m_object.HasKey(name)) fail(name, "missing");
    }
  }

 private:
  const json::Value* find(const char* name) const {
    const auto found = m_object.find(name);
    return found == m_object.end() ? nullptr : &found->second;
  }
  const json::Value* find(const char* name, json::ValueType type, const char* expected) {
    const json::Value* const value = find(name);
    if (value == nullptr || value->GetType() == type) return value;
    fail(name, std::string("expected ") + expected);
    return nullptr;
  }
  void fail(const char* name, const std::string& why) {
    if (m_fault.empty()) m_fault = std::string(name) + ": " + why;
  }

  const json::Object& m_object;
  std::string m_fault;
};

// Integers up to here are exact in JSON.
constexpr double kLargestExact = 9007199254740992.0;

std::string ReadOrigin(const json::Object& object, RecordingEvent::Origin& origin) {
  MemberReader reader(object);
  reader.Read("module", origin.module);
  reader.Read("symbol", origin.symbol);
  reader.Read("label", origin.label);
  reader.Read("document", origin.document);
  reader.Read("line", origin.line);
  reader.Read("column", origin.column);
  return reader.Fault().empty() ? "" : "origin." + reader.Fault();
}

std::string CheckMembers(const json::Object& members) {
  for (const auto& [name, value] : members) {
    if (value.GetType() != json::StringVal && !MemberReader::IsNumber(value)) {
      return "members." + name + ": expected a number or a string";
    }
  }
  return "";
}

// What a line of that type cannot do without.
void RequireMembers(MemberReader& reader, const RecordingEvent& event) {
  const auto isOneOf = [&](Names types) { return std::ranges::find(types, event.type) != types.end(); };
  if (event.IsBegin()) reader.Require({"version", "wall"});
  if (isOneOf(
          {"call", "set", "remove", "apply", "subscribe", "unsubscribe", "bind", "deliver", "statistics"})) {
    reader.Require({"call"});
  }
  // A set that was refused may have named no group.
  if (isOneOf({"set", "remove", "subscribe", "unsubscribe", "bind"}) && event.result != "refused")
    reader.Require({"group"});
  if (isOneOf({"remove", "apply", "lost"})) reader.Require({"count"});
  if (isOneOf({"subscribe", "unsubscribe", "bind", "deliver"}) && event.event != "asked")
    reader.Require({"id"});
  if (isOneOf({"statistics"})) reader.Require({"entity"});
  if (isOneOf({"set"}) && !event.isPicture) reader.Require({"result"});
  if (isOneOf({"call", "bind"}) && !event.isPicture) reader.Require({"event"});
  if (isOneOf({"statistics"}) && !event.event) reader.Require({"members"});
  if (isOneOf({"deliver"}) && !event.isDropped) reader.Require({"way"});
}

void ReadKind(MemberReader& reader, RecordingEvent& event) {
  if (event.type == "recording") return reader.Read("event", event.event, {"ended"});
  if (event.type == "call")
    return reader.Read("event", event.event, {"made", "shared", "cleaned up", "ended"});
  if (event.type == "bind") return reader.Read("event", event.event, {"bound", "asked"});
  if (event.type == "statistics") return reader.Read("event", event.event, {"made", "released", "ended"});
}

std::string ReadMembers(const json::Object& object, RecordingEvent& event) {
  MemberReader reader(object);
  std::optional<std::string> type;
  std::optional<double> time;
  reader.Require({"type", "t"});
  reader.Read("type", type);
  reader.Read("t", time);
  if (!reader.Fault().empty()) return reader.Fault();
  event.type = *type;
  event.time = *time;
  if (std::ranges::find(RecordingTypes(), event.type) == RecordingTypes().end()) return "";

  ReadKind(reader, event);
  reader.Read("version", event.version);
  reader.Read("part", event.part, kLargestExact);
  reader.Read("next", event.next, kLargestExact);
  reader.Read("wall", event.wall);
  reader.Read("reason", event.reason);
  reader.Read("number", event.number, kLargestExact);
  reader.Read("cause", event.cause, kLargestExact);
  reader.Read("call", event.call);
  reader.Read("group", event.group);
  reader.Read("name", event.name);
  reader.Read("old", event.oldValue);
  reader.Read("new", event.newValue);
  reader.Read("cut", event.cut);
  reader.Read("hidden", event.hidden);
  reader.Read("transient", event.isTransient);
  reader.Read("result", event.result, {"told", "nobody", "unchanged", "refused"});
  reader.Read("told", event.told);
  reader.Read("count", event.count, kLargestExact);
  reader.Read("references", event.references);
  reader.Read("id", event.id, kLargestExact);
  reader.Read("way", event.way, {"direct", "posted", "handed over"});
  reader.Read("dropped", event.isDropped);
  reader.Read("wait_us", event.waitUs);
  reader.Read("run_us", event.runUs);
  reader.Read("threw", event.thrown);
  reader.Read("thread", event.thread, kLargestExact * 1024);  // An address, on some systems.
  reader.Read("entity", event.entity, {"audio", "video", "content video", "content audio"});
  reader.Read("members", event.members);
  reader.Read("picture", event.isPicture);
  json::Object origin;
  reader.Read("origin", origin);
  RequireMembers(reader, event);
  if (!reader.Fault().empty()) return reader.Fault();
  const std::string fault = ReadOrigin(origin, event.origin);
  return fault.empty() ? CheckMembers(event.members) : fault;
}

}  // namespace

bool RecordingEvent::IsCut(std::string_view member) const {
  return std::ranges::find(cut, member) != cut.end();
}

bool RecordingEvent::IsHidden(std::string_view member) const {
  return std::ranges::find(hidden, member) != hidden.end();
}

const std::vector<std::string>& RecordingTypes() {
  static const std::vector<std::string> kTypes = {"recording", "call",       "set",         "remove",
                                                  "apply",     "subscribe",  "unsubscribe", "bind",
                                                  "deliver",   "statistics", "lost"};
  return kTypes;
}

std::string ReadRecordingLine(const std::string& line, RecordingEvent& event) {
  event = RecordingEvent();
  json::ParseError error;
  const json::Value value = json::Deserialize(line, error);
  if (error.reason != nullptr) return error.reason;
  if (value.GetType() != json::ObjectVal) return "expected an object";
  return ReadMembers(value.ToObject(), event);
}

// SPDX-License-Identifier: Apache-2.0
#include "recording/EventText.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <optional>
#include <string_view>

#include "Colour.h"
#include "ConfigPath.h"
#include "Printable.h"
#include "tessel/json.h"

namespace {

constexpr std::size_t kTypeWidth = 13;
constexpr std::size_t kCallWidth = 9;

Colour ColourOfType(const std::string& type) {
  if (type == "set" || type == "apply") return Colour::kYellow;
  if (type == "remove" || type == "lost") return Colour::kRed;
  if (type == "deliver") return Colour::kCyan;
  if (type == "subscribe" || type == "unsubscribe" || type == "bind") return Colour::kGreen;
  return Colour::kBold;
}

std::string Padded(const std::string& text, std::size_t width) {
  return text.size() < width ? std::string(width - text.size(), ' ') : std::string(" ");
}

// Like "  12.345678".
std::string TimeText(double seconds) {
  std::array<char, 400> text;  // For any number.
  const int size = std::snprintf(text.data(), text.size(), "%12.6f", seconds);
  return {text.data(), static_cast<std::size_t>(size)};
}

std::string CountText(std::uint64_t count, const char* what) {
  return std::to_string(count) + " " + what + (count == 1 ? "" : "s");
}

// The parts of a sentence, with commas between them.
class Phrase {
 public:
  Phrase& Add(std::string_view part) {
    if (!m_text.empty()) m_text += ", ";
    m_text += part;
    return *this;
  }
  const std::string& Text() const { return m_text; }

 private:
  std::string m_text;
};

std::string RecordedText(const RecordingEvent& event, const char* member,
                         const std::optional<std::string>& text) {
  if (event.IsHidden(member)) return "(hidden)";
  return (text ? Quoted(*text) : "none") + (event.IsCut(member) ? "..." : "");
}

// Video/MaxFps: "30" -> "15"
std::string ChangeText(const RecordingEvent& event) {
  const bool hasOld = event.oldValue || event.IsHidden("old");
  return RecordedPath(event) + ": " + (hasOld ? RecordedText(event, "old", event.oldValue) + " -> " : "") +
         RecordedText(event, "new", event.newValue);
}

void AddResult(Phrase& phrase, const RecordingEvent& event) {
  if (!event.result) return;
  if (*event.result == "told") {
    phrase.Add("notified " + std::to_string(event.told.value_or(0)));
  } else {
    phrase.Add(*event.result == "nobody" ? "nobody notified" : *event.result);
  }
}

void AddRun(Phrase& phrase, const RecordingEvent& event) {
  if (event.waitUs) phrase.Add("waited " + ShortNumber(*event.waitUs) + " us");
  if (event.runUs) phrase.Add("ran " + ShortNumber(*event.runUs) + " us");
  if (event.thrown) phrase.Add("threw " + RecordedText(event, "threw", event.thrown));
}

void DescribeRecording(Phrase& phrase, const RecordingEvent& event) {
  if (event.IsBegin()) {
    phrase.Add("version " + std::to_string(event.version.value_or(0)));
    phrase.Add("began " + Printable(event.wall.value_or("")));
  } else {
    phrase.Add("ended" + (event.reason ? ": " + Printable(*event.reason) : ""));
  }
}

void DescribeCall(Phrase& phrase, const RecordingEvent& event) {
  if (event.event) phrase.Add(*event.event);
  if (event.references) phrase.Add(CountText(*event.references, "reference"));
}

void DescribeRemoval(Phrase& phrase, const RecordingEvent& event) {
  phrase.Add(RecordedPath(event) + (event.oldValue || event.IsHidden("old")
                                        ? ": " + RecordedText(event, "old", event.oldValue)
                                        : ""));
  AddResult(phrase, event);
  phrase.Add(std::to_string(event.count.value_or(0)) + " removed");
}

void DescribeBinding(Phrase& phrase, const RecordingEvent& event) {
  const bool isAnswer = event.event == "asked";
  phrase.Add(RecordedPath(event) +
             (isAnswer ? ": answered " + RecordedText(event, "new", event.newValue) : ""));
  if (event.id) phrase.Add("binding " + std::to_string(*event.id));
  AddRun(phrase, event);
}

void DescribeDelivery(Phrase& phrase, const RecordingEvent& event) {
  phrase.Add(event.group && (event.name || event.IsHidden("name")) ? ChangeText(event)
                                                                   : "an overwritten change");
  phrase.Add("to subscription " + std::to_string(event.id.value_or(0)));
  if (!event.cause) phrase.Add("initial");
  phrase.Add(event.isDropped ? "dropped" : event.way.value_or(""));
  AddRun(phrase, event);
}

void DescribeStatistics(Phrase& phrase, const RecordingEvent& event) {
  phrase.Add(event.entity.value_or(""));
  if (event.event) phrase.Add(*event.event);
  if (event.references) phrase.Add(CountText(*event.references, "reference"));
  for (const auto& [name, value] : event.members) {
    const bool isText = value.GetType() == json::StringVal;
    phrase.Add(Printable(name) + "=" + (isText ? Quoted(value.ToString()) : ShortNumber(value.ToDouble())));
  }
}

void Describe(Phrase& phrase, const RecordingEvent& event) {
  if (event.type == "recording") return DescribeRecording(phrase, event);
  if (event.type == "call") return DescribeCall(phrase, event);
  if (event.type == "remove") return DescribeRemoval(phrase, event);
  if (event.type == "bind") return DescribeBinding(phrase, event);
  if (event.type == "deliver") return DescribeDelivery(phrase, event);
  if (event.type == "statistics") return DescribeStatistics(phrase, event);
  if (event.type == "set") {
    phrase.Add(ChangeText(event));
    if (event.isTransient) phrase.Add("transient");
    AddResult(phrase, event);
  } else if (event.type == "apply") {
    phrase.Add(CountText(event.count.value_or(0), "set"));
    AddResult(phrase, event);
    AddRun(phrase, event);
  } else if (event.type == "subscribe" || event.type == "unsubscribe") {
    phrase.Add(RecordedPath(event)).Add("id " + std::to_string(event.id.value_or(0)));
  } else if (event.type == "lost") {
    phrase.Add(CountText(event.count.value_or(0), "event"));
  } else {
    phrase.Add("a type that this program does not know");
  }
}

// "bandwidth controller", lab.json:2:18, AdaptRate in libvideo.so
std::string OriginText(const RecordingEvent& event) {
  const RecordingEvent::Origin& origin = event.origin;
  Phrase phrase;
  if (origin.label) phrase.Add(RecordedText(event, "label", origin.label));
  if (origin.document || origin.line) {
    std::string place = origin.document ? Printable(*origin.document) : "a document";
    if (event.IsCut("document")) place += "...";
    if (origin.line) place += ":" + std::to_string(*origin.line);
    if (origin.column) place += ":" + std::to_string(*origin.column);
    phrase.Add(place);
  }
  if (origin.module) {
    const std::string module = Printable(BaseName(*origin.module));
    phrase.Add(origin.symbol ? Printable(*origin.symbol) + " in " + module : module);
  }
  return phrase.Text();
}

}  // namespace

std::string ShortNumber(double number) {
  constexpr double kLongest = 1e18;
  const bool isLong = number > kLongest || number < -kLongest;
  std::array<char, 400> text;
  const auto format = isLong ? std::chars_format::general : std::chars_format::fixed;
  return {text.data(), std::to_chars(text.data(), text.data() + text.size(), number, format).ptr};
}

std::string_view BaseName(std::string_view path) {
  return path.substr(path.rfind('/') + 1);  // All of it when there is none.
}

std::string RecordedPath(const RecordingEvent& event) {
  const std::string group = event.group ? GroupName(*event.group) : "?";
  if (event.IsHidden("name")) return group + "/(hidden)";
  return group + "/" + (event.name ? Printable(*event.name) + (event.IsCut("name") ? "..." : "") : "*");
}

void PrintRecordingEvent(std::ostream& out, const RecordingEvent& event) {
  const std::string type = Printable(event.type);
  const std::string call = event.call ? "call " + std::to_string(*event.call) : "";
  Phrase phrase;
  Describe(phrase, event);
  if (event.isPicture) phrase.Add(event.cause ? "the whole value" : "there at the start");
  const std::string origin = OriginText(event);
  out << TimeText(event.time) << "  " << Coloured(ColourOfType(event.type), type) << Padded(type, kTypeWidth)
      << call << Padded(call, kCallWidth) << phrase.Text() << (origin.empty() ? "" : "; by " + origin)
      << '\n';
}

// SPDX-License-Identifier: Apache-2.0
#include "recording/RecordedSettings.h"

#include <charconv>
#include <filesystem>
#include <iostream>
#include <system_error>

#include "CommandError.h"
#include "ConfigPath.h"
#include "ExitStatus.h"
#include "Printable.h"
#include "TextFile.h"
#include "recording/EventText.h"
#include "recording/RecordingFile.h"
#include "tessel/CallStore.h"

namespace {

// "7, 8"
std::string CallNames(const std::map<std::uint64_t, RecordedSettings::Call>& calls) {
  std::string names;
  for (const auto& [id, call] : calls) names += (names.empty() ? "" : ", ") + std::to_string(id);
  return names;
}

const RecordedSettings::Call& FindCall(const RecordedSettings& settings, std::optional<unsigned> call,
                                       const std::string& where) {
  const auto& calls = settings.Calls();
  if (calls.empty()) throw CommandError(where + ": no call is there");
  if (!call && calls.size() == 1) return calls.begin()->second;
  if (!call) throw CommandError(where + ": calls " + CallNames(calls) + " are there: choose with --call");
  const auto found = calls.find(*call);
  if (found != calls.end()) return found->second;
  throw CommandError(where + ": call " + std::to_string(*call) + " is not there; there is " +
                     CallNames(calls));
}

}  // namespace

void RecordedSettings::Call::Take(const RecordingEvent& event) {
  if (event.type != "set" && event.type != "remove") return;
  if (event.result == "refused") return;
  if (event.IsHidden("name") || event.IsCut("name") || (event.type == "set" && !event.name)) {
    m_hasUnknownNames = true;
  } else if (!event.name) {
    std::erase_if(m_values, [&](const auto& value) { return value.first.first == *event.group; });
  } else if (event.type == "set" && !event.isTransient && (event.newValue || event.IsHidden("new"))) {
    const bool isWhole = !event.IsHidden("new") && !event.IsCut("new");
    Value& value = m_values[{*event.group, *event.name}];
    // A set that changes nothing may have less of the value than is known already.
    if (event.result != "unchanged" || !value.isWhole) value = {event.newValue.value_or(""), isWhole};
  } else {  // A transient set leaves no value.
    m_values.erase({*event.group, *event.name});
  }
}

std::string RecordedSettings::Call::Document() const {
  const kalStore::CallStore store(1, kalStore::CallStore::kEndsCall);
  for (const auto& [place, value] : m_values) {
    if (!value.isWhole) continue;
    store->SetKalConfig(place.first, place.second.c_str(), ConfigData(value.text), false, false);
  }
  return store->DumpKalConfigs(kalStore::kAllConfigGroups);
}

std::vector<std::string> RecordedSettings::Call::Gaps() const {
  std::vector<std::string> gaps;
  for (const auto& [place, value] : m_values) {
    if (!value.isWhole) {
      gaps.push_back(ShownPath(place.first, place.second) +
                     ": left out, the recording does not have all of the value");
    }
  }
  if (m_hasUnknownNames)
    gaps.emplace_back("values are left out, the recording does not have all of their names");
  return gaps;
}

void RecordedSettings::Take(const RecordingEvent& event) {
  if (event.IsBegin()) {  // Its picture has all that is there.
    *this = {};
  } else if (event.type == "lost") {
    m_lost += *event.count;
    m_ended.clear();
  } else if (event.type == "call" && event.event == "ended") {
    m_calls.erase(*event.call);
    m_ended.insert(*event.call);
  } else if (event.type == "call") {
    m_calls[*event.call];
    m_ended.erase(*event.call);
  } else if (event.type == "set") {
    if (!m_ended.contains(*event.call)) m_calls[*event.call].Take(event);
  } else if (event.type == "remove") {
    const auto found = m_calls.find(*event.call);
    if (found != m_calls.end()) found->second.Take(event);
  }
}

std::optional<RecordedMoment> ParseMoment(const std::string& text) {
  const std::size_t at = text.rfind('@');
  std::error_code ignored;
  if (at == std::string::npos || at == 0 || std::filesystem::exists(text, ignored)) return std::nullopt;
  double seconds = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data() + at + 1, end, seconds);
  if (error != std::errc() || stop != end || !(seconds >= 0)) return std::nullopt;
  return RecordedMoment{text.substr(0, at), seconds};
}

SettingsAtMoment ReadSettingsAt(const RecordedMoment& moment, std::optional<unsigned> call) {
  RecordedSettings settings;
  const std::string title = FileTitle(moment.file);
  std::optional<double> begin;
  const bool isWhole = RecordingFile(moment.file).Read([&](const RecordingEvent& event, const std::string&) {
    if (!begin) begin = event.time;
    if (!moment.seconds || event.time <= *moment.seconds) settings.Take(event);
  });
  if (!begin) throw CommandError("");  // Why it is no recording is said.
  // What such a file says of earlier moments is no more than the values that had to be read whole.
  if (begin && moment.seconds && *moment.seconds < *begin)
    throw CommandError(title + ": begins at " + ShortNumber(*begin) +
                       " s; what was before is in an earlier file of its set");
  const std::string when = moment.seconds ? " at " + ShortNumber(*moment.seconds) + " s" : " at the end";
  const RecordedSettings::Call& found = FindCall(settings, call, title + when);
  std::vector<std::string> gaps = found.Gaps();
  if (settings.LostCount() != 0) {
    gaps.push_back(std::to_string(settings.LostCount()) + " events were lost before, values may be others");
  }
  for (const std::string& gap : gaps) std::cerr << title << ": " << gap << '\n';
  return {found.Document(), !isWhole ? kExitNotUsable : gaps.empty() ? kExitFine : kExitFindings};
}

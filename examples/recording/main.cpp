// SPDX-License-Identifier: Apache-2.0
// Records a call, and reads who set its frame rate: recording [FILE]

#include <tessel/journal.h>
#include <tessel/record.h>
#include <tessel/tessel.h>

#include <cstdio>
#include <fstream>
#include <string>

namespace {

using namespace kalStore;

void RunCall() {
  KalConfigHelper sender(7), controller(7);
  sender.SubscribeConfig("MaxFps", [](const KalConfigEvent&) {}, KAL_CONFIG_GROUP_VIDEO);
  sender.SetKalConfig("MaxFps", 30, KAL_CONFIG_GROUP_VIDEO);
  {
    const JournalOrigin origin("bandwidth controller");
    controller.SetKalConfig("MaxFps", 15, KAL_CONFIG_GROUP_VIDEO);
    controller.SetKalConfig("AccessToken", "secret", KAL_CONFIG_GROUP_TRANSMISSION);
  }
  CleanUpKalConfig(7);
}

}  // namespace

int main(int argc, char** argv) {
  const std::string file = argc > 1 ? argv[1] : "example.tessel";
  RecordingOptions options;
  options.largestFile = std::uint64_t{100} << 20;
  options.files = 3;  // 300 MB at most, for a process that runs for days
  options.filter = [](std::uint32_t, KalConfigGroup, std::string_view name) {
    return name.ends_with("Token") ? RecordingShows::kName : RecordingShows::kAll;
  };
  {
    Recording recording(file, options);
    RunCall();
    if (recording.Flush() != kResultOk) return 1;
  }

  // What `tessel log FILE --type set` shows.
  std::ifstream lines(file);
  for (std::string line; std::getline(lines, line);) {
    const json::Object event = json::Deserialize(line).ToObject();
    const auto member = [&event](const char* name) {
      const auto found = event.find(name);
      return found == event.end() ? std::string("-") : found->second.ToString();
    };
    if (member("type") != "set") continue;
    std::printf("%s: %s -> %s\n", member("name").c_str(), member("old").c_str(), member("new").c_str());
  }
  return 0;
}

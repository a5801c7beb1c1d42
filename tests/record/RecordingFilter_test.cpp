// SPDX-License-Identifier: Apache-2.0
#include <csignal>
#include <stdexcept>

#include "RecordingTest.h"
#include "tessel/tessel.h"

namespace kalStore {
namespace {

constexpr std::uint32_t kFiltered = 7;
constexpr KalConfigGroup kCommon = KAL_CONFIG_GROUP_COMMON;

class RecordingFilterTest : public RecordingTest {
 protected:
  // What a call does with a setting, in all events that name it or its values.
  void DoAllWith(const char* name) {
    CallStore store(kFiltered, CallStore::kEndsCall);
    const auto id = store->SubscribeConfig(
        kCommon, name,
        [](const KalConfigEvent& event) { throw std::runtime_error(event.m_newValue.ToString()); }, nullptr,
        false);
    EXPECT_ANY_THROW(store->SetKalConfig(kCommon, name, "secret", false, false));
    const std::string document = std::string(R"({"Common":[{"key":")") + name + R"(","value":"secret2"}]})";
    EXPECT_ANY_THROW(store->ApplyKalConfigs(document.c_str()));
    store->RemoveKalConfig(kCommon, name);
    store->UnsubscribeConfig(id);
    store->BindConfig(kCommon, name, [](const KalConfigEvent&) { return ConfigData("secret3"); });
    ConfigData value;
    store->GetDynamicConfig(kCommon, name, value, {});
  }
};

TEST_F(RecordingFilterTest, LeavesOutTheValuesOfASetting) {
  {
    const Recording recording(File(), {.filter = [](std::uint32_t, KalConfigGroup, std::string_view name) {
                                return name == "Password" ? RecordingShows::kName : RecordingShows::kAll;
                              }});
    DoAllWith("Password");
    DoAllWith("Layout");
  }
  std::size_t hidden = 0, shown = 0;
  for (const RecordedLine& line : Lines()) {
    if (line.Get("name") == "Password") {
      ++hidden;
      for (const char* const member : {"old", "new", "threw"})
        EXPECT_FALSE(line.Has(member)) << line.Get("type");
    } else if (line.Get("name") == "Layout") {
      ++shown;
      EXPECT_FALSE(line.Has("hidden"));
    }
  }
  EXPECT_EQ(hidden, shown);
  EXPECT_GT(hidden, 6u);
  EXPECT_EQ(OfType("set").front().Get("hidden"), R"(["new"])");
  EXPECT_EQ(OfType("deliver").front().Get("hidden"), R"(["new","threw"])");
}

TEST_F(RecordingFilterTest, LeavesOutTheNameToo) {
  {
    const Recording recording(
        File(), {.filter = [](auto, auto, std::string_view) { return RecordingShows::kNothing; }});
    DoAllWith("Password");
  }
  const std::string text = Text(File());
  EXPECT_EQ(text.find("Password"), std::string::npos);
  EXPECT_EQ(text.find("secret"), std::string::npos);
  EXPECT_EQ(OfType("set").front().Get("hidden"), R"(["name","new"])");
  EXPECT_EQ(OfType("set").front().Get("group"), "Common");
  EXPECT_EQ(OfType("remove").front().Get("hidden"), R"(["name","old"])");
}

TEST_F(RecordingFilterTest, LeavesOutEverythingWhenItThrows) {
  {
    Recording recording(File(), {.filter = [](auto, auto, auto) -> RecordingShows { throw 1; }});
    DoAllWith("Password");
    EXPECT_EQ(recording.Flush(), kResultOk);
  }
  EXPECT_EQ(Text(File()).find("secret"), std::string::npos);
}

// What reports crashes would not hear of one in the filter.
TEST_F(RecordingFilterTest, RunsWithNoSignalBlockedThatACrashSends) {
  sigset_t blocked{};
  {
    const Recording recording(File(), {.filter = [&](auto, auto, auto) {
                                ::pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
                                return RecordingShows::kAll;
                              }});
    const CallStore store(7, CallStore::kEndsCall);
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 1, false, false);
  }
  for (const int signal : {SIGABRT, SIGBUS, SIGFPE, SIGILL, SIGSEGV})
    EXPECT_EQ(::sigismember(&blocked, signal), 0);
  for (const int signal : {SIGTERM, SIGXFSZ, SIGUSR1}) EXPECT_EQ(::sigismember(&blocked, signal), 1);
}

TEST_F(RecordingFilterTest, IsAskedWithTheCallAndTheGroup) {
  {
    const Recording recording(
        File(), {.filter = [](std::uint32_t call, KalConfigGroup group, std::string_view) {
          return call == 8 && group == kCommon ? RecordingShows::kName : RecordingShows::kAll;
        }});
    for (const std::uint32_t call : {7U, 8U}) {
      CallStore store(call, CallStore::kEndsCall);
      store->SetKalConfig(kCommon, "Key", 1, false, false);
      store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "Key", 1, false, false);
    }
  }
  std::string hidden;
  for (const RecordedLine& line : OfType("set")) {
    hidden += line.Get("call") + line.Get("group") + line.Get("hidden") + " ";
  }
  EXPECT_EQ(hidden, "7Common 7Video 8Common[\"new\"] 8Video ");
}

}  // namespace
}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <system_error>
#include <thread>

#include "RecordingTest.h"
#include "support/Gate.h"
#include "support/TraceLog.h"
#include "tessel/tessel.h"

namespace {

// Called instead of each sleep; null: the threads sleep.
std::atomic<const std::function<void(std::chrono::nanoseconds)>*> g_sleep{nullptr};

}  // namespace

// Instead of the system's, also for the recording's thread.
extern "C" __attribute__((visibility("default"))) int nanosleep(const timespec* time, timespec* rest) {
  const auto* const sleep = g_sleep.load();
  if (sleep == nullptr) {
    const int fault = ::clock_nanosleep(CLOCK_MONOTONIC, 0, time, rest);
    if (fault != 0) errno = fault;
    return fault == 0 ? 0 : -1;
  }
  (*sleep)(std::chrono::seconds(time->tv_sec) + std::chrono::nanoseconds(time->tv_nsec));
  return 0;
}

namespace kalStore {
namespace {

constexpr std::uint32_t kEndingCall = 7;
constexpr KalConfigGroup kEndingGroup = KAL_CONFIG_GROUP_VIDEO;

using RecordingEnd = RecordingTest;

void SetFps(IKalConfig& store, int fps) {
  store.SetKalConfig(kEndingGroup, "MaxFps", fps, false, false);
}

TEST_F(RecordingEnd, TurnsTheJournalOffThatItTurnedOn) {
  {
    const Recording recording(File());
    EXPECT_TRUE(IsJournalOn());
    EXPECT_TRUE(recording.IsOn());
  }
  EXPECT_FALSE(IsJournalOn());
}

TEST_F(RecordingEnd, DoesNotComeForWantOfRoomInTheJournal) {
  Recording recording(File(), {.journalCapacity = 0});
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(JournalCapacity(), 1u);
  EXPECT_EQ(recording.Flush(), kResultOk);
}

using RecordingEndDeathTest = RecordingEnd;

TEST_F(RecordingEndDeathTest, LeavesTheFirstJournalOfTheProcessOn) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");  // In a process in which none was started.
  const auto isLeftOn = [&] {
    StartJournal(1024);
    {
      const Recording recording(File());
    }
    return JournalStarts() == 1 && IsJournalOn();
  };
  EXPECT_EXIT(std::_Exit(isLeftOn() ? 0 : 1), testing::ExitedWithCode(0), "");
}

TEST_F(RecordingEnd, LeavesAJournalOnThatWasOn) {
  ASSERT_EQ(StartJournal(1024), kResultOk);
  {
    const CallStore before(8, CallStore::kEndsCall);
    const Recording recording(File());
    CallStore store(kEndingCall, CallStore::kEndsCall);
    SetFps(*store, 15);
  }
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(OfType("set").size(), 1u);
  EXPECT_EQ(OfType("call").size(), OfType("call").size());
  EXPECT_EQ(StopJournal(), kResultOk);
}

TEST_F(RecordingEnd, OfOneOfTwoLeavesTheOtherOneOn) {
  std::optional<Recording> first(std::in_place, File("first"));
  CallStore store(kEndingCall, CallStore::kEndsCall);
  SetFps(*store, 1);
  {
    const Recording second(File("second"));
    SetFps(*store, 2);
    first.reset();
    EXPECT_TRUE(IsJournalOn());
    SetFps(*store, 3);
  }
  EXPECT_FALSE(IsJournalOn());
  const auto sets = [](const std::vector<RecordedLine>& lines) {
    std::string values;
    for (const RecordedLine& line : OfType(lines, "set")) {
      if (!line.Has("picture")) values += line.Get("new");
    }
    return values;
  };
  EXPECT_EQ(sets(Lines(File("first"))), "12");
  EXPECT_EQ(sets(Lines(File("second"))), "23");
}

TEST_F(RecordingEnd, ComesWhenSomebodyStopsTheJournal) {
  const TraceLog trace(0);
  {
    Recording recording(File());
    CallStore store(kEndingCall, CallStore::kEndsCall);
    SetFps(*store, 15);
    StopJournal();
    while (recording.Flush() == kResultOk) {
    }
    EXPECT_FALSE(recording.IsOn());
  }
  EXPECT_EQ(OfType("set").size(), 1u);
  EXPECT_EQ(Lines().back().Get("reason"), "the journal was stopped");
  EXPECT_EQ(trace.Count("kalStore::Recording, ended, file=" + File() + ", reason=the journal was stopped"),
            1u);
}

// What happens meanwhile is in no event, and cannot be counted.
TEST_F(RecordingEnd, ComesWhenSomebodyStopsTheJournalAndStartsItAgain) {
  const TraceLog trace(0);
  CallStore store(kEndingCall, CallStore::kEndsCall);
  {
    Gate asked, goesOn;
    Recording recording(File(), {.filter = [&](auto, auto, auto) {
                          asked.Open();
                          goesOn.Wait();
                          return RecordingShows::kAll;
                        }});
    SetFps(*store, 15);
    asked.Wait();  // Its thread does not look at the journal meanwhile.
    ASSERT_EQ(StopJournal(), kResultOk);
    SetFps(*store, 30);
    ASSERT_EQ(StartJournal(64), kResultOk);
    SetFps(*store, 60);
    goesOn.Open();
    EXPECT_EQ(recording.Flush(), kResultNotFound);
    EXPECT_TRUE(IsJournalOn()) << "it is somebody else's";
  }
  EXPECT_TRUE(IsJournalOn());
  EXPECT_EQ(trace.Count("reason=the journal was stopped"), 1u);
  EXPECT_EQ(StopJournal(), kResultOk);
}

// The set has no number: the next start is at the one of the recording's beginning.
TEST_F(RecordingEnd, ComesWhenTheJournalWasOffBeforeItsFirstEvent) {
  const TraceLog trace(0);
  const CallStore store(kEndingCall, CallStore::kEndsCall);
  {
    Recording recording(File());
    ASSERT_EQ(recording.Flush(), kResultOk);
    ASSERT_EQ(StopJournal(), kResultOk);
    SetFps(*store, 15);
    ASSERT_EQ(StartJournal(64), kResultOk);
    EXPECT_EQ(recording.Flush(), kResultNotFound);
  }
  EXPECT_TRUE(IsJournalOn()) << "it is somebody else's";
  EXPECT_EQ(trace.Count("reason=the journal was stopped"), 1u);
  EXPECT_EQ(StopJournal(), kResultOk);
}

TEST_F(RecordingEnd, ReplacesAnEarlierRecording) {
  {
    const Recording recording(File());
    CallStore store(kEndingCall, CallStore::kEndsCall);
    for (int i = 0; i < 100; ++i) SetFps(*store, i);
  }
  const std::size_t size = Text(File()).size();
  {
    const Recording recording(File());
  }
  EXPECT_LT(Text(File()).size(), size);
  EXPECT_EQ(Lines().size(), 2u);
}

TEST_F(RecordingEnd, MayComeInACallback) {
  const TraceLog trace(0);
  auto recording = std::make_unique<Recording>(File());
  CallStore store(kEndingCall, CallStore::kEndsCall);
  store->SubscribeConfig(
      kEndingGroup, "MaxFps", [&](const KalConfigEvent&) { recording.reset(); }, nullptr, false);
  SetFps(*store, 15);
  SetFps(*store, 30);
  EXPECT_EQ(recording, nullptr);
  EXPECT_EQ(OfType("set").size(), 1u);
  EXPECT_EQ(Lines().back().Get("event"), "ended");
  EXPECT_TRUE(trace.Lines().empty());
}

TEST_F(RecordingEnd, MayComeInItsFilter) {
  Gate ended;
  std::unique_ptr<Recording> recording;
  Gate made;
  recording = std::make_unique<Recording>(File(), RecordingOptions{.filter = [&](auto, auto, auto) {
                                            made.Wait();
                                            EXPECT_EQ(recording->Flush(), kResultNotFound);
                                            recording.reset();
                                            ended.Open();
                                            return RecordingShows::kAll;
                                          }});
  CallStore store(kEndingCall, CallStore::kEndsCall);
  SetFps(*store, 15);
  made.Open();
  ended.Wait();
  // Its thread goes on to the end of the file; the journal is on until then.
  while (IsJournalOn()) std::this_thread::yield();
  EXPECT_EQ(OfType("set").size(), 1u);
  EXPECT_EQ(Lines().back().Get("event"), "ended");
}

TEST_F(RecordingEnd, MayComeWhileComponentsSet) {
  CallStore store(kEndingCall, CallStore::kEndsCall);
  std::atomic<bool> isOver{false};
  std::vector<std::thread> components;
  for (int t = 0; t < 3; ++t) {
    components.emplace_back([&] {
      for (int i = 0; !isOver; ++i) {
        SetFps(*store, i);
        const StatsRef<AudioStats> statistics(kEndingCall);
        statistics->updateTxBitRate(static_cast<std::uint32_t>(i));
      }
    });
  }
  for (int i = 0; i < 20; ++i) {
    Recording recording(File() + std::to_string(i), {.largestFile = 20000, .files = 3});
    const auto begin = std::chrono::steady_clock::now();
    const std::int32_t result = recording.Flush();
    if (result == kResultOk) continue;
    // On a busy machine the components may leave it no lock for as long as it waits.
    EXPECT_EQ(result, kResultNotFound);
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::seconds(3));
  }
  {
    const Recording recording(File());
    isOver = true;
    for (std::thread& component : components) component.join();
  }
  EXPECT_EQ(Lines().back().Get("event"), "ended");
}

// A flush that other threads wait in is answered by the end.
TEST_F(RecordingEnd, AnswersThoseWhoWaitForAFlush) {
  Gate asked, goesOn;
  Recording recording(File(), {.filter = [&](auto, auto, auto) {
                        asked.Open();
                        goesOn.Wait();
                        return RecordingShows::kAll;
                      }});
  CallStore store(kEndingCall, CallStore::kEndsCall);
  SetFps(*store, 15);
  asked.Wait();
  std::vector<std::thread> waiting;
  std::atomic<int> fine{0};
  for (int t = 0; t < 3; ++t) {
    waiting.emplace_back([&] { fine += recording.Flush() == kResultOk ? 1 : 0; });
  }
  goesOn.Open();
  for (std::thread& thread : waiting) thread.join();
  EXPECT_EQ(fine, 3);
}

// A thread that sets "Held", and is held up between the change and its event.
class HeldSetter {
 public:
  HeldSetter() { set_util_trace_sink(&receive, this); }
  HeldSetter(const HeldSetter&) = delete;
  HeldSetter& operator=(const HeldSetter&) = delete;
  ~HeldSetter() { GoOn(); }

  IKalConfig& Store() { return *m_store; }
  void Begin() {
    m_thread = std::thread([this] { m_store->SetKalConfig(kEndingGroup, "Held", 1, false, false); });
    m_isHeld.Wait();
  }
  void GoOn() {
    if (!m_thread.joinable()) return;
    m_goesOn.Open();
    m_thread.join();
  }

 private:
  static void receive(void* context, int, const char*, const char* text, unsigned int) {
    auto& self = *static_cast<HeldSetter*>(context);
    if (std::string(text).find("fireEvents, Held") == std::string::npos) return;
    self.m_isHeld.Open();
    self.m_goesOn.Wait();
  }

  const TraceLog m_trace{2};  // Restores the mask and the sink.
  CallStore m_store{kEndingCall, CallStore::kEndsCall};
  Gate m_isHeld, m_goesOn;
  std::thread m_thread;
};

// Ends a recording beside an event that is being written, with `sleep` in place of the system's.
void EndBeside(HeldSetter& setter, const std::string& file,
               const std::function<void(std::chrono::nanoseconds)>& sleep) {
  {
    const Recording recording(file);
    setter.Begin();
    SetFps(setter.Store(), 15);
    g_sleep = &sleep;
  }
  g_sleep = nullptr;
}

TEST_F(RecordingEnd, CountsWhatItDoesNotWaitFor) {
  HeldSetter setter;
  std::chrono::nanoseconds waited{0};
  EndBeside(setter, File(), [&](std::chrono::nanoseconds time) { waited += time; });
  EXPECT_GE(waited, std::chrono::seconds(1));
  setter.GoOn();
  EXPECT_TRUE(OfType("set").empty());
  const auto lost = OfType("lost");
  ASSERT_EQ(lost.size(), 1u);
  EXPECT_EQ(lost[0].Get("count"), "2");
  EXPECT_EQ(Lines().back().Get("event"), "ended");
}

TEST_F(RecordingEnd, WaitsForAnEventThatIsBeingWritten) {
  HeldSetter setter;
  EndBeside(setter, File(), [&](std::chrono::nanoseconds) { setter.GoOn(); });
  EXPECT_EQ(OfType("set").size(), 2u);
  EXPECT_TRUE(OfType("lost").empty());
}

// What a callback captured. It ends with its store, under the lock that the next picture needs.
struct OwnerOfARecording {
  explicit OwnerOfARecording(const std::string& file)
      : recording(std::make_unique<Recording>(
            file, RecordingOptions{.largestFile = 1, .files = 2, .filter = [used = used](auto, auto, auto) {
                                     return RecordingShows::kAll;
                                   }})) {}
  ~OwnerOfARecording() {
    SetFps(*other, 15);
    SetFps(*other, 30);
    recording.reset();
    EXPECT_EQ(used.use_count(), 1) << "its filter has ended";
  }

  CallStore other{kEndingCall + 1, CallStore::kEndsCall};
  std::shared_ptr<int> used = std::make_shared<int>(0);
  std::unique_ptr<Recording> recording;
};

TEST_F(RecordingEnd, WithAStoreThatOwnsItIsNotWaitedForInVain) {
  const TraceLog trace(0);
  {
    const CallStore store(kEndingCall, CallStore::kEndsCall);
    store->SubscribeConfig(
        kEndingGroup, "MaxFps",
        [owner = std::make_shared<OwnerOfARecording>(File())](const KalConfigEvent&) {}, nullptr, false);
  }
  while (trace.Lines().empty()) std::this_thread::yield();
  EXPECT_EQ(trace.Count("reason=its end could not wait for a lock"), 1u);
  EXPECT_FALSE(IsJournalOn());
  EXPECT_EQ(Lines().back().Get("reason"), "its end could not wait for a lock");
}

// Flushes where the lock of the statistics is held, which the flush needs.
struct FlushingSink {
  static void Receive(void* context, int, const char*, const char* text, unsigned int) {
    auto& self = *static_cast<FlushingSink*>(context);
    if (std::string(text).find("CKalTessel::createOrGetTesselEntity") == std::string::npos) return;
    self.result = self.recording->Flush();
  }

  Recording* recording;
  std::int32_t result = kResultOk;
};

TEST_F(RecordingEnd, DoesNotComeByAFlushInVain) {
  const TraceLog trace(2);  // Restores the mask and the sink.
  Recording recording(File());
  FlushingSink sink{&recording};
  set_util_trace_sink(&FlushingSink::Receive, &sink);
  {
    const StatsRef<VideoStats> statistics(kEndingCall);
  }
  set_util_trace_sink(nullptr, nullptr);
  EXPECT_EQ(sink.result, kResultNotFound);
  EXPECT_EQ(recording.Flush(), kResultOk);
  EXPECT_TRUE(recording.IsOn());
  EXPECT_EQ(OfType("statistics").front().Get("event"), "made");
  EXPECT_EQ(OfType("statistics").back().Get("event"), "ended");
}

TEST_F(RecordingEnd, InAForkedProcessIsNotTheParents) {
  auto recording = std::make_unique<Recording>(File());
  ASSERT_EQ(recording->Flush(), kResultOk);
  const ::pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const bool isRefused = !recording->IsOn() && recording->Flush() == kResultNotFound;
    recording.reset();
    ::_exit(isRefused ? 0 : 1);
  }
  int status = 1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(recording->Flush(), kResultOk);
  {
    const Recording other(File());
  }
  EXPECT_EQ(Lines().size(), 1u);
}

TEST_F(RecordingEnd, ByAKillLeavesAFileOfWholeLinesButForItsEnd) {
  const ::pid_t child = ::fork();
  ASSERT_GE(child, 0);
  if (child == 0) {
    const Recording recording(File());
    CallStore store(kEndingCall);
    for (int i = 1;; ++i) {
      SetFps(*store, i);
      if (i % 10 == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
  }
  // Nobody flushes: what is there comes by itself.
  const auto size = [&] {
    std::error_code fault;
    const std::uintmax_t bytes = std::filesystem::file_size(File(), fault);
    return fault ? 0 : bytes;
  };
  while (size() < 20'000) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  ASSERT_EQ(::kill(child, SIGKILL), 0);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  // The kill may end a write, and so the file, within a line.
  std::filesystem::resize_file(File(), Text(File()).rfind('\n') + 1);
  const auto sets = OfType("set");
  EXPECT_FALSE(sets.empty());
  for (std::size_t i = 0; i < sets.size(); ++i) EXPECT_EQ(sets[i].Get("new"), std::to_string(i + 1));
  EXPECT_FALSE(Lines().back().Has("event"));
}

}  // namespace
}  // namespace kalStore

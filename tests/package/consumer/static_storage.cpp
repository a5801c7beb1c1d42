// SPDX-License-Identifier: Apache-2.0
// A program outside the project whose handles have static storage: made before main, and before the library's
// own objects where it is linked statically, used in main, and ended after it. Some of its names are those
// that the library uses for its own private parts: each program keeps its own.
#include <tessel/tessel.h>
#include <tessel/typed.h>
#include <util/util.h>

#include <cstdlib>
#include <cstring>

int g_ownTraceLines = 0;

struct TraceLine {
  explicit TraceLine(int level);
  TraceLine(int level, const char* label);
  void Emit();
};
TraceLine::TraceLine(int) {
  ++g_ownTraceLines;
}
TraceLine::TraceLine(int, const char*) {
  ++g_ownTraceLines;
}
void TraceLine::Emit() {
  ++g_ownTraceLines;
}

struct Cid {
  unsigned int callId;
};
struct This {
  const void* object;
};
CCmTextFormator& operator<<(CCmTextFormator& text, Cid) {
  return text << " own call id";
}
CCmTextFormator& operator<<(CCmTextFormator& text, This) {
  return text << " own object";
}

int g_ownAssertions = 0;

void ReportAssertion(const char*, int, const char*) {
  ++g_ownAssertions;
}

namespace {

int g_notified = 0;
int g_assertionLines = 0;
bool g_ownNameIsTraced = false;
bool g_worksAfterMain = false;

/// Destroyed last: the exit status is its own when the handles did not work after main.
struct ExitStatus {
  ~ExitStatus() {
    if (!g_worksAfterMain) std::_Exit(20);
  }
} g_exitStatus;

constexpr kalStore::ConfigKey<int> kMaxFps{kalStore::KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30};
// Constructed before every object that has no priority.
[[gnu::init_priority(101)]] kalStore::KalConfigHelper g_settings(7);
[[gnu::init_priority(101)]] const kalStore::StatsRef<kalStore::VideoStats> g_statistics(7);
[[gnu::init_priority(101)]] const kalStore::Subscription g_subscription =
    kMaxFps.Subscribe(g_settings, [](const kalStore::ConfigReading<int>&) { ++g_notified; });

/// Destroyed first: the handles still work.
struct UseAfterMain {
  ~UseAfterMain() {
    kMaxFps.Set(g_settings, 60);
    g_worksAfterMain = g_notified == 2 && kMaxFps.Get(g_settings) == 60;
  }
} g_useAfterMain;

void InspectLine(void*, int, const char*, const char* text, unsigned int) {
  if (std::strstr(text, "[KAL_ASSERT]") != nullptr) ++g_assertionLines;
  if (std::strstr(text, " own ") != nullptr) g_ownNameIsTraced = true;
}

}  // namespace

int main() {
  if (g_notified != 0) return 1;
  set_util_trace_sink(InspectLine, nullptr);
  set_external_trace_mask(3);
  kMaxFps.Set(g_settings, 15);
  if (g_notified != 1) return 2;
  g_statistics->UpdateVideoCapturedFrameCnt(250);
  kalStore::st_KalVideoTxBlock block;
  g_statistics->GetTxMediaInfo(&block, false);
  if (block.capturedFrames != 250) return 3;
  g_settings.SubscribeConfig(nullptr, [](const kalStore::KalConfigEvent&) {});
  if (g_assertionLines != 1) return 4;
  set_util_trace_sink(nullptr, nullptr);
  return g_ownNameIsTraced || g_ownTraceLines != 0 || g_ownAssertions != 0 ? 5 : 0;
}

// SPDX-License-Identifier: Apache-2.0
// The fast paths, whose instructions count.py counts: each function Path_NAME repeats its operation kRepeats
// times (documents have as many entries). It is called twice: only the second call is counted, without what
// is done once.

#include <cstdint>
#include <cstdio>
#include <semaphore>
#include <string>
#include <vector>

#include "support/Settings.h"
#include "tessel/CKalTessel.h"
#include "tessel/IKalVideoInfo.h"
#include "tessel/json.h"
#include "tessel/post.h"
#include "tessel/typed.h"
#include "trace/TraceLine.h"
#include "util/util.h"

namespace {

using kalStore::KalConfigEvent;
using kalStore::KalConfigHelper;

constexpr int kRepeats = 200;
constexpr const char* kName = "VideoSetting0042";
constexpr kalStore::ConfigKey<int> kLiveKey{kGroup, "LiveSetting00001", 1};
const char* const kValues[] = {"one value", "another value"};
const char* const kNumbers[] = {"15", "30"};

/// The data of the paths: a call with 100 settings, and subscribers of some.
struct Stage {
  Stage() {
    for (const std::string& name : NamesOf(100)) facade.SetKalConfig(name.c_str(), "before", kGroup);
    Subscribe("NotifyOneDirect1", 1, nullptr);
    Subscribe("NotifyEightDirec", 8, nullptr);
    Subscribe("NotifyOnePosted1", 1, &thread);
    Subscribe("SubscribedNoValu", 64, nullptr);
    facade.BindConfig("BoundSetting0001", [](const KalConfigEvent&) { return ConfigData("1"); }, kGroup);
    documents.Store().ApplyKalConfigs(document.c_str());
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, 1, &entity);
    video = static_cast<kalStore::IKalVideoInfo*>(entity);
    video->UpdateEncodeParam(kalStore::kVideoLayerCount, kal::KAL_VIDEO_CODEC_CODE_100);
    set_util_trace_sink([](void*, int, const char*, const char*, unsigned int) {}, nullptr);
    thread.Start();
  }
  ~Stage() { releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, 1, entity); }

  void Subscribe(const char* name, int subscribers, ACmThread* runThread) {
    for (int i = 0; i < subscribers; ++i) {
      call.Store().SubscribeConfig(
          kGroup, name, [this](const KalConfigEvent&) { ++notified; }, runThread, runThread != nullptr);
    }
  }
  void Set(const char* name) {
    for (int i = 0; i < kRepeats; ++i) facade.SetKalConfig(name, kValues[i % 2], kGroup);
  }

  long notified = 0;
  ACmThread thread;
  Call call;
  KalConfigHelper facade{call.Id()};
  Call liveCall;  // Its own: sets in the others' group pay nothing for what follows it.
  kalStore::LiveConfig<int> live{liveCall.Store(), kLiveKey};
  Call documents;
  const std::string document = SettingsDocument(kRepeats);
  const json::Value parsed = json::Deserialize(document);
  void* entity = nullptr;
  kalStore::IKalVideoInfo* video = nullptr;
};

Stage* g_stage = nullptr;

/// While it lives, the stage's thread runs nothing that is queued: the two threads' instructions are then the
/// same in every run.
class Hold {
 public:
  Hold() {
    const auto hold = [this] {
      m_held.release();
      m_go.acquire();
      m_ended.release();
    };
    kalStore::Post(g_stage->thread, hold, 0);
    m_held.acquire();
  }
  /// Releases the thread, and waits until it has run what is queued.
  ~Hold() {
    m_go.release();
    m_ended.acquire();
    kalStore::Send(g_stage->thread, [] {});
  }

 private:
  std::binary_semaphore m_held{0};
  std::binary_semaphore m_go{0};
  std::binary_semaphore m_ended{0};
};

struct CountedEvent : ICmEvent {
  int OnEventFire() override {
    ++g_stage->notified;
    return 0;
  }
};

struct Component {
  void Trace(int level) {
    TESSEL_TRACE(2, "Component::Trace",
                 ", name=" << kName << ", level=" << level << kalStore::internal::Cid{7}
                           << kalStore::internal::This{this});
  }
};

}  // namespace

#define TESSEL_PATH(name) extern "C" __attribute__((noinline, visibility("default"))) void Path_##name()

TESSEL_PATH(read) {
  ConfigData value;
  for (int i = 0; i < kRepeats; ++i) g_stage->facade.GetKalConfig(kName, value, kGroup);
}

TESSEL_PATH(overwrite) {
  g_stage->Set(kName);
}

TESSEL_PATH(overwrite_live) {
  for (int i = 0; i < kRepeats; ++i) {
    g_stage->liveCall.Store().SetKalConfig(kGroup, kLiveKey.Name(), kNumbers[i % 2], false, false);
  }
}

TESSEL_PATH(live_read) {
  int sum = 0;
  for (int i = 0; i < kRepeats; ++i) sum += g_stage->live.Get();
  g_stage->notified += sum;
}

TESSEL_PATH(set_notify_1) {
  g_stage->Set("NotifyOneDirect1");
}

TESSEL_PATH(set_notify_8) {
  g_stage->Set("NotifyEightDirec");
}

TESSEL_PATH(subscribe_and_remove_beside_64) {
  kalStore::IKalConfig& store = g_stage->call.Store();
  for (int i = 0; i < kRepeats; ++i) {
    store.UnsubscribeConfig(
        store.SubscribeConfig(kGroup, "SubscribedNoValu", [](const KalConfigEvent&) {}, nullptr, false));
  }
}

TESSEL_PATH(bound_read) {
  ConfigData value;
  for (int i = 0; i < kRepeats; ++i) g_stage->facade.GetDynamicConfig("BoundSetting0001", value, kGroup);
}

TESSEL_PATH(toggle_read) {
  for (int i = 0; i < kRepeats; ++i) {
    g_stage->facade.IsFeatureToggleDefaultOn(kalStore::KAL_FT_EnableMusicDetection);
  }
}

TESSEL_PATH(post_and_run) {
  const Hold hold;
  ICmEventQueue* const queue = g_stage->thread.GetEventQueue();
  for (int i = 0; i < kRepeats; ++i) queue->PostEvent(new CountedEvent, ICmEventQueue::kDefaultPriority, 0);
}

TESSEL_PATH(set_notify_1_posted) {
  const Hold hold;
  g_stage->Set("NotifyOnePosted1");
}

TESSEL_PATH(parse_entry) {
  json::Deserialize(g_stage->document);
}

TESSEL_PATH(write_entry) {
  json::Serialize(g_stage->parsed);
}

TESSEL_PATH(apply_entry) {
  Call call;
  call.Store().ApplyKalConfigs(g_stage->document.c_str());
}

TESSEL_PATH(dump_entry) {
  g_stage->documents.Store().DumpKalConfigs(kalStore::kAllConfigGroups);
}

TESSEL_PATH(create_or_get_and_release) {
  void* entity = nullptr;
  for (int i = 0; i < kRepeats; ++i) {
    createTesselEntity(kalStore::KAL_TESSEL_VIDEO, 1, &entity);
    releaseTesselEntity(kalStore::KAL_TESSEL_VIDEO, 1, entity);
  }
}

TESSEL_PATH(statistics_setter) {
  for (unsigned int i = 0; i < kRepeats; ++i) g_stage->video->UpdateVideoEncFrameCnt(i);
}

TESSEL_PATH(statistics_block_read) {
  kalStore::st_KalVideoTxBlock block;
  for (int i = 0; i < kRepeats; ++i) g_stage->video->GetTxMediaInfo(&block, false);
}

TESSEL_PATH(disabled_trace_line) {
  for (int i = 0; i < kRepeats; ++i) Component().Trace(i);
}

TESSEL_PATH(enabled_trace_line) {
  set_external_trace_mask(2);
  for (int i = 0; i < kRepeats; ++i) Component().Trace(i);
  set_external_trace_mask(0);
}

// The counter looks at where each path begins: this ends the last one.
TESSEL_PATH(end) {}

int main() {
  Stage stage;
  g_stage = &stage;
  for (int time = 0; time < 2; ++time) {
    for (const auto path : {Path_read,
                            Path_overwrite,
                            Path_overwrite_live,
                            Path_live_read,
                            Path_set_notify_1,
                            Path_set_notify_8,
                            Path_subscribe_and_remove_beside_64,
                            Path_bound_read,
                            Path_toggle_read,
                            Path_post_and_run,
                            Path_set_notify_1_posted,
                            Path_parse_entry,
                            Path_write_entry,
                            Path_apply_entry,
                            Path_dump_entry,
                            Path_create_or_get_and_release,
                            Path_statistics_setter,
                            Path_statistics_block_read,
                            Path_disabled_trace_line,
                            Path_enabled_trace_line,
                            Path_end}) {
      path();
    }
  }
}

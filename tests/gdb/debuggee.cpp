// SPDX-License-Identifier: Apache-2.0
// One value of every type that has a printer, for gdb to show. gdb stops in each `Show` function.
#include <tessel/journal.h>
#include <tessel/tessel.h>
#include <util/util.h>

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <iterator>
#include <memory>
#include <string>
#include <utility>

#include "optimised.h"

using namespace kalStore;

// Where the debugger stops.
void Stop() {}

namespace {

void ShowConfigData() {
  const ConfigData empty;
  const ConfigData emptyText("");
  const ConfigData flag(true);
  const ConfigData number(-32000);
  const ConfigData quoted("a \"quoted\"\ttext");
  const ConfigData longText(std::string(500, 'x') + "y");
  [[maybe_unused]] const ConfigData& reference = number;
  ConfigData source("a text that is too long to be kept inside of the string");
  const ConfigData moved(std::move(source));
  const struct {
    int count;
    ConfigData value;
  } holder{1, "inside"};
  Stop();
}

void ShowJson() {
  const json::Value null;
  const json::Value text("tab\tand \"quote\"");
  const json::Value integer(-30);
  const json::Value unsignedInteger(30U);
  const json::Value wide(9007199254740993L);
  const json::Value single(1.5F);
  const json::Value real(0.1);
  const json::Value flag(true);
  const json::Value noObject{json::Object()};
  const json::Value noArray{json::Array()};
  const json::Value document =
      json::Deserialize(R"({"Video":[{"key":"MaxFps","value":"15"}],"list":[1,2.5,null,false,[],{}]})");
  const json::Object object = document.ToObject();
  const json::Array array = document["list"].ToArray();
  json::Array many;
  for (int i = 0; i < 300; ++i) many.emplace_back(i);
  json::Value deep{json::Array()};
  for (int i = 0; i < 40; ++i) {
    json::Array outer;
    outer.push_back(std::move(deep));
    deep = json::Value(std::move(outer));
  }
  json::Value source(std::string(100, 'z'));
  const json::Value moved(std::move(source));
  json::Object movedObject = object;
  const json::Object taken(std::move(movedObject));
  Stop();
}

void Ignore(const KalConfigEvent&) {}

const IKalConfig* g_config = nullptr;
const KalConfigHelper* g_facade = nullptr;

void ShowChange([[maybe_unused]] const KalConfigEvent& change) {
  Stop();
}

void ShowSettings() {
  ACmThread media("media");
  media.Start();
  IKalConfig* config = nullptr;
  CreateKalConfig(7, &config);
  g_config = config;
  [[maybe_unused]] const KalConfig& store = *static_cast<KalConfig*>(config);
  KalConfigHelper unbound;
  unbound.SubscribeConfig("MinFps", Ignore, KAL_CONFIG_GROUP_VIDEO);
  KalConfigHelper facade(7);
  g_facade = &facade;
  facade.SetKalSessionType(kal::KAL_SESSION_VIDEO);
  facade.SetKalConfig("MaxFps", 30);
  facade.SetKalConfig("Codec", "av1", KAL_CONFIG_GROUP_COMMON);
  facade.SubscribeConfig("MaxFps", ShowChange);
  facade.SubscribeConfig("Bitrate", Ignore, KAL_CONFIG_GROUP_AUDIO, &media, true);
  facade.SubscribeConfig("Volume", Ignore, KAL_CONFIG_GROUP_AUDIO, &media);
  facade.SubscribeConfig("Gain", Ignore, KAL_CONFIG_GROUP_AUDIO);
  facade.BindConfig("Load", [](const KalConfigEvent&) { return ConfigData(5); }, KAL_CONFIG_GROUP_METRICS);
  facade.UnsubscribeConfig("Gain", KAL_CONFIG_GROUP_AUDIO);
  config->SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", Ignore, nullptr, false);
  facade.SetKalConfig("MaxFps", 60);
  Stop();
  CleanUpKalConfig(7);
  Stop();
  ReleaseKalConfig(config);
}

void ShowSmallStore() {
  IKalConfig* config = nullptr;
  CreateKalConfig(8, &config);
  [[maybe_unused]] const IKalConfig& store = *config;
  Stop();
  config->SetKalConfig(KAL_CONFIG_GROUP_COMMON, "Codec", "av1", false, false);
  Stop();
  ReleaseKalConfig(config);
}

void ShowMeters() {
  const timer_fact<timer_policy> fine(1000000);
  const timer_fact<tick_policy> coarse(-5);
  const timer_fact<low_tick_policy> cheap(0);
  Stop();
}

void ShowStatistics() {
  void* entity = nullptr;
  createTesselEntity(KAL_TESSEL_VIDEO, 7, &entity);
  auto* video = static_cast<IKalVideoInfo*>(entity);
  video->UpdateVideoEncResolution(1280U << 16 | 720U);
  video->UpdateVideoEnableHWEnc(true);
  video->UpdateAV1Metrics(3, "first", "second");
  st_KalVideoStreamStatInfo stream{};
  stream.streamWords[3] = 9;
  stream.codecType = static_cast<kal::KalVideoCodecType>(1);
  stream.counter = 12;
  stream.idrReasons[2] = 4;
  stream.stat56 = 250;
  video->UpdateOneVideoLayerInfo(&stream, 0, false, 100);

  createTesselEntity(KAL_TESSEL_CONTENT_AUDIO, 7, &entity);
  createTesselEntity(KAL_TESSEL_CONTENT_AUDIO, 7, &entity);
  auto* audio = static_cast<IKalAudioInfo*>(entity);
  audio->updateTxBitRate(32000);
  audio->updateRxBitRate(3, 24000);
  st_KalAudioCodecStatisticsInfo codec{};
  codec.stat16 = 0x100000002;
  audio->updateSendCodecInfo(codec);
  st_KalAudioJitterBufferStatistics jitter{};
  jitter.stat40 = 77;
  audio->updateJitterBufferStatistics(3, jitter, 5, 6);
  kal::_tagSyncStatistics sync{};
  sync.value[29] = 1;
  audio->updateAVSyncStatistics(19, sync);

  st_KalVideoTxBlock videoBlock{};
  video->GetTxMediaInfo(&videoBlock, false);
  st_KalAudioBlock audioBlock{};
  audio->GetRxAudioInfo(&audioBlock, 3, false);
  [[maybe_unused]] st_KalAudioBlock emptyBlock{};
  emptyBlock.reserved144[1] = 1;
  Stop();
}

// A set traces its line between its number and its event.
void ShowUnwritten(void*, int, const char*, const char* text, unsigned int) {
  if (std::strstr(text, "30 -> 60") != nullptr) Stop();
}

void ShowJournal() {
  StartJournal(16);
  IKalConfig* store = nullptr;
  for (const unsigned int call : {10U, 9U}) {
    store = nullptr;
    CreateKalConfig(call, &store);
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
  }
  ACmThread media("media");
  media.Start();
  const SubscribeId_t direct =
      store->SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", Ignore, nullptr, false);
  store->SubscribeConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", Ignore, &media, true);
  media.Stop();
  {
    const JournalOrigin origin("bandwidth \"controller\"");
    store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
  }
  store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
  set_util_trace_sink(ShowUnwritten, nullptr);
  set_external_trace_mask(2);
  store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 60, false, false);
  set_external_trace_mask(0);
  set_util_trace_sink(nullptr, nullptr);
  const JournalDocument document("lab.json");
  const std::string text(100, 'x');
  store->ApplyKalConfigs((R"({"AudioSlide":[{"key":"Codec","value":")" + text + R"("}]})").c_str());
  store->UnsubscribeConfig(direct);
  store->RemoveKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps");
  CleanUpKalConfig(9);
  StopJournal();
  Stop();
}

using Values = atomMap<std::string, ConfigData>;

Values& MakeValues() {
  auto* values = new Values;
  for (const char* name : {"a", "b", "c"}) values->Set(name, name);
  return *values;
}

// The count follows the node that ends the map.
void SetCount(Values& values, std::size_t count) {
  Values::Locked map(values);
  std::memcpy(static_cast<void*>(map->end()._M_node + 1), &count, sizeof(count));
}

// Containers with damaged links; none of them is destroyed.
void ShowDamagedContainers() {
  Values& backToTheStart = MakeValues();
  {
    Values::Locked map(backToTheStart);
    map->begin()._M_node->_M_left = map->begin()._M_node;
  }
  Values& backToTheRoot = MakeValues();
  {
    Values::Locked map(backToTheRoot);
    std::prev(map->end())._M_node->_M_right = map->end()._M_node->_M_parent;
  }
  Values& twiceTheSame = MakeValues();
  {
    Values::Locked map(twiceTheSame);
    auto* root = map->end()._M_node->_M_parent;
    root->_M_left = root->_M_right;
  }
  for (Values* values : {&backToTheStart, &backToTheRoot, &twiceTheSame}) SetCount(*values, 1000000);
  Values& tooFew = MakeValues();
  Values& tooMany = MakeValues();
  SetCount(tooFew, 4);
  SetCount(tooMany, 2);

  using Observers = KalConfigObserverMgr<ConfigEventHandler::Ptr>;
  auto& listPastItsEnd = *new Observers;
  for (int i = 0; i < 3; ++i) {
    listPastItsEnd.Subscribe("a", std::make_shared<ConfigEventHandler>(), [](const auto&) {});
  }
  {
    auto& handlers = Observers::Locked(listPastItsEnd)->find("a")->second.handlers;
    // A vector is three pointers: the second is where its elements end, the third where its memory does.
    std::memcpy(reinterpret_cast<void**>(&handlers) + 2, &handlers, sizeof(void*));
  }

  const ConfigData& textWithoutEnd = *new ConfigData("text");
  const_cast<char*>(textWithoutEnd.ToCstr())[4] = 'x';

  // The elements of an array are the value that holds that array.
  json::Value& arrayInItself = *new json::Value(json::Array());
  json::Array& elements = arrayInItself.ToArray();
  for (int i = 0; i < 2; ++i) elements.emplace_back();
  for (json::Value& element : elements) {
    std::memcpy(static_cast<void*>(&element), &arrayInItself, sizeof(element));
  }
  Stop();
}

// Memory of every type with contents that no program writes: all bits clear, all set, addresses of the memory
// itself and of parts of it, bytes of a fixed series.
template <class T>
struct Shape {
  alignas(T) unsigned char bytes[sizeof(T)];
  const T& value = *reinterpret_cast<const T*>(bytes);
};

template <class T>
void ShowDamage(int way) {
  static Shape<T> shape;
  std::uint32_t series = 7;
  for (std::size_t i = 0; i + sizeof(void*) <= sizeof(T); i += sizeof(void*)) {
    series = series * 1664525 + 1013904223;
    const void* const words[] = {nullptr,
                                 reinterpret_cast<void*>(~std::uintptr_t{0}),
                                 shape.bytes,
                                 shape.bytes + i,
                                 shape.bytes + (i + 8) % sizeof(T),
                                 reinterpret_cast<void*>(std::uintptr_t{series} * 0x9e3779b97f4a7c15)};
    std::memcpy(shape.bytes + i, &words[way], sizeof(void*));
  }
  Stop();
}

template <class... T>
void ShowDamageOf() {
  for (int way = 0; way < 6; ++way) (ShowDamage<T>(way), ...);
}

}  // namespace

int main(int argc, char**) {
  ShowConfigData();
  ShowJson();
  ShowSettings();
  ShowSmallStore();
  ShowMeters();
  ShowStatistics();
  ShowJournal();
  ShowDamagedContainers();
  ShowOptimised(argc);
  ShowDamageOf<ConfigData, json::Value, json::Object, json::Array, ACmThread, KalConfig, KalConfigHelper,
               ConfigEventHandler, KalConfigEvent, timer_fact<timer_policy>, KalVideoStatisticInfo,
               KalContentAudioStatisticInfo, st_KalVideoTxBlock, st_KalAudioBlock>();
  return 0;
}

// SPDX-License-Identifier: Apache-2.0
// Import and export of a store beside sets, removals and each other.
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include "scenarios/Registry.h"
#include "tessel/KalConfig.h"

using namespace kalStore;
using model::Check;

namespace {

constexpr KalConfigGroup kDocumentGroup = KAL_CONFIG_GROUP_VIDEO;

int SetText(KalConfig& store, const char* name, const std::string& value) {
  return store.SetKalConfig(kDocumentGroup, name, value, false, false);
}

std::string TextOf(KalConfig& store, const char* name) {
  ConfigData value;
  store.GetKalConfig(kDocumentGroup, name, value);
  return value.ToString();
}

// A document with both names.
std::string Document(const std::string& first, const std::string& second) {
  return R"({"Video":[{"key":"First","value":")" + first + R"("},{"key":"Second","value":")" + second +
         R"("}]})";
}

}  // namespace

// Each set of an import is one like any other: its subscriber receives each change from the value before it.
MODEL_SCENARIO(ImportBesideASet) {
  KalConfig store(7);
  int sum = 0;
  std::mutex mutex;
  store.SubscribeConfig(
      kDocumentGroup, "First",
      [&](const KalConfigEvent& event) {
        const std::lock_guard lock(mutex);
        sum += event.m_newValue.ToInt() - event.m_oldValue.ToInt();
      },
      nullptr, false);
  std::thread setter([&] { SetText(store, "First", "2"); });
  Check(store.ApplyKalConfigs(Document("1", "1").c_str()) == kResultOk, "it is imported");
  setter.join();
  const std::string first = TextOf(store, "First");
  Check((first == "1" || first == "2") && TextOf(store, "Second") == "1", "the later set is stored");
  Check(std::to_string(sum) == first, "each change is notified once, from its old value to its new one");
}

MODEL_SCENARIO(ImportsOfTwo) {
  KalConfig store(7);
  std::thread other([&] { store.ApplyKalConfigs(Document("1", "1").c_str()); });
  store.ApplyKalConfigs(Document("2", "2").c_str());
  other.join();
  for (const char* name : {"First", "Second"}) {
    const std::string value = TextOf(store, name);
    Check(value == "1" || value == "2", "a value of one of the two");
  }
}

// What a callback uses ends right after its removal, beside an import too.
MODEL_SCENARIO(ImportAgainstRemoval) {
  KalConfig store(7);
  auto used = std::make_unique<int>(0);
  const SubscribeId_t id = store.SubscribeConfig(
      kDocumentGroup, "Second", [&](const KalConfigEvent&) { ++*used; }, nullptr, false);
  std::thread importer([&] { store.ApplyKalConfigs(Document("1", "1").c_str()); });
  Check(store.UnsubscribeConfig(id) == kResultOk, "it is removed");
  used.reset();
  importer.join();
}

// The group is copied as a whole: the later set is not there without the earlier one.
MODEL_SCENARIO(ExportBesideSets) {
  KalConfig store(7);
  std::thread setter([&] {
    SetText(store, "Second", "1");
    SetText(store, "First", "1");
  });
  const std::string text = store.DumpKalConfigs(1U << kDocumentGroup);
  Check(text == R"({"Video":[]})" || text == R"({"Video":[{"key":"Second","value":"1"}]})" ||
            text == Document("1", "1"),
        "what there was at one moment");
  setter.join();
}

// An older group that is read later has what its setter set before.
MODEL_SCENARIO(ExportOfGroupsBesideSets) {
  KalConfig store(7);
  std::thread setter([&] {
    SetText(store, "First", "1");
    store.SetKalConfig(KAL_CONFIG_GROUP_COMMON, "First", "1", false, false);
  });
  const std::string text = store.DumpKalConfigs(1U << kDocumentGroup | 1U << KAL_CONFIG_GROUP_COMMON);
  constexpr const char* kEntry = R"([{"key":"First","value":"1"}])";
  const bool hasCommon = text.find(std::string(R"("Common":)") + kEntry) != std::string::npos;
  const bool hasVideo = text.find(std::string(R"("Video":)") + kEntry) != std::string::npos;
  Check(hasVideo || !hasCommon, "the earlier set is not missing");
  setter.join();
}

// Their texts share one place in the store: nobody reads the first one while the second may be made.
MODEL_SCENARIO(ExportsOfTwo) {
  KalConfig store(7);
  SetText(store, "First", "1");
  std::thread other([&] { store.DumpKalConfigs(1U << kDocumentGroup); });
  std::thread remover([&] { store.RemoveKalConfigByGroup(kDocumentGroup); });
  store.DumpKalConfigs(1U << kDocumentGroup);
  other.join();
  remover.join();
  Check(store.DumpKalConfigs(1U << kDocumentGroup) == std::string(R"({"Video":[]})"), "the last text");
}

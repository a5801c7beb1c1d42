// SPDX-License-Identifier: Apache-2.0
#include <array>
#include <utility>

#include "documents/GroupOrder.h"
#include "json/TextWriter.h"
#include "json/Writer.h"
#include "tessel/KalConfig.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

// Written straight from the maps: a document in memory would be many times the text. The groups are read from
// 0 upward, whatever order they are written in: a reader of the text that finds what a writer set in a group
// also finds what the writer set in a later group before.
const char* KalConfig::DumpKalConfigs(ConfigMultGroup_t groups) {
  TESSEL_TRACE(2, "kalStore::KalConfig::DumpKalConfigs",
               ", groups=" << groups << Cid{m_callId} << This{this});
  std::array<std::string, KAL_CONFIG_GROUP_LAST> arrays;
  for (std::size_t group = 0; group < arrays.size(); ++group) {
    if ((groups >> group & 1) == 0) continue;
    TextWriter array(arrays[group]);
    array.Put('[');
    const char* separator = "";
    ConfigMap::Locked values(m_configs[group]);
    for (const auto& [name, value] : *values) {
      array.Put(std::exchange(separator, ","));
      array.Put(R"({"key":)");
      array.PutString(name);
      array.Put(R"(,"value":)");
      array.PutString(value.ToCstr());
      array.Put('}');
    }
    array.Put(']');
    array.Flush();
  }

  std::string text = "{";
  for (const KalConfigGroup group : GroupsByName()) {
    std::string& array = arrays[static_cast<std::size_t>(group)];
    if (array.empty()) continue;
    if (text.size() > 1) text += ',';
    AppendString(text, KalConfigGroup2GroupName(group));
    text += ':';
    text += std::exchange(array, {});
  }
  text += '}';
  const detail::Lock lock(m_dumpLock);
  m_dumpText = std::move(text);
  return m_dumpText.c_str();
}

}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
// Random sequences of operations on a store beside a small model, which predicts every result code, every
// value and every callback. A failing sequence is shrunk and printed with its seed; RC_PARAMS="seed=...
// max_success=..." runs it again.

#include <gtest/gtest.h>
#include <rapidcheck.h>
#include <rapidcheck/state.h>

#include <cstdlib>
#include <map>
#include <memory>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

#include "support/TraceLog.h"
#include "tessel/KalConfig.h"
#include "tessel/json.h"

namespace kalStore {
namespace {

constexpr KalConfigGroup kGroups[] = {KAL_CONFIG_GROUP_COMMON, KAL_CONFIG_GROUP_AUDIO,
                                      KAL_CONFIG_GROUP_UNIT_TEST, KAL_CONFIG_GROUP_LAST,
                                      KAL_CONFIG_GROUP_DEFAULT};
constexpr const char* kNames[] = {"a", "b", "B", "a name that needs memory of its own", ""};

struct Key {
  KalConfigGroup group = KAL_CONFIG_GROUP_COMMON;
  std::string name;

  bool IsValid() const { return IsConfigGroup(group) && !name.empty(); }
  friend auto operator<=>(const Key&, const Key&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Key& key) {
    return out << static_cast<int>(key.group) << "/\"" << key.name << '"';
  }
};

Key AnyKey() {
  // Mostly names that exist, so that operations meet.
  const auto pick = [](auto& from) { return from[*rc::gen::inRange<std::size_t>(0, std::size(from))]; };
  return {*rc::gen::inRange(0, 20) == 0 ? pick(kGroups) : kGroups[*rc::gen::inRange(0, 3)],
          *rc::gen::inRange(0, 20) == 0 ? pick(kNames) : kNames[*rc::gen::inRange(0, 4)]};
}

std::string AnyText() {
  return *rc::gen::element<std::string>("", "0", "1", "two", "a value that needs memory of its own");
}

/// One callback: which registration, and what it was handed. An empty value differs from an empty string.
struct Call {
  int registration;
  std::string event;

  friend bool operator==(const Call&, const Call&) = default;
  friend std::ostream& operator<<(std::ostream& out, const Call& call) {
    return out << '#' << call.registration << ' ' << call.event;
  }
};

std::string TextOf(const std::optional<std::string>& value) {
  return value ? '"' + *value + '"' : "(empty)";
}
std::string TextOf(const ConfigData& value) {
  return value.IsValid() ? '"' + value.ToString() + '"' : "(empty)";
}
template <class Value>
std::string EventText(const Key& key, const Value& oldValue, const Value& newValue,
                      const Value& defaultValue) {
  return std::to_string(static_cast<int>(key.group)) + '/' + key.name + ' ' + TextOf(oldValue) + " -> " +
         TextOf(newValue) + " default " + TextOf(defaultValue);
}

struct Registration {
  int number;
  SubscribeId_t id;
  bool isBinding;
};

/// The simpler truth.
struct Model {
  std::map<Key, std::string> values;
  std::map<Key, std::vector<Registration>> registrations;
  SubscribeId_t lastId = 0;
  int lastNumber = 0;

  std::optional<std::string> Find(const Key& key) const {
    const auto found = values.find(key);
    return found == values.end() ? std::nullopt : std::optional(found->second);
  }
  bool IsBound(const Key& key) const {
    const auto found = registrations.find(key);
    if (found == registrations.end()) return false;
    for (const Registration& it : found->second) {
      if (it.isBinding) return true;
    }
    return false;
  }

  /// Sets a value; returns the result code and appends the calls.
  std::int32_t Set(const Key& key, const std::optional<std::string>& text, bool force, bool transient,
                   std::vector<Call>& calls) {
    if (!key.IsValid() || !text) return kResultBadArgument;
    const std::optional<std::string> previous = Find(key);
    if (transient) {
      values.erase(key);
    } else {
      values[key] = *text;
    }
    if (!force && previous == text) return kResultUnchanged;
    const std::size_t before = calls.size();
    for (const Registration& it : registrations[key]) {
      if (!it.isBinding)
        calls.push_back({it.number, EventText<std::optional<std::string>>(key, previous, text, {})});
    }
    return calls.size() == before ? kResultNobody : kResultOk;
  }

  std::string Dump(ConfigMultGroup_t groups) const {
    json::Object document;
    for (int group = 0; group < 13; ++group) {
      if ((groups >> group & 1) == 0) continue;
      json::Array entries;
      for (const auto& [key, text] : values) {
        if (key.group != group) continue;
        json::Object entry;
        entry["key"] = key.name;
        entry["value"] = text;
        entries.push_back(entry);
      }
      document[KalConfigGroup2GroupName(static_cast<KalConfigGroup>(group))] = entries;
    }
    return json::Serialize(document);
  }
};

struct System {
  KalConfig store{5};
  std::vector<Call> calls;

  fnConfigChangedCallBack Recording(int number) {
    return [this, number](const KalConfigEvent& event) { Record(number, event); };
  }
  void Record(int number, const KalConfigEvent& event) {
    calls.push_back({number, EventText({event.m_group, event.m_name}, event.m_oldValue, event.m_newValue,
                                       event.m_defaultValue)});
  }
};

using Command = rc::state::Command<Model, System>;

/// What every command ends with: the calls predicted, no more and no less.
void CheckCalls(System& system, const std::vector<Call>& expected) {
  RC_ASSERT(system.calls == expected);
  system.calls.clear();
}

ConfigData DataOf(const std::optional<std::string>& text) {
  return text ? ConfigData(*text) : ConfigData();
}

struct SetValue : Command {
  const Key key = AnyKey();
  const std::optional<std::string> text =
      *rc::gen::inRange(0, 20) == 0 ? std::nullopt : std::optional(AnyText());
  const bool force = *rc::gen::inRange(0, 4) == 0;
  const bool transient = *rc::gen::inRange(0, 4) == 0;

  void apply(Model& model) const override {
    std::vector<Call> calls;
    model.Set(key, text, force, transient, calls);
  }
  void run(const Model& before, System& system) const override {
    Model model = before;
    std::vector<Call> expected;
    const std::int32_t result = model.Set(key, text, force, transient, expected);
    RC_ASSERT(system.store.SetKalConfig(key.group, key.name.c_str(), DataOf(text), force, transient) ==
              result);
    CheckCalls(system, expected);
  }
  void show(std::ostream& out) const override {
    out << "Set " << key << " = " << TextOf(text) << (force ? " forced" : "")
        << (transient ? " transient" : "");
  }
};

struct GetValue : Command {
  const Key key = AnyKey();

  void run(const Model& model, System& system) const override {
    ConfigData value("before");
    const std::int32_t result = system.store.GetKalConfig(key.group, key.name.c_str(), value);
    if (!key.IsValid()) {
      RC_ASSERT(result == kResultBadArgument);
      RC_ASSERT(TextOf(value) == "\"before\"");
    } else {
      const std::optional<std::string> expected = model.Find(key);
      RC_ASSERT(result == (expected ? kResultOk : kResultNotFound));
      RC_ASSERT(TextOf(value) == TextOf(expected));
    }
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override { out << "Get " << key; }
};

struct GetDynamic : Command {
  const Key key = AnyKey();
  const std::string defaultText = AnyText();

  void run(const Model& model, System& system) const override {
    ConfigData value("before");
    const std::int32_t result =
        system.store.GetDynamicConfig(key.group, key.name.c_str(), value, defaultText);
    std::vector<Call> expected;
    if (!key.IsValid()) {
      RC_ASSERT(result == kResultBadArgument);
    } else {
      RC_ASSERT(result == (model.IsBound(key) ? kResultOk : kResultNobody));
      if (model.IsBound(key)) {
        for (const Registration& it : model.registrations.at(key)) {
          if (!it.isBinding) continue;
          expected.push_back(
              {it.number, EventText<std::optional<std::string>>(key, {}, {}, std::optional(defaultText))});
          RC_ASSERT(TextOf(value) == '"' + std::to_string(it.number) + '"');
        }
      }
    }
    if (result != kResultOk) RC_ASSERT(TextOf(value) == "\"before\"");
    CheckCalls(system, expected);
  }
  void show(std::ostream& out) const override { out << "GetDynamic " << key << " default " << defaultText; }
};

struct Subscribe : Command {
  const Key key = AnyKey();
  const bool hasCallback = *rc::gen::inRange(0, 20) != 0;

  void apply(Model& model) const override {
    if (!key.IsValid() || !hasCallback) return;
    model.registrations[key].push_back({++model.lastNumber, ++model.lastId, false});
  }
  void run(const Model& model, System& system) const override {
    const SubscribeId_t id = system.store.SubscribeConfig(
        key.group, key.name.c_str(), hasCallback ? system.Recording(model.lastNumber + 1) : nullptr, nullptr,
        false);
    std::vector<Call> expected;
    if (!key.IsValid() || !hasCallback) {
      RC_ASSERT(id == 0U);
    } else {
      RC_ASSERT(id == model.lastId + 1);
      if (const std::optional<std::string> value = model.Find(key)) {
        expected.push_back({model.lastNumber + 1, EventText<std::optional<std::string>>(key, {}, value, {})});
      }
    }
    CheckCalls(system, expected);
  }
  void show(std::ostream& out) const override {
    out << "Subscribe " << key << (hasCallback ? "" : " without callback");
  }
};

struct Bind : Command {
  const Key key = AnyKey();
  const bool hasCallback = *rc::gen::inRange(0, 20) != 0;

  void apply(Model& model) const override {
    if (!key.IsValid() || !hasCallback) return;
    ++model.lastId;  // Lost when the name is bound already.
    if (!model.IsBound(key)) model.registrations[key].push_back({++model.lastNumber, model.lastId, true});
  }
  void run(const Model& model, System& system) const override {
    const int number = model.lastNumber + 1;
    fnConfigInvokeCallBack callback;
    if (hasCallback) {
      callback = [&system, number](const KalConfigEvent& event) {
        system.Record(number, event);
        return ConfigValue(number);
      };
    }
    const SubscribeId_t id = system.store.BindConfig(key.group, key.name.c_str(), callback);
    const bool isMade = key.IsValid() && hasCallback && !model.IsBound(key);
    RC_ASSERT(id == (isMade ? model.lastId + 1 : 0));
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override {
    out << "Bind " << key << (hasCallback ? "" : " without callback");
  }
};

struct Unsubscribe : Command {
  SubscribeId_t id = 0;  // Now and then one that never was, or that is gone.

  explicit Unsubscribe(const Model& model) : id(*rc::gen::inRange<SubscribeId_t>(0, model.lastId + 2)) {}

  void apply(Model& model) const override { Remove(model, id); }
  void run(const Model& before, System& system) const override {
    Model model = before;
    const std::int32_t expected = Remove(model, id) ? kResultOk : kResultNotFound;
    RC_ASSERT(system.store.UnsubscribeConfig(id) == expected);
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override { out << "Unsubscribe " << id; }

 private:
  static bool Remove(Model& model, SubscribeId_t id) {
    for (auto& [key, list] : model.registrations) {
      if (std::erase_if(list, [&](const Registration& it) { return it.id == id; }) != 0) return true;
    }
    return false;
  }
};

struct RemoveValue : Command {
  const Key key = AnyKey();

  void apply(Model& model) const override { model.values.erase(key); }
  void run(const Model&, System& system) const override {
    RC_ASSERT(system.store.RemoveKalConfig(key.group, key.name.c_str()) ==
              (key.IsValid() ? kResultOk : kResultBadArgument));
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override { out << "Remove " << key; }
};

struct RemoveGroup : Command {
  const KalConfigGroup group = AnyKey().group;

  void apply(Model& model) const override {
    std::erase_if(model.values, [&](const auto& entry) { return entry.first.group == group; });
  }
  void run(const Model&, System& system) const override {
    RC_ASSERT(system.store.RemoveKalConfigByGroup(group) ==
              (IsConfigGroup(group) ? kResultOk : kResultBadArgument));
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override { out << "RemoveGroup " << static_cast<int>(group); }
};

struct Dump : Command {
  const ConfigMultGroup_t groups = *rc::gen::arbitrary<ConfigMultGroup_t>();

  void run(const Model& model, System& system) const override {
    const std::string text = system.store.DumpKalConfigs(groups);
    RC_ASSERT(text == model.Dump(groups));
    // What was dumped changes nothing when it is applied.
    RC_ASSERT(system.store.ApplyKalConfigs(text.c_str()) == kResultOk);
    CheckCalls(system, {});
  }
  void show(std::ostream& out) const override { out << "Dump " << groups; }
};

struct Apply : Command {
  std::vector<std::pair<Key, std::string>> entries;

  Apply() {
    const int count = *rc::gen::inRange(0, 5);
    for (int i = 0; i < count; ++i) entries.emplace_back(AnyKey(), AnyText());
  }

  void apply(Model& model) const override {
    std::vector<Call> calls;
    ApplyTo(model, calls);
  }
  void run(const Model& before, System& system) const override {
    Model model = before;
    std::vector<Call> expected;
    ApplyTo(model, expected);
    RC_ASSERT(system.store.ApplyKalConfigs(Text().c_str()) == kResultOk);
    CheckCalls(system, expected);
  }
  void show(std::ostream& out) const override { out << "Apply " << Text(); }

 private:
  /// The entries by group name, as the document orders them.
  std::map<std::string, std::vector<std::pair<Key, std::string>>> ByGroup() const {
    std::map<std::string, std::vector<std::pair<Key, std::string>>> groups;
    for (const auto& entry : entries) groups[KalConfigGroup2GroupName(entry.first.group)].push_back(entry);
    return groups;
  }
  std::string Text() const {
    json::Object document;
    for (const auto& [name, list] : ByGroup()) {
      json::Array array;
      for (const auto& [key, text] : list) {
        json::Object entry;
        entry["key"] = key.name;
        entry["value"] = text;
        array.push_back(entry);
      }
      document[name] = array;
    }
    return json::Serialize(document);
  }
  void ApplyTo(Model& model, std::vector<Call>& calls) const {
    for (const auto& [name, list] : ByGroup()) {
      for (const auto& [key, text] : list) model.Set(key, text, false, false, calls);
    }
  }
};

TEST(StoreModel, PredictsEveryResultAndEveryCallback) {
  setenv("RC_PARAMS", "max_success=2000 max_size=60", 0);  // Unless given from outside.
  const TraceLog silence(-1);
  const bool holds = rc::check([] {
    const Model model;
    System system;
    rc::state::check(model, system,
                     rc::state::gen::execOneOfWithArgs<SetValue, SetValue, SetValue, GetValue, GetDynamic,
                                                       Subscribe, Subscribe, Bind, Unsubscribe, RemoveValue,
                                                       RemoveGroup, Dump, Apply>());
  });
  EXPECT_TRUE(holds);
}

}  // namespace
}  // namespace kalStore

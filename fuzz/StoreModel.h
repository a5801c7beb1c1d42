// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <list>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "SettingsModel.h"
#include "tessel/ResultCode.h"
#include "tessel/journal.h"

namespace fuzz {

using kalStore::kResultBadArgument;
using kalStore::kResultNobody;
using kalStore::kResultNotFound;
using kalStore::kResultOk;
using kalStore::kResultUnchanged;

/// A string, or none: a value that is not valid, a name that is null.
using Text = std::optional<std::string>;

/// Where a callback runs.
using Way = kalStore::JournalWay;
/// What a callback does besides logging; a posted one only logs.
enum class Act { kLog, kSet, kThrow };

struct Callback {
  int tag = 0;
  Way way = Way::kDirect;
  Act act = Act::kLog;
  std::string target;  // The name that kSet sets, in the callback's own group.
};

/// What a callback throws.
struct Thrown {
  int tag;
};

/// What a callback received.
struct Notification {
  int tag;
  std::string name;
  Text oldValue;
  Text newValue;
  Text defaultValue;
  std::uint32_t group;
  int sessionType;

  friend bool operator==(const Notification&, const Notification&) = default;
};

/// What callbacks received: those that are waited for, and those that run later.
struct Log {
  std::vector<Notification> waitedFor;
  std::vector<Notification> posted;
};

/// How deep callbacks that set values may nest.
constexpr int kDeepestSet = 3;

int SessionTypeOf(std::uint32_t group);
/// 0xFFFFFFFF when the type has no group.
std::uint32_t GroupOf(std::int32_t sessionType);

/// What one store must hold and deliver, with deliveries spelled out.
class StoreModel {
 public:
  explicit StoreModel(Log& log) : m_log(log) {}

  std::int32_t Set(std::uint32_t group, const Text& name, const Text& value, bool force, bool transient);
  std::int32_t Get(std::uint32_t group, const Text& name, Text& value) const;
  std::int32_t GetDynamic(std::uint32_t group, const Text& name, Text& value, const Text& defaultValue);
  std::int32_t Remove(std::uint32_t group, const Text& name);
  std::int32_t RemoveGroup(std::uint32_t group);
  std::uint64_t Subscribe(std::uint32_t group, const Text& name, const std::optional<Callback>& callback);
  std::uint64_t Bind(std::uint32_t group, const Text& name, const std::optional<Callback>& callback);
  std::int32_t Unsubscribe(std::uint64_t id);
  std::int32_t Apply(const Text& document);
  std::string Dump(std::uint32_t mask) const { return DocumentOf(m_values, mask); }

  bool HasHandedOver() const;

 private:
  struct Handler {
    std::uint64_t id;
    bool isBinding;
    Callback callback;
  };
  using Key = std::pair<std::uint32_t, std::string>;

  void deliver(const Callback& callback, const Notification& notification);
  void run(const Callback& callback, const Notification& notification);

  Log& m_log;
  SettingsValues m_values;
  std::map<Key, std::list<Handler>> m_handlers;
  std::uint64_t m_lastId = 0;
  int m_setDepth = 0;
  bool m_isOnRunThread = false;
};

}  // namespace fuzz

// SPDX-License-Identifier: Apache-2.0
#include "StoreModel.h"

#include <algorithm>
#include <exception>
#include <iterator>

namespace fuzz {
namespace {

constexpr std::uint32_t kGroupOfSession[] = {3, 5, 6, 4, 7, 8};
constexpr int kSessionAudioSi = 14;
constexpr std::uint32_t kGroupAudioSi = 9;
constexpr int kNoSession = 15;

// Sets a value for a scope, and restores the old one however the scope is left.
template <class T>
class Scoped {
 public:
  Scoped(T& place, T value) : m_place(place), m_previous(std::exchange(place, value)) {}
  ~Scoped() { m_place = m_previous; }
  Scoped(const Scoped&) = delete;
  Scoped& operator=(const Scoped&) = delete;

 private:
  T& m_place;
  const T m_previous;
};

bool IsBad(std::uint32_t group, const Text& name) {
  return group >= kGroups || !name || name->empty();
}

}  // namespace

int SessionTypeOf(std::uint32_t group) {
  if (group == kGroupAudioSi) return kSessionAudioSi;
  const auto* const found = std::find(std::begin(kGroupOfSession), std::end(kGroupOfSession), group);
  return found == std::end(kGroupOfSession) ? kNoSession
                                            : static_cast<int>(found - std::begin(kGroupOfSession));
}

std::uint32_t GroupOf(std::int32_t sessionType) {
  if (sessionType == kSessionAudioSi) return kGroupAudioSi;
  const bool hasGroup =
      sessionType >= 0 && sessionType < static_cast<std::int32_t>(std::size(kGroupOfSession));
  return hasGroup ? kGroupOfSession[sessionType] : 0xFFFFFFFF;
}

std::int32_t StoreModel::Set(std::uint32_t group, const Text& name, const Text& value, bool force,
                             bool transient) {
  if (IsBad(group, name) || !value) return kResultBadArgument;
  auto& values = m_values[group];
  Notification notification{0, *name, {}, value, {}, group, SessionTypeOf(group)};
  if (const auto found = values.find(*name); found != values.end()) notification.oldValue = found->second;
  if (transient) {
    values.erase(*name);
  } else {
    values[*name] = *value;
  }
  if (!force && notification.oldValue == notification.newValue) return kResultUnchanged;

  bool isNotified = false;
  std::exception_ptr first;
  const std::list<Handler> snapshot = m_handlers[{group, *name}];
  for (const Handler& handler : snapshot) {
    if (handler.isBinding) continue;
    isNotified = true;
    try {
      deliver(handler.callback, notification);
    } catch (const Thrown&) {
      if (!first) first = std::current_exception();
    }
  }
  if (first) std::rethrow_exception(first);
  return isNotified ? kResultOk : kResultNobody;
}

std::int32_t StoreModel::Get(std::uint32_t group, const Text& name, Text& value) const {
  if (IsBad(group, name)) return kResultBadArgument;
  const auto found = m_values[group].find(*name);
  value = found == m_values[group].end() ? Text() : Text(found->second);
  return value ? kResultOk : kResultNotFound;
}

std::int32_t StoreModel::GetDynamic(std::uint32_t group, const Text& name, Text& value,
                                    const Text& defaultValue) {
  if (IsBad(group, name)) return kResultBadArgument;
  for (const Handler& handler : m_handlers[{group, *name}]) {
    if (!handler.isBinding) continue;
    run(handler.callback, {0, *name, {}, {}, defaultValue, group, SessionTypeOf(group)});
    value = defaultValue ? Text(*defaultValue + "!") : Text();
    return kResultOk;
  }
  return kResultNobody;
}

std::int32_t StoreModel::Remove(std::uint32_t group, const Text& name) {
  if (IsBad(group, name)) return kResultBadArgument;
  m_values[group].erase(*name);
  return kResultOk;
}

std::int32_t StoreModel::RemoveGroup(std::uint32_t group) {
  if (group >= kGroups) return kResultBadArgument;
  m_values[group].clear();
  return kResultOk;
}

std::uint64_t StoreModel::Subscribe(std::uint32_t group, const Text& name,
                                    const std::optional<Callback>& callback) {
  if (IsBad(group, name) || !callback) return 0;
  const std::uint64_t id = ++m_lastId;
  m_handlers[{group, *name}].push_back({id, false, *callback});
  Text value;
  if (Get(group, name, value) != 0) return id;
  try {
    deliver(*callback, {0, *name, {}, value, {}, group, SessionTypeOf(group)});
  } catch (const Thrown&) {
    Unsubscribe(id);
    throw;
  }
  return id;
}

std::uint64_t StoreModel::Bind(std::uint32_t group, const Text& name,
                               const std::optional<Callback>& callback) {
  if (IsBad(group, name) || !callback) return 0;
  const std::uint64_t id = ++m_lastId;
  auto& handlers = m_handlers[{group, *name}];
  if (std::any_of(handlers.begin(), handlers.end(), [](const Handler& handler) { return handler.isBinding; }))
    return 0;
  handlers.push_back({id, true, *callback});
  return id;
}

std::int32_t StoreModel::Unsubscribe(std::uint64_t id) {
  for (auto& [key, handlers] : m_handlers) {
    if (handlers.remove_if([id](const Handler& handler) { return handler.id == id; }) != 0) return kResultOk;
  }
  return kResultNotFound;
}

std::int32_t StoreModel::Apply(const Text& document) {
  const auto entries = document ? EntriesOf(*document) : std::nullopt;
  if (!entries) return kResultNotFound;
  for (const auto& [group, name, value] : *entries) Set(group, name, value, false, false);
  return kResultOk;
}

bool StoreModel::HasHandedOver() const {
  for (const auto& [key, handlers] : m_handlers) {
    for (const Handler& handler : handlers) {
      if (handler.callback.way == Way::kHandedOver) return true;
    }
  }
  return false;
}

void StoreModel::deliver(const Callback& callback, const Notification& notification) {
  switch (callback.way) {
    case Way::kNone:
    case Way::kDropped:
      return;
    case Way::kPosted:
      m_log.posted.push_back(notification);
      m_log.posted.back().tag = callback.tag;
      return;
    case Way::kHandedOver:
      // On the run thread it is called directly; otherwise what it throws stays there.
      if (!m_isOnRunThread) {
        const Scoped onRunThread(m_isOnRunThread, true);
        try {
          run(callback, notification);
        } catch (const Thrown&) {
        }
        return;
      }
      [[fallthrough]];
    case Way::kDirect:
      run(callback, notification);
  }
}

void StoreModel::run(const Callback& callback, const Notification& notification) {
  m_log.waitedFor.push_back(notification);
  m_log.waitedFor.back().tag = callback.tag;
  if (callback.act == Act::kThrow) throw Thrown{callback.tag};
  if (callback.act != Act::kSet || m_setDepth == kDeepestSet) return;
  const Scoped depth(m_setDepth, m_setDepth + 1);
  Set(notification.group, callback.target, notification.newValue.value_or("") + "+", false, false);
}

}  // namespace fuzz

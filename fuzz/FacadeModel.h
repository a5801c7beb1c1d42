// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <utility>

#include "StoreModel.h"

namespace fuzz {

using kalStore::kNoCallId;

constexpr std::uint32_t kDefaultGroup = 0xFFFFFFFF;

/// What one facade must return. Its owner hands it the call's store, and counts references.
class FacadeModel {
 public:
  std::uint32_t CallId() const { return m_callId; }
  StoreModel* Store() const { return m_store; }
  /// Whether SetCallId(callId) binds; the owner then calls Bind.
  bool CanBind(std::uint32_t callId) const { return m_callId == kNoCallId && callId != kNoCallId; }
  /// Registers what was recorded; throws what the first callback threw.
  void BindTo(std::uint32_t callId, StoreModel& store);
  /// Removes everything from the store.
  void Clean();

  std::int32_t SetSessionType(std::int32_t sessionType);
  std::int32_t SetDefaultGroup(std::uint32_t group);
  int SessionType() const { return SessionTypeOf(m_defaultGroup); }

  /// The error of an operation on values before it reaches the store; 0 when there is none, with `group`
  /// resolved.
  std::int32_t Refusal(const Text& name, std::uint32_t& group) const;
  bool Resolve(std::uint32_t& group) const;

  std::uint64_t Subscribe(std::uint32_t group, const Text& name, const std::optional<Callback>& callback,
                          bool isBinding);
  std::int32_t Unsubscribe(std::uint64_t id);
  std::int32_t Unsubscribe(const Text& name, std::uint32_t group);

  /// Whether a callback was registered through this facade.
  bool Owns(int tag) const { return m_tags.contains(tag); }

 private:
  using Key = std::pair<std::uint32_t, std::string>;
  struct Record {
    std::uint64_t id;
    bool isBinding;
    Callback callback;
  };

  std::uint64_t makeRecord(const Key& key, Record record);

  std::uint32_t m_callId = kNoCallId;
  std::uint32_t m_defaultGroup = kDefaultGroup;
  StoreModel* m_store = nullptr;
  std::map<Key, Record> m_records;
  std::set<int> m_tags;
};

}  // namespace fuzz

// SPDX-License-Identifier: Apache-2.0
#include "FacadeModel.h"

#include <algorithm>
#include <exception>

namespace fuzz {

void FacadeModel::BindTo(std::uint32_t callId, StoreModel& store) {
  m_callId = callId;
  m_store = &store;
  std::exception_ptr first;
  const auto recorded = m_records;
  for (const auto& [key, record] : recorded) {
    try {
      makeRecord(key, record);
    } catch (const Thrown&) {
      if (!first) first = std::current_exception();
    }
  }
  if (first) std::rethrow_exception(first);
}

void FacadeModel::Clean() {
  for (const auto& [key, record] : m_records) {
    if (record.id != 0) m_store->Unsubscribe(record.id);
  }
  m_records.clear();
}

std::int32_t FacadeModel::SetSessionType(std::int32_t sessionType) {
  const std::uint32_t group = GroupOf(sessionType);
  if (group == kDefaultGroup) return kResultNotFound;
  if (m_defaultGroup == kDefaultGroup) m_defaultGroup = group;
  return m_defaultGroup == group ? kResultOk : kResultNotFound;
}

std::int32_t FacadeModel::SetDefaultGroup(std::uint32_t group) {
  if (m_defaultGroup != kDefaultGroup || group >= kGroups) return kResultNotFound;
  m_defaultGroup = group;
  return kResultOk;
}

std::int32_t FacadeModel::Refusal(const Text& name, std::uint32_t& group) const {
  if (!name || m_store == nullptr) return kResultBadArgument;
  return Resolve(group) ? kResultOk : kResultNotFound;
}

bool FacadeModel::Resolve(std::uint32_t& group) const {
  if (group == kDefaultGroup) group = m_defaultGroup;
  return group != kDefaultGroup;
}

std::uint64_t FacadeModel::Subscribe(std::uint32_t group, const Text& name,
                                     const std::optional<Callback>& callback, bool isBinding) {
  if (!name || name->empty() || !Resolve(group) || group >= kGroups || !callback) return 0;
  const Key key(group, *name);
  if (const auto found = m_records.find(key); found != m_records.end() && found->second.id != 0) return 0;
  m_tags.insert(callback->tag);
  return makeRecord(key, {0, isBinding, *callback});
}

std::uint64_t FacadeModel::makeRecord(const Key& key, Record record) {
  m_records.insert_or_assign(key, record);
  if (m_store == nullptr) return 0;
  try {
    const auto& [group, name] = key;
    record.id = record.isBinding ? m_store->Bind(group, name, record.callback)
                                 : m_store->Subscribe(group, name, record.callback);
  } catch (const Thrown&) {
    m_records.erase(key);
    throw;
  }
  m_records.at(key).id = record.id;
  return record.id;
}

std::int32_t FacadeModel::Unsubscribe(std::uint64_t id) {
  const auto found = std::find_if(m_records.begin(), m_records.end(),
                                  [id](const auto& entry) { return id != 0 && entry.second.id == id; });
  if (found == m_records.end()) return kResultNotFound;
  m_records.erase(found);
  return m_store->Unsubscribe(id);
}

std::int32_t FacadeModel::Unsubscribe(const Text& name, std::uint32_t group) {
  if (!Resolve(group)) return kResultNotFound;
  if (!name || name->empty() || group >= kGroups) return kResultBadArgument;
  const auto found = m_records.find({group, *name});
  return found == m_records.end() ? kResultNotFound : Unsubscribe(found->second.id);
}

}  // namespace fuzz

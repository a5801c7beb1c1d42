// SPDX-License-Identifier: Apache-2.0
#include "tessel/CKalTessel.h"

#include <atomic>
#include <memory>

#include "journal/JournalSource.h"
#include "statistics/EntityParts.h"
#include "statistics/ProcessRegistry.h"
#include "statistics/RegistryGuard.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// Objects that are ending: each may use the registry that it is registered with.
constinit std::atomic<int> g_ending{0};

// What the process's registry found last: the components of a call ask for the same key one after the other.
// Protected by that registry's lock. Other registries do without.
constinit std::pair<const std::pair<KalTesselEntityType, std::uint32_t>, void*>* g_found = nullptr;

std::unique_ptr<IKalMediaInfo> MakeEntity(KalTesselEntityType type, std::uint32_t callId) {
  switch (type) {
    case KAL_TESSEL_AUDIO:
      return std::make_unique<KalAudioStatisticInfo>(callId);
    case KAL_TESSEL_VIDEO:
      return std::make_unique<KalVideoStatisticInfo>(callId);
    case KAL_TESSEL_CONTENT_VIDEO:
      return std::make_unique<KalContentVideoStatisticInfo>(callId);
    case KAL_TESSEL_CONTENT_AUDIO:
      return std::make_unique<KalContentAudioStatisticInfo>(callId);
  }
  return nullptr;
}

// The pointer that callers receive: the interface of the object's media.
void* EntityOf(KalTesselEntityType type, IKalMediaInfo* object) {
  if (IsVideo(type)) return static_cast<IKalVideoInfo*>(object);
  return static_cast<IKalAudioInfo*>(object);
}

bool IsEnding(KalTesselEntityType type, void* entity) {
  return EntityParts::Of(type, entity).references.ReferenceCount() == 0;
}

// The lines are composed out of line, from copies: the frequent paths keep their operands in registers.

[[gnu::noinline]] void TraceCreated(const CKalTessel* self, KalTesselEntityType type, std::uint32_t callId,
                                    void* entity) {
  TraceLine line(2);
  line.Text() << "CKalTessel::createOrGetTesselEntity" << (entity == nullptr ? " failed, type=" : ", type=")
              << static_cast<int>(type) << ", callId=" << callId;
  if (entity != nullptr) {
    line.Text() << ", pMediaStatInfo=" << entity
                << ", refCnt=" << EntityParts::Of(type, entity).references.ReferenceCount();
  }
  line.Text() << This{self};
  line.Emit();
}

[[gnu::noinline]] void TraceUnknown(const CKalTessel* self, KalTesselEntityType type, std::uint32_t callId,
                                    void* entity) {
  TraceLine line(2);
  line.Text() << "CKalTessel::releaseTesselEntity, type=" << static_cast<int>(type) << ", callId=" << callId
              << ", inPMediaStatInfo=" << entity << ", refCnt=" << static_cast<unsigned int>(-1)
              << This{self};
  line.Emit();
}

[[gnu::noinline]] void TraceReleased(const CKalTessel* self, KalTesselEntityType type, std::uint32_t callId,
                                     void* entity, void* registered, std::uint32_t count) {
  TraceLine line(2);
  line.Text() << "CKalTessel::releaseTesselEntity, type=" << static_cast<int>(type) << ", callId=" << callId
              << ", in_PMediaStatInfo=" << entity
              << "out_PMediaStatInfo=" << reinterpret_cast<unsigned long>(registered) << ", refCnt=" << count
              << This{self};
  line.Emit();
}

[[gnu::noinline, gnu::cold]] void WriteStatistics(JournalKind kind, KalTesselEntityType type,
                                                  std::uint32_t callId, std::uint32_t count,
                                                  const void* caller, std::uint64_t number = 0) {
  WriteJournal({.kind = kind,
                .number = number,
                .callId = callId,
                .source = SourceOf(caller),
                .entityType = type,
                .count = count});
}

[[gnu::noinline, gnu::cold]] std::uint32_t ReleaseInJournal(kal::CKalUnknownImpl& references,
                                                            KalTesselEntityType type, std::uint32_t callId,
                                                            const void* caller) {
  const CallerScope scope(caller);
  // Before the event of the object's end, which may follow at once, here or on another thread.
  const std::uint64_t number = DrawJournalNumber();
  const std::uint32_t count = references.ReleaseReference();
  WriteStatistics(JournalKind::kStatisticsReleased, type, callId, count, caller, number);
  return count;
}

}  // namespace

inline CKalTessel::Entry* CKalTessel::find(const Key& key) {
  const bool isInstant = ProcessRegistry::Is(this);
  if (isInstant && g_found != nullptr && g_found->first == key) return g_found;
  const auto place = m_entities.find(key);
  if (place == m_entities.end()) return nullptr;
  if (isInstant) g_found = &*place;
  return &*place;
}

void Registration::Enter(CKalTessel& registry, KalTesselEntityType type, std::uint32_t callId) {
  m_type = type;
  m_callId = callId;
  m_registry.store(&registry, std::memory_order_relaxed);  // Nobody else has the object yet.
}

// The end is numbered before the other object is made. Its event is written by the thread on which it ends.
void Registration::LeaveToAnother() {
  if (JournalIsOn()) m_endNumber = DrawJournalNumber();
  Leave();
}

void Registration::writeEnd() const {
  if (m_type == kNeverEntered || (m_endNumber == 0 && !JournalIsOn())) return;
  WriteStatistics(JournalKind::kStatisticsEnded, m_type, m_callId, 0, nullptr, m_endNumber);
}

// The object's count is 0, so nobody holds it. The registry may still come across its entry, under its lock:
// the object is not freed before that is no longer possible.
Registration::~Registration() {
  // A store and then a load here and in ~CKalTessel(), of the same two variables: with sequential consistency
  // either the registry has already withdrawn, or it sees that this object is ending and waits.
  g_ending.fetch_add(1);
  if (CKalTessel* const registry = m_registry.load()) {
    const RegistryGuard guard(registry->m_mutex);
    const CKalTessel::Entry* const entry = registry->find({m_type, m_callId});
    if (entry != nullptr && &EntityParts::Of(m_type, entry->second).registration == this) {
      if (ProcessRegistry::Is(registry)) g_found = nullptr;
      registry->m_entities.erase({m_type, m_callId});
    }
    writeEnd();  // Under the lock, before another object takes the key.
  } else {
    writeEnd();
  }
  // Released for the registry that waits: it ends what was used here.
  if (g_ending.fetch_sub(1, std::memory_order_release) == 1) g_ending.notify_all();
}

CKalTessel::CKalTessel() = default;

// The objects stay with their holders, who may end them at this very moment.
CKalTessel::~CKalTessel() {
  forgetAll();
  while (const int ending = g_ending.load()) g_ending.wait(ending);
}

void CKalTessel::forgetAll() {
  const RegistryGuard guard(m_mutex);
  for (const auto& [key, entity] : m_entities) EntityParts::Of(key.first, entity).registration.Leave();
  if (ProcessRegistry::Is(this)) g_found = nullptr;
  m_entities.clear();
}

inline void* CKalTessel::createOrGet(KalTesselEntityType type, std::uint32_t callId, const void* caller) {
  const RegistryGuard guard(m_mutex);
  const Entry* const entry = find({type, callId});
  void* entity = entry != nullptr ? entry->second : nullptr;
  // An object whose last reference is gone is ending on another thread, which waits for the lock.
  if (entity == nullptr || !EntityParts::Of(type, entity).references.AddReferenceUnlessZero())
    entity = registerEntity(type, callId, caller);
  if (IsTraced(2)) [[unlikely]]
    TraceCreated(this, type, callId, entity);
  return entity;
}

void* CKalTessel::createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId) {
  return createOrGet(type, callId, __builtin_return_address(0));
}

inline void* internal::ProcessRegistry::CreateOrGet(KalTesselEntityType type, std::uint32_t callId,
                                                    const void* caller) {
  return Get().createOrGet(type, callId, caller);
}

int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out) {
  if (out == nullptr) return kResultNotFound;
  *out = nullptr;
  *out = ProcessRegistry::CreateOrGet(type, callId, __builtin_return_address(0));
  return *out == nullptr ? kResultNotFound : kResultOk;
}

inline int CKalTessel::release(KalTesselEntityType type, std::uint32_t callId, void* entity,
                               const void* caller) {
  const RegistryGuard guard(m_mutex);
  if (entity == nullptr) return -1;
  const Entry* const entry = find({type, callId});
  if (entry == nullptr || IsEnding(type, entry->second)) {
    if (IsTraced(2)) [[unlikely]]
      TraceUnknown(this, type, callId, entity);
    return -1;
  }
  void* const registered = entry->second;
  // At 0 the object ends here and takes its entry with it.
  auto& references = EntityParts::Of(type, registered).references;
  const std::uint32_t count =
      JournalIsOn() ? ReleaseInJournal(references, type, callId, caller) : references.ReleaseReference();
  if (IsTraced(2)) [[unlikely]]
    TraceReleased(this, type, callId, entity, registered, count);
  return static_cast<int>(count);
}

int CKalTessel::releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  return release(type, callId, entity, __builtin_return_address(0));
}

int internal::ProcessRegistry::Release(KalTesselEntityType type, std::uint32_t callId, void* entity,
                                       const void* caller) {
  return Get().release(type, callId, entity, caller);
}

bool CKalTessel::isTesselEntityExisted(KalTesselEntityType type, std::uint32_t callId) {
  const RegistryGuard guard(m_mutex);
  const Entry* const entry = find({type, callId});
  return entry != nullptr && !IsEnding(type, entry->second);
}

// Out of line: making an object is the rare case.
[[gnu::noinline]] void* CKalTessel::registerEntity(KalTesselEntityType type, std::uint32_t callId,
                                                   const void* caller) {
  std::unique_ptr<IKalMediaInfo> object = MakeEntity(type, callId);
  if (object == nullptr) return nullptr;
  void*& entity = m_entities[{type, callId}];
  if (entity != nullptr) EntityParts::Of(type, entity).registration.LeaveToAnother();  // It is ending.
  entity = EntityOf(type, object.release());
  const EntityParts parts = EntityParts::Of(type, entity);
  parts.registration.Enter(*this, type, callId);
  parts.references.AddReference();
  if (JournalIsOn()) WriteStatistics(JournalKind::kStatisticsMade, type, callId, 1, caller);
  return entity;
}

}  // namespace kalStore

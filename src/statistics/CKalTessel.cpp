#include "tessel/CKalTessel.h"

#include <memory>

#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"
#include "trace/TraceLine.h"

namespace kalStore {

using namespace internal;

namespace {

// Holds the lock if it can be had. A failed lock keeps nobody from the statistics.
class Guard {
 public:
  explicit Guard(CCmMutexThreadBase& mutex) : m_mutex(mutex), m_isLocked(mutex.Lock() == 0) {}
  ~Guard() {
    if (m_isLocked) m_mutex.UnLock();
  }
  Guard(const Guard&) = delete;
  Guard& operator=(const Guard&) = delete;

 private:
  CCmMutexThreadBase& m_mutex;
  const bool m_isLocked;
};

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

bool IsVideo(KalTesselEntityType type) {
  return type == KAL_TESSEL_VIDEO || type == KAL_TESSEL_CONTENT_VIDEO;
}

// The pointer that stands for an object outside: its media's own interface.
void* EntityOf(KalTesselEntityType type, IKalMediaInfo* object) {
  if (IsVideo(type)) return static_cast<IKalVideoInfo*>(object);
  return static_cast<IKalAudioInfo*>(object);
}

// The counter behind the object's AddRef() and Release(), which only forward to it.
kal::CKalUnknownImpl& ReferencesOf(KalTesselEntityType type, void* entity) {
  if (IsVideo(type)) return *static_cast<KalVideoStatisticInfo*>(static_cast<IKalVideoInfo*>(entity));
  return *static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity));
}

// The lines are composed out of line, from copies: the frequent paths keep their operands in registers.

[[gnu::noinline]] void TraceCreated(const CKalTessel* self, KalTesselEntityType type, std::uint32_t callId,
                                    void* entity) {
  TraceLine line(2);
  line.Text() << "CKalTessel::createOrGetTesselEntity" << (entity == nullptr ? " failed, type=" : ", type=")
              << static_cast<int>(type) << ", callId=" << callId;
  if (entity != nullptr) {
    line.Text() << ", pMediaStatInfo=" << entity
                << ", refCnt=" << ReferencesOf(type, entity).ReferenceCount();
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

}  // namespace

// Made before the other static objects of the library and destroyed after them: what the stores hold at exit
// may still give statistics objects back.
__attribute__((init_priority(101))) CKalTessel kalTesselInstant;

CKalTessel::CKalTessel() = default;

CKalTessel::~CKalTessel() = default;

inline CKalTessel::Entities::iterator CKalTessel::find(const Key& key) {
  if (m_found == m_entities.end() || m_found->first != key) m_found = m_entities.find(key);
  return m_found;
}

void* CKalTessel::createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId) {
  const Guard guard(m_mutex);
  const auto place = find({type, callId});
  void* const entity = place != m_entities.end() ? place->second : registerEntity(type, callId);
  if (entity != nullptr) ReferencesOf(type, entity).AddReference();
  if (IsTraced(2)) [[unlikely]]
    TraceCreated(this, type, callId, entity);
  return entity;
}

int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out) {
  if (out == nullptr) return kResultNotFound;
  *out = nullptr;
  *out = kalTesselInstant.createOrGetTesselEntity(type, callId);
  return *out == nullptr ? kResultNotFound : kResultOk;
}

int CKalTessel::releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  const Guard guard(m_mutex);
  if (entity == nullptr) return -1;
  const auto place = find({type, callId});
  if (place == m_entities.end()) {
    if (IsTraced(2)) [[unlikely]]
      TraceUnknown(this, type, callId, entity);
    return -1;
  }
  void* const registered = place->second;
  const std::uint32_t count = ReferencesOf(type, registered).ReleaseReference();
  if (count == 0) m_found = m_entities.erase(place);
  if (IsTraced(2)) [[unlikely]]
    TraceReleased(this, type, callId, entity, registered, count);
  return static_cast<int>(count);
}

bool CKalTessel::isTesselEntityExisted(KalTesselEntityType type, std::uint32_t callId) {
  const Guard guard(m_mutex);
  return find({type, callId}) != m_entities.end();
}

// Out of line: making an object is the rare case.
[[gnu::noinline]] void* CKalTessel::registerEntity(KalTesselEntityType type, std::uint32_t callId) {
  std::unique_ptr<IKalMediaInfo> object = MakeEntity(type, callId);
  if (object == nullptr) return nullptr;
  void*& entity = m_entities[{type, callId}];
  return entity = EntityOf(type, object.release());
}

}  // namespace kalStore

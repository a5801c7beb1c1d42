#include "tessel/CKalTessel.h"

#include <memory>

#include "TraceLine.h"
#include "tessel/KalContentAudioStatisticInfo.h"
#include "tessel/KalContentVideoStatisticInfo.h"

namespace kalStore {

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

kal::IKalUnknown& ReferencesOf(KalTesselEntityType type, void* entity) {
  if (IsVideo(type)) return *static_cast<KalVideoStatisticInfo*>(static_cast<IKalVideoInfo*>(entity));
  return *static_cast<KalAudioStatisticInfo*>(static_cast<IKalAudioInfo*>(entity));
}

}  // namespace

// Made before the other static objects of the library and destroyed after them: what the stores hold at exit
// may still give statistics objects back.
__attribute__((init_priority(101))) CKalTessel kalTesselInstant;

CKalTessel::CKalTessel() = default;

CKalTessel::~CKalTessel() = default;

void* CKalTessel::createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId) {
  const Guard guard(m_mutex);
  const std::pair key(type, callId);
  auto place = m_entities.lower_bound(key);
  if (place == m_entities.end() || place->first != key) {
    std::unique_ptr<IKalMediaInfo> object = MakeEntity(type, callId);
    if (object == nullptr) {
      TESSEL_TRACE_TEXT(2, "CKalTessel::createOrGetTesselEntity failed, type="
                               << static_cast<int>(type) << ", callId=" << callId << This{this});
      return nullptr;
    }
    place = m_entities.emplace_hint(place, key, nullptr);
    place->second = EntityOf(type, object.release());
  }
  void* const entity = place->second;
  kal::IKalUnknown& references = ReferencesOf(type, entity);
  references.AddRef();
  TESSEL_TRACE_TEXT(2, "CKalTessel::createOrGetTesselEntity, type="
                           << static_cast<int>(type) << ", callId=" << callId << ", pMediaStatInfo=" << entity
                           << ", refCnt=" << references.GetReference() << This{this});
  return entity;
}

int CKalTessel::releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity) {
  const Guard guard(m_mutex);
  if (entity == nullptr) return -1;
  const auto place = m_entities.find({type, callId});
  if (place == m_entities.end()) {
    TESSEL_TRACE_TEXT(2, "CKalTessel::releaseTesselEntity, type="
                             << static_cast<int>(type) << ", callId=" << callId << ", inPMediaStatInfo="
                             << entity << ", refCnt=" << static_cast<unsigned int>(-1) << This{this});
    return -1;
  }
  void* const registered = place->second;
  const std::uint32_t count = ReferencesOf(type, registered).Release();
  if (count == 0) m_entities.erase(place);
  TESSEL_TRACE_TEXT(2, "CKalTessel::releaseTesselEntity, type="
                           << static_cast<int>(type) << ", callId=" << callId << ", in_PMediaStatInfo="
                           << entity << "out_PMediaStatInfo=" << reinterpret_cast<unsigned long>(registered)
                           << ", refCnt=" << count << This{this});
  return static_cast<int>(count);
}

bool CKalTessel::isTesselEntityExisted(KalTesselEntityType type, std::uint32_t callId) {
  const Guard guard(m_mutex);
  return m_entities.contains({type, callId});
}

}  // namespace kalStore

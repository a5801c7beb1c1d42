#pragma once

#include <cstdint>
#include <map>
#include <utility>

#include "tessel/ResultCode.h"
#include "tessel/export.h"
#include "util/CCmMutexThread.h"

namespace kalStore {

/// What the statistics object of a call measures.
enum KalTesselEntityType : std::int32_t {
  KAL_TESSEL_AUDIO = 0,          ///< a KalAudioStatisticInfo
  KAL_TESSEL_VIDEO = 1,          ///< a KalVideoStatisticInfo
  KAL_TESSEL_CONTENT_VIDEO = 2,  ///< a KalContentVideoStatisticInfo
  KAL_TESSEL_CONTENT_AUDIO = 3,  ///< a KalContentAudioStatisticInfo
};

/// Shares the statistics objects: whoever asks for the same type and call id holds the same object, which is
/// made for the first and destroyed with the last reference. The registry keeps no reference of its own.
///
/// An object is handed out as its media interface: IKalAudioInfo* for types 0 and 3, IKalVideoInfo* for types
/// 1 and 2. Objects still registered when the registry ends are not released. Threads: any operation, from
/// any thread; one lock for all.
class TESSEL_API CKalTessel {
 public:
  CKalTessel();
  ~CKalTessel();
  CKalTessel(const CKalTessel&) = delete;
  CKalTessel& operator=(const CKalTessel&) = delete;

  /// The object of the key, with one reference more for the caller; null for an unknown type. Throws what
  /// making the object throws, and then registers nothing.
  void* createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId);

  /// Gives one reference to the object of the key back, and forgets the key with the last. `entity` must not
  /// be null; which object it is does not matter. Returns the references left; -1 when `entity` is null or
  /// the key is not registered.
  int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

  /// Whether the key is registered.
  bool isTesselEntityExisted(KalTesselEntityType type, std::uint32_t callId);

 private:
  using Key = std::pair<KalTesselEntityType, std::uint32_t>;
  using Entities = std::map<Key, void*>;

  Entities::iterator find(const Key& key);
  void* registerEntity(KalTesselEntityType type, std::uint32_t callId);

  // Protected by m_mutex. What was found last is kept, for a call's components come one after the other.
  Entities m_entities;
  Entities::iterator m_found = m_entities.end();
  CCmMutexThreadRecursive m_mutex;
};

/// The process's registry.
extern TESSEL_API CKalTessel kalTesselInstant;

extern "C" {

/// Stores in `*out` what createOrGetTesselEntity() of the process's registry gives: 0. 0x46004001 when `out`
/// is null, and for an unknown type with `*out` null. Pair each success with one releaseTesselEntity().
TESSEL_API int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out);

/// releaseTesselEntity() of the process's registry.
TESSEL_API int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

}  // extern "C"

}  // namespace kalStore

using kalStore::createTesselEntity;
using kalStore::releaseTesselEntity;

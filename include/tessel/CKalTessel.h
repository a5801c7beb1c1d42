#pragma once

/// @file
/// The statistics objects of a process, one per call and kind of media, shared by reference.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// void* entity = nullptr;
/// assert(createTesselEntity(KAL_TESSEL_VIDEO, 7, &entity) == kResultOk);
/// static_cast<IKalVideoInfo*>(entity)->UpdateVideoCapturedFrameCnt(250);
/// assert(releaseTesselEntity(KAL_TESSEL_VIDEO, 7, entity) == 0);
/// @endcode

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
/// 1 and 2. Objects still registered when the registry ends are not released.
///
/// @threads Any operation, from any thread; one lock for all.
/// @par Example
/// @code{.cpp}
/// CKalTessel registry;
/// void* const mine = registry.createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7);
/// assert(registry.createOrGetTesselEntity(KAL_TESSEL_AUDIO, 7) == mine);
/// static_cast<IKalAudioInfo*>(mine)->updateTxBitRate(32000);
/// assert(registry.releaseTesselEntity(KAL_TESSEL_AUDIO, 7, mine) == 1);
/// assert(registry.releaseTesselEntity(KAL_TESSEL_AUDIO, 7, mine) == 0);
/// assert(!registry.isTesselEntityExisted(KAL_TESSEL_AUDIO, 7));
/// @endcode
class TESSEL_API CKalTessel {
 public:
  /// Empty.
  CKalTessel();
  ~CKalTessel();
  CKalTessel(const CKalTessel&) = delete;
  CKalTessel& operator=(const CKalTessel&) = delete;

  /// Gives the object of the key, made for the first who asks. Throws what making the object throws, and then
  /// registers nothing.
  /// @param type  what the object measures
  /// @param callId  any
  /// @return The object, with one reference more for the caller; null for an unknown type.
  void* createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId);

  /// Gives one reference to the object of the key back, and forgets the key with the last.
  /// @param type  the key's
  /// @param callId  the key's
  /// @param entity  not null; which object it is does not matter
  /// @return The references left; -1 when `entity` is null or the key is not registered.
  /// @invalidates With the caller's last reference, the object.
  int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

  /// Asks for a key.
  /// @param type  the key's
  /// @param callId  the key's
  /// @return Whether it is registered.
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

/// createOrGetTesselEntity() of the process's registry. Pair each success with one releaseTesselEntity().
/// @param type  what the object measures
/// @param callId  any
/// @param out  receives the object: an IKalAudioInfo* for types 0 and 3, an IKalVideoInfo* for 1 and 2
/// @return 0; 0x46004001 when `out` is null, and for an unknown type, with `*out` null.
TESSEL_API int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out);

/// releaseTesselEntity() of the process's registry.
/// @param type  the object's
/// @param callId  the id that it was asked for by
/// @param entity  not null; which object it is does not matter
/// @return The references left; -1 when `entity` is null or nothing is registered.
/// @invalidates With the caller's last reference, the object.
TESSEL_API int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

}  // extern "C"

}  // namespace kalStore

using kalStore::createTesselEntity;
using kalStore::releaseTesselEntity;

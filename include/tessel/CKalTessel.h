// SPDX-License-Identifier: Apache-2.0
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
#include "tessel/locking.h"
#include "util/CCmMutexThread.h"

namespace kalStore {

namespace internal {
class Registration;
class ProcessRegistry;
}  // namespace internal

/// What the statistics object of a call measures.
enum KalTesselEntityType : std::int32_t {
  KAL_TESSEL_AUDIO = 0,          ///< a KalAudioStatisticInfo
  KAL_TESSEL_VIDEO = 1,          ///< a KalVideoStatisticInfo
  KAL_TESSEL_CONTENT_VIDEO = 2,  ///< a KalContentVideoStatisticInfo
  KAL_TESSEL_CONTENT_AUDIO = 3,  ///< a KalContentAudioStatisticInfo
};

/// Shares the statistics objects: all who ask for the same type and call id hold the same object. The first
/// request creates it. With the last reference, released here or by the object's own Release(), it is
/// destroyed and its key is no longer registered. The registry has no reference of its own.
///
/// An object is handed out as its media interface: IKalAudioInfo* for audio and content audio, IKalVideoInfo*
/// for video and content video. Objects still registered when the registry ends stay with their holders, who
/// may release them later.
///
/// @threads Any operation, from any thread. One lock serves all, also the end of an object. Trace lines are
/// written under it: a trace sink may call any operation, but must not wait for another thread that does.
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

  /// Finds the object of the key, or creates it. Throws std::bad_alloc, and then registers nothing.
  /// @param callId  any
  /// @return The object, with one reference more for the caller; null for an unknown type.
  void* createOrGetTesselEntity(KalTesselEntityType type, std::uint32_t callId);

  /// Releases one reference to the object of the key.
  /// @param entity  not null; otherwise ignored: the key names the object
  /// @return The references left; at 0 the key is no longer registered. -1 when `entity` is null or the key
  /// is not registered.
  /// @invalidates With the caller's last reference, the object.
  int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

  /// @return Whether the key is registered.
  bool isTesselEntityExisted(KalTesselEntityType type, std::uint32_t callId);

 private:
  friend class internal::Registration;
  friend class internal::ProcessRegistry;
  using Key = std::pair<KalTesselEntityType, std::uint32_t>;
  using Entry = std::pair<const Key, void*>;

  Entry* find(const Key& key) TESSEL_LOCKING(requires_capability(m_mutex));
  [[gnu::visibility("hidden")]] void* createOrGet(KalTesselEntityType type, std::uint32_t callId,
                                                  const void* caller);
  [[gnu::visibility("hidden")]] int release(KalTesselEntityType type, std::uint32_t callId, void* entity,
                                            const void* caller);
  void* registerEntity(KalTesselEntityType type, std::uint32_t callId, const void* caller)
      TESSEL_LOCKING(requires_capability(m_mutex));
  void forgetAll();

  std::map<Key, void*> m_entities TESSEL_LOCKING(guarded_by(m_mutex));
  detail::Mutex<CCmMutexThreadRecursive> m_mutex;
};

/// The process's registry. Static objects may use it in their constructors and destructors. It is emptied
/// when the process exits.
extern TESSEL_API CKalTessel kalTesselInstant;

extern "C" {

/// createOrGetTesselEntity() of the process's registry. Pair each success with one releaseTesselEntity(), or
/// with one Release() of the object.
/// @param callId  any
/// @param out  receives the object: an IKalAudioInfo* for audio and content audio, an IKalVideoInfo* for
/// video and content video
/// @return kResultOk; kResultNotFound when `out` is null, and for an unknown type, with `*out` null.
TESSEL_API int createTesselEntity(KalTesselEntityType type, std::uint32_t callId, void** out);

/// releaseTesselEntity() of the process's registry.
/// @param callId  the id that the object was created with, also after a reset() to another id
/// @param entity  not null; otherwise ignored: type and call id name the object
/// @return The references left; -1 when `entity` is null or the key is not registered.
/// @invalidates With the caller's last reference, the object.
TESSEL_API int releaseTesselEntity(KalTesselEntityType type, std::uint32_t callId, void* entity);

}  // extern "C"

}  // namespace kalStore

using kalStore::createTesselEntity;
using kalStore::releaseTesselEntity;

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>
#include <utility>

#include "tessel/CKalTessel.h"
#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalVideoInfo.h"

namespace kalStore {

/// What a StatsRef refers to: a call's audio.
struct AudioStats {
  using Interface = IKalAudioInfo;                                ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_AUDIO;  ///< its type
};
/// What a StatsRef refers to: a call's video.
struct VideoStats {
  using Interface = IKalVideoInfo;                                ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_VIDEO;  ///< its type
};
/// What a StatsRef refers to: the audio of a call's shared content.
struct ContentAudioStats {
  using Interface = IKalAudioInfo;                                        ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_AUDIO;  ///< its type
};
/// What a StatsRef refers to: the video of a call's shared content.
struct ContentVideoStats {
  using Interface = IKalVideoInfo;                                        ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_VIDEO;  ///< its type
};

/// The statistics object of a call, held for a scope: made, or shared with whoever holds it, and released
/// at the end; the last holder ends it.
///
/// @threads The handle has one owner, who may be any thread; the object is for all.
/// @par Example
/// @code{.cpp}
/// const StatsRef<VideoStats> measuring(7);
/// const StatsRef<VideoStats> reporting(7);
/// measuring->UpdateVideoCapturedFrameCnt(250);
/// st_KalVideoTxBlock block;
/// reporting->GetTxMediaInfo(&block, false);
/// assert(block.capturedFrames == 250);
/// @endcode
template <class Media>
class [[nodiscard]] StatsRef {
 public:
  /// What the object offers: IKalAudioInfo or IKalVideoInfo.
  using Interface = typename Media::Interface;

  /// Makes or shares the object. A failed allocation leaves the constructor as std::bad_alloc.
  /// @param callId  any
  [[nodiscard]] explicit StatsRef(std::uint32_t callId) : m_callId(callId) {
    void* entity = nullptr;
    createTesselEntity(Media::kType, callId, &entity);
    m_info = static_cast<Interface*>(entity);
  }

  /// The source then holds nothing, and may only be assigned to or destroyed.
  StatsRef(StatsRef&& other) noexcept
      : m_callId(other.m_callId), m_info(std::exchange(other.m_info, nullptr)) {}
  /// Releases what this handle held; the source then holds nothing.
  StatsRef& operator=(StatsRef&& other) noexcept {
    if (this == &other) return *this;
    const StatsRef old(std::move(*this));
    m_callId = other.m_callId;
    m_info = std::exchange(other.m_info, nullptr);
    return *this;
  }

  /// Releases the object.
  /// @invalidates Pointers to the object, unless somebody else holds it.
  ~StatsRef() {
    if (m_info != nullptr) releaseTesselEntity(Media::kType, m_callId, m_info);
  }

  ///@{
  /// @return The object.
  Interface& operator*() const { return *m_info; }
  Interface* operator->() const { return m_info; }
  ///@}
  /// @return The id that the object was asked for by.
  std::uint32_t CallId() const { return m_callId; }

 private:
  std::uint32_t m_callId;
  Interface* m_info = nullptr;
};

}  // namespace kalStore

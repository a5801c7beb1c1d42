#pragma once

#include <cstdint>
#include <utility>

#include "tessel/CKalTessel.h"
#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalVideoInfo.h"

namespace kalStore {

/// For StatsRef: a call's audio.
struct Audio {
  using Interface = IKalAudioInfo;                                ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_AUDIO;  ///< its type
};
/// For StatsRef: a call's video.
struct Video {
  using Interface = IKalVideoInfo;                                ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_VIDEO;  ///< its type
};
/// For StatsRef: the audio of a call's shared content.
struct ContentAudio {
  using Interface = IKalAudioInfo;                                        ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_AUDIO;  ///< its type
};
/// For StatsRef: the video of a call's shared content.
struct ContentVideo {
  using Interface = IKalVideoInfo;                                        ///< what the object offers
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_VIDEO;  ///< its type
};

/// Holds the statistics object of a call for a scope: creates it or shares the present one, and gives the
/// reference back at the end. The object is destroyed with the last reference.
///
/// @threads One thread at a time uses the handle; any thread uses the object.
/// @par Example
/// @code{.cpp}
/// const StatsRef<Video> measuring(7);
/// const StatsRef<Video> reporting(7);
/// measuring->UpdateVideoCapturedFrameCnt(250);
/// st_KalVideoTxBlock block;
/// reporting->GetTxMediaInfo(&block, false);
/// assert(block.capturedFrames == 250);
/// @endcode
template <class Media>
class StatsRef {
 public:
  /// What the object offers: IKalAudioInfo or IKalVideoInfo.
  using Interface = typename Media::Interface;

  /// Creates or shares the object. Throws std::bad_alloc.
  /// @param callId  any
  explicit StatsRef(std::uint32_t callId) : m_callId(callId) {
    void* entity = nullptr;
    createTesselEntity(Media::kType, callId, &entity);
    m_info = static_cast<Interface*>(entity);
  }

  /// The source then holds nothing, and may only be assigned to or destroyed.
  StatsRef(StatsRef&& other) noexcept
      : m_callId(other.m_callId), m_info(std::exchange(other.m_info, nullptr)) {}
  /// Gives back what this handle holds first.
  StatsRef& operator=(StatsRef&& other) noexcept {
    if (this != &other) {
      release();
      m_callId = other.m_callId;
      m_info = std::exchange(other.m_info, nullptr);
    }
    return *this;
  }

  /// Gives the reference back.
  /// @invalidates Pointers to the object, unless another handle holds it.
  ~StatsRef() { release(); }

  ///@{
  /// @return The object.
  Interface& operator*() const { return *m_info; }
  Interface* operator->() const { return m_info; }
  ///@}
  /// @return The call id that the object was created with.
  std::uint32_t CallId() const { return m_callId; }

 private:
  void release() {
    if (m_info != nullptr) releaseTesselEntity(Media::kType, m_callId, m_info);
  }

  std::uint32_t m_callId;
  Interface* m_info = nullptr;
};

}  // namespace kalStore

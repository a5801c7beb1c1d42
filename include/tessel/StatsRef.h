#pragma once

#include <cstdint>
#include <utility>

#include "tessel/CKalTessel.h"
#include "tessel/IKalAudioInfo.h"
#include "tessel/IKalVideoInfo.h"

namespace kalStore {

// What a StatsRef refers to.

struct Audio {
  using Interface = IKalAudioInfo;
  static constexpr KalTesselEntityType kType = KAL_TESSEL_AUDIO;
};
struct Video {
  using Interface = IKalVideoInfo;
  static constexpr KalTesselEntityType kType = KAL_TESSEL_VIDEO;
};
struct ContentAudio {
  using Interface = IKalAudioInfo;
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_AUDIO;
};
struct ContentVideo {
  using Interface = IKalVideoInfo;
  static constexpr KalTesselEntityType kType = KAL_TESSEL_CONTENT_VIDEO;
};

/// The statistics object of a call, held for a scope: made, or shared with whoever holds it, and given back
/// at the end; it goes with its last holder.
///
/// Threads: the handle has one owner, who may be any thread; the object is for all.
///
/// @code
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
  using Interface = typename Media::Interface;

  /// Throws what making the object throws.
  explicit StatsRef(std::uint32_t callId) : m_callId(callId) {
    void* entity = nullptr;
    createTesselEntity(Media::kType, callId, &entity);
    m_info = static_cast<Interface*>(entity);
  }

  /// The source then holds nothing, and may only be assigned to or destroyed.
  StatsRef(StatsRef&& other) noexcept
      : m_callId(other.m_callId), m_info(std::exchange(other.m_info, nullptr)) {}
  StatsRef& operator=(StatsRef&& other) noexcept {
    if (this != &other) {
      release();
      m_callId = other.m_callId;
      m_info = std::exchange(other.m_info, nullptr);
    }
    return *this;
  }

  ~StatsRef() { release(); }

  Interface& operator*() const { return *m_info; }
  Interface* operator->() const { return m_info; }
  /// The id that the object was asked for by.
  std::uint32_t CallId() const { return m_callId; }

 private:
  void release() {
    if (m_info != nullptr) releaseTesselEntity(Media::kType, m_callId, m_info);
  }

  std::uint32_t m_callId;
  Interface* m_info = nullptr;
};

}  // namespace kalStore

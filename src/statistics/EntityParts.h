// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "tessel/CKalTessel.h"
#include "tessel/KalAudioStatisticInfo.h"
#include "tessel/KalVideoStatisticInfo.h"

namespace kalStore::internal {

inline bool IsVideo(KalTesselEntityType type) {
  return type == KAL_TESSEL_VIDEO || type == KAL_TESSEL_CONTENT_VIDEO;
}

/// The objects behind the pointers that callers receive. REQUIRES: an entity of a video or audio type.
inline KalVideoStatisticInfo& VideoOf(void* entity) {
  return static_cast<KalVideoStatisticInfo&>(*static_cast<IKalVideoInfo*>(entity));
}
inline KalAudioStatisticInfo& AudioOf(void* entity) {
  return static_cast<KalAudioStatisticInfo&>(*static_cast<IKalAudioInfo*>(entity));
}

struct EntityParts {
  kal::CKalUnknownImpl& references;  ///< What AddRef() and Release() of the object forward to.
  Registration& registration;

  static EntityParts Of(KalTesselEntityType type, void* entity) {
    return IsVideo(type) ? of(VideoOf(entity)) : of(AudioOf(entity));
  }

 private:
  template <class Object>
  static EntityParts of(Object& object) {
    return {object, object.m_registration};
  }
};

}  // namespace kalStore::internal

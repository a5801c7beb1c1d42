// SPDX-License-Identifier: Apache-2.0
#include <functional>

#include "inspect/LockedCopy.h"
#include "statistics/EntityParts.h"
#include "statistics/ProcessRegistry.h"
#include "tessel/inspect.h"

namespace kalStore {

using namespace internal;

namespace {

// Calls `read` with the object of the key under the registry's lock, which the object's end waits for. No
// reference is taken, of which others would see the count, and whose release could end the object here.
template <class Read>
std::int32_t ReadEntity(KalTesselEntityType wantedType, std::uint32_t wantedCall, Read read) {
  std::int32_t result = kResultNotFound;
  const auto look = [&](KalTesselEntityType type, std::uint32_t callId, std::uint32_t, void* entity) {
    if (type != wantedType || callId != wantedCall) return;
    read(entity);
    result = kResultOk;
  };
  ProcessRegistry::ForEachEntity(std::ref(look));  // By reference: a function of its own would be allocated.
  return result;
}

}  // namespace

std::vector<InspectedStatistics> InspectStatistics() {
  LockedCopy<InspectedStatistics> copy;
  copy.Make([&] {
    ProcessRegistry::ForEachEntity([&](KalTesselEntityType type, std::uint32_t callId,
                                       std::uint32_t references,
                                       void*) { copy.Put({type, callId, references}); });
  });
  std::vector<InspectedStatistics> objects;
  copy.ForEach([&](const InspectedStatistics& object, auto...) { objects.push_back(object); });
  return objects;
}

// The reads name their class, so that none is virtual: the object may have begun to end.

std::int32_t InspectVideo(KalTesselEntityType type, std::uint32_t callId, st_KalVideoTxBlock& sent) {
  if (!IsVideo(type)) return kResultNotFound;
  return ReadEntity(type, callId, [&](void* entity) {
    VideoOf(entity).KalVideoStatisticInfo::GetTxMediaInfo(&sent, false);
  });
}

std::int32_t InspectAudio(KalTesselEntityType type, std::uint32_t callId, InspectedAudio& audio) {
  if (IsVideo(type)) return kResultNotFound;
  return ReadEntity(type, callId, [&](void* entity) {
    KalAudioStatisticInfo& object = AudioOf(entity);
    object.KalAudioStatisticInfo::GetTxMediaInfo(&audio.sent, false);
    std::int32_t stream = 0;
    for (st_KalAudioBlock& block : audio.received) {
      object.KalAudioStatisticInfo::GetRxAudioInfo(&block, stream++, false);
    }
    stream = 0;
    for (kal::_tagSyncStatistics& record : audio.avSync) {
      object.KalAudioStatisticInfo::GetAVSyncInfo(&record, stream++);
    }
  });
}

}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// What the process has at the moment: the calls and their references, settings and who set them last,
/// subscriptions and bindings, statistics objects and their members. Everything is a copy, which belongs to
/// its caller.
///
/// Looking changes nothing: no trace line is written, no event of the journal, no count changes, no interval
/// of a statistics object ends, and nothing that the library holds is held any longer because of it.
///
/// Each group of a store is copied at one moment, under its lock, into memory that was taken before; what
/// does not fit is measured, and copied again into more. So the lock is held for one walk over the group at a
/// time, and nothing is allocated, called back or ended under it. The registry's lock is held around each
/// walk, so that the store stays: sets in other groups go on, CreateKalConfig() and its siblings wait for one
/// walk. The lists of calls and of statistics objects, and each object's blocks, are copied likewise under
/// the lock of their registry. What is copied later may have changed meanwhile.
///
/// Not there are what a facade that is not bound has recorded, and live values. A failed allocation leaves an
/// operation as std::bad_alloc, with nothing changed and no lock held.
///
/// @threads Any, also inside a callback. Inside a trace sink, too, but do not look at calls in a line of the
/// statistics registry ("CKalTessel::"): it is written under that registry's lock, and what ends with a store
/// takes the two locks in the other order. As everywhere in a sink, do not wait for another thread that
/// looks.
/// @par Example
/// @code{.cpp}
/// CallStore store(7, CallStore::kEndsCall);
/// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
/// const StatsRef<VideoStats> statistics(7);
/// statistics->UpdateVideoCapturedFrameCnt(250);
///
/// assert(InspectCalls().at(0).callId == 7);
/// assert(InspectSettings(7).at(0).name == "MaxFps");
/// assert(InspectSubscriptions(7).empty());
/// const InspectedStatistics found = InspectStatistics().at(0);
/// st_KalVideoTxBlock sent;
/// assert(InspectVideo(found.type, found.callId, sent) == kResultOk && sent.capturedFrames == 250);
/// @endcode

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tessel/CKalTessel.h"
#include "tessel/KalConfigEvent.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/ResultCode.h"
#include "tessel/StatisticsBlocks.h"
#include "tessel/export.h"
#include "tessel/journal.h"
#include "util/ACmThread.h"
#include "util/ConfigData.h"

namespace kalStore {

/// A call that has a store.
struct InspectedCall {
  std::uint32_t callId = 0;      ///< the call's
  std::uint32_t references = 0;  ///< to its store: handed out, and the registry's own until clean-up
  bool isCleanedUp = false;      ///< whether CleanUpKalConfig() was called
};

/// A stored value.
struct InspectedSetting {
  KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT;  ///< where it is
  std::string name;                                 ///< its whole name
  ConfigData value;                                 ///< its whole value
  /// Who set it last, and when: the journal's event of that set. Nothing while the journal is off, when the
  /// set was before its start, when newer events have overwritten that one, when the name is longer than
  /// kJournalLongestValue, and, for a moment, while the set is still to write its event. A set that left the
  /// value as it was is none.
  std::optional<JournalEvent> lastChange;
};

/// A subscription or binding of a store.
struct InspectedSubscription {
  SubscribeId_t id = 0;                             ///< as SubscribeConfig() or BindConfig() returned it
  KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT;  ///< where the value is
  std::string name;                                 ///< which value
  bool isBinding = false;                           ///< whether it is a binding
  /// How changes reach it: kDirect, kPosted or kHandedOver; of a binding kNone.
  JournalWay way = JournalWay::kNone;
  const ACmThread* runThread = nullptr;  ///< for comparison: it may be gone by now; null without one
  unsigned long runThreadId = 0;         ///< its GetThreadId(); 0 without one, or when it does not run
  std::uint32_t deliveries = 0;  ///< in progress: announced to it and not finished; a removal waits for them
  unsigned long deliveringThreadId = 0;  ///< the thread whose delivery was announced first; 0: none
};

/// A statistics object of the process's registry.
struct InspectedStatistics {
  KalTesselEntityType type = KAL_TESSEL_AUDIO;  ///< what it measures
  std::uint32_t callId = 0;                     ///< the id that it was made with
  std::uint32_t references = 0;                 ///< to it, not 0
};

/// The blocks of an audio object.
struct InspectedAudio {
  st_KalAudioBlock sent{};                                          ///< IKalMediaInfo::GetTxMediaInfo()
  std::array<st_KalAudioBlock, kAudioStreamCount> received{};       ///< IKalAudioInfo::GetRxAudioInfo()
  std::array<kal::_tagSyncStatistics, kAudioStreamCount> avSync{};  ///< IKalAudioInfo::GetAVSyncInfo()
};

/// @return The calls that have a store, by their ids, at one moment.
TESSEL_API std::vector<InspectedCall> InspectCalls();

/// Copies the settings of a call. While the journal is on, its events are looked through once for who set
/// them, after the copy.
/// @param callId  any
/// @return Its values, by group and name; none without a store.
/// @par Example
/// @code{.cpp}
/// StartJournal(64);
/// CallStore store(7, CallStore::kEndsCall);
/// {
///   const JournalOrigin origin("bandwidth controller");
///   store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxBitrate", 350000, false, false);
/// }
/// const InspectedSetting setting = InspectSettings(7).at(0);
/// assert(setting.value.ToInt() == 350000);
/// assert(setting.lastChange->label.text == "bandwidth controller");
/// StopJournal();
/// @endcode
TESSEL_API std::vector<InspectedSetting> InspectSettings(std::uint32_t callId);

/// Copies what is known of a call's subscriptions and bindings, not their callbacks: what those captured does
/// not end later because of it. Through a facade they have the same ids.
/// @param callId  any
/// @return They, by group and name, and of one name in the order of registration; none without a store.
/// @par Example
/// @code{.cpp}
/// CallStore store(7, CallStore::kEndsCall);
/// const SubscribeId_t id = store->SubscribeConfig(
///     KAL_CONFIG_GROUP_VIDEO, "MaxFps",
///     [](const KalConfigEvent&) { assert(InspectSubscriptions(7).at(0).deliveries == 1); }, nullptr, false);
/// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
/// const InspectedSubscription found = InspectSubscriptions(7).at(0);
/// assert(found.id == id && found.way == JournalWay::kDirect && found.deliveries == 0);
/// @endcode
TESSEL_API std::vector<InspectedSubscription> InspectSubscriptions(std::uint32_t callId);

/// @return The statistics objects, by type and call id, at one moment.
TESSEL_API std::vector<InspectedStatistics> InspectStatistics();

/// Copies the block of a video object, as a read that does not reset.
/// @param type  video or content video
/// @param callId  the id that the object was made with
/// @param sent  receives IKalMediaInfo::GetTxMediaInfo()
/// @return kResultOk; kResultNotFound, with nothing copied, when there is no such object.
TESSEL_API std::int32_t InspectVideo(KalTesselEntityType type, std::uint32_t callId,
                                     st_KalVideoTxBlock& sent);

/// Copies the blocks of an audio object, as reads that do not reset.
/// @param type  audio or content audio
/// @param callId  the id that the object was made with
/// @param audio  receives the blocks
/// @return kResultOk; kResultNotFound, with nothing copied, when there is no such object.
TESSEL_API std::int32_t InspectAudio(KalTesselEntityType type, std::uint32_t callId, InspectedAudio& audio);

}  // namespace kalStore

// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// The journal: what the process did last to settings, subscriptions, stores and statistics objects, and who
/// asked for it. It is off until StartJournal(), and costs next to nothing then.
///
/// While it is on, each operation writes one event of a fixed size into a ring of the last ones. Strings that
/// are longer than stated here are cut, and marked so. Writers take no lock, allocate nothing and never wait,
/// neither for each other nor for readers. Events have running numbers, which count on for the life of the
/// process: a reader learns from them how many it missed. The numbers have the order in which things
/// happened: the events of a value follow its changes, whatever threads make them.
///
/// Results, trace lines and orders are the same while the journal is on and off.
///
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// assert(StartJournal(1024) == kResultOk);
/// JournalReader reader;
/// {
///   const JournalOrigin origin("bandwidth controller");
///   KalConfigHelper settings(7);
///   settings.SetKalConfig("MaxBitrate", 350000, KAL_CONFIG_GROUP_VIDEO);
/// }
/// JournalEvent event;
/// while (reader.Next(event) && event.kind != JournalKind::kSet) {
/// }
/// assert(event.name.text == "MaxBitrate" && event.newValue->text == "350000" && !event.oldValue);
/// assert(event.result == kResultNobody && event.callId == 7);
/// assert(event.label.text == "bandwidth controller");
/// StopJournal();
/// CleanUpKalConfig(7);
/// @endcode

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "tessel/KalConfigGroup.h"
#include "tessel/ResultCode.h"
#include "tessel/export.h"

namespace kalStore {

/// How many bytes of a name or value an event has at most. A string in UTF-8 is cut before a character.
inline constexpr std::size_t kJournalLongestValue = 64;
/// The same of the label of a JournalOrigin.
inline constexpr std::size_t kJournalLongestLabel = 32;
/// The same of the name of a document, and of what a callback threw.
inline constexpr std::size_t kJournalLongestDetail = 56;

/// The largest capacity of a journal, in events of 384 bytes.
inline constexpr std::size_t kJournalLargestCapacity = std::size_t{1} << 20;

/// What happened.
enum class JournalKind : std::uint8_t {
  kSet,             ///< a set, also one that was refused; before its deliveries; `thrown`: it notified nobody
  kTransientSet,    ///< the same, of a value that is announced and not stored
  kRemoved,         ///< a removal; `count`: the values removed, 0 or 1
  kGroupRemoved,    ///< the removal of a group; `count`: the values removed
  kApplied,         ///< an import, written at its end, also when a callback threw; `count`: the sets it made
  kSubscribed,      ///< a subscription; written before its initial delivery
  kBound,           ///< a binding
  kEnded,           ///< a subscription or binding was removed, which then waits, or ended with its store
  kDelivered,       ///< a change was delivered to a subscription; written when the callback has returned
  kAsked,           ///< a binding was asked for a value; written when it has answered
  kStoreMade,       ///< CreateKalConfig() made a store; `count`: its references
  kStoreShared,     ///< CreateKalConfig() shared a store; `count`: its references
  kStoreCleanedUp,  ///< CleanUpKalConfig(); `count`: the references left
  kStoreEnded,      ///< the last reference was released, or DestroyKalConfig() called
  kStatisticsMade,  ///< a statistics object was made; `count`: its references
  kStatisticsReleased,  ///< releaseTesselEntity(); `count`: the references left
  kStatisticsEnded,     ///< a statistics object ended
};

/// How a change reached a callback.
enum class JournalWay : std::uint8_t {
  kNone,        ///< the event is no delivery
  kDirect,      ///< called on the setter's thread; with a ConfigExecutor, passed to it there
  kPosted,      ///< queued on the run thread
  kHandedOver,  ///< run on the run thread while the setter waited
  kDropped,     ///< not at all: the run thread has no queue, or stops
};

/// A string of an event.
struct JournalString {
  std::string text;    ///< the string, or its beginning
  bool isCut = false;  ///< whether the string was longer
};

/// One event. What a kind has no use for has the value given here.
struct JournalEvent {
  std::uint64_t number = 0;              ///< the running number, from 1
  std::uint64_t missed = 0;              ///< how many events right before it the reader missed
  JournalKind kind = JournalKind::kSet;  ///< what happened
  std::int64_t timeNs = 0;     ///< when it began, on std::chrono::steady_clock; off by some microseconds
  unsigned long threadId = 0;  ///< as GetThreadSelfId() gives it
  std::uint32_t callId = 0;    ///< whose store or statistics object
  KalConfigGroup group = KAL_CONFIG_GROUP_DEFAULT;  ///< where the value is
  std::int32_t entityType = -1;                     ///< of a statistics object, a KalTesselEntityType
  JournalString name;                     ///< of the value; of a delivery, empty once its set is overwritten
  std::optional<JournalString> oldValue;  ///< before the change; nothing when there was none, or like `name`
  std::optional<JournalString> newValue;  ///< after the change, or the answer of a binding; or like `name`
  std::int32_t result = kResultOk;        ///< what the operation returns
  std::uint32_t count = 0;                ///< of a set, the subscribers that it notifies; see JournalKind
  std::uint64_t id = 0;                   ///< of the subscription or binding
  std::uint64_t cause = 0;                ///< of a delivery, the number of the set; 0: initial delivery
  JournalWay way = JournalWay::kNone;     ///< of a delivery
  std::int64_t waitedNs = 0;              ///< from the set to the callback
  std::int64_t ranNs = 0;                 ///< how long the callback or import ran
  std::optional<JournalString> thrown;    ///< what() of what a callback threw; of its import, too; see kSet
  const void* caller = nullptr;           ///< the code that called, see FindCodePlace()
  JournalString label;                    ///< of the thread's innermost JournalOrigin
  JournalString document;                 ///< see JournalDocument; empty when a callback threw
  std::uint32_t line = 0;                 ///< of the entry in the document, from 1
  std::uint32_t column = 0;               ///< in bytes, from 1
};

/// Turns the journal on. The ring is made now, and its memory belongs to the process from then on: one of
/// each capacity that was ever used.
/// @param capacity  how many events the ring has, 1 to kJournalLargestCapacity; rounded up to a power of two
/// @return kResultOk; kResultUnchanged when it is on already, whatever the capacity; kResultBadArgument for
/// any other capacity. A failed allocation leaves as std::bad_alloc, with nothing changed.
TESSEL_API std::int32_t StartJournal(std::size_t capacity);

/// Turns the journal off; the events can still be read. What has begun by then, and deliveries that wait in a
/// queue, may still write theirs.
/// @return kResultOk; kResultUnchanged when it is off.
TESSEL_API std::int32_t StopJournal();

/// Turns the journal on as StartJournal() does, for somebody who ends it with StopOwnJournal(): others may
/// stop and start it meanwhile.
/// @param capacity  see StartJournal()
/// @param start  receives the number of this start, from 1, when the result is kResultOk
/// @return See StartJournal().
TESSEL_API std::int32_t StartOwnJournal(std::size_t capacity, std::uint64_t& start);

/// Turns the journal off if it is on by a certain start, in one step: whatever other threads do, no other
/// start is undone.
/// @param start  as StartOwnJournal() gave it; 0: none
/// @return kResultOk; kResultUnchanged when the journal is off, or on by another start.
TESSEL_API std::int32_t StopOwnJournal(std::uint64_t start);

/// @return Whether the journal is on.
TESSEL_API bool IsJournalOn();

/// @return How often the journal was turned on: the number of the last start. Another number than before:
/// events may be missing that nobody can count.
TESSEL_API std::uint64_t JournalStarts();

/// @return How many events the ring of the last start has; 0 when there was none.
TESSEL_API std::size_t JournalCapacity();

/// @return The number that the next event will have; 1 when there was none.
TESSEL_API std::uint64_t NextJournalNumber();

/// Reads the events in the order of their numbers, while writers go on. Any number of readers may do so; none
/// takes an event from another, and writers do not wait for them: what is overwritten before it was read is
/// missed, and counted. An event that its writer has not finished is waited for, by returning false, until
/// half of the ring is newer; it is missed then. So is an event that found a ring so small that another
/// thread was still writing in its place.
/// @threads One owner.
/// @lifetime May outlive the journal's end, and goes on with its next start. Events of a capacity that is no
/// longer in use are missed.
/// @par Example
/// @code{.cpp}
/// StartJournal(64);
/// JournalReader reader(NextJournalNumber());
/// CallStore store(7, CallStore::kEndsCall);
/// for (int fps = 1; fps <= 100; ++fps)
///   store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", fps, false, false);
/// JournalEvent event;
/// assert(reader.Next(event) && event.missed == 37 && event.newValue->text == "37");  // of 101
/// StopJournal();
/// @endcode
class TESSEL_API JournalReader {
 public:
  /// Begins with the oldest event since the last start.
  JournalReader();
  /// Begins with the event of a number.
  /// @param number  may be one that is missed already
  explicit JournalReader(std::uint64_t number);

  /// Reads the next event.
  /// @param event  receives it, whole
  /// @return False when there is none yet, with `event` unchanged.
  bool Next(JournalEvent& event);
  /// @return How many events were missed since the last one that Next() gave.
  std::uint64_t Missed() const { return m_missed; }

 private:
  std::uint64_t m_next;
  std::uint64_t m_missed = 0;
};

/// Names what the thread does, for the events that it writes: the innermost label counts. Costs a few
/// instructions, also while the journal is off.
/// @threads Ends on the thread on which it began, in the reverse order.
/// @par Example
/// @code{.cpp}
/// StartJournal(64);
/// JournalReader reader;
/// CallStore store(7, CallStore::kEndsCall);
/// const JournalOrigin outer("session");
/// {
///   const JournalOrigin inner("bandwidth controller");
///   store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 15, false, false);
/// }
/// store->SetKalConfig(KAL_CONFIG_GROUP_VIDEO, "MaxFps", 30, false, false);
/// JournalEvent event;
/// assert(reader.Next(event) && event.kind == JournalKind::kStoreMade && event.label.text.empty());
/// assert(reader.Next(event) && event.label.text == "bandwidth controller");
/// assert(reader.Next(event) && event.label.text == "session");
/// StopJournal();
/// @endcode
class TESSEL_API JournalOrigin {
 public:
  /// Begins the scope.
  /// @param label  not null; must outlive the scope
  [[nodiscard]] explicit JournalOrigin(const char* label);
  JournalOrigin(const JournalOrigin&) = delete;
  JournalOrigin& operator=(const JournalOrigin&) = delete;
  /// Ends the scope.
  ~JournalOrigin();

 private:
  const char* const m_outer;
};

/// Names the settings document that the thread imports: the events of ApplyKalConfigs() in the scope, and of
/// the sets that it makes, have this name.
/// @threads Ends on the thread on which it began, in the reverse order.
/// @par Example
/// @code{.cpp}
/// StartJournal(64);
/// JournalReader reader(NextJournalNumber() + 1);
/// CallStore store(7, CallStore::kEndsCall);
/// const JournalDocument document("lab.json");
/// store->ApplyKalConfigs("{\n \"Video\":[{\"key\":\"MaxFps\",\"value\":\"15\"}]}");
/// JournalEvent event;
/// assert(reader.Next(event) && event.kind == JournalKind::kSet && event.document.text == "lab.json");
/// assert(event.line == 2 && event.column == 18);
/// StopJournal();
/// @endcode
class TESSEL_API JournalDocument {
 public:
  /// Begins the scope.
  /// @param name  not null; must outlive the scope
  [[nodiscard]] explicit JournalDocument(const char* name);
  JournalDocument(const JournalDocument&) = delete;
  JournalDocument& operator=(const JournalDocument&) = delete;
  /// Ends the scope.
  ~JournalDocument();

 private:
  const char* const m_outer;
};

/// Where code is.
struct CodePlace {
  std::string module;  ///< the path of the shared object or program; empty when the address is in none
  std::string symbol;  ///< the function, as its source names it; empty when the module does not export it
  std::uintptr_t offset = 0;  ///< of the address: in the function, or without one in the module
};

/// Names the code of an event's caller: the module, and the exported function in it. The module must still be
/// loaded.
/// @param address  a return address, as JournalEvent::caller; any
/// @return What is known of it.
/// @par Example
/// @code{.cpp}
/// assert(FindCodePlace(nullptr).module.empty());
/// const void* const address = reinterpret_cast<const void*>(&StopJournal);
/// assert(!FindCodePlace(static_cast<const char*>(address) + 1).module.empty());
/// @endcode
TESSEL_API CodePlace FindCodePlace(const void* address);

}  // namespace kalStore

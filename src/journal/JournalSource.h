// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "journal/Journal.h"
#include "trace/CallContext.h"

// Who calls an operation. What its return address says is right where a component calls it. Where another
// operation of the library calls it, that one has a CallerScope: the caller of the outermost one counts. A
// ComponentScope hides it from the component's code that runs meanwhile. In an import that began while the
// journal was off nobody is known.

namespace kalStore::internal {

/// Who calls: as the scopes around say, or else `caller`, the return address of the operation that asks.
inline JournalSource SourceOf(const void* caller) {
  const bool isImported = t_call.place != nullptr;
  return {t_call.caller != nullptr || isImported ? t_call.caller : caller, t_journal.label, t_call.place};
}

/// Passes a caller to the operations of this thread until its end, also when the journal is off: it may be
/// started meanwhile. REQUIRES: a ComponentScope around all code of components in it, whether the journal is
/// on or off.
class CallerScope {
 public:
  explicit CallerScope(const void* caller) : m_outer(t_call.caller) {
    if (m_outer == nullptr) t_call.caller = caller;
  }
  ~CallerScope() { t_call.caller = m_outer; }
  CallerScope(const CallerScope&) = delete;
  CallerScope& operator=(const CallerScope&) = delete;

 private:
  const void* const m_outer;
};

/// Calls an operation of the library for a caller. Nothing is passed while the journal is off: callbacks of a
/// set have no ComponentScope then.
template <class Operation>
auto CallFor(const void* caller, Operation operation) {
  if (JournalIsOn()) [[unlikely]] {
    const CallerScope scope(caller);
    return operation();
  }
  return operation();
}

/// The same for the caller of the function that this becomes a part of, whose return address is not read
/// while the journal is off.
template <class Operation>
[[gnu::always_inline]] inline auto CallForCaller(Operation operation) {
  if (JournalIsOn()) [[unlikely]]
    return CallFor(__builtin_return_address(0), operation);
  return operation();
}

/// The same of where in a document the values are that the operations set.
class PlaceScope {
 public:
  PlaceScope() : m_outer(std::exchange(t_call.place, &m_place)) {}
  ~PlaceScope() { t_call.place = m_outer; }
  PlaceScope(const PlaceScope&) = delete;
  PlaceScope& operator=(const PlaceScope&) = delete;

  void MoveTo(const JournalPlace& place) { m_place = place; }

 private:
  JournalPlace m_place;
  const JournalPlace* const m_outer;
};

}  // namespace kalStore::internal

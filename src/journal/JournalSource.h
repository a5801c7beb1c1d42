// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

#include "journal/Journal.h"

// Who calls an operation. What its return address says is right where a component calls it. Where another
// operation of the library calls it, that one has a CallerScope: the caller of the outermost one counts. A
// ComponentScope hides it from the component's code that runs meanwhile.

namespace kalStore::internal {

/// Who calls: as the scopes around say, or else `caller`, the return address of the operation that asks.
inline JournalSource SourceOf(const void* caller) {
  const JournalThread& thread = t_journal;
  return {thread.caller != nullptr ? thread.caller : caller, thread.label, thread.place};
}

/// Passes a caller to the operations of this thread until its end. Does nothing when the journal is off at
/// its beginning.
class CallerScope {
 public:
  explicit CallerScope(const void* caller) : m_isOn(JournalIsOn()) {
    if (m_isOn) [[unlikely]]
      begin(caller);
  }
  ~CallerScope() {
    if (m_isOn) [[unlikely]]
      end();
  }
  CallerScope(const CallerScope&) = delete;
  CallerScope& operator=(const CallerScope&) = delete;

 private:
  void begin(const void* caller) {
    m_outer = t_journal.caller;
    if (m_outer == nullptr) t_journal.caller = caller;
  }
  void end() { t_journal.caller = m_outer; }

  const bool m_isOn;
  const void* m_outer = nullptr;
};

/// Calls an operation of the library for a caller. Like a CallerScope, but there is no end of it to check
/// while the journal is off.
template <class Operation>
auto CallFor(const void* caller, Operation operation) {
  if (JournalIsOn()) [[unlikely]] {
    const CallerScope scope(caller);
    return operation();
  }
  return operation();
}

/// The same of where in a document the values are that the operations set.
class PlaceScope {
 public:
  PlaceScope() : m_outer(std::exchange(t_journal.place, &m_place)) {}
  ~PlaceScope() { t_journal.place = m_outer; }
  PlaceScope(const PlaceScope&) = delete;
  PlaceScope& operator=(const PlaceScope&) = delete;

  void MoveTo(const JournalPlace& place) { m_place = place; }

 private:
  JournalPlace m_place;
  const JournalPlace* const m_outer;
};

/// Hides the scopes around it from the component's code that runs in it.
class ComponentScope {
 public:
  ComponentScope()
      : m_caller(std::exchange(t_journal.caller, nullptr)),
        m_place(std::exchange(t_journal.place, nullptr)) {}
  ~ComponentScope() {
    t_journal.caller = m_caller;
    t_journal.place = m_place;
  }
  ComponentScope(const ComponentScope&) = delete;
  ComponentScope& operator=(const ComponentScope&) = delete;

 private:
  const void* const m_caller;
  const JournalPlace* const m_place;
};

}  // namespace kalStore::internal

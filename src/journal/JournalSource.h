// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "journal/Journal.h"

// Who calls an operation. What its return address says is right where a component calls it. Where another operation of
// the library calls it, that one passes its own caller through the thread's state:
//
//   PassCaller()   for the next operation on this thread that takes it, which must come at once
//   CallerScope    for all operations on this thread until its end, but not for those of the callbacks that run meanwhile
//
// The outermost one counts.

namespace kalStore::internal {

/// Of the document that is imported: where the entry is that the next operation sets.
struct JournalPlace {
  const char* document = nullptr;
  std::uint32_t line = 0;
  std::uint32_t column = 0;
};

/// The name of the document that this thread imports; null: none.
const char* JournalDocumentName();

/// REQUIRES: JournalIsOn().
void PassCaller(const void* caller, JournalPlace place = {});

/// Who calls: what was passed, or else `caller`, the return address of the operation that asks. What was passed to it
/// is used up.
JournalSource TakeSource(const void* caller);

/// The same, or nothing while the journal is off.
inline JournalSource SourceIfOn(const void* caller) {
  return JournalIsOn() ? TakeSource(caller) : JournalSource{};
}

/// Passes a caller to everything in the scope. Does nothing when the journal is off at its beginning.
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
  void begin(const void* caller);
  void end();

  const bool m_isOn;
  const void* m_outer = nullptr;
};

/// Hides the scopes around it from the component's code that runs in it.
class ComponentScope {
 public:
  ComponentScope();
  ~ComponentScope();
  ComponentScope(const ComponentScope&) = delete;
  ComponentScope& operator=(const ComponentScope&) = delete;

 private:
  const void* const m_hidden;
};

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <utility>

namespace kalStore::internal {

struct JournalPlace;

/// For whom the thread runs the library's code at the moment: what the journal names as the origin.
struct CallContext {
  const void* caller;         ///< of the outermost CallerScope; null: none
  const JournalPlace* place;  ///< of the PlaceScope; null: none
};

/// Read several times in each operation: at a fixed distance from the thread's pointer, rather than looked up
/// by a call each time. A library that is loaded later takes that from the room that the system's loader
/// reserves for it, of which these few words need little.
[[gnu::tls_model("initial-exec"),
  gnu::visibility("hidden")]] extern constinit thread_local CallContext t_call;

/// Hides the scopes around it from the component's code that runs in it: trace sinks, callbacks, and the ends
/// of what they captured.
class ComponentScope {
 public:
  ComponentScope() : m_hidden(std::exchange(t_call, {})) {}
  ~ComponentScope() { t_call = m_hidden; }
  ComponentScope(const ComponentScope&) = delete;
  ComponentScope& operator=(const ComponentScope&) = delete;

 private:
  const CallContext m_hidden;
};

}  // namespace kalStore::internal

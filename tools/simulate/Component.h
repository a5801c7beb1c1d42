// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>

#include "simulate/CallSettings.h"
#include "simulate/Ledger.h"
#include "simulate/Link.h"
#include "simulate/Recorder.h"
#include "util/ACmThread.h"

namespace simulate {

/// What the components of one call share.
struct CallContext {
  std::uint32_t callId;
  Recorder& recorder;
  Ledger& ledger;
  Link& link;
};

/// A part of the engine, with a thread of its own that works whenever the media clock ticks.
///
/// Threads: Start(), Tick() and Drain() are for one owner, and Drain() comes last: then nothing is left to
/// run.
class Component {
 public:
  virtual ~Component() = default;
  Component(const Component&) = delete;
  Component& operator=(const Component&) = delete;

  /// Starts the thread and joins the call. Throws std::runtime_error when the system refuses a thread.
  void Start();
  /// Posts work() at `now`, unless that of an earlier tick has not begun.
  void Tick(RunTime now);
  /// How often work() has run.
  unsigned Ticks() const { return m_ticks; }
  /// Has `task` run on the thread, after what was posted before.
  void Post(std::function<void()> task);
  /// Returns when everything that was posted has run.
  void Drain();

 protected:
  Component(const char* name, const CallContext& call) : m_call(call), m_name(name), m_thread(name) {}

  /// On the component's thread, `elapsed` seconds after the last time, or after the run began.
  virtual void work(RunTime now, double elapsed) = 0;
  virtual CallSettings& settings() = 0;

  /// For the last member of each component.
  CallSettings makeSettings() { return CallSettings(m_call.ledger, m_call.recorder, &m_thread); }

  const CallContext m_call;

 private:
  const char* const m_name;
  std::atomic<bool> m_isTickPending{false};
  std::atomic<unsigned> m_ticks{0};
  RunTime m_lastTick = 0;  // Of the thread.
  ACmThread m_thread;
};

}  // namespace simulate

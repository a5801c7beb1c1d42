// SPDX-License-Identifier: Apache-2.0
#include "util/util_trace.h"

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <cstring>
#include <exception>
#include <new>

#include "Mutex.h"
#include "StandardError.h"
#include "Uncancelled.h"
#include "util/bounded_copy.h"

namespace {

using cm::internal::Lock;
using cm::internal::Mutex;
using cm::internal::Uncancelled;
using cm::internal::WriteToStandardError;

std::atomic<int> g_mask{0};
std::atomic<unsigned long> g_assertionReports{0};

thread_local unsigned int t_callsInSink = 0;  // More than 1 when a sink traces.
thread_local unsigned int t_jobId = 0;
thread_local bool t_jobNamed = false;
thread_local char t_jobName[64] = "";

/// Who receives the lines, and which calls to a receiver are under way.
class Receiver {
 public:
  void Set(util_trace_sink sink, void* context) {
    Lock lock(m_mutex);
    m_sink = sink == nullptr ? &WriteToStandardError : sink;
    m_context = context;
    const unsigned long since = ++m_generation;
    // A sink cannot wait for its own call to end, and two sinks must not wait for each other.
    while (t_callsInSink == 0 && hasCallsBefore(since)) lock.Wait(m_callEnded);
  }

  void Trace(int level, const char* module, const char* text, unsigned int length) {
    Call call(*this);
    try {
      call.Run(level, module, text, length);
    } catch (...) {
      // Callers of a trace line expect no exception; the line is all that is lost. The end of the thread
      // (pthread_exit) also arrives here, without an exception object: the C library wants it passed on.
      if (std::current_exception() == nullptr) throw;
    }
  }

 private:
  /// One call of a sink, on the stack of the thread that traces. Counted from construction to destruction,
  /// whichever way the sink is left.
  class Call {
   public:
    explicit Call(Receiver& receiver) : m_receiver(receiver) {
      const Lock lock(receiver.m_mutex);
      m_sink = receiver.m_sink;
      m_context = receiver.m_context;
      m_generation = receiver.m_generation;
      m_next = receiver.m_calls;
      if (m_next != nullptr) m_next->m_previous = this;
      receiver.m_calls = this;
      ++t_callsInSink;
    }
    ~Call() {
      --t_callsInSink;
      const Lock lock(m_receiver.m_mutex);
      (m_previous == nullptr ? m_receiver.m_calls : m_previous->m_next) = m_next;
      if (m_next != nullptr) m_next->m_previous = m_previous;
      if (m_generation != m_receiver.m_generation) m_receiver.m_callEnded.notify_all();
    }
    Call(const Call&) = delete;
    Call& operator=(const Call&) = delete;

    void Run(int level, const char* module, const char* text, unsigned int length) const {
      const Uncancelled uncancelled;
      m_sink(m_context, level, module, text, length);
    }
    unsigned long Generation() const { return m_generation; }
    const Call* Next() const { return m_next; }

   private:
    Receiver& m_receiver;
    util_trace_sink m_sink;
    void* m_context;
    unsigned long m_generation;  // The calls of Set() before this one.
    Call* m_previous = nullptr;
    Call* m_next;
  };

  bool hasCallsBefore(unsigned long generation) const UTIL_LOCKING(requires_capability(m_mutex)) {
    for (const Call* call = m_calls; call != nullptr; call = call->Next()) {
      if (call->Generation() < generation) return true;
    }
    return false;
  }

  Mutex m_mutex;  // Never held while a sink runs.
  std::condition_variable m_callEnded;
  util_trace_sink m_sink UTIL_LOCKING(guarded_by(m_mutex)) = &WriteToStandardError;
  void* m_context UTIL_LOCKING(guarded_by(m_mutex)) = nullptr;
  unsigned long m_generation UTIL_LOCKING(guarded_by(m_mutex)) = 0;  // Counts the calls of Set().
  Call* m_calls UTIL_LOCKING(guarded_by(m_mutex)) = nullptr;         // Latest first.
};

/// Never destroyed: static objects may trace while the process ends. Not allocated: the first line may be
/// that memory has run out.
Receiver& TheReceiver() {
  alignas(Receiver) static std::array<std::byte, sizeof(Receiver)> storage;
  static Receiver& instance = *::new (storage.data()) Receiver;
  return instance;
}

}  // namespace

int get_external_trace_mask() {
  return g_mask.load(std::memory_order_relaxed);
}

void set_external_trace_mask(int mask) {
  g_mask.store(mask, std::memory_order_relaxed);
}

void set_util_trace_sink(util_trace_sink sink, void* context) {
  TheReceiver().Set(sink, context);
}

void util_adapter_trace(int level, const char* module, const char* text, unsigned int length) {
  const bool hasText = text != nullptr;
  TheReceiver().Trace(level, module == nullptr ? "" : module, hasText ? text : "", hasText ? length : 0);
}

unsigned int cm_get_current_threadpool_job_id() {
  return t_jobId;
}

const char* cm_get_current_threadpool_job_name() {
  return t_jobNamed ? t_jobName : nullptr;
}

void cm_set_current_threadpool_job(unsigned int id, const char* name) {
  t_jobId = id;
  t_jobNamed = name != nullptr;
  if (name == nullptr) return;
  const std::size_t length = strnlen_s(name, sizeof t_jobName - 1);
  std::memmove(t_jobName, name, length);  // A job may be given the name of the one before.
  t_jobName[length] = '\0';
}

void cm_assertion_report() {
  g_assertionReports.fetch_add(1, std::memory_order_relaxed);
}

unsigned long cm_assertion_report_count() {
  return g_assertionReports.load(std::memory_order_relaxed);
}

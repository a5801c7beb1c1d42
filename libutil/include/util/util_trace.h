#pragma once

/// @file
/// Trace lines and where they go, the calling thread's pool job, and the count of failed assertions.
/// @threads Any; the pool job is each thread's own.
/// @par Example
/// @code{.cpp}
/// std::string seen;
/// const auto sink = [](void* context, int level, const char* module, const char* text, unsigned int length)
/// {
///   static_cast<std::string*>(context)->assign(text, length);
/// };
/// set_util_trace_sink(sink, &seen);
/// util_adapter_trace(0, "DEMO", "hello", 5);
/// set_util_trace_sink(nullptr, nullptr);  // back to standard error; `seen` may go
/// assert(seen == "hello");
///
/// cm_set_current_threadpool_job(12, "encode");
/// assert(cm_get_current_threadpool_job_id() == 12);
/// assert(std::string(cm_get_current_threadpool_job_name()) == "encode");
/// cm_set_current_threadpool_job(0, nullptr);
/// @endcode

#include "util/export.h"

/// @return The mask: lines of level L are wanted when it is at least L. Starts at 0: errors alone.
UTIL_API int get_external_trace_mask();
/// Chooses which lines are wanted.
/// @param mask  the highest level wanted: 0 errors, 1 warnings, 2 information; -1 silences all
UTIL_API void set_external_trace_mask(int mask);

/// Receives every line: `text` has `length` characters, a terminating NUL after them, and no line end; both
/// texts live until the call returns and are never null. Called on the tracing thread, on several threads at
/// once, with no lock held: a sink may trace and may set another sink. Must not throw.
using util_trace_sink = void (*)(void* context, int level, const char* module, const char* text,
                                 unsigned int length);

/// Sends lines to another sink. When it returns, no thread is inside a previous sink, whose context
/// may then be destroyed; except when a sink itself calls it, which waits for nobody. The wait lasts as long
/// as the sink's running calls do.
/// @param sink  null restores standard error, one line each in the form "[module level] text"
/// @param context  handed through; must live as long as the sink is set
UTIL_API void set_util_trace_sink(util_trace_sink sink, void* context);

/// Hands one line to the sink, whatever the mask: who composes a line reads the mask first.
/// @param level  of the line
/// @param module  who traces; null counts as ""
/// @param text  the line, with a NUL after it; null counts as ""
/// @param length  the text's length in characters
UTIL_API void util_adapter_trace(int level, const char* module, const char* text, unsigned int length);

/// @return The id of the pool job that the calling thread runs; 0: none.
UTIL_API unsigned int cm_get_current_threadpool_job_id();
/// @return The name of the pool job that the calling thread runs; null: none. Lives until the calling thread
/// sets another job or ends.
UTIL_API const char* cm_get_current_threadpool_job_name();
/// Tells which pool job the calling thread runs.
/// @param id  0: none
/// @param name  copied, cut to 63 characters; null: none
/// @invalidates What cm_get_current_threadpool_job_name() gave to this thread.
UTIL_API void cm_set_current_threadpool_job(unsigned int id, const char* name);

/// Counts a failed assertion of the process, and returns: it never aborts.
UTIL_API void cm_assertion_report();
/// @return How many assertions failed so far.
UTIL_API unsigned long cm_assertion_report_count();

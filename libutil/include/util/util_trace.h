// SPDX-License-Identifier: Apache-2.0
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

/// @return The mask: lines of level L are wanted when it is at least L. At the start 0: errors alone.
UTIL_API int get_external_trace_mask();
/// Chooses which lines are wanted.
/// @param mask  the highest level wanted: 0 errors, 1 warnings, 2 information; -1 silences all
UTIL_API void set_external_trace_mask(int mask);

/// Receives every line: `text` has `length` characters and a NUL after them; neither string is null, and both
/// are valid until the call returns. Called on the thread that traces, so on several threads at once. This
/// library holds no lock meanwhile: a sink may trace, and may set another sink. The function that traces may
/// hold locks of its own.
///
/// Must not throw. An exception goes no further than util_adapter_trace(), and nothing reports it. A sink
/// that ends its thread (pthread_exit) unwinds the function that traced; where that is noexcept, the process
/// ends. The cancellation of a thread (pthread_cancel) waits until its sink has returned.
using util_trace_sink = void (*)(void* context, int level, const char* module, const char* text,
                                 unsigned int length);

/// Sends lines to another sink, and waits until no thread is inside a previous one, whose context may then be
/// destroyed. The wait has no time limit: the caller must not hold what a running sink needs. Called by a
/// sink, it does not wait; a previous sink may still run when it returns, this one at least.
/// @param sink  null restores standard error, one line each in the form "[module level] text". Where it is
/// closed, or a pipe without a reader, lines are lost. When nobody reads it a line waits for a second; lines
/// are lost then, without a wait, until it takes one again, after a line that says how many were
/// @param context  passed to every call of the sink
UTIL_API void set_util_trace_sink(util_trace_sink sink, void* context);

/// Passes one line to the sink, whatever the mask: read the mask before you compose a line. Throws nothing.
/// @param level  of the line
/// @param module  the component that traces; null counts as ""
/// @param text  the line, with a NUL after it; null counts as ""
/// @param length  the text's length in characters
UTIL_API void util_adapter_trace(int level, const char* module, const char* text, unsigned int length);

/// @return The id of the pool job that the calling thread runs; 0: none.
UTIL_API unsigned int cm_get_current_threadpool_job_id();
/// @return The name of the pool job that the calling thread runs; null: none. Valid until the calling thread
/// sets another job or ends.
UTIL_API const char* cm_get_current_threadpool_job_name();
/// Sets the pool job that the calling thread runs.
/// @param id  0: none
/// @param name  copied, cut to 63 characters; null: none
/// @invalidates What cm_get_current_threadpool_job_name() returned on this thread.
UTIL_API void cm_set_current_threadpool_job(unsigned int id, const char* name);

/// Counts a failed assertion of the process, and returns: it never aborts.
UTIL_API void cm_assertion_report();
/// @return How often cm_assertion_report() has been called.
UTIL_API unsigned long cm_assertion_report_count();

#pragma once

#include "util/export.h"

/// Lines of level L are wanted when the mask is at least L. Starts at 0: errors alone; -1 silences all.
/// Any thread may call.
UTIL_API int get_external_trace_mask();
UTIL_API void set_external_trace_mask(int mask);

/// Receives every line: `text` has `length` characters, a terminating NUL after them, and no line end; both
/// texts live until the call returns and are never null. Called on the tracing thread, on several threads at
/// once, with no lock held: a sink may trace and may set another sink. Must not throw.
using util_trace_sink = void (*)(void* context, int level, const char* module, const char* text,
                                 unsigned int length);

/// Sends lines to `sink`, with `context` handed through; null restores standard error, one line each in the
/// form
/// "[module level] text". When it returns, no thread is inside a previous sink, so that sink's context may be
/// destroyed; except when a sink itself calls it, which waits for nobody.
UTIL_API void set_util_trace_sink(util_trace_sink sink, void* context);

/// Hands one line to the sink, whatever the mask: who composes a line reads the mask first.
UTIL_API void util_adapter_trace(int level, const char* module, const char* text, unsigned int length);

/// The pool job that the calling thread runs: its id (0: none) and name (null: none). The name is copied, cut
/// to 63 characters; the pointer returned lives until the calling thread sets another job or ends.
UTIL_API unsigned int cm_get_current_threadpool_job_id();
UTIL_API const char* cm_get_current_threadpool_job_name();
UTIL_API void cm_set_current_threadpool_job(unsigned int id, const char* name);

/// Counts a failed assertion of the process, and returns: it never aborts. The count tells how many so far.
UTIL_API void cm_assertion_report();
UTIL_API unsigned long cm_assertion_report_count();

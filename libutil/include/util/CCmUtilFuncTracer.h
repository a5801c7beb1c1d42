// SPDX-License-Identifier: Apache-2.0
#pragma once

#include "util/export.h"

/// Traces that a function was entered, when constructed, and left, when destroyed: one line each, "text
/// enter" and "text leave", under the module name "UTIL". Allocates nothing and never throws, so that a
/// destructor may use it.
///
/// When the mask is below the level on entry, neither line is written; when it is below on leaving, the
/// second line is not.
///
/// @threads One owner.
/// @par Example
/// @code{.cpp}
/// set_external_trace_mask(2);
/// {
///   const CCmUtilFuncTracer tracer(2, "Encoder::Restart");
/// }  // by now: [UTIL 2] Encoder::Restart enter, and [UTIL 2] Encoder::Restart leave
/// @endcode
class UTIL_API CCmUtilFuncTracer {
 public:
  /// Traces the entry.
  /// @param level  of both lines
  /// @param text  copied, null counts as ""; a line is cut off after 1023 characters
  CCmUtilFuncTracer(int level, const char* text);
  /// Traces the end.
  ~CCmUtilFuncTracer();
  CCmUtilFuncTracer(const CCmUtilFuncTracer&) = delete;
  CCmUtilFuncTracer& operator=(const CCmUtilFuncTracer&) = delete;

 private:
  static constexpr unsigned int kLineSize = 1024;

  void trace(const char* where);

  int m_level;
  bool m_enabled;
  unsigned int m_textLength = 0;
  char m_line[kLineSize];  // The text, and behind it where the function is. Not set while disabled.
};

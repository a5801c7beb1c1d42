#pragma once

#include <string>

#include "util/export.h"

/// Traces that a function was entered, when constructed, and left, when destroyed: one line each, "text
/// enter" and "text leave", under the module name "UTIL". When the mask is below its level on entry, nothing
/// is copied and neither line is written; when it is below on leaving, the second line is not.
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
  /// @param text  copied; null counts as ""
  CCmUtilFuncTracer(int level, const char* text);
  /// Traces the end.
  ~CCmUtilFuncTracer();
  CCmUtilFuncTracer(const CCmUtilFuncTracer&) = delete;
  CCmUtilFuncTracer& operator=(const CCmUtilFuncTracer&) = delete;

 private:
  void trace(const char* where) const;

  int m_level;
  bool m_enabled;
  std::string m_text;
};

#pragma once

#include <string>

#include "util/export.h"

/// Traces that a function was entered, when constructed, and left, when destroyed: one line of `level` each,
/// "text enter" and "text leave", under the module name "UTIL". When the mask is below `level` on entry,
/// nothing is copied and neither line is written; when it is below on leaving, the second line is not.
class UTIL_API CCmUtilFuncTracer {
 public:
  CCmUtilFuncTracer(int level, const char* text);
  ~CCmUtilFuncTracer();
  CCmUtilFuncTracer(const CCmUtilFuncTracer&) = delete;
  CCmUtilFuncTracer& operator=(const CCmUtilFuncTracer&) = delete;

 private:
  void trace(const char* where) const;

  int m_level;
  bool m_enabled;
  std::string m_text;
};

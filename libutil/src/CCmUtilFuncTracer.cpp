#include "util/CCmUtilFuncTracer.h"

#include "util/CCmTextFormator.h"
#include "util/util_trace.h"

CCmUtilFuncTracer::CCmUtilFuncTracer(int level, const char* text)
    : m_level(level), m_enabled(get_external_trace_mask() >= level) {
  if (!m_enabled) return;
  if (text != nullptr) m_text = text;
  trace(" enter");
}

CCmUtilFuncTracer::~CCmUtilFuncTracer() {
  if (m_enabled && get_external_trace_mask() >= m_level) trace(" leave");
}

void CCmUtilFuncTracer::trace(const char* where) const {
  char buffer[1024];
  CCmTextFormator line(buffer, sizeof buffer);
  line << m_text << where;
  util_adapter_trace(m_level, "UTIL", line, line.tell());
}

// SPDX-License-Identifier: Apache-2.0
#include "util/CCmUtilFuncTracer.h"

#include "util/CCmTextFormator.h"
#include "util/util_trace.h"

CCmUtilFuncTracer::CCmUtilFuncTracer(int level, const char* text)
    : m_level(level), m_enabled(get_external_trace_mask() >= level) {
  if (!m_enabled) return;
  CCmTextFormator line(m_line, sizeof m_line);
  line << text;
  m_textLength = line.tell();
  trace(" enter");
}

CCmUtilFuncTracer::~CCmUtilFuncTracer() {
  if (m_enabled && get_external_trace_mask() >= m_level) trace(" leave");
}

void CCmUtilFuncTracer::trace(const char* where) {
  CCmTextFormator rest(m_line + m_textLength, sizeof m_line - m_textLength);
  rest << where;
  util_adapter_trace(m_level, "UTIL", m_line, m_textLength + rest.tell());
}

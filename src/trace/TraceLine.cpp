// SPDX-License-Identifier: Apache-2.0
#include "trace/TraceLine.h"

#include <charconv>

#include "tessel/trace.h"
#include "trace/CallContext.h"

namespace kalStore::internal {
TraceLine::TraceLine(int level) : m_level(level), m_text(m_buffer, kLineSize) {
  if (const unsigned int id = cm_get_current_threadpool_job_id(); id != 0) {
    m_text << "[JobId=" << id << "] ";
  }
  if (const char* name = cm_get_current_threadpool_job_name(); name != nullptr && *name != '\0') {
    m_text << "[Job=" << name << "] ";
  }
}

TraceLine::TraceLine(int level, const char* label) : TraceLine(level) {
  m_text << label;
}

void TraceLine::Emit() {
  const ComponentScope component;
  util_adapter_trace(m_level, GetCurrentModuleName(nullptr), m_text, m_text.tell());
}

CCmTextFormator& operator<<(CCmTextFormator& text, Id id) {
  char digits[21];
  *std::to_chars(digits, digits + sizeof digits - 1, id.id).ptr = '\0';
  return text << digits;
}

CCmTextFormator& operator<<(CCmTextFormator& text, Cid cid) {
  return text << " [cid=" << cid.callId << "]";
}

CCmTextFormator& operator<<(CCmTextFormator& text, This self) {
  return text << " [this=0x" << CM_ORDIX_HEX << reinterpret_cast<unsigned long>(self.object) << CM_ORDIX_DEC
              << "]";
}

}  // namespace kalStore::internal

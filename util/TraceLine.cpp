#include "TraceLine.h"

#include <algorithm>
#include <string_view>

#include "FunctionLabel.h"
#include "tessel/trace.h"

TraceLine::TraceLine(int level) : m_level(level), m_text(m_buffer, kLineSize) {
  if (const unsigned int id = cm_get_current_threadpool_job_id(); id != 0) {
    m_text << "[JobId=" << id << "] ";
  }
  if (const char* name = cm_get_current_threadpool_job_name(); name != nullptr && *name != '\0') {
    m_text << "[Job=" << name << "] ";
  }
}

TraceLine::TraceLine(int level, const char* prettyFunction) : TraceLine(level) {
  // One compiler writes the mark of a pointer or reference result to the name: lines read the same from all.
  std::string_view name = FunctionLabel(prettyFunction);
  name.remove_prefix(std::min(name.find_first_not_of("*&"), name.size()));
  // The label is copied on the stack: a line that allocates nothing cannot fail its caller.
  char label[kLineSize];
  label[name.copy(label, sizeof(label) - 1)] = '\0';
  m_text << label;
}

void TraceLine::Emit() {
  util_adapter_trace(m_level, GetCurrentModuleName(nullptr), m_text, m_text.tell());
}

CCmTextFormator& operator<<(CCmTextFormator& text, Cid cid) {
  return text << " [cid=" << cid.callId << "]";
}

CCmTextFormator& operator<<(CCmTextFormator& text, This self) {
  return text << " [this=0x" << CM_ORDIX_HEX << reinterpret_cast<unsigned long>(self.object) << CM_ORDIX_DEC
              << "]";
}

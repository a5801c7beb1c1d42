// SPDX-License-Identifier: Apache-2.0
#include "support/TraceLog.h"

TraceLog::TraceLog(int mask) : m_previousMask(get_external_trace_mask()) {
  set_util_trace_sink(&TraceLog::sink, this);
  set_external_trace_mask(mask);
}

TraceLog::~TraceLog() {
  set_external_trace_mask(m_previousMask);
  set_util_trace_sink(nullptr, nullptr);
}

std::vector<TraceLog::Line> TraceLog::Lines() const {
  std::lock_guard lock(m_mutex);
  return m_lines;
}

std::vector<std::string> TraceLog::Matching(const std::string& part) const {
  std::vector<std::string> texts;
  for (const Line& line : Lines()) {
    if (line.text.find(part) != std::string::npos) texts.push_back(line.text);
  }
  return texts;
}

std::size_t TraceLog::CountLevel(int level) const {
  std::size_t count = 0;
  for (const Line& line : Lines()) count += line.level == level ? 1 : 0;
  return count;
}

void TraceLog::Clear() {
  std::lock_guard lock(m_mutex);
  m_lines.clear();
}

void TraceLog::sink(void* context, int level, const char* module, const char* text, unsigned int length) {
  auto* log = static_cast<TraceLog*>(context);
  std::lock_guard lock(log->m_mutex);
  log->m_lines.push_back({level, module, std::string(text, length)});
}

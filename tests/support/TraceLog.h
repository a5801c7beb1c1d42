// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <mutex>
#include <string>
#include <vector>

#include "util/util.h"

/// Collects trace lines while it lives, with the mask given; restores mask and sink afterwards. One at a
/// time.
class TraceLog {
 public:
  struct Line {
    int level;
    std::string module;
    std::string text;
  };

  explicit TraceLog(int mask = 2);
  ~TraceLog();
  TraceLog(const TraceLog&) = delete;
  TraceLog& operator=(const TraceLog&) = delete;

  std::vector<Line> Lines() const;
  /// The texts of the lines that contain `part`, in order.
  std::vector<std::string> Matching(const std::string& part) const;
  /// How many lines contain `part`.
  std::size_t Count(const std::string& part) const { return Matching(part).size(); }
  std::size_t CountLevel(int level) const;
  void Clear();

 private:
  static void sink(void* context, int level, const char* module, const char* text, unsigned int length);

  const int m_previousMask;
  mutable std::mutex m_mutex;
  std::vector<Line> m_lines;
};

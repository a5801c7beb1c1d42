// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <sys/types.h>

#include <fstream>
#include <string>

/// The scheduler's state of a thread of this process: 'R' while it runs or yields, 'S' while it sleeps.
inline char StateOf(pid_t thread) {
  std::ifstream file("/proc/self/task/" + std::to_string(thread) + "/stat");
  std::string text;
  std::getline(file, text);
  return text.at(text.rfind(')') + 2);
}

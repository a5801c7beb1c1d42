// SPDX-License-Identifier: Apache-2.0
#include "checker/Steps.h"

#include <link.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <map>

namespace model {

namespace {

constexpr std::size_t kMostSteps = 80;
constexpr std::size_t kMostCalls = 2;

std::uintptr_t BaseOfProgram() {
  std::uintptr_t base = 0;
  dl_iterate_phdr(
      [](dl_phdr_info* info, std::size_t, void* found) {
        *static_cast<std::uintptr_t*>(found) = info->dlpi_addr;
        return 1;
      },
      &base);
  return base;
}

// The names of places in the code, as addr2line of the binutils finds them.
class Names {
 public:
  void Want(const void* address) { m_names[address]; }

  void Find() {
    const std::uintptr_t base = BaseOfProgram();
    std::string command = "addr2line -aiCfs -e /proc/" + std::to_string(getpid()) + "/exe";
    for (const auto& [address, name] : m_names) {
      char text[24];
      // A return address is behind the call.
      std::snprintf(text, sizeof text, " %#zx", reinterpret_cast<std::uintptr_t>(address) - base - 1);
      command += text;
    }
    FILE* const pipe = popen(command.c_str(), "r");
    if (pipe == nullptr) return;
    auto at = m_names.end();
    for (std::string function = line(pipe); !function.empty(); function = line(pipe)) {
      if (function.starts_with("0x")) {
        at = at == m_names.end() ? m_names.begin() : std::next(at);
        continue;
      }
      // Of what is inlined, the innermost function that is not the C++ library's.
      const std::string place = line(pipe);
      const bool isStd = function.starts_with("std::") || function.starts_with("__gthread");
      if (at->second.empty() && !isStd) at->second = place + " " + function;
    }
    pclose(pipe);
  }

  const std::string& Of(const void* address) { return m_names[address]; }

 private:
  static std::string line(FILE* pipe) {
    char text[4096];
    if (std::fgets(text, sizeof text, pipe) == nullptr) return {};
    std::string found = text;
    if (found.back() == '\n') found.pop_back();
    // Without what follows the name of a function, or the line's number.
    return found.substr(0, found.find_first_of("([ ", 1));
  }

  std::map<const void*, std::string> m_names;
};

}  // namespace

std::string Describe(const std::vector<Step>& steps) {
  Names names;
  const std::size_t first = steps.size() < kMostSteps ? 0 : steps.size() - kMostSteps;
  const auto callsOf = [](const Step& step) {
    return std::vector<const void*>(
        step.calls.rbegin(),
        step.calls.rbegin() + static_cast<std::ptrdiff_t>(std::min(step.calls.size(), kMostCalls)));
  };
  for (std::size_t i = first; i < steps.size(); ++i) {
    names.Want(steps[i].place);
    for (const void* const call : callsOf(steps[i])) names.Want(call);
  }
  names.Find();

  std::string text;
  for (std::size_t i = first; i < steps.size(); ++i) {
    const Step& step = steps[i];
    char line[160];
    std::snprintf(line, sizeof line, "%5u  thread %d  %s %p (%llu)  ", step.operation, step.thread, step.what,
                  step.object, static_cast<unsigned long long>(step.value));
    text += line + names.Of(step.place);
    for (const void* const call : callsOf(step)) text += " < " + names.Of(call);
    text += '\n';
  }
  return text;
}

}  // namespace model

// SPDX-License-Identifier: Apache-2.0
#include <cxxabi.h>
#include <dlfcn.h>

#include <cstdlib>
#include <memory>

#include "tessel/journal.h"

namespace kalStore {

namespace {

std::string Demangled(const char* symbol) {
  int status = 0;
  const std::unique_ptr<char, decltype(&std::free)> name(
      abi::__cxa_demangle(symbol, nullptr, nullptr, &status), &std::free);
  return name == nullptr ? symbol : name.get();
}

}  // namespace

CodePlace FindCodePlace(const void* address) {
  CodePlace place;
  if (address == nullptr) return place;
  // A return address is behind the call, which may be the last instruction of its function.
  const auto number = reinterpret_cast<std::uintptr_t>(address);
  Dl_info info{};
  if (dladdr(static_cast<const char*>(address) - 1, &info) == 0) return place;
  if (info.dli_fname != nullptr) place.module = info.dli_fname;
  if (info.dli_sname != nullptr) place.symbol = Demangled(info.dli_sname);
  const void* const base = info.dli_sname != nullptr ? info.dli_saddr : info.dli_fbase;
  place.offset = number - reinterpret_cast<std::uintptr_t>(base);
  return place;
}

}  // namespace kalStore

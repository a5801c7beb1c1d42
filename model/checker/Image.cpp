// SPDX-License-Identifier: Apache-2.0
#include "checker/Image.h"

#include <cxxabi.h>
#include <link.h>

#include <cstring>

#include "checker/Region.h"

// The linker's: where the program's variables begin and end.
extern "C" {
extern std::byte __data_start;  // NOLINT
extern std::byte _end;          // NOLINT
}

namespace model {

namespace {

struct TlsBlock {
  std::byte* begin = nullptr;
  std::size_t size = 0;
  const std::byte* initial = nullptr;  // Of the first bytes; the others are 0.
  std::size_t initialSize = 0;
};

// Of the program, which the system's loader names first.
int FindTls(dl_phdr_info* info, std::size_t, void* found) {
  for (int i = 0; i < info->dlpi_phnum; ++i) {
    const auto& header = info->dlpi_phdr[i];
    if (header.p_type != PT_TLS) continue;
    *static_cast<TlsBlock*>(found) = {static_cast<std::byte*>(info->dlpi_tls_data), header.p_memsz,
                                      reinterpret_cast<const std::byte*>(info->dlpi_addr + header.p_vaddr),
                                      header.p_filesz};
  }
  return 1;
}

const TlsBlock g_tls = [] {
  TlsBlock found;
  dl_iterate_phdr(&FindTls, &found);
  return found;
}();

}  // namespace

std::span<std::byte> ProgramData() {
  return {&__data_start, static_cast<std::size_t>(&_end - &__data_start)};
}

ThreadLocals::ThreadLocals() : m_variables(g_tls.size) {
  if (g_tls.initialSize > 0) std::memcpy(m_variables.data(), g_tls.initial, g_tls.initialSize);
}

void ThreadLocals::Save() {
  if (!m_variables.empty()) std::memcpy(m_variables.data(), g_tls.begin, m_variables.size());
  std::memcpy(m_exceptions, abi::__cxa_get_globals(), sizeof m_exceptions);
}

void ThreadLocals::Restore() const {
  if (!m_variables.empty()) std::memcpy(g_tls.begin, m_variables.data(), m_variables.size());
  std::memcpy(static_cast<void*>(abi::__cxa_get_globals()), m_exceptions, sizeof m_exceptions);
}

bool ThreadLocals::Contains(const void* object) {
  return object >= g_tls.begin && object < g_tls.begin + g_tls.size;
}

Image::Image()
    : m_loaded(Region::EndLoad()),
      m_data(ProgramData().begin(), ProgramData().end()),
      m_allocated(m_loaded.begin(), m_loaded.end()) {}

void Image::Restore() const {
  std::memcpy(ProgramData().data(), m_data.data(), m_data.size());
  std::memcpy(m_loaded.data(), m_allocated.data(), m_allocated.size());
}

}  // namespace model

// SPDX-License-Identifier: Apache-2.0
#include "checker/Region.h"

#include <sys/mman.h>

#include <cstdio>
#include <cstdlib>

namespace model {

namespace {

// Usable before any constructor.
constinit std::byte* g_begin = nullptr;
constinit std::byte* g_next = nullptr;
constinit bool g_isLoading = true;

}  // namespace

void* Region::Reserve(std::size_t size) {
  void* const memory =
      mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
  if (memory == MAP_FAILED) {
    std::perror("model: mmap");
    std::abort();
  }
  return memory;
}

std::byte* Region::Begin() {
  if (g_begin == nullptr) g_begin = g_next = static_cast<std::byte*>(Reserve(kSize));
  return g_begin;
}

void* Region::AllocateAtLoad(std::size_t size, std::size_t alignment) {
  if (!g_isLoading) return nullptr;
  Begin();
  std::byte* const memory = Align(g_next, alignment);
  g_next = memory + size;
  return memory;
}

std::span<std::byte> Region::EndLoad() {
  g_isLoading = false;
  return {Begin(), g_next};
}

}  // namespace model

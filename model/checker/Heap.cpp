// SPDX-License-Identifier: Apache-2.0
// What is allocated in an execution is the checker's; so is what static objects allocated before, which goes
// back with them to what it was. Everything else is the C library's.
#include <cstddef>
#include <cstdlib>
#include <new>

#include "checker/Checker.h"
#include "checker/Region.h"

namespace {

void* Allocate(std::size_t size, std::size_t alignment, const void* place, const void* frame) {
  if (model::Checker* const checker = model::ActiveChecker()) {
    const model::Operation operation(*checker, place, frame);
    if (void* const memory = checker->Allocate(size, alignment)) return memory;
    throw std::bad_alloc();
  }
  if (void* const loaded = model::Region::AllocateAtLoad(size, alignment)) return loaded;
  void* memory = nullptr;
  if (posix_memalign(&memory, alignment, size) != 0) throw std::bad_alloc();
  return memory;
}

void Free(void* memory, const void* place, const void* frame) {
  if (memory == nullptr) return;
  if (!model::Region::IsOfHeap(memory)) {
    std::free(memory);
  } else if (model::Checker* const checker = model::ActiveChecker()) {
    const model::Operation operation(*checker, place, frame);
    checker->Free(memory);
  }
}

}  // namespace

#define MODEL_PLACE __builtin_return_address(0), __builtin_frame_address(0)

void* operator new(std::size_t size) {
  return Allocate(size, __STDCPP_DEFAULT_NEW_ALIGNMENT__, MODEL_PLACE);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return Allocate(size, static_cast<std::size_t>(alignment), MODEL_PLACE);
}
void operator delete(void* memory) noexcept {
  Free(memory, MODEL_PLACE);
}
void operator delete(void* memory, std::size_t) noexcept {
  Free(memory, MODEL_PLACE);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  Free(memory, MODEL_PLACE);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  Free(memory, MODEL_PLACE);
}

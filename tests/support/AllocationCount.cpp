// SPDX-License-Identifier: Apache-2.0
#include "support/AllocationCount.h"

#include <malloc.h>

#include <atomic>
#include <cstdlib>
#include <new>
#include <utility>

namespace {

thread_local std::size_t t_count = 0;
thread_local std::size_t t_untilFailure = 0;  // 0: none wanted, or done.

thread_local std::size_t t_callSize = 0;
thread_local const std::function<void()>* t_call = nullptr;  // Null: none wanted, or done.

thread_local std::size_t t_deletionSize = 0;
thread_local const std::function<void()>* t_deletion = nullptr;  // Null: none wanted, or done.

std::atomic<long> g_live{0};

void CountAllocation(std::size_t size) {
  ++t_count;
  if (t_call != nullptr && size >= t_callSize) (*std::exchange(t_call, nullptr))();
  if (t_untilFailure != 0 && --t_untilFailure == 0) throw std::bad_alloc();
}

void* Counted(void* memory) {
  if (memory == nullptr) throw std::bad_alloc();
  g_live.fetch_add(1, std::memory_order_relaxed);
  return memory;
}

void* Allocate(std::size_t size) {
  CountAllocation(size);
  return Counted(std::malloc(size == 0 ? 1 : size));
}

void* AllocateAligned(std::size_t size, std::align_val_t alignment) {
  CountAllocation(size);
  const auto step = static_cast<std::size_t>(alignment);
  return Counted(std::aligned_alloc(step, (size + step - 1) / step * step));
}

void Release(void* memory) {
  if (memory == nullptr) return;
  if (t_deletion != nullptr && malloc_usable_size(memory) >= t_deletionSize)
    (*std::exchange(t_deletion, nullptr))();
  g_live.fetch_sub(1, std::memory_order_relaxed);
  std::free(memory);
}

}  // namespace

AllocationCount::AllocationCount() : m_start(t_count) {}

std::size_t AllocationCount::Count() const {
  return t_count - m_start;
}

long LiveAllocations() {
  return g_live.load(std::memory_order_relaxed);
}

FailAllocation::FailAllocation(std::size_t n) {
  t_untilFailure = n;
}

FailAllocation::~FailAllocation() {
  t_untilFailure = 0;
}

bool FailAllocation::Fired() const {
  return t_untilFailure == 0;
}

AtAllocation::AtAllocation(std::size_t size, std::function<void()> call) : m_call(std::move(call)) {
  t_callSize = size;
  t_call = &m_call;
}

AtAllocation::~AtAllocation() {
  t_call = nullptr;
}

bool AtAllocation::Fired() const {
  return t_call == nullptr;
}

AtDeletion::AtDeletion(std::size_t size, std::function<void()> call) : m_call(std::move(call)) {
  t_deletionSize = size;
  t_deletion = &m_call;
}

AtDeletion::~AtDeletion() {
  t_deletion = nullptr;
}

bool AtDeletion::Fired() const {
  return t_deletion == nullptr;
}

void* operator new(std::size_t size) {
  return Allocate(size);
}
void* operator new[](std::size_t size) {
  return Allocate(size);
}
void* operator new(std::size_t size, std::align_val_t alignment) {
  return AllocateAligned(size, alignment);
}
void* operator new[](std::size_t size, std::align_val_t alignment) {
  return AllocateAligned(size, alignment);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept try {
  return Allocate(size);
} catch (const std::bad_alloc&) {
  return nullptr;
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept try {
  return Allocate(size);
} catch (const std::bad_alloc&) {
  return nullptr;
}

void operator delete(void* memory) noexcept {
  Release(memory);
}
void operator delete[](void* memory) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::size_t) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::align_val_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::align_val_t) noexcept {
  Release(memory);
}
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept {
  Release(memory);
}
void operator delete[](void* memory, std::size_t, std::align_val_t) noexcept {
  Release(memory);
}
void operator delete(void* memory, const std::nothrow_t&) noexcept {
  Release(memory);
}
void operator delete[](void* memory, const std::nothrow_t&) noexcept {
  Release(memory);
}

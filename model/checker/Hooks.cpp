// SPDX-License-Identifier: Apache-2.0
// What the compiler calls for each access to memory, with -fsanitize=thread: the program is linked with these
// functions in place of that sanitizer's own.
#include <atomic>
#include <cstddef>
#include <cstdint>

#include "checker/Checker.h"

#define MODEL_PLACE __builtin_return_address(0), __builtin_frame_address(0)

namespace model {

namespace {

void Access(void* memory, std::size_t size, bool isWrite, const void* place, const void* frame) {
  Checker* const checker = ActiveChecker();
  if (checker == nullptr || ThreadLocals::Contains(memory)) return;
  const Operation operation(*checker, place, frame);
  if (isWrite) {
    checker->Write(memory, size);
  } else {
    checker->Read(memory, size);
  }
}

template <class T>
Atomics::Object ObjectAt(const volatile T* object) {
  return {const_cast<T*>(object), sizeof(T)};
}

// Outside an execution there is one thread: any order will do.
template <class T, class Change>
T Modify(volatile T* object, int order, Change change, const void* place, const void* frame) {
  if (Checker* const checker = ActiveChecker()) {
    const Operation operation(*checker, place, frame);
    return static_cast<T>(checker->Modify(ObjectAt(object), order, [&](std::uint64_t value) {
      return static_cast<std::uint64_t>(static_cast<T>(change(static_cast<T>(value))));
    }));
  }
  const T old = *object;
  *object = static_cast<T>(change(old));
  return old;
}

template <class T>
bool CompareExchange(volatile T* object, T* expected, T desired, int order, int failureOrder, bool isWeak,
                     const void* place, const void* frame) {
  if (Checker* const checker = ActiveChecker()) {
    const Operation operation(*checker, place, frame);
    std::uint64_t seen = *expected;
    const bool isDone =
        checker->CompareExchange(ObjectAt(object), seen, desired, order, failureOrder, isWeak);
    *expected = static_cast<T>(seen);
    return isDone;
  }
  const T old = *object;
  if (old == *expected) {
    *object = desired;
    return true;
  }
  *expected = old;
  return false;
}

}  // namespace

}  // namespace model

// NOLINTBEGIN: the compiler's names and types.
extern "C" {

void __tsan_init() {}

void __tsan_func_entry(void* caller) {
  if (model::Checker* const checker = model::ActiveChecker()) {
    const model::Operation operation(*checker, caller, __builtin_frame_address(0));
    checker->EnterFunction(caller);
  }
}

void __tsan_func_exit() {
  if (model::Checker* const checker = model::ActiveChecker()) {
    const model::Operation operation(*checker, MODEL_PLACE);
    checker->LeaveFunction();
  }
}

#define MODEL_ACCESS(size)                           \
  void __tsan_read##size(void* memory) {             \
    model::Access(memory, size, false, MODEL_PLACE); \
  }                                                  \
  void __tsan_write##size(void* memory) {            \
    model::Access(memory, size, true, MODEL_PLACE);  \
  }                                                  \
  void __tsan_unaligned_read##size(void* memory) {   \
    model::Access(memory, size, false, MODEL_PLACE); \
  }                                                  \
  void __tsan_unaligned_write##size(void* memory) {  \
    model::Access(memory, size, true, MODEL_PLACE);  \
  }
MODEL_ACCESS(1)
MODEL_ACCESS(2)
MODEL_ACCESS(4)
MODEL_ACCESS(8)
MODEL_ACCESS(16)

void __tsan_read_range(void* memory, std::size_t size) {
  model::Access(memory, size, false, MODEL_PLACE);
}
void __tsan_write_range(void* memory, std::size_t size) {
  model::Access(memory, size, true, MODEL_PLACE);
}
// A destructor stores the pointer that is there already: no thread sees a difference.
void __tsan_vptr_update(void** memory, void* value) {
  if (*memory != value) model::Access(memory, sizeof value, true, MODEL_PLACE);
}
void __tsan_vptr_read(void** memory) {
  model::Access(memory, sizeof *memory, false, MODEL_PLACE);
}

#define MODEL_MODIFY(bits, name, expression)                                                               \
  std::uint##bits##_t __tsan_atomic##bits##_##name(volatile std::uint##bits##_t* object,                   \
                                                   std::uint##bits##_t operand, int order) {               \
    return model::Modify(object, order, [&](std::uint##bits##_t old) { return expression; }, MODEL_PLACE); \
  }

#define MODEL_ATOMIC(bits)                                                                                \
  std::uint##bits##_t __tsan_atomic##bits##_load(const volatile std::uint##bits##_t* object, int order) { \
    if (model::Checker* const checker = model::ActiveChecker()) {                                         \
      const model::Operation operation(*checker, MODEL_PLACE);                                            \
      return static_cast<std::uint##bits##_t>(checker->Load(model::ObjectAt(object), order));             \
    }                                                                                                     \
    return *object;                                                                                       \
  }                                                                                                       \
  void __tsan_atomic##bits##_store(volatile std::uint##bits##_t* object, std::uint##bits##_t value,       \
                                   int order) {                                                           \
    if (model::Checker* const checker = model::ActiveChecker()) {                                         \
      const model::Operation operation(*checker, MODEL_PLACE);                                            \
      checker->Store(model::ObjectAt(object), value, order);                                              \
    } else {                                                                                              \
      *object = value;                                                                                    \
    }                                                                                                     \
  }                                                                                                       \
  MODEL_MODIFY(bits, exchange, (static_cast<void>(old), operand))                                         \
  MODEL_MODIFY(bits, fetch_add, old + operand)                                                            \
  MODEL_MODIFY(bits, fetch_sub, old - operand)                                                            \
  MODEL_MODIFY(bits, fetch_and, old& operand)                                                             \
  MODEL_MODIFY(bits, fetch_or, old | operand)                                                             \
  MODEL_MODIFY(bits, fetch_xor, old ^ operand)                                                            \
  bool __tsan_atomic##bits##_compare_exchange_strong(                                                     \
      volatile std::uint##bits##_t* object, std::uint##bits##_t* expected, std::uint##bits##_t desired,   \
      int order, int failureOrder) {                                                                      \
    return model::CompareExchange(object, expected, desired, order, failureOrder, false, MODEL_PLACE);    \
  }                                                                                                       \
  bool __tsan_atomic##bits##_compare_exchange_weak(                                                       \
      volatile std::uint##bits##_t* object, std::uint##bits##_t* expected, std::uint##bits##_t desired,   \
      int order, int failureOrder) {                                                                      \
    return model::CompareExchange(object, expected, desired, order, failureOrder, true, MODEL_PLACE);     \
  }
MODEL_ATOMIC(8)
MODEL_ATOMIC(16)
MODEL_ATOMIC(32)
MODEL_ATOMIC(64)

}  // extern "C"
// NOLINTEND

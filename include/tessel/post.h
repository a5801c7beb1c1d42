// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// Runs a function on an ACmThread, without an event class of one's own.
/// @threads Any.
/// @par Example
/// @code{.cpp}
/// ACmThread worker("worker");
/// worker.Start();
/// int sum = 0;
/// assert(kalStore::Post(worker, [&sum] { sum += 1; }) == 0);
/// assert(kalStore::Send(worker, [&sum] { sum += 2; }) == 0);  // returns once both have run
/// assert(sum == 3);
/// @endcode

#include <cerrno>
#include <utility>

#include "util/ACmThread.h"
#include "util/ICmEvent.h"
#include "util/ICmEventQueue.h"

namespace kalStore {

/// @cond internal
namespace internal {

template <class Function>
class FunctionEvent final : public ICmEvent {
 public:
  explicit FunctionEvent(Function function) : m_function(std::move(function)) {}
  int OnEventFire() override {
    static_cast<void>(m_function());
    return 0;
  }

 private:
  Function m_function;
};

}  // namespace internal
/// @endcond

/// Queues a function on a thread and returns at once; see ICmEventQueue::PostEvent().
/// @param thread  runs the function
/// @param function  callable without arguments; destroyed on `thread` after the call, or here when refused
/// @param priority  any; a smaller number is a higher priority
/// @return 0; ESHUTDOWN when the thread has no queue, or stops: the function is then not called.
template <class Function>
int Post(ACmThread& thread, Function function, unsigned int priority = ICmEventQueue::kDefaultPriority) {
  ICmEventQueue* const queue = thread.GetEventQueue();
  if (queue == nullptr) return ESHUTDOWN;
  return queue->PostEvent(new internal::FunctionEvent<Function>(std::move(function)), priority, 0);
}

/// Runs a function on a thread and waits until it has returned; see ICmEventQueue::SendEvent().
/// @param thread  runs the function; the calling thread itself runs it at once
/// @param function  callable without arguments; destroyed before the call returns
/// @return 0; ESHUTDOWN when the thread has no queue, or stops: the function is then not called; ECANCELED
/// when the function threw.
template <class Function>
int Send(ACmThread& thread, Function function) {
  ICmEventQueue* const queue = thread.GetEventQueue();
  if (queue == nullptr) return ESHUTDOWN;
  return queue->SendEvent(new internal::FunctionEvent<Function>(std::move(function)), 0);
}

}  // namespace kalStore

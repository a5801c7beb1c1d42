// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <functional>
#include <type_traits>
#include <utility>

namespace kalStore {

/// Runs tasks on an event loop: anything that can be called with a `std::function<void()>` and runs it later,
/// once, on a thread of its choice. Subscription and ConfigKey::Subscribe() take it where the callback runs.
///
/// It refuses a task by returning `false` (its result may be of any other type, which is ignored), or by an
/// exception. Each setter calls it on its own thread, several at once when several set. It should return
/// without waiting for the task; one that runs it at once makes direct deliveries.
///
/// @threads Any, as far as the callable allows.
/// @par Example
/// @code{.cpp}
/// std::vector<std::function<void()>> loop;
/// const ConfigExecutor executor([&](std::function<void()> task) { loop.push_back(std::move(task)); });
/// int sum = 0;
/// assert(executor.Execute([&] { ++sum; }) && sum == 0);
/// for (const auto& task : loop) task();
/// assert(sum == 1);
/// @endcode
class ConfigExecutor {
 public:
  /// Copies the callable.
  /// @param callable  called with each task
  template <class Callable>
    requires(!std::same_as<std::remove_cvref_t<Callable>, ConfigExecutor>) &&
            std::copy_constructible<Callable> && std::invocable<Callable&, std::function<void()>>
  ConfigExecutor(Callable callable)
      : m_execute([callable = std::move(callable)](std::function<void()> task) mutable {
          if constexpr (std::same_as<std::invoke_result_t<Callable&, std::function<void()>>, bool>) {
            return callable(std::move(task));
          } else {
            static_cast<void>(callable(std::move(task)));
            return true;
          }
        }) {}

  /// Gives it a task.
  /// @param task  not empty
  /// @return Whether it took the task.
  bool Execute(std::function<void()> task) const { return m_execute(std::move(task)); }

 private:
  std::function<bool(std::function<void()>)> m_execute;
};

}  // namespace kalStore

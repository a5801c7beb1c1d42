// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <utility>

namespace kalStore::internal {

/// The first exception of several steps, each of which is done whatever the others throw.
class FirstError {
 public:
  /// In a handler of every exception, which throws again on false: the end of the thread (pthread_exit,
  /// pthread_cancel) arrives there, too, without an exception object, and the C library wants it passed on.
  [[nodiscard]] bool Keep() {
    std::exception_ptr error = std::current_exception();
    if (error == nullptr) return false;
    if (m_error == nullptr) m_error = std::move(error);
    return true;
  }
  /// When every step is done.
  void Rethrow() const {
    if (m_error != nullptr) std::rethrow_exception(m_error);
  }

 private:
  std::exception_ptr m_error;
};

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <exception>
#include <utility>

namespace kalStore::internal {

/// The first exception of several steps, each of which is done whatever the others throw.
class FirstError {
 public:
  /// In a handler of every exception. The end of the thread (pthread_exit, pthread_cancel) arrives there,
  /// too, without an exception object: the C library wants it passed on.
  void Keep() {
    std::exception_ptr error = std::current_exception();
    if (error == nullptr) throw;
    if (m_error == nullptr) m_error = std::move(error);
  }
  /// When every step is done.
  void Rethrow() const {
    if (m_error != nullptr) std::rethrow_exception(m_error);
  }

 private:
  std::exception_ptr m_error;
};

}  // namespace kalStore::internal

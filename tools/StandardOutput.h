// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <ostream>
#include <streambuf>

/// Fills the descriptors of standard input, output and error where the program was started without, so that
/// no file it opens takes their place. To read or write there fails, as it does with a closed descriptor.
void ReserveStandardDescriptors();

/// Standard output of the program while it lives: std::cout writes through it, to file descriptor 1. A reader
/// that leaves early ends nothing: what is written afterwards is dropped.
///
/// Threads: one at a time. Only one object at a time.
class StandardOutput : private std::streambuf {
 public:
  StandardOutput();
  ~StandardOutput() override;
  StandardOutput(const StandardOutput&) = delete;
  StandardOutput& operator=(const StandardOutput&) = delete;

  /// Writes what is left. 0, also when the reader has left; otherwise the errno of the first failure.
  int Finish();

 private:
  int_type overflow(int_type character) override;
  int sync() override;
  void writeOut();

  std::array<char, 65536> m_buffer;
  std::streambuf* m_replaced;
  int m_error = 0;
};

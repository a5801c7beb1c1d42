#pragma once

#include <array>
#include <ostream>
#include <streambuf>

/// Gives a program whose standard input, output or error was closed an empty one, so that no file it opens
/// takes their place.
void OpenMissingDescriptors();

/// Standard output of the program while it lives: std::cout writes through it, to file descriptor 1. A reader
/// that leaves early ends nothing: what is written after it goes nowhere, in silence. One at a time; threads
/// as std::cout with a buffer of its own, so one at a time.
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

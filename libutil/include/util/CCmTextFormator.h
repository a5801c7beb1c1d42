// SPDX-License-Identifier: Apache-2.0
#pragma once

/// @file
/// A string composed in a buffer of the caller.

#include <string>

#include "util/export.h"

/// The string type of the engine's utility library.
using CCmString = std::string;

/// Radix of the numbers that follow.
enum CCmOrdix : int { CM_ORDIX_HEX = 0, CM_ORDIX_DEC = 1 };

/// Composes a string in a buffer of the caller. Allocates nothing, never writes past the buffer, and leaves a
/// terminated string after every operation; what does not fit is cut off. The same in every locale.
///
/// @threads One owner.
/// @lifetime The buffer must outlive the formatter.
/// @par Example
/// @code{.cpp}
/// char buffer[32];
/// CCmTextFormator text(buffer, sizeof buffer);
/// text << "fps=" << 30 << ", mask=" << CM_ORDIX_HEX << 255;
/// assert(std::string(text) == "fps=30, mask=ff");
/// assert(text.tell() == 15);
/// @endcode
class UTIL_API CCmTextFormator {
 public:
  /// Starts with the empty string.
  /// @param buffer  may be null, as if `size` were 0
  /// @param size  its size in bytes, the terminating NUL included; with 0 nothing is ever written
  CCmTextFormator(char* buffer, unsigned int size);
  CCmTextFormator(const CCmTextFormator&) = delete;
  CCmTextFormator& operator=(const CCmTextFormator&) = delete;

  /// Appends a string.
  /// @param text  null appends nothing
  /// @return This formatter.
  CCmTextFormator& operator<<(const char* text);
  /// Appends a string.
  /// @param text  up to its first zero byte
  /// @return This formatter.
  CCmTextFormator& operator<<(const CCmString& text);
  ///@{
  /// Appends a number; in hexadecimal, the two's complement of a negative one.
  /// @param value  any
  /// @return This formatter.
  CCmTextFormator& operator<<(int value);
  CCmTextFormator& operator<<(unsigned int value);
  CCmTextFormator& operator<<(long value);
  CCmTextFormator& operator<<(unsigned long value);
  ///@}
  /// Appends an address: "0x" and hexadecimal digits, whatever the radix.
  /// @param value  any
  /// @return This formatter.
  CCmTextFormator& operator<<(const void* value);
  /// Chooses how the numbers that follow are written; at first, in decimal.
  /// @param radix  CM_ORDIX_HEX, or CM_ORDIX_DEC
  /// @return This formatter.
  CCmTextFormator& operator<<(CCmOrdix radix);

  /// @return The string so far, in the buffer; "" when there is no buffer.
  operator char*();
  /// @return The string's length in characters, without the NUL.
  unsigned int tell() const;

 private:
  void append(const char* text, unsigned long length);
  void appendNumber(unsigned long value, int base);

  char* m_buffer;
  unsigned int m_size;
  unsigned int m_length = 0;
  bool m_hexadecimal = false;
};

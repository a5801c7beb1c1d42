#pragma once

#include <string>

#include "util/export.h"

using CCmString = std::string;

/// Radix of the numbers that follow.
enum CCmOrdix : int { CM_ORDIX_HEX = 0, CM_ORDIX_DEC = 1 };

/// Writes text into a buffer of the caller's. Allocates nothing, never writes past the buffer, and leaves a
/// terminated text after every operation; what does not fit is cut off. The same in every locale.
/// Threads: one owner. Lifetime: the buffer must outlive the formatter.
class UTIL_API CCmTextFormator {
 public:
  /// `size` is the buffer's size in bytes, the terminating NUL included; with size 0 nothing is ever written.
  CCmTextFormator(char* buffer, unsigned int size);
  CCmTextFormator(const CCmTextFormator&) = delete;
  CCmTextFormator& operator=(const CCmTextFormator&) = delete;

  CCmTextFormator& operator<<(const char* text);       ///< null writes nothing
  CCmTextFormator& operator<<(const CCmString& text);  ///< up to the first NUL
  CCmTextFormator& operator<<(int value);
  CCmTextFormator& operator<<(unsigned int value);
  CCmTextFormator& operator<<(long value);
  CCmTextFormator& operator<<(unsigned long value);
  CCmTextFormator& operator<<(const void* value);  ///< "0x" and hexadecimal digits, whatever the radix
  /// Numbers are in decimal until told otherwise. In hexadecimal a negative number prints its two's
  /// complement.
  CCmTextFormator& operator<<(CCmOrdix radix);

  /// The text so far, terminated; "" when there is no buffer.
  operator char*();
  /// The text's length in characters, without the NUL.
  unsigned int tell() const;

 private:
  void append(const char* text, unsigned long length);
  void appendNumber(unsigned long value, int base);

  char* m_buffer;
  unsigned int m_size;
  unsigned int m_length = 0;
  bool m_hexadecimal = false;
};

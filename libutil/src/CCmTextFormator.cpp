// SPDX-License-Identifier: Apache-2.0
#include "util/CCmTextFormator.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>

CCmTextFormator::CCmTextFormator(char* buffer, unsigned int size)
    : m_buffer(buffer), m_size(buffer == nullptr ? 0 : size) {
  if (m_size != 0) m_buffer[0] = '\0';
}

CCmTextFormator& CCmTextFormator::operator<<(const char* text) {
  if (text != nullptr) append(text, std::strlen(text));
  return *this;
}

CCmTextFormator& CCmTextFormator::operator<<(const CCmString& text) {
  return *this << text.c_str();
}

CCmTextFormator& CCmTextFormator::operator<<(int value) {
  if (m_hexadecimal) return *this << static_cast<unsigned int>(value);
  return *this << static_cast<long>(value);
}

CCmTextFormator& CCmTextFormator::operator<<(unsigned int value) {
  return *this << static_cast<unsigned long>(value);
}

CCmTextFormator& CCmTextFormator::operator<<(long value) {
  const auto bits = static_cast<unsigned long>(value);
  if (m_hexadecimal || value >= 0) return *this << bits;
  append("-", 1);
  appendNumber(0 - bits, 10);
  return *this;
}

CCmTextFormator& CCmTextFormator::operator<<(unsigned long value) {
  appendNumber(value, m_hexadecimal ? 16 : 10);
  return *this;
}

CCmTextFormator& CCmTextFormator::operator<<(const void* value) {
  append("0x", 2);
  appendNumber(reinterpret_cast<std::uintptr_t>(value), 16);
  return *this;
}

CCmTextFormator& CCmTextFormator::operator<<(CCmOrdix radix) {
  m_hexadecimal = radix == CM_ORDIX_HEX;
  return *this;
}

CCmTextFormator::operator char*() {
  static char empty[1] = {'\0'};
  return m_size == 0 ? empty : m_buffer;
}

unsigned int CCmTextFormator::tell() const {
  return m_length;
}

void CCmTextFormator::append(const char* text, unsigned long length) {
  if (m_size == 0) return;
  const unsigned long room = m_size - 1 - m_length;
  const unsigned long taken = std::min(length, room);
  std::memcpy(m_buffer + m_length, text, taken);
  m_length += static_cast<unsigned int>(taken);
  m_buffer[m_length] = '\0';
}

void CCmTextFormator::appendNumber(unsigned long value, int base) {
  char digits[20];  // As many as the largest number has in decimal.
  const std::to_chars_result end = std::to_chars(digits, digits + sizeof digits, value, base);
  append(digits, static_cast<unsigned long>(end.ptr - digits));
}

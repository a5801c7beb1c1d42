// SPDX-License-Identifier: Apache-2.0
#include "util/bounded_copy.h"

#include <cerrno>
#include <cstring>

int memcpy_s(void* destination, std::size_t destinationSize, const void* source, std::size_t count) {
  if (destination == nullptr) return EINVAL;
  if (source == nullptr || count > destinationSize) {
    std::memset(destination, 0, destinationSize);
    return source == nullptr ? EINVAL : ERANGE;
  }
  std::memcpy(destination, source, count);
  return 0;
}

int memset_s(void* destination, std::size_t destinationSize, int value, std::size_t count) {
  if (destination == nullptr) return EINVAL;
  const bool fits = count <= destinationSize;
  std::memset(destination, value, fits ? count : destinationSize);
  return fits ? 0 : ERANGE;
}

int strncpy_s(char* destination, std::size_t destinationSize, const char* source, std::size_t count) {
  if (destination == nullptr) return EINVAL;
  const std::size_t length = strnlen_s(source, count);
  const bool fits = length < destinationSize;
  if (source == nullptr || !fits) {
    if (destinationSize != 0) destination[0] = '\0';
    return source == nullptr ? EINVAL : ERANGE;
  }
  std::memcpy(destination, source, length);
  destination[length] = '\0';
  return 0;
}

std::size_t strnlen_s(const char* text, std::size_t limit) {
  if (text == nullptr) return 0;
  std::size_t length = 0;
  while (length < limit && text[length] != '\0') ++length;
  return length;
}

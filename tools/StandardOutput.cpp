// SPDX-License-Identifier: Apache-2.0
#include "StandardOutput.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstddef>
#include <iostream>

void ReserveStandardDescriptors() {
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    // The lowest free descriptor is given out first: this one. It is there in every file system, and O_PATH
    // lets nobody read or write.
    if (::fcntl(descriptor, F_GETFD) == -1 && ::open("/", O_PATH) == -1) return;
  }
}

StandardOutput::StandardOutput() {
  std::signal(SIGPIPE, SIG_IGN);
  setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
  m_replaced = std::cout.rdbuf(this);
}

StandardOutput::~StandardOutput() {
  writeOut();
  std::cout.rdbuf(m_replaced);
}

int StandardOutput::Finish() {
  writeOut();
  return m_error == EPIPE ? 0 : m_error;
}

StandardOutput::int_type StandardOutput::overflow(int_type character) {
  writeOut();
  if (!traits_type::eq_int_type(character, traits_type::eof())) sputc(traits_type::to_char_type(character));
  return traits_type::not_eof(character);
}

int StandardOutput::sync() {
  writeOut();
  return m_error == 0 ? 0 : -1;
}

void StandardOutput::writeOut() {
  const char* from = pbase();
  while (m_error == 0 && from != pptr()) {
    const ssize_t written = ::write(STDOUT_FILENO, from, static_cast<std::size_t>(pptr() - from));
    if (written >= 0) {
      from += written;
    } else if (errno != EINTR) {
      m_error = errno;
    }
  }
  setp(m_buffer.data(), m_buffer.data() + m_buffer.size());
}

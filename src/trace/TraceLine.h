// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <cstdint>

#include "util/CCmTextFormator.h"
#include "util/util_trace.h"

namespace kalStore::internal {

/// One trace line, composed in a buffer on the stack: allocates nothing. Made by the macros below.
class TraceLine {
 public:
  /// Opens the line with the calling thread's pool job, if it runs one.
  explicit TraceLine(int level);
  /// Opens the line with the job and the label.
  TraceLine(int level, const char* label);

  CCmTextFormator& Text() { return m_text; }
  /// Passes the line to the sink.
  void Emit();

 private:
  static constexpr unsigned int kLineSize = 1024;

  int m_level;
  char m_buffer[kLineSize];
  CCmTextFormator m_text;
};

/// Prints the id of a subscription, which the formatter's numbers cannot hold where a `long` has 32 bits.
struct Id {
  std::uint64_t id;
};
CCmTextFormator& operator<<(CCmTextFormator& text, Id id);

/// Prints " [cid=N]".
struct Cid {
  std::uint32_t callId;
};
CCmTextFormator& operator<<(CCmTextFormator& text, Cid cid);

/// Prints " [this=0x...]".
struct This {
  const void* object;
};
CCmTextFormator& operator<<(CCmTextFormator& text, This self);

inline bool IsTraced(int level) {
  return get_external_trace_mask() >= level;
}

/// Composes a line that begins as its constructor does, and passes it to the sink. Out of line and cold, so
/// that the function that traces has a small frame: only a line that is wanted pays for the buffer.
template <class Compose, class... Opening>
[[gnu::noinline, gnu::cold]] void EmitLine(const Compose& compose, Opening... opening) {
  TraceLine line(opening...);
  compose(line.Text());
  line.Emit();
}

}  // namespace kalStore::internal

/// Traces a line: job, label, then the message, a chain of `<<` operands. The label is the qualified name of
/// the operation that the line is about; programs read it. Reads the mask and nothing else when the level is
/// not wanted.
#define TESSEL_TRACE(level, label, message) TESSEL_TRACE_LINE(level, message, level, label)

/// The same without a label: job, then the message.
#define TESSEL_TRACE_TEXT(level, message) TESSEL_TRACE_LINE(level, message, level)

#define TESSEL_TRACE_LINE(level, message, ...)                                        \
  do {                                                                                \
    if (::kalStore::internal::IsTraced(level)) {                                      \
      const auto compose = [&](CCmTextFormator& traceText) { traceText << message; }; \
      ::kalStore::internal::EmitLine(compose, __VA_ARGS__);                           \
    }                                                                                 \
  } while (false)

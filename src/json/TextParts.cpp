#include "json/TextParts.h"

#include "json/StringScan.h"
#include "tessel/json_text.h"

namespace json {

namespace {

// Steps over the tokens of a well-formed text. What it is asked for is always there.
class Steps {
 public:
  explicit Steps(std::string_view text) : m_at(text.data()), m_end(m_at + text.size()) {}

  void Skip() { ++m_at; }
  void SkipSpace() {
    while (m_at != m_end && json_isspace(*m_at)) ++m_at;
  }

  // Skips white space and `separator`, which stands between values; false where the container ends.
  bool AtNext(char separator) {
    SkipSpace();
    if (*m_at == separator) {
      Skip();
      SkipSpace();
    }
    return *m_at != '}' && *m_at != ']';
  }

  std::string_view TakeValue() {
    const char* const start = m_at;
    switch (*m_at) {
      case '"':
        skipString();
        break;
      case '{':
      case '[':
        skipContainer();
        break;
      default:
        skipWord();
    }
    return {start, m_at};
  }

 private:
  void skipString() {
    for (++m_at;; m_at += 2) {  // two: an escape's backslash and its letter
      m_at = FindSpecial<false>(m_at, m_end);
      if (*m_at == '"') break;
    }
    ++m_at;
  }

  void skipContainer() {
    std::size_t depth = 0;
    do {
      const char c = *m_at;
      if (c == '"') {
        skipString();
        continue;
      }
      if (c == '{' || c == '[') ++depth;
      if (c == '}' || c == ']') --depth;
      ++m_at;
    } while (depth != 0);
  }

  void skipWord() {
    while (m_at != m_end && *m_at != ',' && *m_at != '}' && *m_at != ']' && !json_isspace(*m_at)) ++m_at;
  }

  const char* m_at;
  const char* const m_end;
};

}  // namespace

std::string_view DocumentOf(std::string_view text) {
  while (json_isspace(text.front())) text.remove_prefix(1);
  while (json_isspace(text.back())) text.remove_suffix(1);
  return text;
}

void ReadMembers(std::string_view object, std::vector<MemberText>& members) {
  members.clear();
  Steps steps(object);
  steps.Skip();
  while (steps.AtNext(',')) {
    const std::string_view key = steps.TakeValue();
    steps.AtNext(':');
    members.push_back({key, steps.TakeValue()});
  }
}

std::vector<std::string_view> ElementsOf(std::string_view array) {
  std::vector<std::string_view> elements;
  Steps steps(array);
  steps.Skip();
  while (steps.AtNext(',')) elements.push_back(steps.TakeValue());
  return elements;
}

}  // namespace json

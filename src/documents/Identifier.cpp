// SPDX-License-Identifier: Apache-2.0
#include "documents/Identifier.h"

#include <algorithm>
#include <iterator>

namespace kalStore::internal {
namespace {

// What may not name a namespace: the words of the language, what it reserves, macros of the C library and of
// compilers, and this library's own names, which generated code has to find.
constexpr std::string_view kTaken[] = {
    "alignas",     "alignof",  "and",          "and_eq",     "asm",       "assert",    "auto",
    "bitand",      "bitor",    "bool",         "break",      "case",      "catch",     "char",
    "char16_t",    "char32_t", "char8_t",      "class",      "co_await",  "co_return", "co_yield",
    "compl",       "concept",  "const",        "const_cast", "consteval", "constexpr", "constinit",
    "continue",    "decltype", "default",      "delete",     "do",        "double",    "dynamic_cast",
    "else",        "enum",     "errno",        "explicit",   "export",    "extern",    "false",
    "float",       "for",      "friend",       "goto",       "if",        "inline",    "int",
    "kal",         "kalStore", "linux",        "long",       "mutable",   "namespace", "new",
    "noexcept",    "not",      "not_eq",       "nullptr",    "offsetof",  "operator",  "or",
    "or_eq",       "posix",    "private",      "protected",  "public",    "register",  "reinterpret_cast",
    "requires",    "return",   "short",        "signed",     "sizeof",    "static",    "static_assert",
    "static_cast", "std",      "stderr",       "stdin",      "stdout",    "struct",    "switch",
    "template",    "this",     "thread_local", "throw",      "true",      "try",       "typedef",
    "typeid",      "typename", "union",        "unix",       "unsigned",  "using",     "virtual",
    "void",        "volatile", "wchar_t",      "while",      "xor",       "xor_eq"};
static_assert(std::ranges::is_sorted(kTaken));

bool IsCapital(char c) {
  return c >= 'A' && c <= 'Z';
}
bool IsLetter(char c) {
  return IsCapital(c) || (c >= 'a' && c <= 'z');
}
bool IsLetterOrDigit(char c) {
  return IsLetter(c) || (c >= '0' && c <= '9');
}

// Two underscores in a row are the compiler's.
bool IsIdentifier(std::string_view string) {
  return !string.empty() && IsLetter(string.front()) && string.find("__") == std::string_view::npos &&
         std::ranges::all_of(string, [](char c) { return c == '_' || IsLetterOrDigit(c); });
}

}  // namespace

std::string CamelCase(std::string_view string) {
  std::string joined;
  bool isWordBegin = true;
  for (const char c : string) {
    if (c < ' ' || c > '~') return {};
    if (!IsLetterOrDigit(c)) {
      isWordBegin = true;
      continue;
    }
    const bool rises = isWordBegin && c >= 'a';
    joined += rises ? static_cast<char>(c - 'a' + 'A') : c;
    isWordBegin = false;
  }
  return joined;
}

bool IsTypeName(std::string_view string) {
  return IsIdentifier(string) && IsCapital(string.front());
}

bool IsLikeAMacro(std::string_view string) {
  return std::ranges::none_of(string, [](char c) { return c >= 'a' && c <= 'z'; });
}

bool IsOwnNamespace(std::string_view string) {
  for (;;) {
    const std::size_t end = string.find("::");
    const std::string_view part = string.substr(0, end);
    if (!IsIdentifier(part) || IsLikeAMacro(part) || std::ranges::binary_search(kTaken, part)) return false;
    if (end == std::string_view::npos) return true;
    string.remove_prefix(end + 2);
  }
}

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
// Any text is read as a plain reader would read it, faults are reported where they are, and what was read is
// written so that it reads back to the same. Numbers with a fraction are written with six decimals: the first
// writing may round them, and from then on nothing changes.

#include <algorithm>
#include <cstdint>
#include <string>

#include "Check.h"
#include "JsonModel.h"

namespace {

using json::ParseError;
using json::Value;

Value Read(const std::string& text, ParseError& error) {
  error = {text.size() + 1, 0, 0, "not written yet"};
  const Value value = json::Deserialize(text, error);
  FUZZ_CHECK(fuzz::Identical(value, json::Deserialize(text)));
  return value;
}

void CheckNoFault(const ParseError& error) {
  FUZZ_CHECK(error.reason == nullptr);
  FUZZ_EQUAL(error.offset, 0U);
  FUZZ_EQUAL(error.line, 0U);
  FUZZ_EQUAL(error.column, 0U);
}

// The fault is at the first byte that no well-formed text could have there.
void CheckFault(const std::string& text, const ParseError& error) {
  FUZZ_CHECK(error.reason != nullptr);
  FUZZ_CHECK(error.offset <= text.size());
  const std::string before = text.substr(0, error.offset);
  FUZZ_EQUAL(error.line, 1 + static_cast<std::size_t>(std::count(before.begin(), before.end(), '\n')));
  FUZZ_EQUAL(error.column, before.size() - (before.rfind('\n') + 1) + 1);

  ParseError cut;
  Read(before, cut);
  if (cut.reason != nullptr) FUZZ_EQUAL(cut.offset, before.size());
  if (error.offset == text.size()) return;
  Read(text.substr(0, error.offset + 1), cut);
  FUZZ_CHECK(cut.reason != nullptr);
  FUZZ_EQUAL(cut.offset, error.offset);
  FUZZ_EQUAL(std::string(cut.reason), error.reason);
}

void CheckWritten(const Value& value, const std::string& text) {
  const bool isDocument = value.GetType() == json::ObjectVal || value.GetType() == json::ArrayVal;
  FUZZ_EQUAL(json::Serialize(value), isDocument ? text : std::string());
  if (value.GetType() == json::ArrayVal) FUZZ_EQUAL(json::SerializeArray(value.ToArray()), text);
}

void CheckRoundTrips(const Value& first) {
  ParseError error;
  const std::string text = json::SerializeValue(first);
  CheckWritten(first, text);
  const Value second = Read(text, error);
  CheckNoFault(error);
  FUZZ_EQUAL(second.GetType(), first.GetType());
  FUZZ_EQUAL(json::SerializeValue(second), text);
  const Value third = Read(json::SerializeValue(second), error);
  CheckNoFault(error);
  FUZZ_CHECK(fuzz::Identical(second, third));
  FUZZ_EQUAL(second == third, !fuzz::HoldsInfinity(second));
  FUZZ_EQUAL(json::SerializeValue(third), text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  ParseError error;
  const Value value = Read(text, error);
  const auto model = fuzz::ReadJsonModel(text);
  FUZZ_EQUAL(error.reason == nullptr, model.has_value());
  if (model) {
    CheckNoFault(error);
    FUZZ_CHECK(fuzz::Matches(value, *model));
  } else {
    CheckFault(text, error);
    FUZZ_CHECK(fuzz::Identical(value, Value()));
  }
  CheckRoundTrips(value);
  return 0;
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "json/AsciiCase.h"

namespace kalStore::internal {

/// A value of a JSON text, and where it is there. The text must outlive it.
struct PlacedValue {
  std::string name;                 ///< of the member that it is; "" for an element and the whole document
  const char* namePlace = nullptr;  ///< null likewise
  const char* place = nullptr;      ///< its first byte
  std::string text;                 ///< a string's bytes, or a number as it is written
  std::vector<PlacedValue> parts;   ///< an object's members, or an array's elements

  bool IsObject() const { return *place == '{'; }
  bool IsArray() const { return *place == '['; }
  bool IsString() const { return *place == '"'; }
  bool IsTrue() const { return Lowered(*place) == 't'; }
  bool IsFalse() const { return Lowered(*place) == 'f'; }
  bool IsNumber() const { return *place == '-' || (*place >= '0' && *place <= '9'); }
};

/// A text as a tree, or its first fault.
struct PlacedText {
  PlacedValue document;
  const char* faultPlace = nullptr;
  const char* faultReason = nullptr;  ///< null when the text is well-formed
};

PlacedText ReadPlaced(std::string_view text);

/// What the value that begins at a place is, in words: "a string".
const char* KindOf(const char* value);

}  // namespace kalStore::internal

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <string_view>

#include "Printable.h"

/// A string as a field of a CSV table: as it can be shown, in quotes with its own ones doubled.
inline std::string CsvText(std::string_view text) {
  std::string field = "\"";
  for (const char character : Printable(text)) {
    field += character;
    if (character == '"') field += '"';
  }
  return field + '"';
}

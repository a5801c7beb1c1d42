// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "tessel/json.h"

namespace fuzz {

/// What a JSON text says, read the plain way: by recursion and with the C library's strtod.
struct JsonModel {
  json::ValueType type = json::NullVal;
  bool flag = false;
  double number = 0;
  std::string text;
  std::vector<JsonModel> elements;
  std::map<std::string, JsonModel> members;
};

/// None when the text is malformed.
std::optional<JsonModel> ReadJsonModel(std::string_view text);

/// Whether the value is what the model says, in every representation that it has.
bool Matches(const json::Value& value, const JsonModel& model);

/// Whether the values are the same down to the bits, kinds and unused representations included.
bool Identical(const json::Value& left, const json::Value& right);

/// Whether the value is an infinity or holds one: such a value equals nothing, not even itself.
bool HoldsInfinity(const json::Value& value);

}  // namespace fuzz

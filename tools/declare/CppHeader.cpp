// SPDX-License-Identifier: Apache-2.0
#include "declare/CppHeader.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <span>
#include <string_view>

#include "Printable.h"
#include "declare/Words.h"

namespace declare {
namespace {

using kalStore::SettingDeclaration;
using kalStore::SettingType;

constexpr std::size_t kWidth = 100;

constexpr const char* kGroups[] = {"COMMON",       "FEATURE",     "METRICS",     "AUDIO",     "AUDIO_SLIDE",
                                   "VIDEO",        "VIDEO_SLIDE", "APPLICATION", "GAMESTATE", "AUDIO_SI",
                                   "TRANSMISSION", "TA_ONLY",     "UNIT_TEST"};
static_assert(std::size(kGroups) == kalStore::KAL_CONFIG_GROUP_LAST);

// A C++ string literal of these bytes. An octal escape ends after three digits, whatever follows; a question
// mark might begin a trigraph.
std::string Literal(std::string_view bytes) {
  std::string literal = "\"";
  for (const char c : bytes) {
    if (c == '"' || c == '\\' || c == '?') literal += '\\';
    if (c >= ' ' && c <= '~') {
      literal += c;
      continue;
    }
    const auto byte = static_cast<unsigned char>(c);
    literal += '\\';
    for (const int shift : {6, 3, 0}) literal += static_cast<char>('0' + (byte >> shift & 7));
  }
  return literal + '"';
}

// The message of an attribute, which can have no escapes: what would need one is replaced.
std::string Message(std::string_view text) {
  std::string message = Printable(text);
  for (char& c : message) {
    if (c == '"' || c == '?') c = '\'';
    if (c == '\\') c = '/';
  }
  return '"' + message + '"';
}

// One line of a comment. A backslash at its end would join the next line to it, as would its trigraph.
std::string CommentLine(std::string line) {
  if (line.ends_with('\\')) {
    line.erase(line.find_last_not_of('\\') + 1);
    line += "&#92;";
  } else if (line.ends_with("\?\?/")) {
    line.pop_back();
    line += "&#47;";
  }
  return line.empty() ? "//\n" : "// " + line + "\n";
}

// The lines of a string, each wrapped.
std::string Comment(std::string_view text) {
  std::string comment;
  while (!text.empty()) {
    const std::size_t end = text.find('\n');
    std::string line;
    for (const std::string& word : Words(text.substr(0, end))) {
      if (!line.empty() && line.size() + 1 + word.size() > kWidth) {
        comment += CommentLine(line);
        line.clear();
      }
      line += (line.empty() ? "" : " ") + Printable(word);
    }
    comment += CommentLine(line);
    text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  }
  return comment;
}

std::string Remarks(const SettingDeclaration& setting) {
  std::string remarks = "Default: " + Default(setting);
  if (!setting.unit.empty()) remarks += " " + setting.unit;
  if (const std::string range = Range(setting); !range.empty()) remarks += "; " + range;
  if (!setting.values.empty()) remarks += "; one of " + Joined(setting.values, ", ");
  if (!setting.since.empty()) remarks += "; since " + setting.since;
  return remarks + ".";
}

std::string CommentOf(const SettingDeclaration& setting) {
  std::string comment = Comment(setting.description);
  if (!comment.empty()) comment += "//\n";
  std::string remarks = Remarks(setting);
  std::ranges::replace(remarks, '\n', ' ');
  return comment + Comment(remarks);
}

std::string DurationOf(std::string_view unit) {
  if (unit == "ns") return "std::chrono::nanoseconds";
  if (unit == "us") return "std::chrono::microseconds";
  if (unit == "ms") return "std::chrono::milliseconds";
  if (unit == "s") return "std::chrono::seconds";
  return unit == "min" ? "std::chrono::minutes" : "std::chrono::hours";
}

std::string TypeOf(const SettingDeclaration& setting) {
  switch (setting.type) {
    case SettingType::kBool:
      return "bool";
    case SettingType::kInt:
      return "int";
    case SettingType::kUInt:
      return "unsigned int";
    case SettingType::kInt64:
      return "std::int64_t";
    case SettingType::kDouble:
      return "double";
    case SettingType::kString:
      return "std::string";
    case SettingType::kEnum:
      return setting.identifier;
    case SettingType::kDuration:
      break;
  }
  return DurationOf(setting.unit);
}

// The least number of 64 bits is the one that has no literal.
std::string WholeNumber(const std::string& text) {
  const bool isLeast = text == std::to_string(std::numeric_limits<std::int64_t>::min());
  return isLeast ? "std::numeric_limits<std::int64_t>::min()" : text;
}

std::string EnumeratorOf(const SettingDeclaration& setting, const std::string& value) {
  std::size_t index = 0;
  while (setting.values[index] != value) ++index;
  return "k" + setting.enumerators[index];
}

std::string DefaultOf(const SettingDeclaration& setting) {
  const std::string& text = setting.defaultValue.ToString();
  switch (setting.type) {
    case SettingType::kBool:
      return setting.defaultValue ? "true" : "false";
    case SettingType::kInt:
    case SettingType::kInt64:
      return WholeNumber(text);
    case SettingType::kUInt:
      return text + "U";
    case SettingType::kDouble:
      return text.find_first_of(".e") == std::string::npos ? text + ".0" : text;
    case SettingType::kString:
      return Literal(text);
    case SettingType::kEnum:
      return TypeOf(setting) + "::" + EnumeratorOf(setting, text);
    case SettingType::kDuration:
      break;
  }
  return TypeOf(setting) + "(" + WholeNumber(text) + ")";
}

std::string EnumOf(const SettingDeclaration& setting) {
  std::string text =
      "\n// The values of k" + setting.identifier + ".\nenum class " + setting.identifier + " {\n";
  for (const std::string& enumerator : setting.enumerators) text += "  k" + enumerator + ",\n";
  return text + "};\n";
}

std::string NamesOf(const SettingDeclaration& setting) {
  const std::string type = "::" + setting.nameSpace + "::" + setting.identifier;
  std::string text = "\ntemplate <>\nstruct kalStore::ConfigEnum<" + type +
                     "> {\n  static constexpr ConfigEnumName<" + type + "> kNames[] = {\n";
  for (const std::string& value : setting.values) {
    text += "      {" + type + "::" + EnumeratorOf(setting, value) + ", " + Literal(value) + "},\n";
  }
  return text + "  };\n};\n";
}

std::string DeprecationOf(const SettingDeclaration& setting) {
  if (!setting.deprecated) return "";
  return "[[deprecated(" + Message(Deprecation(*setting.deprecated)) + ")]]\n";
}

std::string KeyOf(const SettingDeclaration& setting) {
  return "\n" + CommentOf(setting) + DeprecationOf(setting) + "inline constexpr kalStore::ConfigKey<" +
         TypeOf(setting) + "> k" + setting.identifier + "{\n    kalStore::KAL_CONFIG_GROUP_" +
         kGroups[setting.group] + ", " + Literal(setting.name) + ", " + DefaultOf(setting) + "};\n";
}

// The settings of one namespace: their enums come first, since the names of those are not in it.
std::string Block(std::span<const SettingDeclaration> settings) {
  const std::string begin = "\nnamespace " + settings.front().nameSpace + " {\n";
  const std::string end = "\n}  // namespace " + settings.front().nameSpace + "\n";
  std::string enums, names, keys;
  for (const SettingDeclaration& setting : settings) {
    keys += KeyOf(setting);
    if (setting.type != SettingType::kEnum) continue;
    enums += EnumOf(setting);
    names += NamesOf(setting);
  }
  return (enums.empty() ? "" : begin + enums + end + names) + begin + keys + end;
}

}  // namespace

std::string CppHeader(const std::vector<SettingDeclaration>& settings,
                      const std::vector<std::string>& sources) {
  std::vector<std::string> names;
  names.reserve(sources.size());
  for (const std::string& source : sources) {
    names.push_back(Printable(std::filesystem::path(source).filename().string()));
  }
  std::string text = "// Made by tessel declare from " + Joined(names, ", ") +
                     ". Changes to this file are lost.\n#pragma once\n\n#include <tessel/ConfigEnum.h>\n"
                     "#include <tessel/ConfigKey.h>\n#include <tessel/KalConfigGroup.h>\n\n"
                     "#include <chrono>\n#include <cstdint>\n#include <limits>\n#include <string>\n";
  for (auto begin = settings.begin(); begin != settings.end();) {
    const auto end = std::find_if(begin, settings.end(), [&](const SettingDeclaration& setting) {
      return setting.nameSpace != begin->nameSpace;
    });
    text += Block({begin, end});
    begin = end;
  }
  return text;
}

}  // namespace declare

// SPDX-License-Identifier: Apache-2.0
#include "LintOutput.h"

#include <string_view>

#include "Colour.h"
#include "JsonObject.h"
#include "Printable.h"
#include "SettingsDocument.h"

namespace {

using kalStore::SettingsEffect;
using kalStore::SettingsFinding;
using kalStore::SettingsProblem;

const char* NameOf(SettingsProblem problem) {
  switch (problem) {
    case SettingsProblem::kNoJson:
      return "no-json";
    case SettingsProblem::kNoObject:
      return "no-object";
    case SettingsProblem::kZeroByte:
      return "zero-byte";
    case SettingsProblem::kUnknownGroup:
      return "unknown-group";
    case SettingsProblem::kNoArray:
      return "no-array";
    case SettingsProblem::kNoEntry:
      return "no-entry";
    case SettingsProblem::kNoMember:
      return "no-member";
    case SettingsProblem::kNoText:
      return "no-text";
    case SettingsProblem::kEmptyName:
      return "empty-name";
    case SettingsProblem::kRepeatedGroup:
      return "repeated-group";
    case SettingsProblem::kRepeatedName:
      return "repeated-name";
    case SettingsProblem::kRepeatedMember:
      return "repeated-member";
    case SettingsProblem::kUnknownToggle:
      return "unknown-toggle";
    case SettingsProblem::kUnknownName:
      return "unknown-name";
    case SettingsProblem::kDeprecatedName:
      return "deprecated-name";
    case SettingsProblem::kWrongType:
      return "wrong-type";
    case SettingsProblem::kOutOfRange:
      return "out-of-range";
    case SettingsProblem::kNotAllowed:
      return "not-allowed";
  }
  return "";
}

const char* NameOf(SettingsEffect effect) {
  switch (effect) {
    case SettingsEffect::kRefused:
      return "refused";
    case SettingsEffect::kSkipped:
      return "skipped";
    case SettingsEffect::kImported:
      return "imported";
  }
  return "";
}

// A string that an annotation may hold: what ends it, or a property of it, is written as %XX.
std::string ForGithub(std::string_view text, std::string_view special) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string out;
  for (const char letter : text) {
    if (special.find(letter) == std::string_view::npos) {
      out += letter;
      continue;
    }
    const auto byte = static_cast<unsigned char>(letter);
    out += {'%', kDigits[byte >> 4], kDigits[byte & 0xF]};
  }
  return out;
}

}  // namespace

void PrintFindingAsText(std::ostream& out, const std::string& name, const SettingsFinding& finding) {
  out << Coloured(Colour::kBold, FindingPlace(Printable(name), finding)) << ' ' << FindingText(finding)
      << '\n';
}

void PrintFindingAsJson(std::ostream& out, const std::string& name, const SettingsFinding& finding) {
  JsonObject(out)
      .Member("file", name)
      .Member("line", finding.line)
      .Member("column", finding.column)
      .Member("problem", NameOf(finding.problem))
      .Member("effect", NameOf(kalStore::EffectOf(finding.problem)))
      .Member("path", finding.path)
      .Member("name", finding.name)
      .Member("nearest", finding.nearest)
      .Member("reason", finding.reason);
}

void PrintFindingForGithub(std::ostream& out, const std::string& name, const SettingsFinding& finding) {
  const bool imported = kalStore::EffectOf(finding.problem) == SettingsEffect::kImported;
  out << (imported ? "::warning" : "::error") << " file=" << ForGithub(Printable(name), "%:,")
      << ",line=" << finding.line << ",col=" << finding.column << "::" << ForGithub(FindingText(finding), "%")
      << '\n';
}

// SPDX-License-Identifier: Apache-2.0
#include <algorithm>
#include <cstddef>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "documents/DeclarationsReader.h"
#include "documents/FindingOrder.h"
#include "tessel/settings_declaration.h"

namespace kalStore {

using namespace internal;

namespace {

std::string PathOf(const SettingDeclaration& setting) {
  return KalConfigGroup2GroupName(setting.group) + "/" + setting.name;
}

// What declarations that are right by themselves may do to each other.
class ListCheck {
 public:
  explicit ListCheck(std::vector<DeclarationsReader>& readers) : m_readers(readers) {
    for (const SettingDeclaration& toggle : FeatureToggleDeclarations()) m_known[PathOf(toggle)] = {};
    for (DeclarationsReader& reader : m_readers) {
      for (const PlacedDeclaration& declaration : reader.Settings()) {
        addNamespace(declaration.setting.nameSpace);
      }
    }
  }

  void Check() {
    const bool areAllRight =
        std::ranges::all_of(m_readers, [](DeclarationsReader& reader) { return reader.Findings().empty(); });
    for (DeclarationsReader& reader : m_readers) {
      for (const PlacedDeclaration& declaration : reader.Settings()) add(reader, declaration);
    }
    if (!areAllRight) return;  // What is missing may be declared, and wrong.
    for (DeclarationsReader& reader : m_readers) {
      for (const PlacedDeclaration& declaration : reader.Settings()) checkReplacement(reader, declaration);
    }
  }

 private:
  struct Known {
    bool isDeclared = false;
    bool isDeprecated = false;
  };

  // With those that it is nested in.
  void addNamespace(std::string_view name) {
    for (std::size_t end = name.size(); end != name.npos; end = name.rfind("::", end - 1)) {
      m_nameSpaces.emplace(name.substr(0, end));
    }
  }

  void add(DeclarationsReader& reader, const PlacedDeclaration& declaration) {
    const SettingDeclaration& setting = declaration.setting;
    const std::string path = PathOf(setting);
    // A component may declare a toggle that it reads.
    Known& known = m_known[path];
    const bool isNew = !std::exchange(known.isDeclared, true);
    known.isDeprecated = setting.deprecated.has_value();
    if (!isNew) {
      reader.AddFinding(declaration.place, declaration.path + ".name", InQuotes(path) + " is declared twice");
      return;
    }
    std::vector<std::string> names = {"k" + setting.identifier};
    if (setting.type == SettingType::kEnum) names.push_back(setting.identifier);
    for (const std::string& name : names) {
      if (!m_nameSpaces.contains(setting.nameSpace + "::" + name)) continue;
      reader.AddFinding(declaration.place, declaration.path + ".name",
                        InQuotes(path) + " is called " + name +
                            " in C++, as is a namespace: give it another \"identifier\"");
    }
    const auto [other, isFirst] =
        m_identifiers.try_emplace(setting.nameSpace + "::" + setting.identifier, path);
    if (isFirst) return;
    reader.AddFinding(declaration.place, declaration.path + ".name",
                      InQuotes(path) + " is called k" + setting.identifier + " in C++, as is " +
                          InQuotes(other->second) + ": give one another \"identifier\"");
  }

  void checkReplacement(DeclarationsReader& reader, const PlacedDeclaration& declaration) {
    if (declaration.replacedBy == nullptr) return;
    const std::string& replacement = declaration.setting.deprecated->replacedBy;
    std::string reason;
    if (const auto found = m_known.find(replacement); found == m_known.end()) {
      std::vector<std::string_view> paths;
      for (const auto& [path, known] : m_known) paths.push_back(path);
      reason = "no setting " + InQuotes(replacement) + " is declared" + Suggestion(replacement, paths);
    } else if (found->second.isDeprecated) {
      reason = InQuotes(replacement) + " is deprecated, too";
    } else {
      return;
    }
    reader.AddFinding(declaration.replacedBy, declaration.path + ".deprecated.replacedBy", reason);
  }

  std::vector<DeclarationsReader>& m_readers;
  std::map<std::string, Known> m_known;              // By path; toggles, too.
  std::set<std::string> m_nameSpaces;                // Those that have settings, and those around them.
  std::map<std::string, std::string> m_identifiers;  // The path of each.
};

}  // namespace

SettingsDeclarations ReadDeclarations(const std::vector<std::string>& texts) {
  std::vector<DeclarationsReader> readers(texts.begin(), texts.end());
  for (DeclarationsReader& reader : readers) reader.Read();
  ListCheck(readers).Check();
  SettingsDeclarations read;
  for (std::size_t document = 0; document < texts.size(); ++document) {
    std::vector<DeclarationFinding>& findings = readers[document].Findings();
    PlaceFindings(texts[document], findings);
    for (DeclarationFinding& finding : findings) finding.document = document;
    std::ranges::move(findings, std::back_inserter(read.findings));
  }
  if (!read.findings.empty()) return read;
  for (DeclarationsReader& reader : readers) {
    for (PlacedDeclaration& declaration : reader.Settings()) {
      read.settings.push_back(std::move(declaration.setting));
    }
  }
  return read;
}

const char* SettingTypeName(SettingType type) {
  switch (type) {
    case SettingType::kBool:
      return "bool";
    case SettingType::kInt:
      return "int";
    case SettingType::kUInt:
      return "uint";
    case SettingType::kInt64:
      return "int64";
    case SettingType::kDouble:
      return "double";
    case SettingType::kString:
      return "string";
    case SettingType::kEnum:
      return "enum";
    case SettingType::kDuration:
      return "duration";
  }
  return "";
}

}  // namespace kalStore

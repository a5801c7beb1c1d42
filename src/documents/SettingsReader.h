// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <array>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

#include "documents/EntryList.h"
#include "json/JsonToken.h"
#include "tessel/KalConfigGroup.h"
#include "tessel/settings_check.h"

namespace kalStore::internal {

/// "Audio[3]": what findings call an element of a group.
std::string ElementPath(KalConfigGroup group, std::size_t index);

/// What the last member of a group's name has. Without findings, only the entries are kept.
struct SettingsGroup {
  /// Where an entry comes from.
  struct Origin {
    std::size_t element;  ///< its index in the group's array
    const char* name;     ///< the place of its name
    const char* value;    ///< the place of its value
  };

  const char* key = nullptr;  ///< the place of the member; null when the document has none
  EntryList entries;
  std::vector<Origin> origins;  ///< of each entry
  std::vector<SettingsFinding> findings;
};

/// The one reader of settings documents: makes of a text, in one pass and without a tree, the entries that
/// import sets and the findings on the form of the document. What names mean is left to the check.
///
/// It is the handler of an EventReader. The text must outlive it; the entries are copies.
class SettingsReader {
 public:
  enum class Findings {
    kNone,
    kPlaces,  ///< none, but line and column of each entry's name
    kAll,
  };

  SettingsReader(std::string_view text, Findings findings);

  /// False when import refuses the document; Refusal() is then the finding that says why, and nothing else
  /// counts.
  bool Read();
  SettingsFinding Refusal() const;

  SettingsGroup& Group(KalConfigGroup group) { return m_groups[static_cast<std::size_t>(group)]; }
  /// On the members that are no group, or not the last one of their group.
  std::vector<SettingsFinding>& DocumentFindings() { return m_findings; }

  // Events.
  void BeginObject(const char* at);
  void EndObject() { end(); }
  void BeginArray(const char* at);
  void EndArray() { end(); }
  void Key(const JsonString& key);
  void String(const JsonString& string);
  void Number(const JsonNumber& number) { readOther(number.token.data()); }
  void Literal(const char* at) { readOther(at); }

 private:
  // What the innermost open object or array is.
  enum class In { kNothing, kDocument, kGroup, kEntry, kSkipped };

  // "key" or "value" of an entry: the last member of that name.
  struct Part {
    const char* name;
    const char* key = nullptr;    // The place of the member's key; null when there is none.
    const char* value = nullptr;  // The place of its value.
    bool isString = false;
    JsonString string{};
  };

  void readGroupKey(const JsonString& key);
  void readEntryKey(const JsonString& key);
  void readOther(const char* at);
  void setPart(const char* at, const JsonString* string);
  void skip();
  void end();
  void beginEntry(const char* at);
  void endEntry();
  SettingsGroup& group() { return Group(m_group); }
  void findExpected(std::vector<SettingsFinding>& findings, SettingsProblem problem, const char* at,
                    std::string path, const char* expected) const;
  SettingsFinding finding(SettingsProblem problem, const char* at, std::string path,
                          std::string reason) const;

  const std::string_view m_text;
  const bool m_endsAtZero;
  const bool m_finds;
  const bool m_findsPlaces;
  const char* m_faultPlace = nullptr;
  const char* m_faultReason = nullptr;
  const char* m_noObject = nullptr;  // The place of the document's value when it is no object.

  std::array<SettingsGroup, KAL_CONFIG_GROUP_LAST> m_groups;
  std::vector<SettingsFinding> m_findings;

  In m_in = In::kNothing;
  In m_around = In::kNothing;                      // Of what is skipped.
  std::size_t m_skipped = 0;                       // Objects and arrays that are open in it.
  KalConfigGroup m_group = KAL_CONFIG_GROUP_LAST;  // Of the current member; LAST when its name is unknown.
  std::size_t m_element = 0;                       // How many elements of the group came before.
  const char* m_entry = nullptr;                   // The place of the current entry.
  std::array<Part, 2> m_parts{{{"key"}, {"value"}}};
  TextPlace m_place;               // Of the last entry's name, if places are found.
  const char* m_passed = nullptr;  // Where that is.
  Part* m_part = nullptr;          // Of the entry's current member; null when it is another one.
};

}  // namespace kalStore::internal

#include "ChangeReport.h"

#include <array>
#include <string>
#include <string_view>
#include <unordered_set>

#include "Colour.h"
#include "ConfigPath.h"
#include "Printable.h"

namespace {

// "3 new, 1 changed": the counts that are not zero.
class Counts {
 public:
  void Add(std::size_t count, const char* what) {
    if (count == 0) return;
    if (!m_text.empty()) m_text += ", ";
    m_text += std::to_string(count) + " " + what;
  }
  std::string Text() const { return m_text.empty() ? "no entries" : m_text; }

 private:
  std::string m_text;
};

}  // namespace

ChangeReport::ChangeReport(kalStore::IKalConfig& store, const std::vector<SettingsEntry>& entries)
    : m_store(store) {
  std::array<std::unordered_set<std::string_view>, kalStore::KAL_CONFIG_GROUP_LAST> seen;
  for (const SettingsEntry& entry : entries) {
    if (!seen[static_cast<std::size_t>(entry.group)].insert(entry.name).second) continue;
    Before& before = m_before.emplace_back(Before{&entry, {}});
    m_store.GetKalConfig(entry.group, entry.name.c_str(), before.value);
  }
}

void ChangeReport::Print(std::ostream& out, std::size_t skipped) {
  std::size_t added = 0;
  std::size_t changed = 0;
  ConfigData after;
  for (const auto& [entry, before] : m_before) {
    m_store.GetKalConfig(entry->group, entry->name.c_str(), after);
    if (after == before) continue;
    const std::string path = ShownPath(entry->group, entry->name);
    if (before.IsValid()) {
      ++changed;
      out << "  " << Coloured(Colour::kYellow, "changed") << "  " << path << ": " << ShownValue(before)
          << " -> " << ShownValue(after) << '\n';
    } else {
      ++added;
      out << "  " << Coloured(Colour::kGreen, "new") << "      " << path << ": " << ShownValue(after) << '\n';
    }
  }
  Counts counts;
  counts.Add(added, "new");
  counts.Add(changed, "changed");
  counts.Add(m_before.size() - added - changed, "unchanged");
  counts.Add(skipped, "skipped");
  out << "  " << counts.Text() << '\n';
}

std::string ShownValue(const ConfigData& value) {
  return value.IsValid() ? Quoted(value.ToString()) : "none";
}

// SPDX-License-Identifier: Apache-2.0
#include "Change.h"

#include "Colour.h"
#include "ConfigPath.h"
#include "JsonObject.h"
#include "Printable.h"

namespace {

enum class Kind { kNew, kChanged, kRemoved };

Kind KindOf(const Change& change) {
  if (!change.before.IsValid()) return Kind::kNew;
  return change.after.IsValid() ? Kind::kChanged : Kind::kRemoved;
}

const char* NameOf(Kind kind) {
  switch (kind) {
    case Kind::kNew:
      return "new";
    case Kind::kChanged:
      return "changed";
    case Kind::kRemoved:
      return "removed";
  }
  return "";
}

Colour ColourOf(Kind kind) {
  switch (kind) {
    case Kind::kNew:
      return Colour::kGreen;
    case Kind::kChanged:
      return Colour::kYellow;
    case Kind::kRemoved:
      return Colour::kRed;
  }
  return Colour::kBold;
}

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

void PrintChange(std::ostream& out, const Change& change) {
  constexpr std::size_t kWidth = 9;
  const Kind kind = KindOf(change);
  const std::string name = NameOf(kind);
  out << "  " << Coloured(ColourOf(kind), name) << std::string(kWidth - name.size(), ' ')
      << ShownPath(change.group, change.name) << ": ";
  if (kind == Kind::kChanged) out << ShownValue(change.before) << " -> ";
  out << ShownValue(kind == Kind::kRemoved ? change.before : change.after) << '\n';
}

void PrintChangeAsJson(std::ostream& out, const Change& change, std::string_view label,
                       std::string_view labelValue) {
  JsonObject line(out);
  if (!label.empty()) line.Member(label, labelValue);
  line.Member("change", NameOf(KindOf(change)))
      .Member("group", GroupName(change.group))
      .Member("name", change.name)
      .Member("before", change.before)
      .Member("after", change.after);
}

std::string ChangeCounts(const std::vector<Change>& changes, std::size_t unchanged, std::size_t skipped) {
  std::size_t counts[3] = {};
  for (const Change& change : changes) ++counts[static_cast<std::size_t>(KindOf(change))];
  Counts text;
  for (const Kind kind : {Kind::kNew, Kind::kChanged, Kind::kRemoved}) {
    text.Add(counts[static_cast<std::size_t>(kind)], NameOf(kind));
  }
  text.Add(unchanged, "unchanged");
  text.Add(skipped, "skipped");
  return text.Text();
}

std::string ShownValue(const ConfigData& value) {
  return value.IsValid() ? Quoted(value.ToString()) : "none";
}

// SPDX-License-Identifier: Apache-2.0
#include "report/EventColumns.h"

#include <array>
#include <optional>

#include "Printable.h"
#include "report/PackedColumn.h"

namespace {

constexpr std::size_t kMostEvents = 32768;
constexpr std::size_t kMostListBytes = std::size_t{4} << 20;

std::string JsonOf(const std::vector<std::string>& texts) {
  std::string json = "[";
  for (const std::string& text : texts) json += (json.size() > 1 ? "," : "") + PageJson(text);
  return json + ']';
}

// Calls `add` with each member that is known, a string.
template <class Add>
void ForEachMember(const RecordingEvent::Origin& origin, const Add& add) {
  if (origin.module) add("module", *origin.module);
  if (origin.symbol) add("symbol", *origin.symbol);
  if (origin.label) add("label", *origin.label);
  if (origin.document) add("document", *origin.document);
}

std::string JsonOf(const RecordingEvent::Origin& origin) {
  std::string json;
  const auto add = [&](const char* name, const std::string& value) {
    json += json.empty() ? "{\"" : ",\"";
    json += name;
    json += "\":" + value;
  };
  ForEachMember(origin, [&](const char* name, const std::string& text) { add(name, PageJson(text)); });
  if (origin.line) add("line", std::to_string(*origin.line));
  if (origin.column) add("column", std::to_string(*origin.column));
  return json + '}';
}

// What tells origins apart; "" when nothing is known. Their JSON would take too long for each event.
std::string OriginKey(const RecordingEvent::Origin& origin) {
  std::string key;
  ForEachMember(origin, [&](const char* name, const std::string& text) {
    key += *name;
    key += std::to_string(text.size()) + ':' + text;
  });
  if (origin.line) key += 'L' + std::to_string(*origin.line);
  if (origin.column) key += 'C' + std::to_string(*origin.column);
  return key;
}

std::string JsonOf(const std::vector<std::pair<const char*, std::vector<double>>>& columns) {
  std::string json = "{";
  for (const auto& [name, column] : columns) {
    if (json.size() > 1) json += ',';
    json += '"';
    json += name;
    json += "\":" + PackedColumn(column);
  }
  return json + '}';
}

}  // namespace

// The members that an event has.
class EventColumns::Row {
 public:
  // A member that the row could have; calls come in the same order for all rows.
  void Number(const char* name, double number) { add(m_numbers, m_numberCount, name, number); }
  template <class Given>
  void Number(const char* name, const std::optional<Given>& number) {
    number ? Number(name, static_cast<double>(*number)) : Nothing();
  }
  void Value(const char* name, double place) { add(m_values, m_valueCount, name, place); }
  void Nothing() { m_which <<= 1U; }

  std::uint64_t Which() const { return m_which; }

  void MakeColumns(Table& table) const {
    for (std::size_t i = 0; i < m_numberCount; ++i) table.numbers.emplace_back(m_numbers[i].first, Column());
    for (std::size_t i = 0; i < m_valueCount; ++i) table.values.emplace_back(m_values[i].first, Column());
  }
  void Append(Table& table) const {
    for (std::size_t i = 0; i < m_numberCount; ++i) table.numbers[i].second.push_back(m_numbers[i].second);
    for (std::size_t i = 0; i < m_valueCount; ++i) table.values[i].second.push_back(m_values[i].second);
  }

 private:
  using Cells = std::array<std::pair<const char*, double>, 24>;

  void add(Cells& cells, std::size_t& count, const char* name, double number) {
    cells[count++] = {name, number};
    m_which = m_which << 1U | 1U;
  }

  std::uint64_t m_which = 0;
  std::size_t m_numberCount = 0, m_valueCount = 0;
  Cells m_numbers, m_values;
};

EventColumns::Row EventColumns::rowOf(const RecordingEvent& event) {
  Row row;
  const bool isDelivery = event.type == "deliver";
  row.Number("t", event.time);
  // Deliveries name sets by it, and nobody names deliveries.
  isDelivery ? row.Nothing() : row.Number("number", event.number);
  row.Number("cause", event.cause);
  row.Number("call", event.call);
  row.Number("id", event.id);
  row.Number("told", event.told);
  row.Number("count", event.count);
  row.Number("wait_us", event.waitUs);
  row.Number("run_us", event.runUs);

  const auto text = [&](const char* name, const std::optional<std::string>& value, bool isShown = true) {
    if (!value || !isShown) return row.Nothing();
    row.Value(name, placeOfText(*value));
  };
  text("type", event.type);
  event.group ? row.Value("group", placeOfText(KalConfigGroup2GroupName(*event.group))) : row.Nothing();
  text("name", event.name);
  text("old", event.oldValue, !isDelivery);  // What a delivery brought, its set says.
  text("new", event.newValue, !isDelivery);
  text("result", event.result);
  text("way", event.way);
  text("threw", event.thrown);
  text("entity", event.entity);
  text("event", event.event);
  text("wall", event.wall);
  text("reason", event.reason);

  const auto json = [&](const char* name, bool isThere, const auto& toJson) {
    if (!isThere) return row.Nothing();
    std::string value = toJson();
    row.Value(name, placeOf(m_jsons, value, [&] { return value; }));
  };
  const auto isTrue = [] { return std::string("true"); };
  json("transient", event.isTransient, isTrue);
  json("dropped", event.isDropped, isTrue);
  json("picture", event.isPicture, isTrue);
  json("cut", !event.cut.empty(), [&] { return JsonOf(event.cut); });
  json("hidden", !event.hidden.empty(), [&] { return JsonOf(event.hidden); });

  const std::string origin = OriginKey(event.origin);
  origin.empty() ? row.Nothing()
                 : row.Value("origin", placeOf(m_origins, origin, [&] { return JsonOf(event.origin); }));
  // A picture of an object in which all is 0 has no members, and says so.
  const bool hasMembers = !event.members.empty() || (event.type == "statistics" && !event.event);
  hasMembers ? row.Number("sizes", static_cast<double>(event.members.size())) : row.Nothing();
  return row;
}

void EventColumns::Add(const RecordingEvent& event) {
  const Row row = rowOf(event);
  const auto [found, isNew] = m_tableOf.try_emplace(row.Which(), m_tables.size());
  if (isNew) row.MakeColumns(m_tables.emplace_back());
  Table& table = m_tables[found->second];
  row.Append(table);
  for (const auto& [name, value] : event.members) {
    const bool isText = value.GetType() == json::StringVal;
    table.names.push_back(placeOfText(name));
    table.areTexts.push_back(isText ? 1 : 0);
    table.members.push_back(isText ? placeOfText(value.ToString()) : value.ToDouble());
  }
  m_order.push_back(static_cast<double>(found->second));
}

bool EventColumns::IsFull() const {
  return m_order.size() >= kMostEvents || m_list.size() >= kMostListBytes;
}

std::string EventColumns::Json() const {
  std::string json = "{\"list\":[" + m_list.substr(0, m_list.size() - 1);
  json += "],\"order\":" + PackedColumn(m_order) + ",\"tables\":[";
  const char* separator = "";
  for (const Table& table : m_tables) {
    json += separator;
    json += "{\"numbers\":" + JsonOf(table.numbers) + ",\"values\":" + JsonOf(table.values);
    json += ",\"names\":" + PackedColumn(table.names) + ",\"areTexts\":" + PackedColumn(table.areTexts);
    json += ",\"members\":" + PackedColumn(table.members) + '}';
    separator = ",";
  }
  return json + "]}";
}

template <class ToJson>
double EventColumns::placeOf(Places& places, std::string_view key, const ToJson& toJson) {
  const auto found = places.find(key);
  if (found != places.end()) return found->second;
  m_list += toJson() + ',';
  return places.emplace(key, m_listSize++).first->second;
}

double EventColumns::placeOfText(std::string_view text) {
  return placeOf(m_texts, text, [&] { return PageJson(text); });
}

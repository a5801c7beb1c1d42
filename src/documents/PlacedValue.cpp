// SPDX-License-Identifier: Apache-2.0
#include "documents/PlacedValue.h"

#include <utility>

#include "json/EventReader.h"

namespace kalStore::internal {
namespace {

// The handler of an EventReader that builds the tree. What is open is named by pointers: only the innermost
// object or array grows, and what it holds is not open then.
class PlacedTree {
 public:
  explicit PlacedTree(PlacedValue& document) : m_document(document) {}

  void BeginObject(const char* at) { m_open.push_back(&add(at)); }
  void EndObject() { m_open.pop_back(); }
  void BeginArray(const char* at) { m_open.push_back(&add(at)); }
  void EndArray() { m_open.pop_back(); }
  void Key(const JsonString& key) {
    key.AppendTo(m_name);
    m_namePlace = key.Place();
  }
  void String(const JsonString& string) { string.AppendTo(add(string.Place()).text); }
  void Number(const JsonNumber& number) { add(number.token.data()).text = number.token; }
  void Literal(const char* at) { add(at); }

 private:
  PlacedValue& add(const char* at) {
    PlacedValue& value = m_open.empty() ? m_document : m_open.back()->parts.emplace_back();
    value.name = std::exchange(m_name, {});
    value.namePlace = std::exchange(m_namePlace, nullptr);
    value.place = at;
    return value;
  }

  PlacedValue& m_document;
  std::vector<PlacedValue*> m_open;
  std::string m_name;
  const char* m_namePlace = nullptr;
};

}  // namespace

PlacedText ReadPlaced(std::string_view text) {
  PlacedText read;
  PlacedTree builder(read.document);
  EventReader reader(text, builder);
  if (!reader.Read()) {
    read.faultPlace = reader.FaultPlace();
    read.faultReason = reader.FaultReason();
  }
  return read;
}

const char* KindOf(const char* value) {
  switch (Lowered(*value)) {
    case '"':
      return "a string";
    case '{':
      return "an object";
    case '[':
      return "an array";
    case 't':
    case 'f':
      return "true or false";
    case 'n':
      return "null";
    default:
      return "a number";
  }
}

}  // namespace kalStore::internal

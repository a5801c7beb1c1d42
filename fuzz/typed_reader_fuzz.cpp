// SPDX-License-Identifier: Apache-2.0
// Typed reads of any document, at every place that a random path and the document's own keys lead to: each
// answers by the exact kind of the value there, or with the default.

#include <bit>
#include <cstdint>
#include <string>
#include <string_view>

#include "Check.h"
#include "Input.h"
#include "JsonModel.h"
#include "tessel/json.h"
#include "tessel/jsonHelper.h"

namespace {

using json::Value;

constexpr int kDeepest = 12;
constexpr std::size_t kMostSteps = 8;

Value Build(fuzz::Input& input, int depth) {
  switch (input.Below(depth < kDeepest ? 10 : 6)) {
    case 0:
      return {};
    case 1:
      return input.Text(12);
    case 2:
      return input.As<std::int32_t>();
    case 3:
      return static_cast<long>(input.As<std::int64_t>());
    case 4:
      return input.As<float>();
    case 5:
      return input.As<double>();
    case 6: {
      json::Object object;
      for (std::size_t left = input.Below(5); left > 0; --left) {
        std::string key = input.Text(3);
        object.insert_or_assign(std::move(key), Build(input, depth + 1));
      }
      return object;
    }
    case 7: {
      json::Array array;
      for (std::size_t left = input.Below(5); left > 0; --left) array.push_back(Build(input, depth + 1));
      return array;
    }
    case 8:
      return input.Flag();
    default:
      return input.As<std::uint32_t>();
  }
}

// The member that a step leads to; null, as the absence of any value, when there is none.
const Value& Step(const Value& from, const std::string& key) {
  static const Value nothing;
  if (from.GetType() != json::ObjectVal) return nothing;
  const auto found = from.ToObject().find(key);
  return found == from.ToObject().end() ? nothing : found->second;
}

template <class Number, class Bits>
void CheckReal(Number read, Number expected) {
  FUZZ_EQUAL(std::bit_cast<Bits>(read), std::bit_cast<Bits>(expected));
}

void CheckReads(const jsonHelper& reader, const Value& model) {
  FUZZ_CHECK(fuzz::Identical(reader, model));
  const json::ValueType type = model.GetType();
  FUZZ_EQUAL(reader.IsValid(), type != json::NullVal);

  for (const int other : {-7, 7}) {
    const bool isInt = type == json::IntVal;
    FUZZ_EQUAL(reader.ToInt(other), isInt ? model.ToInt() : other);
    const auto unsignedOther = static_cast<unsigned int>(other);
    FUZZ_EQUAL(reader.ToUnsignedInt(unsignedOther),
               type == json::UnsignedIntVal ? model.ToUnsignedInt() : unsignedOther);
    const auto floatOther = static_cast<float>(other);
    CheckReal<float, std::uint32_t>(reader.ToFloat(floatOther),
                                    type == json::FloatVal ? model.ToFloat() : floatOther);
    const double doubleOther = other;
    CheckReal<double, std::uint64_t>(reader.ToDouble(doubleOther),
                                     type == json::DoubleVal ? model.ToDouble() : doubleOther);
    FUZZ_EQUAL(reader.ToBool(other > 0), type == json::BoolVal ? model.ToBool() : other > 0);
  }
  const std::string text = type == json::StringVal ? model.ToString() : "";
  FUZZ_EQUAL(reader.ToString("other"), type == json::StringVal ? text : "other");
  const Value object = type == json::ObjectVal ? model : Value(json::Object());
  FUZZ_CHECK(fuzz::Identical(reader.ToObject(), object));
  const Value array = type == json::ArrayVal ? model : Value(json::Array());
  FUZZ_CHECK(fuzz::Identical(reader.ToArray(), array));

  FUZZ_EQUAL(static_cast<int>(reader), reader.ToInt(0));
  FUZZ_EQUAL(static_cast<unsigned int>(reader), reader.ToUnsignedInt(0));
  CheckReal<float, std::uint32_t>(static_cast<float>(reader), reader.ToFloat(0));
  CheckReal<double, std::uint64_t>(static_cast<double>(reader), reader.ToDouble(0));
  FUZZ_EQUAL(static_cast<bool>(reader), reader.ToBool(false));
  FUZZ_EQUAL(reader.operator std::string(), text);
  FUZZ_CHECK(fuzz::Identical(reader.operator json::Object(), object));
  FUZZ_CHECK(fuzz::Identical(reader.operator json::Array(), array));

  FUZZ_CHECK(!reader[static_cast<const char*>(nullptr)].IsValid());
}

void CheckCopies(const jsonHelper& reader, const Value& model) {
  jsonHelper logging(reader);
  FUZZ_CHECK(!logging.IsLogEnabled());
  logging.EnableLog(true);
  FUZZ_CHECK(!jsonHelper(logging).IsLogEnabled());
  jsonHelper target;
  target.EnableLog(true);
  target = reader;
  FUZZ_CHECK(target.IsLogEnabled());
  FUZZ_CHECK(fuzz::Identical(target, model));
  FUZZ_CHECK(fuzz::Identical(jsonHelper(std::move(logging)), model));
}

// Every place of the document, down to a depth at which the copies still are cheap.
void Walk(const jsonHelper& reader, const Value& model, int depth) {
  CheckReads(reader, model);
  if (model.GetType() == json::ObjectVal && depth < kDeepest) {
    for (const auto& [key, member] : model.ToObject()) {
      Walk(reader[key], member, depth + 1);
      FUZZ_CHECK(fuzz::Identical(reader[key.c_str()], Step(model, key.c_str())));
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  fuzz::Input input(data, size);
  const bool isText = input.Flag();
  const std::string path = input.Text(32);
  const Value document = isText ? json::Deserialize(input.Rest()) : Build(input, 0);
  const Value original = document;

  const jsonHelper reader(document);
  CheckCopies(reader, document);
  Walk(reader, document, 0);

  jsonHelper place(document);
  const Value* model = &document;
  std::string_view left = path;
  for (std::size_t step = 0; step < kMostSteps; ++step) {
    const std::string key(left.substr(0, left.find('/')));
    place = place[key];
    model = &Step(*model, key);
    CheckReads(place, *model);
    if (left.size() <= key.size()) break;
    left.remove_prefix(key.size() + 1);
  }
  FUZZ_CHECK(fuzz::Identical(document, original));
  FUZZ_CHECK(fuzz::Identical(reader, original));
  return 0;
}

#pragma once

#include <string>
#include <utility>

#include "tessel/export.h"
#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_value.h"

/// A forgiving reader of a JSON value: walks into a document with [] and reads with a default. A missing key,
/// a null key, a value of another kind: each yields the default, never a failure.
///
///   const jsonHelper settings(json::Deserialize(text));
///   const int width = settings["video"]["width"].ToInt(640);
///
/// Kinds match exactly, without conversion: a number written as an integer is not readable with ToDouble(),
/// one written with a fraction not with ToInt(). Results are copies and outlive the reader. Threads: as
/// json::Value.
class TESSEL_API jsonHelper : public json::Value {
 public:
  jsonHelper() noexcept = default;
  jsonHelper(const json::Object& object) : Value(object) {}
  jsonHelper(const json::Value& value) : Value(value) {}
  jsonHelper(json::Value&& value) noexcept : Value(std::move(value)) {}

  /// The log flag does not travel: a copy starts without it, and an assigned reader keeps its own.
  jsonHelper(const jsonHelper& other) : Value(other) {}
  jsonHelper(jsonHelper&& other) noexcept : Value(std::move(other)) {}
  jsonHelper& operator=(const jsonHelper& other);
  jsonHelper& operator=(jsonHelper&& other) noexcept;
  ~jsonHelper() = default;

  /// Kept for the caller; no operation of this class writes a line.
  void EnableLog(bool enable) { m_logEnabled = enable; }
  bool IsLogEnabled() const { return m_logEnabled; }

  /// A reader of the member's copy; a null one when this is no object, has no such key, or the key is null.
  jsonHelper operator[](std::string key) const;
  jsonHelper operator[](const char* key) const;

  /// True for anything but null.
  bool IsValid() const { return GetType() != json::NullVal; }

  int ToInt(int def) const;
  unsigned int ToUnsignedInt(unsigned int def) const;
  float ToFloat(float def) const;
  double ToDouble(double def) const;
  bool ToBool(bool def) const;
  std::string ToString(std::string def) const;
  /// Empty when the value is no object.
  json::Object ToObject() const;
  /// Empty when the value is no array.
  json::Array ToArray() const;

  operator int() const { return ToInt(0); }
  operator unsigned int() const { return ToUnsignedInt(0); }
  operator float() const { return ToFloat(0); }
  operator double() const { return ToDouble(0); }
  operator bool() const { return ToBool(false); }
  operator std::string() const { return ToString(""); }
  operator json::Object() const { return ToObject(); }
  operator json::Array() const { return ToArray(); }

 private:
  bool m_logEnabled = false;
};

namespace kalStore {
using ::jsonHelper;
}

// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <string>
#include <utility>

#include "tessel/export.h"
#include "tessel/json_array.h"
#include "tessel/json_object.h"
#include "tessel/json_value.h"

/// A reader of a JSON value that never fails: [] reads a member, and a read gives a default for a missing
/// key, a null key or a value of another kind.
///
/// Kinds match exactly, without conversion: a number written as an integer is not readable with ToDouble(),
/// one written with a fraction not with ToInt(). Results are copies and outlive the reader.
///
/// @threads As json::Value.
/// @par Example
/// @code{.cpp}
/// const jsonHelper settings(json::Deserialize(R"({"video":{"width":1280}})"));
/// assert(settings["video"]["width"].ToInt(640) == 1280);
/// assert(settings["video"]["height"].ToInt(360) == 360);
/// assert(settings["audio"]["codec"].ToString("opus") == "opus");
/// assert(!settings["audio"].IsValid());
/// @endcode
class TESSEL_API jsonHelper : public json::Value {
 public:
  /// A reader of null.
  jsonHelper() noexcept = default;
  /// A reader of an object's copy.
  /// @param object  any
  jsonHelper(const json::Object& object) : Value(object) {}
  /// A reader of a value's copy.
  /// @param value  any
  jsonHelper(const json::Value& value) : Value(value) {}
  /// A reader of a value that it takes over.
  /// @param value  any
  jsonHelper(json::Value&& value) noexcept : Value(std::move(value)) {}

  ///@{
  /// The log flag is not copied: a copy starts without it, and an assigned reader keeps its own.
  jsonHelper(const jsonHelper& other) : Value(other) {}
  jsonHelper(jsonHelper&& other) noexcept : Value(std::move(other)) {}
  jsonHelper& operator=(const jsonHelper& other);
  jsonHelper& operator=(jsonHelper&& other) noexcept;
  ///@}
  ~jsonHelper() = default;

  /// Keeps a flag for the caller; no operation of this class writes a line.
  /// @param enable  the flag
  void EnableLog(bool enable) { m_logEnabled = enable; }
  /// @return The flag.
  bool IsLogEnabled() const { return m_logEnabled; }

  ///@{
  /// Walks into a member.
  /// @param key  any, also null
  /// @return A reader of the member's copy; a null one when this is no object, has no such key, or the key is
  /// null.
  jsonHelper operator[](std::string key) const;
  jsonHelper operator[](const char* key) const;

  ///@}

  /// @return True for anything but null.
  bool IsValid() const { return GetType() != json::NullVal; }

  ///@{
  /// Reads a value of that very kind.
  /// @param def  the default
  /// @return The value; the default when it is of another kind.
  int ToInt(int def) const;
  unsigned int ToUnsignedInt(unsigned int def) const;
  float ToFloat(float def) const;
  double ToDouble(double def) const;
  bool ToBool(bool def) const;
  std::string ToString(std::string def) const;
  ///@}
  /// @return The object; empty when the value is none.
  json::Object ToObject() const;
  /// @return The array; empty when the value is none.
  json::Array ToArray() const;

  ///@{
  /// @return The value of that very kind; zero, false or empty when it is of another.
  operator int() const { return ToInt(0); }
  operator unsigned int() const { return ToUnsignedInt(0); }
  operator float() const { return ToFloat(0); }
  operator double() const { return ToDouble(0); }
  operator bool() const { return ToBool(false); }
  operator std::string() const { return ToString(""); }
  operator json::Object() const { return ToObject(); }
  operator json::Array() const { return ToArray(); }
  ///@}

 private:
  bool m_logEnabled = false;
};

namespace kalStore {
using ::jsonHelper;
}

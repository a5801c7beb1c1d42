// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "tessel/export.h"
#include "tessel/json_owned.h"

namespace kalStore::internal {
class TreeBuilder;
}

namespace json {

class Array;
class Object;

/// What a value is. The numbers are fixed.
enum ValueType : int {
  NullVal = 0,
  StringVal = 1,
  IntVal = 2,
  Int64Val = 3,
  FloatVal = 4,
  DoubleVal = 5,
  ObjectVal = 6,
  ArrayVal = 7,
  BoolVal = 8,
  UnsignedIntVal = 9,
};

/// One JSON value: null, a string of any bytes, a number of one of five kinds, a bool, an Object or an Array.
///
/// Copies are deep; moves are cheap, do not throw and leave a null or empty source. A value may be assigned
/// from a part of itself, and a part from its whole. A value that is moved into a part of itself, or into an
/// Object or Array inside itself, is copied there and keeps its contents: `d["w"] = std::move(d)` does what
/// `d["w"] = d` does. A move assignment that finds no memory for such a copy ends the program.
///
/// Using a value as the wrong kind is a programming error: it prints the failed condition to standard error
/// and aborts, in every build. Ask GetType() or HasKey() first, or read with jsonHelper, which never fails.
///
/// @threads None of its own. Any number of threads may read one value while nobody writes it.
/// @par Example
/// @code{.cpp}
/// json::Value document = json::Deserialize(R"({"video":{"fps":30,"layers":[1,2]}})");
/// assert(document["video"]["fps"].ToInt() == 30);
/// assert(document["video"]["layers"].size() == 2);
/// document["video"]["codec"] = "AV1";
/// assert(document["video"].HasKey("codec"));
/// assert(document.MergeValue(json::Deserialize(R"({"video":{"fps":15}})")));
/// assert(json::Serialize(document) == R"({"video":{"codec":"AV1","fps":15,"layers":[1,2]}})");
/// @endcode
class TESSEL_API Value {
 public:
  /// Null.
  Value() noexcept = default;
  /// Null.
  Value(std::nullptr_t) noexcept {}
  ///@{
  /// A value of that kind; `long` and `long long` are both Int64Val.
  /// @param value  any
  Value(int value) noexcept : mValueType(IntVal), mIntVal(value) {}
  Value(unsigned int value) noexcept : mValueType(UnsignedIntVal), mUnsignedIntVal(value) {}
  Value(long value) noexcept : mValueType(Int64Val), mInt64Val(value) {}
  Value(long long value) noexcept : mValueType(Int64Val), mInt64Val(value) {}
  Value(float value) noexcept : mValueType(FloatVal), mFloatVal(value) {}
  Value(double value) noexcept : mValueType(DoubleVal), mDoubleVal(value) {}
  Value(bool value) noexcept : mValueType(BoolVal), mBoolVal(value) {}
  ///@}
  /// A string.
  /// @param value  up to its NUL; null for a null pointer
  Value(const char* value);
  ///@{
  /// A value of that kind.
  /// @param value  any
  Value(std::string value) noexcept : mValueType(StringVal), mStringVal(std::move(value)) {}
  Value(const Object& value);
  Value(Object&& value);
  Value(const Array& value);
  Value(Array&& value);
  ///@}
  /// Pointers are not bools.
  Value(const void*) = delete;

  /// Copies deeply.
  Value(const Value& other) = default;
  /// Takes what `other` holds.
  Value(Value&& other) noexcept
      : mValueType(other.mValueType),
        mIntVal(other.mIntVal),
        mFloatVal(other.mFloatVal),
        mDoubleVal(other.mDoubleVal),
        mObjectVal(std::move(other.mObjectVal)),
        mArrayVal(std::move(other.mArrayVal)),
        mBoolVal(other.mBoolVal),
        mUnsignedIntVal(other.mUnsignedIntVal),
        mInt64Val(other.mInt64Val) {
    if (mValueType == StringVal) mStringVal = std::move(other.mStringVal);  // Empty in any other kind.
  }
  ///@{
  /// Copies deeply, or takes what `other` holds. Either may be a part of the other one.
  Value& operator=(const Value& other);
  Value& operator=(Value&& other) noexcept;
  ///@}
  ~Value() = default;

  /// @return The kind of the value.
  ValueType GetType() const { return mValueType; }

  ///@{
  /// Reads a number or bool. A number that was parsed has all numeric representations, at the nearest limit
  /// where it does not fit; one that was built has only its own.
  /// @return The representation of that kind; zero or false when the value has none.
  int ToInt() const { return mIntVal; }
  unsigned int ToUnsignedInt() const { return mUnsignedIntVal; }
  std::int64_t ToInt64() const { return mInt64Val; }
  float ToFloat() const { return mFloatVal; }
  double ToDouble() const { return mDoubleVal; }
  bool ToBool() const { return mBoolVal; }
  ///@}

  ///@{
  /// What the value holds, in place.
  /// @pre The value is of that kind.
  /// @return It, valid until the value is assigned, moved or destroyed.
  std::string& ToString();
  const std::string& ToString() const;
  Object& ToObject();
  const Object& ToObject() const;
  Array& ToArray();
  const Array& ToArray() const;
  ///@}

  ///@{
  /// An element, in place.
  /// @pre An array, and index < size().
  /// @param index  from 0
  /// @return The element.
  Value& operator[](std::size_t index);
  const Value& operator[](std::size_t index) const;
  template <std::integral Index>
  Value& operator[](Index index) {
    return (*this)[static_cast<std::size_t>(index)];
  }
  template <std::integral Index>
  const Value& operator[](Index index) const {
    return (*this)[static_cast<std::size_t>(index)];
  }

  ///@}

  ///@{
  /// A member's value, in place; when missing, inserts null.
  /// @pre An object.
  /// @param key  not null
  /// @return The value.
  Value& operator[](const char* key);
  Value& operator[](const std::string& key);
  ///@}
  ///@{
  /// A member's value.
  /// @pre An object, and HasKey(key).
  /// @param key  the member's
  /// @return The value.
  const Value& operator[](const char* key) const;
  const Value& operator[](const std::string& key) const;

  ///@}

  /// Looks for a member.
  /// @pre An object.
  /// @param key  any
  /// @return Whether there is one.
  bool HasKey(const std::string& key) const;
  /// Looks for several members.
  /// @pre An object.
  /// @param keys  any
  /// @return -1 when the object has every key, otherwise the index of the first one missing.
  int HasKeys(const std::vector<std::string>& keys) const;
  /// The same.
  /// @pre An object.
  /// @param keys  none null
  /// @param count  how many
  /// @return -1 when the object has every key, otherwise the index of the first one missing.
  int HasKeys(const char** keys, int count) const;

  /// @return The number of an object's members or an array's elements; 1 for any other kind.
  std::size_t size() const;

  /// Makes the value null.
  /// @invalidates What it held.
  void Clear() { *this = Value(); }

  /// Takes another value over into this one. Objects merge key by key, recursively: a member that is missing,
  /// null or of the same kind takes the other's value; one of another kind stays, and the rest is merged.
  /// Everything else is assigned. Merging a value into itself changes nothing.
  /// @param other  of the same kind, and not null
  /// @return True; false when a member stayed, or `other` is of another kind or null, and then nothing
  /// changes.
  bool MergeValue(const Value& other);

  /// Whether two values are equal. Numbers of any two kinds compare by value: two integers exactly; with a
  /// float or double involved they are equal when they differ by less than 1e-9 (in float, unless a double is
  /// involved). Values of two other kinds are unequal, with a deliberate exception that is not symmetric:
  /// null, "", an empty object, an empty array and false on the left equal any number on the right.
  TESSEL_API friend bool operator==(const Value& left, const Value& right);

 private:
  friend class kalStore::internal::TreeBuilder;

  bool isNumber() const;
  void take(Value&& other) noexcept;
  bool mergeMembers(Object&& theirs);

  ValueType mValueType = NullVal;
  int mIntVal = 0;
  float mFloatVal = 0;
  double mDoubleVal = 0;
  std::string mStringVal;
  Owned<Object> mObjectVal;
  Owned<Array> mArrayVal;
  bool mBoolVal = false;
  unsigned int mUnsignedIntVal = 0;
  std::int64_t mInt64Val = 0;
};

}  // namespace json

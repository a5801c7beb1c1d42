// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <iterator>
#include <string_view>
#include <type_traits>

namespace kalStore {

/// One value of an enum, and the string that a store holds for it.
template <class E>
struct ConfigEnumName {
  E value;                ///< the enumerator
  std::string_view name;  ///< not empty; letter case counts
};

/// Makes an enum a setting's type: specialise it with the name of each value, in `kNames`. The compiler
/// checks that no value and no name is there twice.
///
/// A store holds the name. A string that is none of the names is refused, as a number is that is out of
/// range; a value without a name cannot be set, nor be a default.
///
/// @threads Constants.
/// @par Example
/// @code{.cpp}
/// #include <tessel/tessel.h>
/// #include <tessel/typed.h>
///
/// #include <cstdio>
///
/// using namespace kalStore;
///
/// enum class Codec { kH264, kVp8 };
///
/// template <>
/// struct kalStore::ConfigEnum<Codec> {
///   static constexpr ConfigEnumName<Codec> kNames[] = {{Codec::kH264, "h264"}, {Codec::kVp8, "vp8"}};
/// };
///
/// constexpr ConfigKey<Codec> kCodec{KAL_CONFIG_GROUP_VIDEO, "Codec", Codec::kH264};
///
/// int main() {
///   KalConfigHelper settings(7);
///   kCodec.Set(settings, Codec::kVp8);
///   std::puts(settings.GetKalConfig("Codec", KAL_CONFIG_GROUP_VIDEO).ToCstr());
///   settings.SetKalConfig("Codec", "av1", KAL_CONFIG_GROUP_VIDEO);
///   return kCodec.Get(settings) == Codec::kH264 ? 0 : 1;  // no such name: the default
/// }
/// @endcode
template <class E>
struct ConfigEnum;

namespace detail {

template <class E>
concept NamedEnum = std::is_enum_v<E> && requires { std::size(ConfigEnum<E>::kNames); };

template <NamedEnum E>
consteval bool HasDistinctNames() {
  for (auto at = std::begin(ConfigEnum<E>::kNames); at != std::end(ConfigEnum<E>::kNames); ++at) {
    if (at->name.empty()) return false;
    for (auto other = std::begin(ConfigEnum<E>::kNames); other != at; ++other) {
      if (other->value == at->value || other->name == at->name) return false;
    }
  }
  return true;
}

template <NamedEnum E>
constexpr const auto& NamesOf() noexcept {
  static_assert(HasDistinctNames<E>(), "kNames has each value and each name once, and no empty name");
  return ConfigEnum<E>::kNames;
}

template <NamedEnum E>
constexpr const ConfigEnumName<E>* FindEntry(auto isIt) noexcept {
  for (const ConfigEnumName<E>& entry : NamesOf<E>()) {
    if (isIt(entry)) return &entry;
  }
  return nullptr;
}

// Null for a value without a name.
template <NamedEnum E>
constexpr const ConfigEnumName<E>* EntryOf(E value) noexcept {
  return FindEntry<E>([value](const ConfigEnumName<E>& entry) { return entry.value == value; });
}

// Compares no pointer with null: with UndefinedBehaviorSanitizer, that is no constant expression for GCC 12.
template <NamedEnum E>
constexpr bool HasName(E value) noexcept {
  for (const ConfigEnumName<E>& entry : NamesOf<E>()) {
    if (entry.value == value) return true;
  }
  return false;
}

// Null for a string that is none of the names.
template <NamedEnum E>
constexpr const ConfigEnumName<E>* EntryNamed(std::string_view name) noexcept {
  return FindEntry<E>([name](const ConfigEnumName<E>& entry) { return entry.name == name; });
}

}  // namespace detail

}  // namespace kalStore

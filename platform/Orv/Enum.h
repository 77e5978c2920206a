#pragma once

#include <concepts>
#include <optional>
#include <ostream>
#include <span>
#include <string>
#include <string_view>

#include "Orv/Export.h"
#include "Orv/RangeError.h"
#include "Orv/Types.h"

namespace Orv {

struct EnumEntry {
  std::string_view name;
  U32 value;
};

// The registered description of an enumeration: its full type name and its
// ordered (name, value) table. Values without a name are legal; their text is
// "<ShortTypeName>(<number>)", which reads back to the same value.
class LSPPING_EXPORT EnumType {
public:
  constexpr EnumType(std::string_view fullName,
                     std::span<const EnumEntry> entries)
      : fullName_(fullName), entries_(entries) {}

  std::string_view fullName() const { return fullName_; }
  std::string_view shortName() const;
  std::span<const EnumEntry> entries() const { return entries_; }

  // The enumerator's name, or an empty view for an unnamed value.
  std::string_view nameOf(U32 value) const;
  std::optional<U32> valueOf(std::string_view text) const;
  std::string text(U32 value) const;

private:
  std::string_view fullName_;
  std::span<const EnumEntry> entries_;
};

// Specialised per enumeration: `static constexpr EnumType type{...};`.
template <class E> struct EnumTraits;

template <class E>
concept RegisteredEnum = std::is_enum_v<E> && requires {
  { EnumTraits<E>::type } -> std::convertible_to<const EnumType &>;
};

template <RegisteredEnum E> std::string stringValue(E value) {
  return EnumTraits<E>::type.text(static_cast<U32>(value));
}

template <RegisteredEnum E>
std::ostream &operator<<(std::ostream &os, E value) {
  return os << stringValue(value);
}

template <RegisteredEnum E> E enumInstance(U32 value) {
  return static_cast<E>(value);
}

// Raises RangeError for a text that names no value of the enumeration.
template <RegisteredEnum E> E enumInstance(std::string_view text) {
  const EnumType &type = EnumTraits<E>::type;
  if (auto value = type.valueOf(text)) {
    return static_cast<E>(*value);
  }
  throw RangeError(std::string(type.fullName()) + "::name '" +
                   std::string(text) + "' not allowed");
}

// The runtime's table of enumerations, by full type name, so that attributes
// of these types can be shown and set by name.
LSPPING_EXPORT void enumTypeIs(const EnumType &type);
LSPPING_EXPORT const EnumType *enumType(std::string_view fullName);

// Registers E once when a static of this type is constructed.
template <RegisteredEnum E> struct EnumRegistration {
  EnumRegistration() { enumTypeIs(EnumTraits<E>::type); }
};

} // namespace Orv

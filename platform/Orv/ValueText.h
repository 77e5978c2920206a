#pragma once

#include <charconv>
#include <concepts>
#include <optional>
#include <sstream>
#include <string>
#include <string_view>
#include <tuple>

#include "Orv/Enum.h"
#include "Orv/SparseArray.h"
#include "Orv/TextReader.h"

namespace Orv {

// One field of a value type's field list: its name and its member.
template <class C, class T> struct Field {
  std::string_view name;
  T C::*member;
};
template <class C, class T> Field(std::string_view, T C::*) -> Field<C, T>;

// A value type names itself and lists its fields in declaration order:
//   static constexpr std::string_view valueTypeName = "Ns::Type";
//   static constexpr auto valueFields = std::tuple{Field{"a", &Type::a}, ...};
// Its text form, "Value('Ns::Type', ** {'a': <a>, ...})", is then printed and
// read back generically, each field in its own text form.
template <class T>
concept ValueType = requires {
  { T::valueTypeName } -> std::convertible_to<std::string_view>;
  T::valueFields;
};

// A platform value with a text of its own (addresses, labels): written
// quoted, read back through T::fromString.
template <class T>
concept StringValued = requires(const T &v, std::string_view s) {
  { v.stringValue() } -> std::convertible_to<std::string>;
  { T::fromString(s) } -> std::same_as<std::optional<T>>;
};

// How one kind of field is printed and read back.
template <class T> struct TextForm;

inline void printQuoted(std::ostream &os, std::string_view text) {
  os << '\'';
  for (char c : text) {
    if (c == '\'' || c == '\\') {
      os << '\\';
    }
    os << c;
  }
  os << '\'';
}

template <> struct TextForm<bool> {
  static void print(std::ostream &os, bool v) { os << (v ? "True" : "False"); }
  static bool read(TextReader &in, bool &v) {
    if (in.literal("True")) {
      v = true;
      return true;
    }
    if (in.literal("False")) {
      v = false;
      return true;
    }
    return false;
  }
};

template <class T>
requires(std::integral<T> && !std::same_as<T, bool>) struct TextForm<T> {
  static void print(std::ostream &os, T v) {
    if constexpr (std::is_signed_v<T>) {
      os << static_cast<S64>(v);
    } else {
      os << static_cast<U64>(v);
    }
  }
  static bool read(TextReader &in, T &v) {
    std::string_view text;
    if (!in.token(text)) {
      return false;
    }
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    return ec == std::errc() && end == text.data() + text.size();
  }
};

template <std::floating_point T> struct TextForm<T> {
  static void print(std::ostream &os, T v) {
    std::ostringstream text;
    text.precision(17);
    text << v;
    os << text.str();
  }
  static bool read(TextReader &in, T &v) {
    std::string_view text;
    if (!in.token(text)) {
      return false;
    }
    auto [end, ec] = std::from_chars(text.data(), text.data() + text.size(), v);
    return ec == std::errc() && end == text.data() + text.size();
  }
};

template <> struct TextForm<std::string> {
  static void print(std::ostream &os, const std::string &v) {
    printQuoted(os, v);
  }
  static bool read(TextReader &in, std::string &v) { return in.quoted(v); }
};

template <RegisteredEnum T> struct TextForm<T> {
  static void print(std::ostream &os, T v) { os << stringValue(v); }
  static bool read(TextReader &in, T &v) {
    std::string_view text;
    if (!in.token(text)) {
      return false;
    }
    auto value = EnumTraits<T>::type.valueOf(text);
    if (!value) {
      return false;
    }
    v = static_cast<T>(*value);
    return true;
  }
};

template <StringValued T> struct TextForm<T> {
  static void print(std::ostream &os, const T &v) {
    printQuoted(os, v.stringValue());
  }
  static bool read(TextReader &in, T &v) {
    std::string text;
    if (!in.quoted(text)) {
      return false;
    }
    auto value = T::fromString(text);
    if (!value) {
      return false;
    }
    v = *value;
    return true;
  }
};

template <ValueType T> struct TextForm<T> {
  static void print(std::ostream &os, const T &v) {
    os << "Value(";
    printQuoted(os, T::valueTypeName);
    os << ", ** {";
    bool first = true;
    std::apply(
        [&](const auto &...field) {
          ((os << (first ? "" : ", "), printQuoted(os, field.name), os << ": ",
            printField(os, v.*(field.member)), first = false),
           ...);
        },
        T::valueFields);
    os << "})";
  }

  // Fields may come in any order; a field left out keeps its default. A
  // type that may not be built from text says so with valueTextReadRefused().
  static bool read(TextReader &in, T &v) {
    if constexpr (requires { T::valueTextReadRefused(); }) {
      T::valueTextReadRefused();
    }
    std::string typeName;
    if (!in.literal("Value(") || !in.quoted(typeName) ||
        typeName != T::valueTypeName || !in.literal(",") || !in.literal("**") ||
        !in.literal("{")) {
      return false;
    }
    if (in.literal("}")) {
      return in.literal(")");
    }
    do {
      std::string name;
      if (!in.quoted(name) || !in.literal(":") || !readField(in, v, name)) {
        return false;
      }
    } while (in.literal(","));
    return in.literal("}") && in.literal(")");
  }

private:
  template <class F> static void printField(std::ostream &os, const F &field) {
    TextForm<F>::print(os, field);
  }
  static bool readField(TextReader &in, T &v, std::string_view name) {
    bool found = false;
    bool ok = false;
    std::apply(
        [&](const auto &...field) {
          ((!found && field.name == name
                ? (found = true,
                   ok = TextForm<std::remove_cvref_t<
                       decltype(v.*(field.member))>>::read(in,
                                                           v.*(field.member)))
                : false),
           ...);
        },
        T::valueFields);
    return found && ok;
  }
};

// "{index: value, ...}" in index order, "{}" when empty. Reading takes the
// entries in any order but refuses an index given twice.
template <std::unsigned_integral Index, class T, std::size_t N>
struct TextForm<SparseArray<Index, T, N>> {
  static void print(std::ostream &os, const SparseArray<Index, T, N> &v) {
    os << '{';
    bool first = true;
    for (const auto &entry : v) {
      os << (first ? "" : ", ");
      TextForm<Index>::print(os, entry.index);
      os << ": ";
      TextForm<T>::print(os, entry.value);
      first = false;
    }
    os << '}';
  }
  static bool read(TextReader &in, SparseArray<Index, T, N> &v) {
    if (!in.literal("{")) {
      return false;
    }
    v.delAll();
    if (in.literal("}")) {
      return true;
    }
    do {
      Index index{};
      T value{};
      if (!TextForm<Index>::read(in, index) || !in.literal(":") ||
          !TextForm<T>::read(in, value) || v.contains(index)) {
        return false;
      }
      v.is(index, value);
    } while (in.literal(","));
    return in.literal("}");
  }
};

// The one-line text form of any value with a TextForm.
template <class T> std::string valueText(const T &value) {
  std::ostringstream os;
  TextForm<T>::print(os, value);
  return os.str();
}

// Reads a value back from its text form; nullopt for any text that does not
// fit the type exactly.
template <class T> std::optional<T> valueFromText(std::string_view text) {
  TextReader in(text);
  T value{};
  if (!TextForm<T>::read(in, value) || !in.atEnd()) {
    return std::nullopt;
  }
  return value;
}

} // namespace Orv

#include "Orv/Enum.h"

#include <charconv>
#include <map>

namespace Orv {

std::string_view EnumType::shortName() const {
  const auto colons = fullName_.rfind("::");
  return colons == std::string_view::npos ? fullName_
                                          : fullName_.substr(colons + 2);
}

std::string_view EnumType::nameOf(U32 value) const {
  for (const EnumEntry &entry : entries_) {
    if (entry.value == value) {
      return entry.name;
    }
  }
  return {};
}

std::optional<U32> EnumType::valueOf(std::string_view text) const {
  for (const EnumEntry &entry : entries_) {
    if (entry.name == text) {
      return entry.value;
    }
  }
  const std::string_view prefix = shortName();
  if (text.size() < prefix.size() + 3 ||
      text.substr(0, prefix.size()) != prefix || text[prefix.size()] != '(' ||
      text.back() != ')') {
    return std::nullopt;
  }
  const std::string_view digits =
      text.substr(prefix.size() + 1, text.size() - prefix.size() - 2);
  U32 value = 0;
  auto [end, ec] =
      std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (ec != std::errc() || end != digits.data() + digits.size()) {
    return std::nullopt;
  }
  return value;
}

std::string EnumType::text(U32 value) const {
  const std::string_view name = nameOf(value);
  if (!name.empty()) {
    return std::string(name);
  }
  return std::string(shortName()) + '(' + std::to_string(value) + ')';
}

namespace {

std::map<std::string_view, const EnumType *> &enumTable() {
  static std::map<std::string_view, const EnumType *> table;
  return table;
}

} // namespace

void enumTypeIs(const EnumType &type) { enumTable()[type.fullName()] = &type; }

const EnumType *enumType(std::string_view fullName) {
  auto it = enumTable().find(fullName);
  return it == enumTable().end() ? nullptr : it->second;
}

} // namespace Orv

#pragma once

#include <compare>
#include <ostream>
#include <string>
#include <string_view>

namespace Orv {

// The name of a named entity.
class Name {
public:
  Name() = default;
  Name(std::string_view text) : text_(text) {}
  Name(const char *text) : text_(text) {}

  const std::string &stringValue() const { return text_; }
  bool operator!() const { return text_.empty(); }
  auto operator<=>(const Name &) const = default;
  friend std::ostream &operator<<(std::ostream &os, const Name &n) {
    return os << n.text_;
  }

private:
  std::string text_;
};

} // namespace Orv

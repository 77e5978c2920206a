#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <utility>

#include "Orv/Export.h"

namespace Wirx {

// Names a kernel network namespace. The empty name is the unset value; the
// namespace the system starts in is named "default".
class LSPPING_EXPORT NamespaceName {
public:
  NamespaceName() = default;
  explicit NamespaceName(std::string name) noexcept : name_(std::move(name)) {}

  static NamespaceName defaultNamespace() { return NamespaceName("default"); }

  const std::string &stringValue() const noexcept { return name_; }
  bool operator!() const noexcept { return name_.empty(); }
  auto operator<=>(const NamespaceName &) const = default;
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const NamespaceName &ns);

private:
  std::string name_;
};

} // namespace Wirx

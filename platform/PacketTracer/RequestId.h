#pragma once

#include <compare>
#include <iosfwd>
#include <string>
#include <utility>

#include "Orv/Export.h"
#include "Orv/Types.h"

namespace PacketTracer {

// Names a request: the client that filed it and the client's own number.
class LSPPING_EXPORT RequestId {
public:
  RequestId() = default;
  RequestId(std::string name, Orv::U32 number) noexcept
      : name_(std::move(name)), number_(number) {}

  const std::string &name() const noexcept { return name_; }
  Orv::U32 number() const noexcept { return number_; }
  auto operator<=>(const RequestId &) const = default;

  // "<name>:<number>".
  friend LSPPING_EXPORT std::ostream &operator<<(std::ostream &os,
                                                 const RequestId &id);

private:
  std::string name_;
  Orv::U32 number_ = 0;
};

} // namespace PacketTracer

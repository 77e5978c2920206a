#include "PacketTracer/RequestId.h"

#include <ostream>

namespace PacketTracer {

std::ostream &operator<<(std::ostream &os, const RequestId &id) {
  return os << id.name() << ':' << id.number();
}

} // namespace PacketTracer

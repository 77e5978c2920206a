#include "Mesk/FibForwardingStatus.h"

#include <sstream>

#include "Orv/RangeError.h"

namespace Mesk {

FibForwardingStatus::FibForwardingStatus(const Orv::Name &name,
                                         Wirx::AddrFamily af)
    : NamedEntity(name), af_(af), fecTable_(name.stringValue() + "/fec") {}

void FibForwardingStatus::fecIs(const Mpls::FwdEqvClass &fec,
                                const FibFec &entry) {
  if (fec.prefix.af() != af_) {
    std::ostringstream text;
    text << name() << ": FEC " << fec.prefix << " is not " << af_;
    throw Orv::RangeError(text.str());
  }
  fecTable_.is(fec, entry);
}

} // namespace Mesk

#pragma once

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Wirx/Pam.h"

namespace LspPing {

// A packet-access module whose transmit side feeds its own receive side, so
// that a component expecting a Wirx::Pam can be driven in-process. It holds
// one packet at a time: a second send before the first was read is a broken
// hand-off. Created by name through the runtime's factories.
class LSPPING_EXPORT LspPamPipe : public Wirx::Pam {
public:
  explicit LspPamPipe(const Orv::Name &name);

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  // The packet written and not yet read.
  const Orv::Ptr<Wirx::Pkt> &rxPktHolderShadow() const {
    return rxPktHolderShadow_;
  }
  bool initialized() const { return initialized_; }

private:
  void doGetRxPkt() override;
  void handleInitialized();

  Orv::Ptr<Wirx::Pkt> rxPktHolderShadow_;
  bool initialized_ = false;
};

LSPPING_EXPORT Orv::Ptr<LspPamPipe> lspPamPipeFactory(const Orv::Name &name);

} // namespace LspPing

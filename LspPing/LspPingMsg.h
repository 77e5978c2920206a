#pragma once

#include "LspPing/LspPingEnum.h"
#include "LspPing/LspPingPduParser.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/Pkt.h"

namespace LspPing {

// One received echo packet with what the reply listener learned about it.
// Immutable: the packet is shared with the listener, never copied.
class LSPPING_EXPORT LspPingMsg : public Orv::Entity {
public:
  LspPingMsg(Orv::Ptr<Wirx::Pkt> pkt, U16 offset,
             const Wirx::IpGenAddr &ipGenAddr, U16 port,
             Orv::Ptr<const LspPingPduParser> lspPingPduParser)
      : pkt_(std::move(pkt)), offset_(offset), ipGenAddr_(ipGenAddr),
        port_(port), lspPingPduParser_(std::move(lspPingPduParser)) {}

  const Orv::Ptr<Wirx::Pkt> &pkt() const { return pkt_; }
  // Offset of the echo header in the packet.
  U16 offset() const { return offset_; }
  // IP source of the packet.
  const Wirx::IpGenAddr &ipGenAddr() const { return ipGenAddr_; }
  // The port the listener read from its UDP packet-access module.
  U16 port() const { return port_; }
  // The listener's parse of the packet, so the receiver need not parse again.
  const Orv::Ptr<const LspPingPduParser> &lspPingPduParser() const {
    return lspPingPduParser_;
  }

private:
  const Orv::Ptr<Wirx::Pkt> pkt_;
  const U16 offset_;
  const Wirx::IpGenAddr ipGenAddr_;
  const U16 port_;
  const Orv::Ptr<const LspPingPduParser> lspPingPduParser_;
};

LSPPING_EXPORT Orv::Ptr<LspPingMsg>
lspPingMsgFactory(Orv::Ptr<Wirx::Pkt> pkt, U16 offset,
                  const Wirx::IpGenAddr &ipGenAddr, U16 port,
                  Orv::Ptr<const LspPingPduParser> lspPingPduParser);

} // namespace LspPing

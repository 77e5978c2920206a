#pragma once

#include "Interface/DeviceIntfStatusDir.h"
#include "LspPing/LspPingDownstreamLabelEntry.h"
#include "LspPing/LspPingDownstreamMappingInfoSet.h"
#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingPduParser.h"
#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingRequestInfo.h"
#include "LspPing/LspPingReturnCode.h"
#include "Mesk/Fib/ForwardingStatus.h"
#include "Mesk/Fib6/ForwardingStatus.h"
#include "Mpls/Api/Status.h"
#include "Mpls/CommonLib.h"
#include "Mpls/FwdEqvClass.h"
#include "Mpls/Hardware/Status.h"
#include "Mpls/LfibStatus.h"
#include "MplsUtils/EthPktParser.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Orv/Name.h"
#include "Rsvp/RsvpStatus.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"
#include "Wirx/UdpPam.h"

namespace LspPing {

class LspPingPktGen;

// The echo responder: validates each echo request handed to it against the
// router's forwarding state and answers it on a UDP packet-access module
// with a return code, a subcode and, for labelled requests, an Interface
// and Label Stack TLV or Downstream Mapping TLVs. It keeps nothing between
// requests; its inputs are read-only and fixed at construction.
class LSPPING_EXPORT LspPingReqHandler : public Orv::Entity {
public:
  LspPingReqHandler(
      Orv::Ptr<const Mpls::Hardware::Status> mplsHwStatus,
      Orv::Ptr<const Mpls::Api::Status> mplsStatus,
      Orv::Ptr<const Mpls::CommonLib> ldpCommonLib,
      Orv::Ptr<const Mpls::LfibStatus> transitLfib,
      Orv::Ptr<const Mesk::Fib::ForwardingStatus> forwardingStatus,
      Orv::Ptr<const Mesk::Fib6::ForwardingStatus> forwarding6Status,
      Orv::Ptr<const Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnelTable,
      Orv::Ptr<Wirx::UdpPam> udpPam4, Orv::Ptr<Wirx::UdpPam> udpPam6,
      Wirx::IpAddr rxIntfIpAddr, Wirx::Ip6Addr rxIntfIp6Addr,
      Orv::Ptr<const Rsvp::RsvpStatus> rsvpStatus,
      Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir);

  // Answers one received packet; true when a reply was written, false when
  // the packet was dropped.
  bool processPkt(const MplsUtils::EthPktParser &ethPktParser);

  LspPingRequestInfo
  validateRequestPkt(const Orv::Ptr<Wirx::Pkt> &pkt,
                     const MplsUtils::EthPktParser &ethPktParser,
                     const LspPingPduParser &pduParser) const;
  LspPingReturnCode validateFec(const Mpls::FwdEqvClass &fec, U32 label,
                                const Orv::Name &commonLibTableName) const;
  LspPingReturnCode validateFecRsvp(const Rsvp::RsvpSpId &spId,
                                    U32 label) const;
  LspPingReturnCode validateFec128Pseudowire(const LspPingPwInfo &pwInfo,
                                             U32 label) const;

  LspPingDownstreamMappingInfoSet getDownstreamMappingInfo(
      const Wirx::MplsLabelStack &labelStack, const Mpls::LfibRoute &route,
      const Mpls::LfibViaSet &viaSet, U8 multipathType,
      const Wirx::IpGenAddr &dsMultipathBaseAddr,
      const LspPingMultipathBitset &dsMultipathBitset) const;
  LspPingDownstreamMappingInfo dsMappingInfoFromVia(
      LspPingDownstreamLabelEntry labelEntry, const Wirx::IpGenAddr &dsIpAddr,
      U32 mtu, const Wirx::MplsLabelStack &outLabelStack,
      LspPingDownstreamSignalingProtocol protocol, U8 multipathType,
      const Wirx::IpGenAddr &dsMultipathBaseAddr,
      const LspPingMultipathBitset &dsMultipathBitset, U32 index) const;
  void getDownstreamIpLabelAndIntfFromTunnel(
      const Tunnel::TunnelTable::TiLfaTunnelTableEntry &tunnel,
      Wirx::IpGenAddr &dsIpAddr, Wirx::MplsLabel &label,
      Wirx::IntfId &intf) const;
  bool isNexthopTiLfaTunnel(const Wirx::IntfId &intf) const;
  U32 getIntfMtu(const Wirx::IntfId &intf) const;

private:
  // The request as the drop checks leave it for validation and the reply.
  struct Request;

  bool passesDropChecks(const Request &request) const;
  bool labelProgrammed(const Request &request,
                       const LspPingRequestInfo &info) const;
  bool sendReply(const Request &request, const LspPingRequestInfo &info);
  void addReplyTlvs(LspPingPktGen &gen, const Request &request,
                    const LspPingRequestInfo &info) const;
  LspPingReturnCode viaCheck(const Mpls::LfibViaSet &viaSet) const;

  // One mapping per usable via of a plain via set, or per FIB via of the
  // forwarding FECs of an extended-FEC via set.
  void plainViaMappings(const Mpls::LfibViaSet &viaSet,
                        LspPingDownstreamSignalingProtocol protocol,
                        U8 multipathType, const Wirx::IpGenAddr &baseAddr,
                        const LspPingMultipathBitset &bitset,
                        LspPingDownstreamMappingInfoSet &set) const;
  void extFecViaMappings(const Wirx::MplsLabelStack &labelStack,
                         const Mpls::LfibViaSet &viaSet,
                         LspPingDownstreamSignalingProtocol protocol,
                         U8 multipathType, const Wirx::IpGenAddr &baseAddr,
                         const LspPingMultipathBitset &bitset,
                         LspPingDownstreamMappingInfoSet &set) const;
  // The mapping through a TI-LFA tunnel interface; false (traced) when the
  // tunnel is not in the tunnel table.
  bool tunnelMapping(const Wirx::IntfId &tunnelIntf,
                     const Wirx::MplsLabelStack &outLabelStack,
                     LspPingDownstreamSignalingProtocol protocol,
                     U8 multipathType, const Wirx::IpGenAddr &baseAddr,
                     const LspPingMultipathBitset &bitset, U32 index,
                     LspPingDownstreamMappingInfoSet &set) const;

  const Orv::Ptr<const Mpls::Hardware::Status> mplsHwStatus_;
  const Orv::Ptr<const Mpls::Api::Status> mplsStatus_;
  const Orv::Ptr<const Mpls::CommonLib> ldpCommonLib_;
  const Orv::Ptr<const Mpls::LfibStatus> transitLfib_;
  const Orv::Ptr<const Mesk::Fib::ForwardingStatus> forwardingStatus_;
  const Orv::Ptr<const Mesk::Fib6::ForwardingStatus> forwarding6Status_;
  const Orv::Ptr<const Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnelTable_;
  const Orv::Ptr<Wirx::UdpPam> udpPam4_;
  const Orv::Ptr<Wirx::UdpPam> udpPam6_;
  const Wirx::IpAddr rxIntfIpAddr_;
  const Wirx::Ip6Addr rxIntfIp6Addr_;
  const Orv::Ptr<const Rsvp::RsvpStatus> rsvpStatus_;
  const Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
};

LSPPING_EXPORT Orv::Ptr<LspPingReqHandler> lspPingReqHandlerFactory(
    Orv::Ptr<const Mpls::Hardware::Status> mplsHwStatus,
    Orv::Ptr<const Mpls::Api::Status> mplsStatus,
    Orv::Ptr<const Mpls::CommonLib> ldpCommonLib,
    Orv::Ptr<const Mpls::LfibStatus> transitLfib,
    Orv::Ptr<const Mesk::Fib::ForwardingStatus> forwardingStatus,
    Orv::Ptr<const Mesk::Fib6::ForwardingStatus> forwarding6Status,
    Orv::Ptr<const Tunnel::TunnelTable::TiLfaTunnelTable> tiLfaTunnelTable,
    Orv::Ptr<Wirx::UdpPam> udpPam4, Orv::Ptr<Wirx::UdpPam> udpPam6,
    Wirx::IpAddr rxIntfIpAddr, Wirx::Ip6Addr rxIntfIp6Addr,
    Orv::Ptr<const Rsvp::RsvpStatus> rsvpStatus,
    Orv::Ptr<const Interface::DeviceIntfStatusDir> deviceIntfStatusDir);

} // namespace LspPing

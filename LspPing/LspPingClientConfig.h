#pragma once

#include <string>

#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingMode.h"
#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingTunnelType.h"
#include "LspPing/LspPingTxCountConstants.h"
#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "Rsvp/RsvpSpId.h"
#include "Wirx/EthAddr.h"
#include "Wirx/IntfId.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/IpGenPrefix.h"
#include "Wirx/MplsLabel.h"

namespace LspPing {

// One ping client as the management layer configures it. The configuration
// state machine writes `enabled` and `reason`; everything else is input.
class LSPPING_EXPORT LspPingClientConfig : public Orv::Entity {
public:
  static constexpr Orv::Attr<LspPingMode> modeAttr{1};
  static constexpr Orv::Attr<std::string> reasonAttr{2};
  static constexpr Orv::Attr<bool> enabledAttr{3};
  static constexpr Orv::Attr<Wirx::IntfId> txIntfIdAttr{4};
  static constexpr Orv::Attr<Wirx::EthAddr> srcEthAddrAttr{5};
  static constexpr Orv::Attr<Wirx::EthAddr> tunnelNexthopEthAddrAttr{6};
  static constexpr Orv::Attr<Wirx::IpGenAddr> srcIpAddrAttr{7};
  static constexpr Orv::Attr<Wirx::IpGenAddr> dstIpAddrAttr{8};
  static constexpr Orv::Attr<Wirx::IpGenPrefix> dstPrefixAttr{9};
  static constexpr Orv::Attr<U16> srcUdpPortAttr{10};
  static constexpr Orv::Attr<U16> dstUdpPortAttr{11};
  static constexpr Orv::CollAttr<U8> mplsLabelAttr{12};
  static constexpr Orv::CollAttr<U8> mplsTtlAttr{13};
  static constexpr Orv::Attr<LspPingDownstreamMappingInfo> dsMappingInfoAttr{
      14};
  static constexpr Orv::Attr<U8> mplsTcAttr{15};
  static constexpr Orv::Attr<Rsvp::RsvpSpId> rsvpSpIdAttr{16};
  static constexpr Orv::Attr<Wirx::IpGenAddr> rsvpSenderAddrAttr{17};
  static constexpr Orv::Attr<LspPingPwInfo> pwInfoAttr{18};
  static constexpr Orv::Attr<S32> txCountAttr{19};
  static constexpr Orv::Attr<double> txRateAttr{20};
  static constexpr Orv::Attr<U32> txPktMaxNumAttr{21};
  static constexpr Orv::Attr<double> pktTimeoutAttr{22};
  static constexpr Orv::Attr<double> pktDelayAttr{23};
  static constexpr Orv::Attr<LspPingTunnelType> tunnelTypeAttr{24};

  explicit LspPingClientConfig(U32 clientId) : clientId_(clientId) {}

  U32 clientId() const { return clientId_; }
  LspPingMode mode() const { return mode_; }
  // Why the client is not enabled.
  const std::string &reason() const { return reason_; }
  bool enabled() const { return enabled_; }
  const Wirx::IntfId &txIntfId() const { return txIntfId_; }
  const Wirx::EthAddr &srcEthAddr() const { return srcEthAddr_; }
  const Wirx::EthAddr &tunnelNexthopEthAddr() const {
    return tunnelNexthopEthAddr_;
  }
  // IPv6 here selects an IPv6 IP header.
  const Wirx::IpGenAddr &srcIpAddr() const { return srcIpAddr_; }
  const Wirx::IpGenAddr &dstIpAddr() const { return dstIpAddr_; }
  // The FEC prefix that the Target FEC Stack names.
  const Wirx::IpGenPrefix &dstPrefix() const { return dstPrefix_; }
  // Also the port on which replies come back.
  U16 srcUdpPort() const { return srcUdpPort_; }
  U16 dstUdpPort() const { return dstUdpPort_; }
  // The labels to push, index 0 outermost, and the TTL of each.
  const Orv::Coll<U8, Wirx::MplsLabel> &mplsLabel() const { return mplsLabel_; }
  Wirx::MplsLabel mplsLabel(U8 index) const { return mplsLabel_[index]; }
  const Orv::Coll<U8, U8> &mplsTtl() const { return mplsTtl_; }
  U8 mplsTtl(U8 index) const { return mplsTtl_[index]; }
  const LspPingDownstreamMappingInfo &dsMappingInfo() const {
    return dsMappingInfo_;
  }
  U8 mplsTc() const { return mplsTc_; }
  const Rsvp::RsvpSpId &rsvpSpId() const { return rsvpSpId_; }
  const Wirx::IpGenAddr &rsvpSenderAddr() const { return rsvpSenderAddr_; }
  const LspPingPwInfo &pwInfo() const { return pwInfo_; }
  // Requests to send: LspPingTxCountConstants::infinite sends until the
  // configuration goes away; ::invalid means not set.
  S32 txCount() const { return txCount_; }
  // The interval between two requests, in seconds, whatever the name says.
  double txRate() const { return txRate_; }
  // Carried for the management layer only.
  U32 txPktMaxNum() const { return txPktMaxNum_; }
  double pktTimeout() const { return pktTimeout_; }
  // From enabling the client to its first request, in seconds.
  double pktDelay() const { return pktDelay_; }
  LspPingTunnelType tunnelType() const { return tunnelType_; }

  void modeIs(LspPingMode v) { assign(mode_, v, modeAttr); }
  void reasonIs(const std::string &v) { assign(reason_, v, reasonAttr); }
  void enabledIs(bool v) { assign(enabled_, v, enabledAttr); }
  void txIntfIdIs(const Wirx::IntfId &v) { assign(txIntfId_, v, txIntfIdAttr); }
  void srcEthAddrIs(const Wirx::EthAddr &v) {
    assign(srcEthAddr_, v, srcEthAddrAttr);
  }
  void tunnelNexthopEthAddrIs(const Wirx::EthAddr &v) {
    assign(tunnelNexthopEthAddr_, v, tunnelNexthopEthAddrAttr);
  }
  void srcIpAddrIs(const Wirx::IpGenAddr &v) {
    assign(srcIpAddr_, v, srcIpAddrAttr);
  }
  void dstIpAddrIs(const Wirx::IpGenAddr &v) {
    assign(dstIpAddr_, v, dstIpAddrAttr);
  }
  void dstPrefixIs(const Wirx::IpGenPrefix &v) {
    assign(dstPrefix_, v, dstPrefixAttr);
  }
  void srcUdpPortIs(U16 v) { assign(srcUdpPort_, v, srcUdpPortAttr); }
  void dstUdpPortIs(U16 v) { assign(dstUdpPort_, v, dstUdpPortAttr); }
  void mplsLabelIs(U8 index, Wirx::MplsLabel label) {
    mplsLabel_.is(index, label);
  }
  void mplsLabelDel(U8 index) { mplsLabel_.del(index); }
  void mplsLabelDelAll() { mplsLabel_.delAll(); }
  void mplsTtlIs(U8 index, U8 ttl) { mplsTtl_.is(index, ttl); }
  void mplsTtlDel(U8 index) { mplsTtl_.del(index); }
  void mplsTtlDelAll() { mplsTtl_.delAll(); }
  void dsMappingInfoIs(const LspPingDownstreamMappingInfo &v) {
    assign(dsMappingInfo_, v, dsMappingInfoAttr);
  }
  void mplsTcIs(U8 v) { assign(mplsTc_, v, mplsTcAttr); }
  void rsvpSpIdIs(const Rsvp::RsvpSpId &v) {
    assign(rsvpSpId_, v, rsvpSpIdAttr);
  }
  void rsvpSenderAddrIs(const Wirx::IpGenAddr &v) {
    assign(rsvpSenderAddr_, v, rsvpSenderAddrAttr);
  }
  void pwInfoIs(const LspPingPwInfo &v) { assign(pwInfo_, v, pwInfoAttr); }
  void txCountIs(S32 v) { assign(txCount_, v, txCountAttr); }
  void txRateIs(double v) { assign(txRate_, v, txRateAttr); }
  void txPktMaxNumIs(U32 v) { assign(txPktMaxNum_, v, txPktMaxNumAttr); }
  void pktTimeoutIs(double v) { assign(pktTimeout_, v, pktTimeoutAttr); }
  void pktDelayIs(double v) { assign(pktDelay_, v, pktDelayAttr); }
  void tunnelTypeIs(LspPingTunnelType v) {
    assign(tunnelType_, v, tunnelTypeAttr);
  }

private:
  const U32 clientId_;
  LspPingMode mode_ = LspPingMode::modeLspPing;
  std::string reason_;
  bool enabled_ = false;
  Wirx::IntfId txIntfId_;
  Wirx::EthAddr srcEthAddr_;
  Wirx::EthAddr tunnelNexthopEthAddr_;
  Wirx::IpGenAddr srcIpAddr_;
  Wirx::IpGenAddr dstIpAddr_;
  Wirx::IpGenPrefix dstPrefix_;
  U16 srcUdpPort_ = 0;
  U16 dstUdpPort_ = 3503;
  Orv::Coll<U8, Wirx::MplsLabel> mplsLabel_{*this, mplsLabelAttr};
  Orv::Coll<U8, U8> mplsTtl_{*this, mplsTtlAttr};
  LspPingDownstreamMappingInfo dsMappingInfo_;
  U8 mplsTc_ = 0;
  Rsvp::RsvpSpId rsvpSpId_;
  Wirx::IpGenAddr rsvpSenderAddr_;
  LspPingPwInfo pwInfo_;
  S32 txCount_ = LspPingTxCountConstants::invalid;
  double txRate_ = 1.0;
  U32 txPktMaxNum_ = 30;
  double pktTimeout_ = 1.0;
  double pktDelay_ = 1.0;
  LspPingTunnelType tunnelType_ = LspPingTunnelType::tunnelUnknown;
};

LSPPING_EXPORT Orv::Ptr<LspPingClientConfig>
lspPingClientConfigFactory(U32 clientId);

} // namespace LspPing

#include "LspPing/LspPingAddrType.h"
#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingDownstreamLabelEntry.h"
#include "LspPing/LspPingDownstreamLabelStack.h"
#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingDownstreamMappingInfoSet.h"
#include "LspPing/LspPingDownstreamMappingTlvIpAndIntfLen.h"
#include "LspPing/LspPingDownstreamSignalingProtocol.h"
#include "LspPing/LspPingIntfAndLabelStackInfo.h"
#include "LspPing/LspPingIntfAndLabelStackTlvIpAndIntfLen.h"
#include "LspPing/LspPingMode.h"
#include "LspPing/LspPingMsgType.h"
#include "LspPing/LspPingMultipathBitset.h"
#include "LspPing/LspPingMultipathType.h"
#include "LspPing/LspPingPwInfo.h"
#include "LspPing/LspPingReplyMode.h"
#include "LspPing/LspPingRequestInfo.h"
#include "LspPing/LspPingReturnCode.h"
#include "LspPing/LspPingSrIgpProtocol.h"
#include "LspPing/LspPingTargetFecSubTlvType.h"
#include "LspPing/LspPingTlvType.h"
#include "LspPing/LspPingTunnelType.h"
#include "Orv/Assert.h"

#include <ostream>
#include <utility>

namespace LspPing {

namespace {

// Registered when the library is loaded, so that the hosting agent can show
// and set attributes of these types by name.
const Orv::EnumRegistration<LspPingMsgType> msgType;
const Orv::EnumRegistration<LspPingReplyMode> replyMode;
const Orv::EnumRegistration<LspPingReturnCode> returnCode;
const Orv::EnumRegistration<LspPingTlvType> tlvType;
const Orv::EnumRegistration<LspPingTargetFecSubTlvType> targetFecSubTlvType;
const Orv::EnumRegistration<LspPingAddrType> addrType;
const Orv::EnumRegistration<LspPingMultipathType> multipathType;
const Orv::EnumRegistration<LspPingIntfAndLabelStackTlvIpAndIntfLen> ifLen;
const Orv::EnumRegistration<LspPingDownstreamMappingTlvIpAndIntfLen> dsLen;
const Orv::EnumRegistration<LspPingSrIgpProtocol> srIgpProtocol;
const Orv::EnumRegistration<LspPingTunnelType> tunnelType;
const Orv::EnumRegistration<LspPingMode> mode;
const Orv::EnumRegistration<LspPingDownstreamSignalingProtocol>
    signalingProtocol;

} // namespace

LspPingConstant lspPingConstantFactory() { return LspPingConstant{}; }

LspPingDownstreamLabelEntry LspPingDownstreamLabelEntry::fromLabel(
    Wirx::MplsLabel label, U8 tc, bool bos,
    LspPingDownstreamSignalingProtocol protocol) {
  LspPingDownstreamLabelEntry entry;
  entry.labelIs(label);
  entry.tcIs(tc);
  entry.bosIs(bos);
  entry.protocolIs(protocol);
  return entry;
}

void LspPingDownstreamLabelEntry::labelIs(Wirx::MplsLabel label) {
  ORV_ASSERT(label.isWireLabel());
  *this = fromWord(label.value() << 12 | (word() & 0xFFF));
}

void LspPingDownstreamLabelEntry::tcIs(U8 tc) {
  ORV_ASSERT(tc <= maxTc);
  *this = fromWord((word() & ~(U32{maxTc} << 9)) | U32{tc} << 9);
}

void LspPingDownstreamLabelEntry::bosIs(bool bos) {
  *this = fromWord(bos ? word() | bosMask : word() & ~bosMask);
}

void LspPingDownstreamLabelEntry::protocolIs(
    LspPingDownstreamSignalingProtocol protocol) {
  ORV_ASSERT(static_cast<U32>(protocol) <= 0xFF);
  v3 = static_cast<U8>(protocol);
}

std::ostream &operator<<(std::ostream &os,
                         const LspPingDownstreamLabelEntry &entry) {
  return os << Orv::valueText(entry);
}

LspPingDownstreamLabelEntry lspPingDownstreamLabelEntryFactory(U8 v0, U8 v1,
                                                               U8 v2, U8 v3) {
  return LspPingDownstreamLabelEntry(v0, v1, v2, v3);
}

bool LspPingDownstreamLabelStack::valid() const {
  for (const auto &entry : labelEntry) {
    if (entry.index >= size) {
      break;
    }
    if (entry.value.bos()) {
      return true;
    }
  }
  return false;
}

std::ostream &operator<<(std::ostream &os,
                         const LspPingDownstreamLabelStack &stack) {
  return os << Orv::valueText(stack);
}

LspPingDownstreamLabelStack lspPingDownstreamLabelStackFactory() {
  return LspPingDownstreamLabelStack();
}

std::ostream &operator<<(std::ostream &os,
                         const LspPingMultipathBitset &bitset) {
  return os << Orv::valueText(bitset);
}

LspPingMultipathBitset lspPingMultipathBitsetFactory(U32 size) {
  return LspPingMultipathBitset(size);
}

LspPingDownstreamMappingInfo::LspPingDownstreamMappingInfo(
    U16 mtu, U8 addrType, U8 dsFlags, const Wirx::IpGenAddr &dsIpAddr,
    const Wirx::IpGenAddr &dsIntfAddr, U8 multipathType, U8 depthLimit,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    LspPingMultipathBitset dsMultipathBitset,
    LspPingDownstreamLabelStack labelStack, bool valid)
    : mtu(mtu), addrType(addrType), dsFlags(dsFlags), dsIpAddr(dsIpAddr),
      dsIntfAddr(dsIntfAddr), multipathType(multipathType),
      depthLimit(depthLimit), dsMultipathBaseAddr(dsMultipathBaseAddr),
      dsMultipathBitset(std::move(dsMultipathBitset)),
      labelStack(std::move(labelStack)), valid(valid) {}

std::ostream &operator<<(std::ostream &os,
                         const LspPingDownstreamMappingInfo &info) {
  return os << Orv::valueText(info);
}

LspPingDownstreamMappingInfo lspPingDownstreamMappingInfoFactory() {
  return LspPingDownstreamMappingInfo();
}

LspPingDownstreamMappingInfo lspPingDownstreamMappingInfoFactory(
    U16 mtu, U8 addrType, U8 dsFlags, const Wirx::IpGenAddr &dsIpAddr,
    const Wirx::IpGenAddr &dsIntfAddr, U8 multipathType, U8 depthLimit,
    const Wirx::IpGenAddr &dsMultipathBaseAddr,
    LspPingMultipathBitset dsMultipathBitset,
    LspPingDownstreamLabelStack labelStack, bool valid) {
  return LspPingDownstreamMappingInfo(
      mtu, addrType, dsFlags, dsIpAddr, dsIntfAddr, multipathType, depthLimit,
      dsMultipathBaseAddr, std::move(dsMultipathBitset), std::move(labelStack),
      valid);
}

std::ostream &operator<<(std::ostream &os,
                         const LspPingDownstreamMappingInfoSet &set) {
  return os << Orv::valueText(set);
}

LspPingDownstreamMappingInfoSet lspPingDownstreamMappingInfoSetFactory() {
  return LspPingDownstreamMappingInfoSet();
}

LspPingIntfAndLabelStackInfo::LspPingIntfAndLabelStackInfo(
    const Wirx::IpGenAddr &addr, Wirx::IntfId intf,
    const Wirx::MplsLabelStack &labelStack, bool valid)
    : addr(addr), intf(std::move(intf)), labelStack(labelStack), valid(valid) {}

std::ostream &operator<<(std::ostream &os,
                         const LspPingIntfAndLabelStackInfo &info) {
  return os << Orv::valueText(info);
}

LspPingIntfAndLabelStackInfo lspPingIntfAndLabelStackInfoFactory() {
  return LspPingIntfAndLabelStackInfo();
}

LspPingIntfAndLabelStackInfo lspPingIntfAndLabelStackInfoFactory(
    const Wirx::IpGenAddr &addr, Wirx::IntfId intf,
    const Wirx::MplsLabelStack &labelStack, bool valid) {
  return LspPingIntfAndLabelStackInfo(addr, std::move(intf), labelStack, valid);
}

LspPingPwInfo::LspPingPwInfo(const Wirx::IpGenAddr &senderAddr,
                             const Wirx::IpGenAddr &receiverAddr, U32 pwId,
                             U32 pwType)
    : senderAddr(senderAddr), receiverAddr(receiverAddr), pwId(pwId),
      pwType(pwType) {}

std::ostream &operator<<(std::ostream &os, const LspPingPwInfo &info) {
  return os << Orv::valueText(info);
}

LspPingPwInfo lspPingPwInfoFactory() { return LspPingPwInfo(); }

LspPingPwInfo lspPingPwInfoFactory(const Wirx::IpGenAddr &senderAddr,
                                   const Wirx::IpGenAddr &receiverAddr,
                                   U32 pwId, U32 pwType) {
  return LspPingPwInfo(senderAddr, receiverAddr, pwId, pwType);
}

std::ostream &operator<<(std::ostream &os, const LspPingRequestInfo &info) {
  return os << Orv::valueText(info);
}

LspPingRequestInfo lspPingRequestInfoFactory(LspPingReturnCode retCode,
                                             U8 retSubcode) {
  return LspPingRequestInfo(retCode, retSubcode);
}

} // namespace LspPing

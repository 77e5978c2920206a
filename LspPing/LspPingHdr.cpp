#include "LspPing/LspPingHdr.h"

#include <cmath>
#include <cstdio>
#include <ostream>

#include "LspPing/LspPingDdmapTlv.h"
#include "LspPing/LspPingDownstreamMappingTlvContainer.h"
#include "LspPing/LspPingEchoJitterTlv.h"
#include "LspPing/LspPingFec128Ipv4SubTlv.h"
#include "LspPing/LspPingFecStackChangeSubTlv.h"
#include "LspPing/LspPingIntfAndLabelStackTlvContainer.h"
#include "LspPing/LspPingLdpIpv4SubTlv.h"
#include "LspPing/LspPingMultipathSubTlv.h"
#include "LspPing/LspPingNilFecSubTlv.h"
#include "LspPing/LspPingNodeAddrSubTlv.h"
#include "LspPing/LspPingOpaqueValGenSubTlv.h"
#include "LspPing/LspPingOpaqueValSGSubTlv.h"
#include "LspPing/LspPingP2mpFecStackSubTlv.h"
#include "LspPing/LspPingRsvpIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv4SubTlv.h"
#include "LspPing/LspPingSrIpv6SubTlv.h"
#include "LspPing/NtpTime.h"
#include "LspPing/PktHexDump.h"
#include "Orv/Assert.h"
#include "Orv/Clock.h"

namespace LspPing {

namespace {

std::string hexText(U32 value) {
  char text[16];
  std::snprintf(text, sizeof text, "0x%x", value);
  return text;
}

std::string decimal(U32 value) { return std::to_string(value); }

} // namespace

bool LspPingHdr::valid() const {
  return (version() == 1 || version() == 2) &&
         (messageType == 1 || messageType == 2);
}

std::string LspPingHdr::stringValue() const {
  if (!valid()) {
    return "Invalid LspPingHdr";
  }
  return "LspPingHdr:\tver(" + decimal(version()) + "),\tflag(" +
         decimal(globalFlags()) + "),\tmsgType(" + decimal(messageType) +
         "),\treplyMode(" + decimal(replyMode) + "),\treturnCode(" +
         decimal(returnCode) + "),\treturnSubcode(" + decimal(returnSubcode) +
         "),\tsenderHandle(" + hexText(senderHandle()) + "),\tseqNum(" +
         hexText(sequenceNumber()) + "),\ttsSenSeconds(" +
         hexText(tsSentSeconds()) + "),\ttsSentmSeconds(" +
         hexText(tsSentmSeconds()) + "),\ttsRcvdSeconds(" +
         hexText(tsRcvdSeconds()) + "),\ttsRcvdmSeconds(" +
         hexText(tsRcvdmSeconds()) + ")";
}

bool LspPingLdpIpv4SubTlv::valid() const { return length() == 5; }

std::string LspPingLdpIpv4SubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid LdpIpv4SubTlv";
  }
  return "LdpIpv4( '" + ipv4Text(ipPrefix) + "/" + decimal(prefixLen) + "' )";
}

bool LspPingRsvpIpv4SubTlv::valid() const {
  return type() == 3 && length() == 20;
}

std::string LspPingRsvpIpv4SubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid RsvpIpv4SubTlv";
  }
  return "RsvpIpv4:\tdestination(" + ipv4Text(destination) + "),\ttunnelId(" +
         decimal(tunnelId.value()) + "),\textendedTunnelId(" +
         ipv4Text(extendedTunnelId) + "),\tsenderAddress(" +
         ipv4Text(senderAddress) + "),\tlspId(" + decimal(lspId.value()) + ")";
}

bool LspPingSrIpv4SubTlv::valid() const { return length() == 6; }

std::string LspPingSrIpv4SubTlv::stringValue() const {
  if (!valid()) {
    return "";
  }
  return "SrIpv4( '" + ipv4Text(ipPrefix) + "/" + decimal(prefixLen) + "' )";
}

bool LspPingSrIpv6SubTlv::valid() const { return length() == 18; }

std::string LspPingSrIpv6SubTlv::stringValue() const {
  if (!valid()) {
    return "";
  }
  return "SrIpv6( '" + ipPrefix.value().stringValue() + "/" +
         decimal(prefixLen) + "' )";
}

bool LspPingNilFecSubTlv::valid() const {
  return type() == 16 && length() == 4;
}

std::string LspPingNilFecSubTlv::stringValue() const {
  if (!valid()) {
    return "Invailid NilFecSunTlv";
  }
  return "NilFec( '" + hexText(labelField.label()) + "' )";
}

bool LspPingFec128Ipv4SubTlv::valid() const {
  const U8 *bytes = reinterpret_cast<const U8 *>(this);
  return type() == 10 && length() == 14 && bytes[18] == 0 &&
         (pwType.value() == 4 || pwType.value() == 5);
}

std::string LspPingFec128Ipv4SubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid Fec128Ipv4SubTlv";
  }
  return "Fec128Ipv4:\tsender(" + ipv4Text(senderAddr) + "),\treceiver(" +
         ipv4Text(receiverAddr) + "),\tpwId(" + decimal(pwId.value()) +
         "),\tpwType(" + decimal(pwType.value()) + ")";
}

bool LspPingNodeAddrSubTlv::valid() const {
  return type() == 11 && subType.value() == 3 && subTypeLen.value() == 4;
}

std::string LspPingNodeAddrSubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid NodeAddrSubTlv";
  }
  return "NodeAddr( Addr: '" + ipv4Text(addr) + "' )";
}

bool LspPingP2mpFecStackSubTlv::valid() const { return type() == 19; }

std::string LspPingP2mpFecStackSubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid LspPingP2mpFecStackSubTlv";
  }
  return "P2mpFecStackSubTlv( RootAddr: '" + ipv4Text(rootAddr) + "' )";
}

bool LspPingOpaqueValSGSubTlv::valid() const {
  return type == 3 && length.value() == 8;
}

std::string LspPingOpaqueValSGSubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid LspPingOpaqueValSGSubTlv";
  }
  return "OpaqueValSGSubTlv( SourceAddr: '" + ipv4Text(sourceAddr) +
         "' GroupAddr: '" + ipv4Text(groupAddr) + "' )";
}

bool LspPingOpaqueValGenSubTlv::valid() const {
  return type == 1 && length.value() == 4;
}

std::string LspPingOpaqueValGenSubTlv::stringValue() const {
  if (!valid()) {
    return "Invalid LspPingOpaqueValGenSubTlv";
  }
  return "OpaqueValGenSubTlv( lspId: " + decimal(lspId.value()) + " )";
}

bool LspPingEchoJitterTlv::valid() const {
  return type() == 12 && length() == 4;
}

std::string LspPingEchoJitterTlv::stringValue() const {
  if (!valid()) {
    return "Invalid EchoJitterTlv";
  }
  return "EchoJitterTlv( jittertime(" + decimal(jitter.value()) + ") )";
}

bool LspPingDdmapTlv::valid() const { return type() == 20; }

std::string LspPingDdmapTlv::stringValue() const {
  if (!valid()) {
    return "Invalid LspPingDdmapTlv";
  }
  return "DDMAPTlv( Downstream Address: '" + ipv4Text(dsIpAddr) +
         "', Downstream Interface Address: '" + ipv4Text(dsIntfAddr) +
         "', RetCode: " + decimal(retCode) +
         ", RetSubCode: " + decimal(retSubcode) + " )";
}

bool LspPingMultipathSubTlv::valid() const { return type() == 1; }

bool LspPingFecStackChangeSubTlv::valid() const { return type() == 3; }

namespace {

// The address type decides the form of both TLV views. Only numbered and
// unnumbered IPv4 and numbered IPv6 have a form we read.
template <class Hdr, class Ipv4, class Ipv6>
bool castByAddrType(const U8 *bytes, U32 length, U8 addrType,
                    const Hdr *&header, const Ipv4 *&ipv4, const Ipv6 *&ipv6) {
  header = nullptr;
  ipv4 = nullptr;
  ipv6 = nullptr;
  if (length <= 3) {
    return false;
  }
  header = reinterpret_cast<const Hdr *>(bytes);
  switch (addrType) {
  case 1:
  case 2:
    if (length < 12) {
      return false;
    }
    ipv4 = reinterpret_cast<const Ipv4 *>(bytes);
    return true;
  case 3:
    if (length < 36) {
      return false;
    }
    ipv6 = reinterpret_cast<const Ipv6 *>(bytes);
    return true;
  default:
    return false;
  }
}

bool isIpv4AddrType(U8 addrType) {
  switch (addrType) {
  case 1:
  case 2:
    return true;
  case 3:
  case 4:
    return false;
  default:
    ORV_ASSERT(0 && "Undefined address type");
  }
}

} // namespace

void LspPingIntfAndLabelStackTlvContainer::tryCastToTlv(const U8 *bytes,
                                                        U32 length) {
  const U8 addrType = length > 3 ? bytes[0] : 0;
  valid_ = castByAddrType(bytes, length, addrType, header_, ipv4Tlv_, ipv6Tlv_);
}

U8 LspPingIntfAndLabelStackTlvContainer::getAddrType() const {
  ORV_ASSERT(valid());
  return header_->addrType;
}

bool LspPingIntfAndLabelStackTlvContainer::isIpv4() const {
  return isIpv4AddrType(getAddrType());
}

Wirx::IpGenAddr LspPingIntfAndLabelStackTlvContainer::getAddr() const {
  ORV_ASSERT(valid());
  if (ipv4Tlv_) {
    return Wirx::IpAddr(ipv4Tlv_->addr.value());
  }
  return ipv6Tlv_->addr.value();
}

Wirx::IpGenAddr LspPingIntfAndLabelStackTlvContainer::getIntf() const {
  ORV_ASSERT(valid());
  if (ipv4Tlv_) {
    return Wirx::IpAddr(ipv4Tlv_->intf.value());
  }
  return ipv6Tlv_->intf.value();
}

Orv::Ptr<LspPingIntfAndLabelStackTlvContainer>
lspPingIntfAndLabelStackTlvContainerFactory() {
  return Orv::make<LspPingIntfAndLabelStackTlvContainer>();
}

void LspPingDownstreamMappingTlvContainer::tryCastToTlv(const U8 *bytes,
                                                        U32 length) {
  const U8 addrType = length > 3 ? bytes[2] : 0;
  valid_ = castByAddrType(bytes, length, addrType, header_, ipv4Tlv_, ipv6Tlv_);
}

U8 LspPingDownstreamMappingTlvContainer::getAddrType() const {
  ORV_ASSERT(valid());
  return header_->addrType;
}

bool LspPingDownstreamMappingTlvContainer::isIpv4() const {
  return isIpv4AddrType(getAddrType());
}

U16 LspPingDownstreamMappingTlvContainer::getMtu() const {
  ORV_ASSERT(valid());
  return header_->mtu.value();
}

U8 LspPingDownstreamMappingTlvContainer::getDsFlags() const {
  ORV_ASSERT(valid());
  return header_->dsFlags;
}

Wirx::IpGenAddr LspPingDownstreamMappingTlvContainer::getDsIpAddr() const {
  ORV_ASSERT(valid());
  if (ipv4Tlv_) {
    return Wirx::IpAddr(ipv4Tlv_->dsIpAddr.value());
  }
  return ipv6Tlv_->dsIpAddr.value();
}

Wirx::IpGenAddr LspPingDownstreamMappingTlvContainer::getDsIntfAddr() const {
  ORV_ASSERT(valid());
  if (ipv4Tlv_) {
    return Wirx::IpAddr(ipv4Tlv_->dsIntfAddr.value());
  }
  return ipv6Tlv_->dsIntfAddr.value();
}

// The container was cast with the short thresholds (12 and 36 bytes), so the
// bytes behind the addresses are read only when the caller checked the full
// record size.
U8 LspPingDownstreamMappingTlvContainer::getMultipathType() const {
  ORV_ASSERT(valid());
  return ipv4Tlv_ ? ipv4Tlv_->multipathType : ipv6Tlv_->multipathType;
}

U8 LspPingDownstreamMappingTlvContainer::getDepthLimit() const {
  ORV_ASSERT(valid());
  return ipv4Tlv_ ? ipv4Tlv_->depthLimit : ipv6Tlv_->depthLimit;
}

U16 LspPingDownstreamMappingTlvContainer::getMultipathLength() const {
  ORV_ASSERT(valid());
  return ipv4Tlv_ ? ipv4Tlv_->multipathLength.value()
                  : ipv6Tlv_->multipathLength.value();
}

Orv::Ptr<LspPingDownstreamMappingTlvContainer>
lspPingDownstreamMappingTlvContainerFactory() {
  return Orv::make<LspPingDownstreamMappingTlvContainer>();
}

std::ostream &operator<<(std::ostream &os, const NtpTimeU64 &t) {
  return os << Orv::valueText(t);
}

double NtpTime::time() { return Orv::now() + unixToNtpSeconds; }

U32 NtpTime::fractionToU32(double fraction) {
  const U32 microseconds = static_cast<U32>(fraction * 1000000.0);
  return static_cast<U32>(microseconds / 1000000.0 * 4294967296.0);
}

namespace {

// The whole seconds of an NTP time, modulo 2^32 as the wire field counts
// them: the field wraps in 2036, and the conversion must stay defined then
// (and for a clock set before 1900).
U32 eraSeconds(double ntpTime) {
  return static_cast<U32>(static_cast<U64>(static_cast<Orv::S64>(ntpTime)));
}

} // namespace

U32 NtpTime::ntpSeconds() { return eraSeconds(time()); }

U32 NtpTime::ntpFraction() {
  const double now = time();
  return fractionToU32(now - std::floor(now));
}

NtpTimeU64 NtpTime::ntpTime() {
  const double now = time();
  return NtpTimeU64{eraSeconds(now), fractionToU32(now - std::floor(now))};
}

double NtpTime::elapsedTime(const NtpTimeU64 &time0, const NtpTimeU64 &time1) {
  const U32 seconds = time1.seconds - time0.seconds;
  const double fraction = static_cast<double>(time1.microSeconds) -
                          static_cast<double>(time0.microSeconds);
  return seconds + fraction * 2.3283064365386963e-10;
}

std::string pktHexDump(const U8 *bytes, U32 length) {
  static constexpr char digits[] = "0123456789abcdef";
  std::string text;
  text.reserve(length * 4u);
  for (U32 i = 0; i < length; ++i) {
    text += '\\';
    text += 'x';
    text += digits[bytes[i] >> 4];
    text += digits[bytes[i] & 0xF];
  }
  return text;
}

} // namespace LspPing

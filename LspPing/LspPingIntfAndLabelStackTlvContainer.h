#pragma once

#include "LspPing/LspPingIntfAndLabelStackHdr.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing {

// A view of an Interface and Label Stack TLV value whose form depends on its
// address type. Getters require a valid view: calling one otherwise is a
// programming error.
class LSPPING_EXPORT LspPingIntfAndLabelStackTlvContainer : public Orv::Object {
public:
  // Points the view at `length` value bytes; valid for numbered IPv4 (at
  // least 12 bytes), unnumbered IPv4 (12) and numbered IPv6 (36) only.
  void tryCastToTlv(const U8 *bytes, U32 length);

  bool valid() const { return valid_; }
  U8 getAddrType() const;
  bool isIpv4() const;
  Wirx::IpGenAddr getAddr() const;
  Wirx::IpGenAddr getIntf() const;

  const LspPingIntfAndLabelStackHdr *header() const { return header_; }
  const LspPingIntfAndLabelStackIpv4Tlv *ipv4Tlv() const { return ipv4Tlv_; }
  const LspPingIntfAndLabelStackIpv6Tlv *ipv6Tlv() const { return ipv6Tlv_; }

private:
  bool valid_ = false;
  const LspPingIntfAndLabelStackHdr *header_ = nullptr;
  const LspPingIntfAndLabelStackIpv4Tlv *ipv4Tlv_ = nullptr;
  const LspPingIntfAndLabelStackIpv6Tlv *ipv6Tlv_ = nullptr;
};

LSPPING_EXPORT Orv::Ptr<LspPingIntfAndLabelStackTlvContainer>
lspPingIntfAndLabelStackTlvContainerFactory();

} // namespace LspPing

#pragma once

#include "LspPing/LspPingDownstreamMappingHdr.h"
#include "Orv/Export.h"
#include "Orv/Object.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing {

// A view of a Downstream Mapping TLV value whose form depends on its address
// type. It casts with the same 12- and 36-byte thresholds as the interface
// and label stack view, not its own record sizes: the parser checks the full
// sizes itself. Getters require a valid view.
class LSPPING_EXPORT LspPingDownstreamMappingTlvContainer : public Orv::Object {
public:
  void tryCastToTlv(const U8 *bytes, U32 length);

  bool valid() const { return valid_; }
  U8 getAddrType() const;
  bool isIpv4() const;
  U16 getMtu() const;
  U8 getDsFlags() const;
  Wirx::IpGenAddr getDsIpAddr() const;
  Wirx::IpGenAddr getDsIntfAddr() const;
  U8 getMultipathType() const;
  U8 getDepthLimit() const;
  U16 getMultipathLength() const;

  const LspPingDownstreamMappingHdr *header() const { return header_; }
  const LspPingDownstreamMappingIpv4Tlv *ipv4Tlv() const { return ipv4Tlv_; }
  const LspPingDownstreamMappingIpv6Tlv *ipv6Tlv() const { return ipv6Tlv_; }

private:
  bool valid_ = false;
  const LspPingDownstreamMappingHdr *header_ = nullptr;
  const LspPingDownstreamMappingIpv4Tlv *ipv4Tlv_ = nullptr;
  const LspPingDownstreamMappingIpv6Tlv *ipv6Tlv_ = nullptr;
};

LSPPING_EXPORT Orv::Ptr<LspPingDownstreamMappingTlvContainer>
lspPingDownstreamMappingTlvContainerFactory();

} // namespace LspPing

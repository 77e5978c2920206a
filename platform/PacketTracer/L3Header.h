#pragma once

#include <compare>

#include "Orv/Types.h"
#include "Wirx/AddrFamily.h"
#include "Wirx/IpFlowLabel.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/IpProto.h"
#include "Wirx/IpTtl.h"

namespace PacketTracer {

// The IP header inside a traced packet's label stack. The fields of both
// families live side by side; the tracer reads those of `af`.
class L3Header {
public:
  L3Header() = default;
  explicit L3Header(Wirx::AddrFamily af) noexcept : af_(af) {}

  Wirx::AddrFamily af() const noexcept { return af_; }
  const Wirx::IpGenAddr &srcIp() const noexcept { return srcIp_; }
  const Wirx::IpGenAddr &dstIp() const noexcept { return dstIp_; }
  Wirx::IpProto protocol() const noexcept { return protocol_; }
  Wirx::IpTtl ttl() const noexcept { return ttl_; }
  Wirx::IpFlowLabel flowLabel() const noexcept { return flowLabel_; }
  Orv::U8 hopLimit() const noexcept { return hopLimit_; }
  Orv::U8 nextHeader() const noexcept { return nextHeader_; }

  void srcIpExternalIs(const Wirx::IpGenAddr &v) noexcept { srcIp_ = v; }
  void dstIpExternalIs(const Wirx::IpGenAddr &v) noexcept { dstIp_ = v; }
  void protocolExternalIs(Wirx::IpProto v) noexcept { protocol_ = v; }
  void ttlExternalIs(Wirx::IpTtl v) noexcept { ttl_ = v; }
  void flowLabelExternalIs(Wirx::IpFlowLabel v) noexcept { flowLabel_ = v; }
  void hopLimitExternalIs(Orv::U8 v) noexcept { hopLimit_ = v; }
  void nextHeaderExternalIs(Orv::U8 v) noexcept { nextHeader_ = v; }

  auto operator<=>(const L3Header &) const noexcept = default;

private:
  Wirx::AddrFamily af_ = Wirx::AddrFamily::unspecified;
  Wirx::IpGenAddr srcIp_;
  Wirx::IpGenAddr dstIp_;
  Wirx::IpProto protocol_;
  Wirx::IpTtl ttl_;
  Wirx::IpFlowLabel flowLabel_;
  Orv::U8 hopLimit_ = 0;
  Orv::U8 nextHeader_ = 0;
};

} // namespace PacketTracer

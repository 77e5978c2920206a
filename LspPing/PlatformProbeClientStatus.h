#pragma once

#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "PacketTracer/Result.h"
#include "Wirx/IpGenAddr.h"

namespace LspPing::PlatformProbe {

// What one probe has asked the packet tracer and what it has heard back.
class LSPPING_EXPORT ClientStatus : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<Wirx::IpGenAddr> requestAttr{1};
  static constexpr Orv::CollAttr<Orv::U32> resultAttr{2};
  static constexpr Orv::Attr<bool> completeAttr{3};

  explicit ClientStatus(Orv::U32 id) : id_(id) {}

  Orv::U32 id() const { return id_; }
  // The tracer's request number for each destination address.
  const Orv::Coll<Wirx::IpGenAddr, Orv::U32> &request() const {
    return request_;
  }
  // The tracer's result for each request number.
  const Orv::Coll<Orv::U32, Orv::Ptr<const PacketTracer::Result>> &
  result() const {
    return result_;
  }
  // True when every request has a result.
  bool complete() const { return complete_; }

  void requestIs(const Wirx::IpGenAddr &addr, Orv::U32 number) {
    request_.is(addr, number);
  }
  void requestDel(const Wirx::IpGenAddr &addr) { request_.del(addr); }
  void resultIs(Orv::U32 number, Orv::Ptr<const PacketTracer::Result> result) {
    result_.is(number, result);
  }
  void resultDel(Orv::U32 number) { result_.del(number); }
  void completeIs(bool v) { assign(complete_, v, completeAttr); }

private:
  const Orv::U32 id_;
  Orv::Coll<Wirx::IpGenAddr, Orv::U32> request_{*this, requestAttr};
  Orv::Coll<Orv::U32, Orv::Ptr<const PacketTracer::Result>> result_{*this,
                                                                    resultAttr};
  bool complete_ = false;
};

} // namespace LspPing::PlatformProbe

#pragma once

#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "PacketTracer/Request.h"
#include "PacketTracer/RequestId.h"

namespace PacketTracer {

// The requests one client has filed with the tracer, by request id.
class LSPPING_EXPORT ClientConfig : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<RequestId> requestAttr{1};

  const Orv::Coll<RequestId, Request> &request() const { return request_; }
  // Files a copy of `request`, replacing any under the same id.
  void requestIs(const RequestId &id, const Request &request) {
    request_.is(id, request);
  }
  void requestDel(const RequestId &id) { request_.del(id); }

private:
  Orv::Coll<RequestId, Request> request_{*this, requestAttr};
};

} // namespace PacketTracer

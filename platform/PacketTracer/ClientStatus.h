#pragma once

#include "Orv/Coll.h"
#include "Orv/Entity.h"
#include "Orv/Export.h"
#include "PacketTracer/RequestId.h"
#include "PacketTracer/Result.h"

namespace PacketTracer {

// The tracer's results for one client, by request id: a result appears once
// the request is traced and goes with the request.
class LSPPING_EXPORT ClientStatus : public Orv::Entity {
public:
  static constexpr Orv::CollAttr<RequestId> resultAttr{1};

  const Orv::Coll<RequestId, Orv::Ptr<const Result>> &result() const {
    return result_;
  }
  Orv::Ptr<const Result> result(const RequestId &id) const {
    return result_[id];
  }
  void resultIs(const RequestId &id, Orv::Ptr<const Result> result) {
    result_.is(id, result);
  }
  void resultDel(const RequestId &id) { result_.del(id); }

private:
  Orv::Coll<RequestId, Orv::Ptr<const Result>> result_{*this, resultAttr};
};

} // namespace PacketTracer

#include "Netsim/Link.h"

#include "Netsim/Router.h"

namespace Netsim {

Link::Link(Kiv::TimerWheel &wheel, const End &a, const End &b, double delay)
    : ends_{a, b},
      delay_(delay), toEnd_{{wheel, arrivalAt(0)}, {wheel, arrivalAt(1)}} {}

DelayLine<Orv::Ptr<Wirx::Pkt>>::Arrive Link::arrivalAt(int index) {
  return [this, index](std::vector<Orv::Ptr<Wirx::Pkt>> &frames) {
    const End &end = ends_[index];
    for (const Orv::Ptr<Wirx::Pkt> &frame : frames) {
      end.router->rxFrameIs(end.intfId, frame);
    }
  };
}

bool Link::joins(const Router &router, const Router &other) const {
  return (ends_[0].router == &router && ends_[1].router == &other) ||
         (ends_[1].router == &router && ends_[0].router == &other);
}

bool Link::frameIs(const Router &router, const Wirx::IntfId &intfId,
                   const Orv::Ptr<Wirx::Pkt> &frame) {
  if (!up_) {
    ++framesDropped_;
    return false;
  }
  ++framesSent_;
  toEnd_[toIndex(router, intfId)].itemIs(
      Wirx::Pkt::copyOf(frame->data(), frame->frontBytes(), 0), delay_);
  return true;
}

} // namespace Netsim

#include "Netsim/Link.h"

#include "Netsim/Network.h"
#include "Netsim/Router.h"

namespace Netsim {

Link::Link(Network &network, const End &a, const End &b, double delay)
    : network_(network), ends_{a, b},
      delay_(delay), toEnd_{{*network.timerWheel(), arrivalAt(0)},
                            {*network.timerWheel(), arrivalAt(1)}} {}

void Link::delayIs(double seconds) {
  delay_ = seconds;
  network_.linksChanged();
}

void Link::upIs(bool up) {
  up_ = up;
  network_.linksChanged();
}

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

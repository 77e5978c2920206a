#pragma once

#include <cstddef>
#include <vector>

#include "Kiv/TimerWheel.h"
#include "Netsim/DelayLine.h"
#include "Wirx/IntfId.h"
#include "Wirx/Pkt.h"

namespace Netsim {

class Network;
class Router;

// A point-to-point Ethernet link between an interface of one router and an
// interface of another. A frame sent on one end arrives at the other end's
// router `delay` seconds later, as a copy taken when it was sent; frames
// keep their order. The delay may be changed at any time: frames already
// under way keep theirs, and none overtakes an earlier one. A link taken
// down drops what is sent on it; frames already under way still arrive.
class Link {
public:
  static constexpr double defaultDelay = 0.001;

  struct End {
    Router *router;
    Wirx::IntfId intfId;
  };

  // Use Network::linkIs.
  Link(Network &network, const End &a, const End &b, double delay);
  Link(const Link &) = delete;
  Link &operator=(const Link &) = delete;

  // End 0 or 1.
  const End &end(int index) const { return ends_[index]; }
  // The end facing the end on `router`'s interface `intfId`.
  const End &peer(const Router &router, const Wirx::IntfId &intfId) const {
    return ends_[toIndex(router, intfId)];
  }
  // Whether the link joins `router` to `other`, in either direction.
  bool joins(const Router &router, const Router &other) const;
  double delay() const { return delay_; }
  void delayIs(double seconds);
  bool up() const { return up_; }
  void upIs(bool up);

  // Sends `frame` from the end on `router`'s interface `intfId`; false,
  // and the frame dropped, while the link is down.
  bool frameIs(const Router &router, const Wirx::IntfId &intfId,
               const Orv::Ptr<Wirx::Pkt> &frame);
  // Frames under way, in both directions.
  std::size_t framesInFlight() const {
    return toEnd_[0].inFlight() + toEnd_[1].inFlight();
  }
  // Frames sent, in both directions.
  std::size_t framesSent() const { return framesSent_; }
  // Frames dropped because the link was down.
  std::size_t framesDropped() const { return framesDropped_; }

private:
  int toIndex(const Router &router, const Wirx::IntfId &intfId) const {
    return ends_[0].router == &router && ends_[0].intfId == intfId ? 1 : 0;
  }
  // Hands what arrives towards end `index` to its router.
  DelayLine<Orv::Ptr<Wirx::Pkt>>::Arrive arrivalAt(int index);

  Network &network_;
  const End ends_[2];
  double delay_;
  bool up_ = true;
  std::size_t framesSent_ = 0;
  std::size_t framesDropped_ = 0;
  // The frames under way towards each end.
  DelayLine<Orv::Ptr<Wirx::Pkt>> toEnd_[2];
};

} // namespace Netsim

#pragma once

#include "Kiv/TimerWheel.h"
#include "LspPing/LspPingClientRoot.h"
#include "Session/IngressPath.h"
#include "Session/ReplyTap.h"
#include "Session/Target.h"

namespace Session {

// What a session needs of the program that hosts the library's client side
// and that only the host knows. The host started the client root on a
// ReplyTap in front of its own UDP module, and runs the timer wheel.
class Host {
public:
  virtual ~Host() = default;

  // Where sessions write their clients' configurations and read their
  // statuses.
  virtual LspPing::LspPingClientRoot &clientRoot() const = 0;
  virtual Kiv::TimerWheel &timerWheel() const = 0;
  // The UDP module the client root was started on.
  virtual const ReplyTap &replyTap() const = 0;
  // How requests for `target` leave this router; its `error` says why they
  // cannot.
  virtual IngressPath ingressPath(const Target &target) const = 0;
};

} // namespace Session

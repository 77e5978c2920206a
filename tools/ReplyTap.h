#pragma once

#include <string>
#include <vector>

#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/LinuxUdpPam.h"

namespace LspPingTool {

// The UDP module the echo responder writes its replies to: hands each one,
// with its addressing, to the socket's module, and keeps what the host
// reports of it (return code, destination, and whether the socket took
// it). It receives nothing: the host reads the socket's module itself.
class ReplyTap : public Wirx::UdpPam {
public:
  struct Reply {
    Orv::U8 returnCode = 0;
    Orv::U8 returnSubcode = 0;
    Wirx::IpGenAddr to;
    Orv::U16 toPort = 0;
    // Empty when the socket took the reply; else why it did not.
    std::string failure;
  };

  explicit ReplyTap(Orv::Ptr<Wirx::LinuxUdpPam> socket);
  ~ReplyTap() override;

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  const Orv::Ptr<Wirx::LinuxUdpPam> &socket() const { return socket_; }
  // Holds the socket (see Wirx::LinuxUdpPam::txHoldIs): a reply's failure
  // is known once the hold ends.
  void holdIs(bool hold) { socket_->txHoldIs(hold); }
  // The replies written since the last clear(), in order.
  const std::vector<Reply> &replies() const { return replies_; }
  void clear();

private:
  void doGetRxPkt() override {}

  const Orv::Ptr<Wirx::LinuxUdpPam> socket_;
  std::vector<Reply> replies_;
  // The replies whose fate the socket told.
  std::size_t settled_ = 0;
};

} // namespace LspPingTool

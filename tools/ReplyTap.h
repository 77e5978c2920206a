#pragma once

#include <optional>
#include <string>

#include "Orv/Types.h"
#include "Wirx/IpGenAddr.h"
#include "Wirx/LinuxUdpPam.h"

namespace LspPingTool {

// The UDP module the echo responder writes its replies to: hands each one,
// with its addressing, to the socket's module, and keeps what the host
// reports of it (return code, destination, whether the socket took it).
// It receives nothing: the host reads the socket's module itself.
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

  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  const Orv::Ptr<Wirx::LinuxUdpPam> &socket() const { return socket_; }
  // The reply written since the last clear(), if any.
  const std::optional<Reply> &reply() const { return reply_; }
  void clear() { reply_.reset(); }

private:
  void doGetRxPkt() override {}

  const Orv::Ptr<Wirx::LinuxUdpPam> socket_;
  std::optional<Reply> reply_;
};

} // namespace LspPingTool

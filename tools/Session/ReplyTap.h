#pragma once

#include <array>
#include <optional>

#include "Orv/Reactor.h"
#include "Orv/Types.h"
#include "Wirx/UdpPam.h"

namespace Session {

// The client side's UDP module as sessions need it. It stands in front of
// the host's real module, which does the work: sends and receives go
// through, readable and writable counts follow the real module's. On the
// way it notes the return subcode of each echo reply read, which the
// client's reply records do not keep, under the reply's sender handle and
// sequence number, read in place from the echo header.
//
// It remembers the last `remembered` replies (fewer when two collide in its
// table): sessions look a reply up while its record is being stored, which
// happens within the read that noted it.
class ReplyTap : public Wirx::UdpPam, private Orv::Reactor {
public:
  static constexpr Orv::U32 remembered = 64;

  explicit ReplyTap(Orv::Ptr<Wirx::UdpPam> module);

  const Orv::Ptr<Wirx::UdpPam> &module() const { return module_; }

  // Sends with the addressing set on the tap.
  void txPktIs(const Orv::Ptr<Wirx::Pkt> &pkt) override;

  // The return subcode of reply `sequenceNumber` to `senderHandle`, if it
  // was read lately.
  std::optional<Orv::U8> returnSubcode(Orv::U32 senderHandle,
                                       Orv::U32 sequenceNumber) const;

private:
  struct Noted {
    Orv::U32 senderHandle = 0;
    Orv::U32 sequenceNumber = 0;
    Orv::U8 returnSubcode = 0;
    bool valid = false;
  };

  static Orv::U32 slot(Orv::U32 senderHandle, Orv::U32 sequenceNumber);
  void doGetRxPkt() override;
  void note(const Wirx::Pkt &pkt);

  const Orv::Ptr<Wirx::UdpPam> module_;
  std::array<Noted, remembered> noted_{};
};

} // namespace Session

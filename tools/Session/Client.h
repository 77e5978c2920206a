#pragma once

#include <functional>
#include <string>

#include "LspPing/LspPingClientConfig.h"
#include "LspPing/LspPingClientStatus.h"
#include "LspPing/LspPingDownstreamMappingInfo.h"
#include "LspPing/LspPingMode.h"
#include "Orv/Reactor.h"
#include "Session/Host.h"
#include "Session/Reply.h"

namespace Session {

// One ping client of the host's client side, as a session drives it: the
// configuration is written for a target and its ingress path, and each
// request is sent on demand, so that a session can change the TTL, the
// downstream mapping and the IP destination from one request to the next.
// Every reply recorded in the client's status is handed on with its
// subcode. The configuration goes when the client does.
class Client : private Orv::Reactor {
public:
  using ReplyHandler = std::function<void(const Reply &)>;

  // Client `id` must not be configured yet.
  Client(const Host &host, Orv::U32 id, LspPing::LspPingMode mode,
         const Target &target, const IngressPath &path, ReplyHandler onReply);
  Client(const Client &) = delete;
  Client &operator=(const Client &) = delete;
  ~Client() override;

  Orv::U32 id() const { return id_; }
  // Why the client cannot send, when it cannot.
  const std::string &reason() const { return config_->reason(); }

  // Sends one request now, with TTL `ttl` on every label, the downstream
  // mapping `dsMapping` when it is valid, to IP destination `dst`. Returns
  // the request's sequence number, or 0 when the client cannot send.
  Orv::U32 requestIs(Orv::U8 ttl,
                     const LspPing::LspPingDownstreamMappingInfo &dsMapping,
                     const Wirx::IpGenAddr &dst);

private:
  void handleReply(Orv::U8 slot);

  const Host &host_;
  const Orv::U32 id_;
  const Orv::Ptr<LspPing::LspPingClientConfig> config_;
  const Orv::Ptr<LspPing::LspPingClientStatus> status_;
  ReplyHandler onReply_;
};

} // namespace Session

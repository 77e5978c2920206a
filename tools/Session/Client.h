#pragma once

#include <functional>
#include <string>
#include <vector>

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
// subcode, and then leaves the status. The configuration goes when the
// client does.
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

  // Has the library's transmit state machine send `count` requests (0:
  // without end) `interval` seconds apart, the first at once, all alike:
  // TTL `ttl` on every label (or, for the first labels, the TTLs of
  // `labelTtls`, outermost first), no downstream mapping, to IP
  // destination `dst`. `onSent` is told each one's sequence number as it
  // leaves. False when the client cannot send.
  using SentHandler = std::function<void(Orv::U32 seq)>;
  bool requestsIs(Orv::U32 count, double interval, Orv::U8 ttl,
                  const std::vector<Orv::U8> &labelTtls,
                  const Wirx::IpGenAddr &dst, SentHandler onSent);

private:
  void ttlsIs(Orv::U8 ttl, const std::vector<Orv::U8> &labelTtls);
  void handleReply(Orv::U8 slot);

  const Host &host_;
  const Orv::U32 id_;
  const Orv::Ptr<LspPing::LspPingClientConfig> config_;
  const Orv::Ptr<LspPing::LspPingClientStatus> status_;
  ReplyHandler onReply_;
  SentHandler onSent_;
};

} // namespace Session

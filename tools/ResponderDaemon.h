#pragma once

#include <map>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "Interface/LinuxIntfSync.h"
#include "Interface/NetNsIntfStatusManagerRoot.h"
#include "Kiv/EventLoop.h"
#include "LspPing/LspPingReqHandler.h"
#include "MplsUtils/EthPktParser.h"
#include "Orv/Reactor.h"
#include "Wirx/LinuxRawPam.h"
#include "tools/DaemonHooks.h"
#include "tools/MetricsServer.h"
#include "tools/ReplyTap.h"
#include "tools/ResponderCounters.h"
#include "tools/ResponderEvent.h"
#include "tools/StateFile.h"
#include "tools/StateFollower.h"
#include "tools/StateOptions.h"
#include "tools/StateSource.h"
#include "tools/TokenBucket.h"

namespace LspPingTool {

struct ResponderOptions {
  StateOptions state;
  // Seconds between two readings of the sources.
  double stateRefresh = 10.0;
  // The interfaces to answer on; none: every interface that is up, but
  // the loopback.
  std::vector<std::string> interfaces;
  double rate = 1000.0;
  Orv::U32 burst = 100;
  bool json = false;
  bool verbose = false;
  // Override the state file's reply sources, per family.
  std::optional<Wirx::IpAddr> replySource4;
  std::optional<Wirx::Ip6Addr> replySource6;
  // Where /metrics is served; none: not served.
  std::optional<ListenAddress> metrics;
  std::string metricsText;
};

// `lspping responder`: hosts the library's echo responder on a Linux
// router. Its forwarding state comes from a state file, from sources
// (FRR, the kernel's label routes) read again every `stateRefresh`
// seconds and on SIGHUP without holding up the answers, or from both; a
// changed state replaces the responder between two frames. Its interfaces,
// addresses and MTUs come from the kernel (Interface::LinuxIntfSync). Frames
// come in on a raw module per interface (Wirx::LinuxRawPam); each one the
// Ethernet parser takes down to UDP to the echo port, and that is meant
// for this router (a labelled frame whose TTL ran out here or whose top
// label is an explicit null, an unlabelled one to an address of this
// router), goes to `processPkt` unless the rate limit says no. Replies go
// out on UDP sockets on the echo port (Wirx::LinuxUdpPam); what the kernel
// also delivers to those sockets (a popped request itself) is read and
// ignored. One thread, one event loop; signals arrive on it.
//
// Standard output gets an event per frame (-v text, --json objects) and the
// counters (--json); standard error gets the log: ready, reloads, interface
// changes, errors, counters.
class ResponderDaemon : public Orv::Reactor {
public:
  ResponderDaemon(ResponderOptions options, std::ostream &out,
                  std::ostream &log);
  ~ResponderDaemon() override;

  // Sets everything up and logs the ready line; false once the one-line
  // reason it cannot is logged.
  bool start();
  // Answers until SIGINT or SIGTERM, then logs the counters.
  void run();

private:
  // A frame's outcome, reported in frame order once the batch's replies
  // have left: a reply (`tap` set) is only known to be sent then.
  struct Pending {
    ReplyTap *tap = nullptr;
    std::size_t reply = 0;
    std::optional<ResponderEvent> event;
  };
  struct RawPam {
    Orv::Ptr<Wirx::LinuxRawPam> pam;
    // The module's own drop counts already added to the counters.
    Orv::U64 oversized = 0;
    Orv::U64 kernelDrops = 0;
  };

  bool loadState(RouterState &into, std::string &error);
  void handlerIs(const RouterState &state);
  // The sources' state, read again: on SIGHUP (`asked`) or on the period.
  void refresh(bool asked);
  // Loads what the last reading found (`read_`), asked by SIGHUP or not.
  void refreshed();
  void logNotes(const std::vector<std::string> &notes);
  bool openUdp();
  void handleSignal(int signal);
  void reload();
  void handleIntf(const Wirx::IntfId &intf);
  void logIntfChange(const Wirx::IntfId &intf, const Interface::LinuxIntf *now);
  bool wanted(const Wirx::IntfId &intf) const;
  bool openRaw(const Wirx::IntfId &intf);
  void closeRaw(const Wirx::IntfId &intf);
  void handleFrames(const Wirx::IntfId &intf, Wirx::LinuxRawPam &pam);
  void handleFrame(const std::string &intf, const Orv::Ptr<Wirx::Pkt> &pkt);
  // Why a parsed request is not this router's to answer; empty when it is.
  std::string notForThisRouter(const MplsUtils::EthPktParser &frame) const;
  bool isLocal(const Wirx::IpGenAddr &addr) const;
  bool reporting() const { return options_.json || options_.verbose; }
  void drop(const std::string &intf, const MplsUtils::EthPktParser &frame,
            const std::string &counter, const std::string &reason);
  // Counts and reports what the batch's frames came to.
  void settle();
  void report(const ResponderEvent &event);
  // Adds what the raw modules dropped on their own since the last call.
  void collectModuleDrops(RawPam &raw);
  void logCounters();
  std::string metrics();
  void log(const std::string &line);

  const ResponderOptions options_;
  std::ostream &out_;
  std::ostream &log_;
  Kiv::EventLoop loop_;
  DaemonHooks hooks_;

  Orv::Ptr<Interface::AllIntfStatusDir> allIntfStatusDir_;
  Orv::Ptr<KernelNetInfo::Status> kniStatus_;
  Orv::Ptr<Ip::VrfIpIntfStatus> vrfIpIntfStatus_;
  Orv::Ptr<Ip6::VrfIp6IntfStatus> vrfIp6IntfStatus_;
  Orv::Ptr<Interface::NetNsIntfStatusManagerRoot> intfStatusManagerRoot_;
  Orv::Ptr<Interface::DeviceIntfStatusDir> deviceIntfStatusDir_;
  Orv::Ptr<Interface::LinuxIntfSync> sync_;

  Orv::Ptr<ReplyTap> tap4_;
  Orv::Ptr<ReplyTap> tap6_;
  RouterState state_;
  Orv::Ptr<LspPing::LspPingReqHandler> handler_;
  // With sources: their reader, the document the state was loaded from,
  // what was last logged of a failed refresh and of the sources' notes, and
  // whether a SIGHUP came during a reading.
  std::unique_ptr<StateFollower> follower_;
  std::unique_ptr<Kiv::Timer> refreshTimer_;
  std::unique_ptr<Kiv::Timer> loadTimer_;
  StateReading read_;
  bool readAsked_ = false;
  std::string refreshError_;
  std::vector<std::string> notes_;
  bool askedAgain_ = false;

  std::map<Wirx::IntfId, RawPam> rawPams_;
  std::vector<Pending> pending_;
  // Each interface as last logged, to log what changed.
  std::map<Wirx::IntfId, Interface::LinuxIntf> logged_;
  TokenBucket bucket_;
  ResponderCounters counters_;
  bool started_ = false;
};

} // namespace LspPingTool

#include "tools/ResponderDaemon.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <exception>
#include <utility>

#include "LspPing/LspPingConstant.h"
#include "Orv/Clock.h"
#include "tools/RawSockets.h"
#include "tools/TraceCapture.h"

namespace LspPingTool {

namespace {

constexpr Orv::U16 echoPort = LspPing::LspPingConstant::lspPingUdpPort;
// The labels that tell a router to pop and look at what is beneath.
constexpr Orv::U32 ipv4ExplicitNull = 0;
constexpr Orv::U32 ipv6ExplicitNull = 2;

double steadySeconds() {
  return std::chrono::duration<double>(
             std::chrono::steady_clock::now().time_since_epoch())
      .count();
}

std::string describe(const Interface::LinuxIntf &intf) {
  std::string text = "index " + std::to_string(intf.index);
  if (!!intf.ethAddr) {
    text += ", " + intf.ethAddr.stringValue();
  }
  text += ", mtu " + std::to_string(intf.mtu) + (intf.up ? ", up" : ", down");
  if (intf.up && !intf.running) {
    text += ", no carrier";
  }
  return text;
}

// A counter's name for what the responder traced on dropping a request:
// the text up to any detail after a colon, so that the counters stay few.
std::string refusalCounter(const std::string &why) {
  return "refused: " + why.substr(0, why.find(':'));
}

} // namespace

ResponderDaemon::ResponderDaemon(ResponderOptions options, std::ostream &out,
                                 std::ostream &log)
    : options_(std::move(options)), out_(out), log_(log),
      allIntfStatusDir_(Orv::make<Interface::AllIntfStatusDir>("all")),
      kniStatus_(Orv::make<KernelNetInfo::Status>("kni")),
      vrfIpIntfStatus_(
          Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"))),
      vrfIp6IntfStatus_(
          Orv::make<Ip6::VrfIp6IntfStatus>("vrfIp6", L3::VrfName("default"))),
      intfStatusManagerRoot_(Orv::make<Interface::NetNsIntfStatusManagerRoot>(
          allIntfStatusDir_,
          Orv::make<Interface::AllIntfStatusLocalDir>("local"), false)),
      deviceIntfStatusDir_(Orv::make<Interface::DeviceIntfStatusDir>("disd")),
      bucket_(options_.rate, options_.burst) {
  intfStatusManagerRoot_->intfStatusManagerIs(
      deviceIntfStatusDir_, kniStatus_,
      Wirx::NamespaceName::defaultNamespace());
}

// The modules go before the loop they are registered with.
ResponderDaemon::~ResponderDaemon() {
  follower_.reset();
  refreshTimer_.reset();
  loadTimer_.reset();
  rawPams_.clear();
  handler_ = nullptr;
  tap4_ = nullptr;
  tap6_ = nullptr;
  sync_ = nullptr;
  hooks_.close();
}

bool ResponderDaemon::start() {
  std::string error;
  if (!loadState(state_, error)) {
    log(error);
    return false;
  }
  if (const std::string refused = rawSocketsRefused(); !refused.empty()) {
    log(refused);
    return false;
  }
  sync_ = Interface::LinuxIntfSync::open(
      loop_,
      {allIntfStatusDir_, kniStatus_, vrfIpIntfStatus_, vrfIp6IntfStatus_,
       Wirx::NamespaceName::defaultNamespace()},
      error);
  if (!sync_) {
    log(error);
    return false;
  }
  for (const std::string &name : options_.interfaces) {
    if (!sync_->linuxIntf(Wirx::IntfId(name))) {
      log("-I " + name + ": no such interface");
      return false;
    }
  }
  if (!openUdp()) {
    return false;
  }
  handlerIs(state_);
  if (!hooks_.open(
          loop_, options_.metrics, options_.metricsText,
          [this] { return metrics(); },
          [this](const std::string &line) { log(line); },
          [this](int signal) { handleSignal(signal); }, error)) {
    log(error);
    return false;
  }
  watch(*sync_, Interface::LinuxIntfSync::linuxIntfAttr,
        [this](const Wirx::IntfId &intf) { handleIntf(intf); });
  watch(*sync_, Interface::LinuxIntfSync::errorAttr,
        [this] { log(sync_->error()); });
  std::vector<Wirx::IntfId> intfs;
  for (const auto &[intf, kernelIntf] : sync_->linuxIntf()) {
    intfs.push_back(intf);
  }
  std::string names;
  for (const Wirx::IntfId &intf : intfs) {
    handleIntf(intf);
    if (wanted(intf) && !rawPams_.count(intf)) {
      return false;
    }
    if (rawPams_.count(intf)) {
      names += (names.empty() ? "" : ", ") + intf.name();
    }
  }
  log("answering on " + (names.empty() ? "no interface yet" : names));
  started_ = true;
  return true;
}

void ResponderDaemon::run() {
  loop_.run();
  logCounters();
}

// The state at start: the file's alone, or what a first reading of the
// sources finds, before the loop runs.
bool ResponderDaemon::loadState(RouterState &into, std::string &error) {
  const StateOptions &state = options_.state;
  if (state.sources.empty()) {
    try {
      into = loadStateFile(state.file);
      return true;
    } catch (const StateFileError &e) {
      error = e.what();
    } catch (const std::exception &e) {
      error = state.file + ": " + e.what();
    }
    return false;
  }
  const StateReading reading = readState(state.file, state.sources);
  logNotes(reading.notes);
  if (!reading.document) {
    error = reading.error;
    return false;
  }
  try {
    into = loadStateDocument(*reading.document, "the state read");
  } catch (const StateFileError &e) {
    error = e.what();
    return false;
  }
  follower_ = std::make_unique<StateFollower>(loop_, state);
  follower_->lastIs(*reading.document);
  refreshTimer_ =
      std::make_unique<Kiv::Timer>(loop_.wheel(), [this] { refresh(false); });
  loadTimer_ =
      std::make_unique<Kiv::Timer>(loop_.wheel(), [this] { refreshed(); });
  refreshTimer_->timeMinIs(Orv::now() + options_.stateRefresh);
  return true;
}

void ResponderDaemon::handlerIs(const RouterState &state) {
  // The state file's interface table is not used: MTUs come from the
  // kernel, through the device directory.
  handler_ = LspPing::lspPingReqHandlerFactory(
      state.hardware, state.mpls, state.bindings, state.lfib, state.fib,
      state.fib6, state.tiLfaTunnels, tap4_, tap6_,
      options_.replySource4.value_or(state.ipv4),
      options_.replySource6.value_or(state.ipv6), state.rsvp,
      deviceIntfStatusDir_);
}

bool ResponderDaemon::openUdp() {
  for (const Wirx::AddrFamily family :
       {Wirx::AddrFamily::ipv4, Wirx::AddrFamily::ipv6}) {
    std::string error;
    const auto socket = Wirx::LinuxUdpPam::open(loop_, family, echoPort, error);
    if (!socket) {
      log(error);
      return false;
    }
    // The kernel delivers here what it takes for itself (a popped request
    // to an address of this host): already answered from the raw module.
    watch(*socket, Wirx::Pam::readableCountAttr, [s = socket.get()] {
      while (s->rxPkt()) {
      }
    });
    watch(*socket, Wirx::LinuxUdpPam::errorAttr,
          [this, s = socket.get()] { log(s->error()); });
    (family == Wirx::AddrFamily::ipv4 ? tap4_ : tap6_) =
        Orv::make<ReplyTap>(socket);
  }
  return true;
}

void ResponderDaemon::handleSignal(int signal) {
  switch (signal) {
  case SIGHUP:
    reload();
    break;
  case SIGUSR1:
    logCounters();
    break;
  default:
    loop_.stop();
    break;
  }
}

void ResponderDaemon::reload() {
  if (follower_) {
    refresh(true);
    return;
  }
  RouterState fresh;
  std::string error;
  if (!loadState(fresh, error)) {
    log("reload refused, the old state stays: " + error);
    return;
  }
  state_ = fresh;
  handlerIs(state_);
  log("reloaded " + options_.state.file);
}

void ResponderDaemon::refresh(bool asked) {
  refreshTimer_->timeMinIs(Orv::now() + options_.stateRefresh);
  const bool started =
      follower_->read(asked, [this, asked](StateReading reading) {
        read_ = std::move(reading);
        readAsked_ = asked;
        loadTimer_->timeMinIs(Orv::now());
      });
  // A SIGHUP asks for what the sources and the file say after it: the
  // reading under way may have read them before.
  askedAgain_ = askedAgain_ || (asked && !started);
}

// A changed state is loaded whole into new tables, then replaces the old
// responder at once: frames are handled between two callbacks of the loop,
// so each meets one state or the other. The load runs in a turn of the
// loop of its own, after the one that combined the reading, so that
// frames waiting meanwhile are answered between the two.
void ResponderDaemon::refreshed() {
  StateReading reading = std::move(read_);
  const bool asked = std::exchange(readAsked_, false);
  logNotes(reading.notes);
  std::string error = reading.error;
  RouterState fresh;
  const bool changed = reading.document && !reading.unchanged;
  if (changed) {
    try {
      fresh = loadStateDocument(*reading.document, "the state read");
    } catch (const StateFileError &e) {
      error = e.what();
    }
  }
  if (!error.empty()) {
    if (asked) {
      log("reload refused, the old state stays: " + error);
    } else if (error != refreshError_) {
      log("state refresh failed, the old state stays: " + error);
    }
    refreshError_ = error;
  } else {
    if (!refreshError_.empty() && !asked) {
      log("state refresh works again");
    }
    refreshError_.clear();
    if (changed) {
      state_ = fresh;
      handlerIs(state_);
    }
    if (asked) {
      log("reloaded " + follower_->name());
    } else if (changed) {
      log("state changed: read again from " + follower_->name());
    }
  }
  if (std::exchange(askedAgain_, false)) {
    refresh(true);
  }
}

void ResponderDaemon::logNotes(const std::vector<std::string> &notes) {
  if (notes != notes_) {
    for (const std::string &note : notes) {
      log(note);
    }
    notes_ = notes;
  }
}

void ResponderDaemon::handleIntf(const Wirx::IntfId &intf) {
  const Interface::LinuxIntf *now = sync_->linuxIntf(intf);
  logIntfChange(intf, now);
  const auto open = rawPams_.find(intf);
  if (now && wanted(intf)) {
    if (open != rawPams_.end() && open->second.pam->ifIndex() == now->index) {
      return;
    }
    if (open != rawPams_.end()) {
      closeRaw(intf);
    }
    if (openRaw(intf) && started_) {
      log("answering on " + intf.name() + " too");
    }
  } else if (open != rawPams_.end()) {
    closeRaw(intf);
    log("no longer answering on " + intf.name() + (now ? " (down)" : ""));
  }
}

void ResponderDaemon::logIntfChange(const Wirx::IntfId &intf,
                                    const Interface::LinuxIntf *now) {
  const auto logged = logged_.find(intf);
  if (!now) {
    if (logged != logged_.end()) {
      log(intf.name() + ": gone");
      logged_.erase(logged);
    }
    return;
  }
  if (logged != logged_.end() && logged->second == *now) {
    return;
  }
  if (started_) {
    log(intf.name() + ": " + describe(*now));
  }
  logged_[intf] = *now;
}

bool ResponderDaemon::wanted(const Wirx::IntfId &intf) const {
  if (!options_.interfaces.empty()) {
    return std::find(options_.interfaces.begin(), options_.interfaces.end(),
                     intf.name()) != options_.interfaces.end();
  }
  const Interface::LinuxIntf *kernelIntf = sync_->linuxIntf(intf);
  return kernelIntf && kernelIntf->up && !kernelIntf->loopback;
}

bool ResponderDaemon::openRaw(const Wirx::IntfId &intf) {
  std::string error;
  const auto pam = Wirx::LinuxRawPam::open(loop_, intf.name(), echoPort, error);
  if (!pam) {
    log(error);
    return false;
  }
  rawPams_[intf] = RawPam{pam};
  watch(*pam, Wirx::Pam::readableCountAttr,
        [this, intf, p = pam.get()] { handleFrames(intf, *p); });
  watch(*pam, Wirx::LinuxRawPam::errorAttr,
        [this, p = pam.get()] { log(p->error()); });
  return true;
}

void ResponderDaemon::closeRaw(const Wirx::IntfId &intf) {
  RawPam &raw = rawPams_[intf];
  collectModuleDrops(raw);
  unwatch(*raw.pam);
  rawPams_.erase(intf);
}

// The replies of a batch of frames leave together, with one system call
// per socket.
void ResponderDaemon::handleFrames(const Wirx::IntfId &intf,
                                   Wirx::LinuxRawPam &pam) {
  tap4_->holdIs(true);
  tap6_->holdIs(true);
  while (const Orv::Ptr<Wirx::Pkt> pkt = pam.rxPkt()) {
    handleFrame(intf.name(), pkt);
  }
  tap4_->holdIs(false);
  tap6_->holdIs(false);
  settle();
}

void ResponderDaemon::handleFrame(const std::string &intf,
                                  const Orv::Ptr<Wirx::Pkt> &pkt) {
  counters_.receivedInc();
  const MplsUtils::EthPktParser frame(pkt);
  if (!frame.valid()) {
    const std::string why = std::string("unparsed: ") + frame.reason();
    drop(intf, frame, why, why);
    return;
  }
  if (frame.dstPort() != echoPort) {
    drop(intf, frame, "not to UDP port 3503",
         "not to UDP port 3503 but " + std::to_string(frame.dstPort()));
    return;
  }
  if (const std::string why = notForThisRouter(frame); !why.empty()) {
    drop(intf, frame, "in transit", why);
    return;
  }
  if (!bucket_.available(steadySeconds())) {
    counters_.rateLimitedInc();
    if (reporting()) {
      ResponderEvent event = ResponderEvent::of(intf, frame);
      event.reason = event.counter = "rate limited";
      pending_.push_back({nullptr, 0, std::move(event)});
    }
    return;
  }
  ReplyTap &tap = frame.isIpv4() ? *tap4_ : *tap6_;
  const std::size_t replies = tap.replies().size();
  bool sent = false;
  std::string why;
  try {
    sent = handler_->processPkt(frame);
    // What the responder drops it only tells its trace: asked again, which
    // changes nothing as a drop has no effect, with the trace listened to.
    if (!sent) {
      TraceCapture capture;
      sent = handler_->processPkt(frame);
      why =
          capture.last().empty() ? "dropped without a reason" : capture.last();
    }
  } catch (const std::exception &e) {
    drop(intf, frame, "responder failed",
         std::string("responder failed: ") + e.what());
    return;
  }
  if (!sent) {
    drop(intf, frame, refusalCounter(why), "refused: " + why);
    return;
  }
  bucket_.take();
  if (tap.replies().size() == replies) {
    drop(intf, frame, "reply not sent", "reply not sent: none written");
    return;
  }
  Pending pending{&tap, replies, std::nullopt};
  if (reporting()) {
    pending.event = ResponderEvent::of(intf, frame);
    pending.event->fec = fecText(frame);
  }
  pending_.push_back(std::move(pending));
}

void ResponderDaemon::settle() {
  for (Pending &pending : pending_) {
    if (pending.tap) {
      const ReplyTap::Reply &reply = pending.tap->replies()[pending.reply];
      if (!reply.failure.empty()) {
        counters_.droppedInc("reply not sent");
      } else {
        counters_.repliedInc(reply.returnCode);
      }
      if (pending.event) {
        ResponderEvent &event = *pending.event;
        event.replied = reply.failure.empty();
        event.counter = event.replied ? "" : "reply not sent";
        event.reason = reply.failure;
        event.returnCode = reply.returnCode;
        event.returnSubcode = reply.returnSubcode;
        event.to = reply.to;
        event.toPort = reply.toPort;
      }
    }
    if (pending.event) {
      report(*pending.event);
    }
  }
  if (!pending_.empty() && reporting()) {
    out_.flush();
  }
  pending_.clear();
  tap4_->clear();
  tap6_->clear();
}

std::string
ResponderDaemon::notForThisRouter(const MplsUtils::EthPktParser &frame) const {
  const Wirx::MplsLabelStack &labels = frame.labelStack();
  if (!labels.empty()) {
    const Orv::U32 top = labels[0].label().value();
    if (labels[0].ttl() <= 1 || top == ipv4ExplicitNull ||
        top == ipv6ExplicitNull) {
      return "";
    }
    return "in transit: MPLS TTL " + std::to_string(labels[0].ttl());
  }
  if (isLocal(frame.dstIp())) {
    return "";
  }
  return "in transit: to " + frame.dstIp().stringValue() +
         ", not an address of this router";
}

bool ResponderDaemon::isLocal(const Wirx::IpGenAddr &addr) const {
  if (addr.isIpv4()) {
    if (addr.v4().value() >> 24 == 127) {
      return true;
    }
    for (const auto &[intf, status] : vrfIpIntfStatus_->ipIntfStatus()) {
      if (status->addr().contains(addr.v4())) {
        return true;
      }
    }
    return false;
  }
  if (!addr.isIpv6()) {
    return false;
  }
  // ::1, and 127/8 written as IPv4-mapped IPv6 (::ffff:127.0.0.1).
  const Wirx::Ip6Addr::Bytes &bytes = addr.v6().bytes();
  const bool zeros = std::all_of(bytes.begin(), bytes.begin() + 10,
                                 [](Orv::U8 b) { return b == 0; });
  if (zeros && ((bytes[10] == 0xff && bytes[11] == 0xff && bytes[12] == 127) ||
                (bytes[10] == 0 && bytes[11] == 0 && bytes[12] == 0 &&
                 bytes[13] == 0 && bytes[14] == 0 && bytes[15] == 1))) {
    return true;
  }
  for (const auto &[intf, status] : vrfIp6IntfStatus_->ip6IntfStatus()) {
    if (status->addr().contains(addr.v6())) {
      return true;
    }
  }
  return false;
}

void ResponderDaemon::drop(const std::string &intf,
                           const MplsUtils::EthPktParser &frame,
                           const std::string &counter,
                           const std::string &reason) {
  counters_.droppedInc(counter);
  if (reporting()) {
    ResponderEvent event = ResponderEvent::of(intf, frame);
    event.counter = counter;
    event.reason = reason;
    pending_.push_back({nullptr, 0, std::move(event)});
  }
}

// Lines go out whole; settle() flushes them once per batch.
void ResponderDaemon::report(const ResponderEvent &event) {
  if (options_.json) {
    out_ << event.json().dump(-1, ' ', false,
                              nlohmann::ordered_json::error_handler_t::replace)
         << "\n";
  } else {
    out_ << event.text() << "\n";
  }
}

void ResponderDaemon::collectModuleDrops(RawPam &raw) {
  const Orv::U64 oversized = raw.pam->rxOversized() - raw.oversized;
  const Orv::U64 kernelDrops = raw.pam->rxKernelDrops() - raw.kernelDrops;
  raw.oversized += oversized;
  raw.kernelDrops += kernelDrops;
  counters_.receivedInc(oversized + kernelDrops);
  counters_.droppedInc("too large for a packet buffer", oversized);
  counters_.droppedInc("receive ring full", kernelDrops);
}

void ResponderDaemon::logCounters() {
  for (auto &[intf, raw] : rawPams_) {
    collectModuleDrops(raw);
  }
  log("counters: " + counters_.text());
  if (options_.json) {
    out_ << counters_.json().dump(
                -1, ' ', false,
                nlohmann::ordered_json::error_handler_t::replace)
         << "\n";
    out_.flush();
  }
}

std::string ResponderDaemon::metrics() {
  for (auto &[intf, raw] : rawPams_) {
    collectModuleDrops(raw);
  }
  MetricsText text;
  counters_.writeMetrics(text);
  return text.take();
}

void ResponderDaemon::log(const std::string &line) {
  log_ << "lspping responder: " << line << "\n";
  log_.flush();
}

} // namespace LspPingTool

#include "tools/RespondCommand.h"

#include <nlohmann/json.hpp>

#include <chrono>
#include <cstring>
#include <exception>
#include <iostream>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "LspPing/LspPingConstant.h"
#include "LspPing/LspPingHdr.h"
#include "LspPing/LspPingReqHandler.h"
#include "LspPing/LspPingReturnCode.h"
#include "MplsUtils/EthPktParser.h"
#include "Wirx/MemUdpPam.h"
#include "Wirx/Pkt.h"
#include "tools/ExitStatus.h"
#include "tools/Pcap.h"
#include "tools/ReplyFrame.h"
#include "tools/StateFile.h"
#include "tools/StateOptions.h"
#include "tools/TraceCapture.h"

namespace LspPingTool {

namespace {

using Orv::U16;
using Orv::U32;
using Orv::U8;

// What became of one frame.
struct Outcome {
  bool answered = false;
  std::string returnCode;
  U32 returnSubcode = 0;
  Wirx::IpGenAddr to;
  U16 toPort = 0;
  std::string dropReason;
};

Outcome dropped(std::string reason) {
  Outcome outcome;
  outcome.dropReason = std::move(reason);
  return outcome;
}

// The responder and what it answers on, over one router's state.
class Responder {
public:
  explicit Responder(const RouterState &state)
      : pam4_(Orv::make<Wirx::MemUdpPam>(
            "udp4", LspPing::LspPingConstant::lspPingUdpPort)),
        pam6_(Orv::make<Wirx::MemUdpPam>(
            "udp6", LspPing::LspPingConstant::lspPingUdpPort)),
        handler_(LspPing::lspPingReqHandlerFactory(
            state.hardware, state.mpls, state.bindings, state.lfib, state.fib,
            state.fib6, state.tiLfaTunnels, pam4_, pam6_, state.ipv4,
            state.ipv6, state.rsvp, state.interfaces)) {}

  // Hands `frame` to the responder; a reply it sends is written to
  // `replies`.
  Outcome answer(std::span<const U8> frame, PcapWriter &replies) {
    trace_.clear();
    pam4_->clear();
    pam6_->clear();
    const auto pkt = Wirx::Pkt::copyOf(frame.data(), U32(frame.size()), 0);
    if (!pkt) {
      return dropped("frame of " + std::to_string(frame.size()) +
                     " bytes, too large for a packet buffer");
    }
    const MplsUtils::EthPktParser eth(pkt);
    // A hosting agent hands the responder only the frames the parser took
    // down to UDP: of the others, the parser says what is wrong.
    if (!eth.valid()) {
      return dropped(eth.reason());
    }
    bool sent = false;
    try {
      sent = handler_->processPkt(eth);
    } catch (const std::exception &e) {
      return dropped(std::string("the responder failed: ") + e.what());
    }
    if (!sent) {
      return dropped(trace_.last().empty() ? "dropped without a reason"
                                           : trace_.last());
    }
    const auto &datagrams =
        eth.isIpv4() ? pam4_->datagrams() : pam6_->datagrams();
    if (datagrams.empty()) {
      return dropped("the reply could not be sent to " +
                     eth.srcIp().stringValue() + " port " +
                     std::to_string(eth.srcPort()));
    }
    const Wirx::UdpDatagram &reply = datagrams.back();
    LspPing::LspPingHdr hdr;
    std::memcpy(&hdr, reply.payload.data(), sizeof hdr);
    const auto now = std::chrono::system_clock::now().time_since_epoch();
    const auto micros =
        std::chrono::duration_cast<std::chrono::microseconds>(now).count();
    replies.write(replyFrame(eth, reply), U32(micros / 1000000),
                  U32(micros % 1000000));

    Outcome outcome;
    outcome.answered = true;
    outcome.returnCode =
        Orv::stringValue(LspPing::LspPingReturnCode(hdr.returnCode));
    outcome.returnSubcode = hdr.returnSubcode;
    outcome.to = reply.dstAddr;
    outcome.toPort = reply.dstPort;
    return outcome;
  }

private:
  Orv::Ptr<Wirx::MemUdpPam> pam4_;
  Orv::Ptr<Wirx::MemUdpPam> pam6_;
  Orv::Ptr<LspPing::LspPingReqHandler> handler_;
  TraceCapture trace_;
};

void printText(std::ostream &out, U32 frameNumber, const Outcome &o) {
  out << "frame " << frameNumber << ": ";
  if (o.answered) {
    out << o.returnCode << " (subcode " << o.returnSubcode << "), reply to "
        << o.to.stringValue() << " port " << o.toPort << "\n";
  } else {
    out << "dropped: " << o.dropReason << "\n";
  }
}

// The keys in the order a reader looks for them.
void printJson(std::ostream &out, U32 frameNumber, const Outcome &o) {
  using Json = nlohmann::ordered_json;
  const Json line = {
      {"frame", frameNumber},
      {"answered", o.answered},
      {"returnCode", o.answered ? Json(o.returnCode) : nullptr},
      {"returnSubcode", o.answered ? Json(o.returnSubcode) : nullptr},
      {"dropReason", o.answered ? nullptr : Json(o.dropReason)},
      {"to", o.answered
                 ? Json{{"address", o.to.stringValue()}, {"port", o.toPort}}
                 : nullptr},
  };
  // Replaces rather than throws on bytes that are not UTF-8.
  out << line.dump(-1, ' ', false, Json::error_handler_t::replace) << "\n";
}

// The router's state: the file's alone, or read from the sources and
// combined with it.
RouterState loadRouterState(const StateOptions &options) {
  if (options.sources.empty()) {
    return loadStateFile(options.file);
  }
  const StateReading reading = readState(options.file, options.sources);
  for (const std::string &note : reading.notes) {
    std::cerr << "lspping: respond: " << note << "\n";
  }
  if (!reading.document) {
    throw StateFileError(reading.error);
  }
  return loadStateDocument(*reading.document, "the state read");
}

struct Options {
  StateOptions state;
  std::string in;
  std::string out;
  bool json = false;
};

int respond(const Options &o) {
  if (o.out == "-") {
    std::cerr << "lspping: respond: --out must name a file: the report goes "
                 "to standard output\n";
    return exitError;
  }
  if (o.state.empty()) {
    std::cerr << "lspping: respond: give --state FILE, --state-from SOURCE "
                 "or both (see --help)\n";
    return exitError;
  }
  std::optional<RouterState> state;
  try {
    state = loadRouterState(o.state);
  } catch (const StateFileError &e) {
    std::cerr << "lspping: " << e.what() << "\n";
    return exitError;
  }
  PcapReader reader(o.in);
  if (!reader.ok()) {
    std::cerr << "lspping: " << reader.error() << "\n";
    return exitError;
  }
  PcapWriter writer(o.out);
  if (!writer.ok()) {
    std::cerr << "lspping: " << writer.error() << "\n";
    return exitError;
  }
  Responder responder(*state);
  std::span<const U8> frame;
  U32 frameNumber = 0;
  U32 replies = 0;
  while (writer.ok() && reader.next(frame)) {
    const Outcome outcome = responder.answer(frame, writer);
    ++frameNumber;
    replies += outcome.answered ? 1 : 0;
    if (o.json) {
      printJson(std::cout, frameNumber, outcome);
    } else {
      printText(std::cout, frameNumber, outcome);
    }
  }
  // A capture cut short gets no replies file, nor does one that cannot be
  // written whole.
  if (!reader.ok() || !writer.close()) {
    std::cerr << "lspping: " << (reader.ok() ? writer.error() : reader.error())
              << "\n";
    return exitError;
  }
  if (!o.json) {
    std::cout << frameNumber << " frames, " << replies << " replies written to "
              << o.out << "\n";
  }
  return replies == frameNumber ? exitOk : exitNo;
}

} // namespace

void addRespondCommand(CLI::App &app, int &status) {
  auto o = std::make_shared<Options>();
  CLI::App *cmd = app.add_subcommand(
      "respond",
      "Answer the MPLS echo requests of a pcap file of Ethernet frames as a "
      "router would, with the library's echo responder over the router's "
      "forwarding state read from a state file, FRR or the kernel, or both. "
      "Prints, for each frame "
      "(numbered from 1), the return code and subcode of the reply and where "
      "it goes, or why the frame was dropped; writes the replies as Ethernet "
      "frames to another pcap file.");
  addStateOptions(*cmd, o->state, "--state-from");
  cmd->add_option("--in", o->in, "pcap file of requests, '-' for stdin")
      ->required();
  cmd->add_option("--out", o->out, "pcap file to write the replies to")
      ->required();
  cmd->add_flag("--json", o->json,
                "One JSON object per frame and line, keys frame, answered, "
                "returnCode, returnSubcode, dropReason and to (address and "
                "port)");
  cmd->callback([o, &status] { status = respond(*o); });
}

} // namespace LspPingTool

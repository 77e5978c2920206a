// `lspping respond` run as a user runs it, over the shipped example routers
// and requests: what each router answers, what its replies carry as
// `lspping decode` and tshark read them, and what it refuses.
#include <gtest/gtest.h>

#include <nlohmann/json.hpp>

#include <filesystem>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <unistd.h>
#include <vector>

#include "RunProgram.h"
#include "ToolTestSupport.h"
#include "Tshark.h"
#include "tools/Pcap.h"

namespace {

using LspPingTest::quoted;
using LspPingTest::runLspping;
using nlohmann::json;

std::filesystem::path example(const std::string &name) {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples" /
         name;
}

using LspPingTest::jsonLines;

class RespondCommand : public LspPingTest::ScratchDirTest {
protected:
  RespondCommand() : ScratchDirTest("lspping-respond-test-") {}

  // Answers the example requests as the example router `router` (its state
  // file's name without .json), the replies going to <router>.pcap.
  LspPingTest::ProgramRun respond(const std::string &router,
                                  const std::string &flags = "--json") const {
    return runLspping("respond --state " + quoted(example(router + ".json")) +
                      " --in " + quoted(example("requests.pcap")) + " --out " +
                      quoted(path(router + ".pcap")) + " " + flags);
  }

  // What `lspping decode --json` makes of the replies `router` wrote.
  std::vector<json> decodedReplies(const std::string &router) const {
    const auto run =
        runLspping("decode --json " + quoted(path(router + ".pcap")));
    EXPECT_EQ(run.status, 0);
    return jsonLines(run.output);
  }
};

// One frame's outcome in short: "CODE/SUBCODE" or "dropped: REASON".
std::string outcome(const json &line) {
  if (line["answered"] == true) {
    EXPECT_EQ(line["dropReason"], nullptr);
    EXPECT_EQ(line["to"], json::parse(R"({"address":"10.0.0.1",
                                          "port":49152})"));
    return line["returnCode"].get<std::string>() + "/" +
           std::to_string(line["returnSubcode"].get<int>());
  }
  EXPECT_EQ(line["returnCode"], nullptr);
  EXPECT_EQ(line["returnSubcode"], nullptr);
  EXPECT_EQ(line["to"], nullptr);
  return "dropped: " + line["dropReason"].get<std::string>();
}

TEST_F(RespondCommand, EachExampleRouterAnswersTheExampleRequests) {
  // The requests, in frame order: an unlabelled LDP ping of 10.0.0.9, an
  // LDP probe on label 1000 with a downstream mapping, a request asking for
  // no reply, a Nil FEC on unprogrammed label 2222, a segment-routing probe
  // on label 16008 with a downstream mapping.
  const std::map<std::string, std::vector<std::string>> expected = {
      {"egress",
       {"repRouterEgress/1", "labelSwitchedNoMplsFwd/1",
        "dropped: unsupported reply mode", "dropped: unprogrammed label: 2222",
        "labelSwitchedNoMplsFwd/1"}},
      {"transit",
       {"labelMappingMismatch/1", "labelSwitchedAtStackDep/1",
        "dropped: unsupported reply mode", "dropped: unprogrammed label: 2222",
        "labelSwitchedNoMplsFwd/1"}},
      {"tilfa",
       {"labelMappingMismatch/1", "labelSwitchedAtStackDep/1",
        "dropped: unsupported reply mode", "dropped: unprogrammed label: 2222",
        "labelSwitchedAtStackDep/1"}},
  };
  for (const auto &[router, outcomes] : expected) {
    SCOPED_TRACE(router);
    // Requests go unanswered: the data said no.
    const auto run = respond(router);
    ASSERT_EQ(run.status, 1) << run.output;
    const std::vector<json> lines = jsonLines(run.output);
    ASSERT_EQ(lines.size(), outcomes.size()) << run.output;
    for (std::size_t i = 0; i < lines.size(); ++i) {
      EXPECT_EQ(lines[i]["frame"], i + 1);
      EXPECT_EQ(outcome(lines[i]), outcomes[i]) << lines[i].dump();
    }
    EXPECT_EQ(decodedReplies(router).size(), 3u) << "one frame per reply";
  }
}

TEST_F(RespondCommand, TextReportEndsWithACount) {
  const auto run = respond("egress", "");
  ASSERT_EQ(run.status, 1);
  EXPECT_EQ(run.output,
            "frame 1: repRouterEgress (subcode 1), reply to 10.0.0.1 port "
            "49152\n"
            "frame 2: labelSwitchedNoMplsFwd (subcode 1), reply to 10.0.0.1 "
            "port 49152\n"
            "frame 3: dropped: unsupported reply mode\n"
            "frame 4: dropped: unprogrammed label: 2222\n"
            "frame 5: labelSwitchedNoMplsFwd (subcode 1), reply to 10.0.0.1 "
            "port 49152\n"
            "5 frames, 3 replies written to " +
                path("egress.pcap").string() + "\n");
}

// The downstream mappings of a reply as "ADDRESS mtu MTU labels
// LABEL/PROTOCOL...", one per Downstream Mapping TLV.
std::vector<std::string> mappings(const json &reply) {
  std::vector<std::string> found;
  for (const json &tlv : reply["tlvs"]) {
    EXPECT_EQ(tlv["type"], 2) << tlv.dump();
    const json &ds = tlv["decoded"];
    EXPECT_EQ(ds["valid"], true) << ds.dump();
    std::string text = ds["dsIpAddr"].get<std::string>() + " mtu " +
                       std::to_string(ds["mtu"].get<int>()) + " labels";
    for (const json &label : ds["labelStack"]) {
      text += " " + std::to_string(label["label"].get<int>()) + "/" +
              std::to_string(label["protocol"].get<int>());
    }
    found.push_back(text);
  }
  return found;
}

TEST_F(RespondCommand, TransitRepliesMapEveryVia) {
  ASSERT_EQ(respond("transit").status, 1);
  const std::vector<json> transit = decodedReplies("transit");
  ASSERT_EQ(transit.size(), 3u);
  // The reply to frame 2 echoes the request and maps both ECMP vias: LDP
  // (protocol 3) labels 2000 and 3000, at each interface's MTU.
  const json &probe = transit[1];
  EXPECT_EQ(probe["valid"], true) << probe.dump();
  EXPECT_EQ(probe["header"]["messageType"], 2);
  EXPECT_EQ(probe["header"]["returnCode"], 8);
  EXPECT_EQ(probe["header"]["returnSubcode"], 1);
  EXPECT_EQ(probe["header"]["senderHandle"], 7);
  EXPECT_EQ(probe["header"]["sequenceNumber"], 2);
  EXPECT_EQ(probe["header"]["tsSentSeconds"], 3944678400u);
  EXPECT_EQ(mappings(probe), (std::vector<std::string>{
                                 "10.1.0.2 mtu 9000 labels 2000/3",
                                 "10.2.0.2 mtu 1500 labels 3000/3",
                             }));
  EXPECT_TRUE(mappings(transit[0]).empty()) << "unlabelled: no TLV";

  // The TI-LFA router's backup via leaves through the repair tunnel, with
  // the tunnel's labels; its segment-routing label forwards on the FIB.
  ASSERT_EQ(respond("tilfa").status, 1);
  const std::vector<json> tilfa = decodedReplies("tilfa");
  ASSERT_EQ(tilfa.size(), 3u);
  EXPECT_EQ(mappings(tilfa[1]), (std::vector<std::string>{
                                    "10.1.0.2 mtu 9000 labels 2000/3",
                                    "10.3.0.2 mtu 9000 labels 16005/3 2000/3",
                                }));
  EXPECT_EQ(mappings(tilfa[2]), (std::vector<std::string>{
                                    "10.1.0.2 mtu 9000 labels 16008/6",
                                }));
}

TEST_F(RespondCommand, RepliesAreWellFormedOnTheWire) {
  if (!LspPingTest::tsharkInstalled()) {
    GTEST_SKIP() << "tshark is not installed";
  }
  // An IPv6 request too: a segment-routing ping of the router's own
  // prefix, which it binds to implicit null.
  const auto request6 = path("request6.pcap");
  ASSERT_EQ(runLspping("craft --src 2001:db8::1 --fec sr=2001:db8::9/128 " +
                       quoted(request6))
                .status,
            0);
  const auto state6 = path("v6.json");
  std::ofstream(state6) << R"({"responder": {"ipv6": "2001:db8::9"},
      "bindings": {"isisV6": [{"fec": "2001:db8::9/128",
                               "labels": [{"label": 3}]}]}})";
  const auto run6 =
      runLspping("respond --json --state " + quoted(state6) + " --in " +
                 quoted(request6) + " --out " + quoted(path("v6.pcap")));
  ASSERT_EQ(run6.status, 0);
  EXPECT_EQ(jsonLines(run6.output).at(0)["to"],
            json::parse(R"({"address":"2001:db8::1","port":49152})"));

  std::vector<std::string> fields = {
      "_ws.col.Protocol",
      "eth.dst",
      "ip.src",
      "ipv6.src",
      "udp.srcport",
      "udp.dstport",
      "ip.checksum.status",
      "udp.checksum.status",
      "mpls_echo.msg_type",
      "mpls_echo.return_code",
      "mpls_echo.sequence",
      "mpls_echo.tlv.ds_map.ds_ip",
  };
  const std::size_t soundness = fields.size();
  fields.insert(fields.end(), LspPingTest::soundnessFields.begin(),
                LspPingTest::soundnessFields.end());
  const std::map<std::string, std::vector<std::string>> expected = {
      {"egress",
       {"MPLS ECHO;02:00:00:00:00:01;10.0.0.9;;3503;49152;1;1;2;3;1;",
        "MPLS ECHO;02:00:00:00:00:01;10.0.0.9;;3503;49152;1;1;2;9;2;",
        "MPLS ECHO;02:00:00:00:00:01;10.0.0.9;;3503;49152;1;1;2;9;5;"}},
      {"transit",
       {"MPLS ECHO;02:00:00:00:00:01;10.0.0.2;;3503;49152;1;1;2;10;1;",
        "MPLS ECHO;02:00:00:00:00:01;10.0.0.2;;3503;49152;1;1;2;8;2;"
        "10.1.0.2|10.2.0.2",
        "MPLS ECHO;02:00:00:00:00:01;10.0.0.2;;3503;49152;1;1;2;9;5;"}},
      {"v6", {"MPLS ECHO;02:00:00:00:00:01;;2001:db8::9;3503;49152;;1;2;3;1;"}},
  };
  for (const auto &[router, frames] : expected) {
    SCOPED_TRACE(router);
    if (router != "v6") {
      ASSERT_EQ(respond(router).status, 1);
    }
    std::vector<std::string> got;
    for (const std::string &line :
         LspPingTest::dissect(path(router + ".pcap"), fields)) {
      const std::vector<std::string> values = LspPingTest::split(line, ';');
      ASSERT_EQ(values.size(), fields.size()) << line;
      LspPingTest::expectSound(values[soundness], values[soundness + 1],
                               values[soundness + 2]);
      std::string kept = values[0];
      for (std::size_t i = 1; i < soundness; ++i) {
        kept += ";" + values[i];
      }
      got.push_back(kept);
    }
    EXPECT_EQ(got, frames);
  }
}

// Every frame gets an outcome, and a dropped one its reason: the Ethernet
// parser's for a frame that does not read down to UDP, which never reaches
// the responder, as in a hosting agent (decode gives the same reason); the
// responder's for a message it refuses or a reply it cannot send.
TEST_F(RespondCommand, DroppedFramesGetTheirReasons) {
  const auto crafted = path("crafted.pcap");
  ASSERT_EQ(runLspping("craft --fec ldp=10.0.0.9/32 " + quoted(crafted)).status,
            0);
  LspPingTool::PcapReader reader(crafted.string());
  std::span<const std::uint8_t> frame;
  ASSERT_TRUE(reader.next(frame)) << reader.error();
  // Ethernet, then IPv4 with Router Alert (24 bytes), UDP, the message.
  const std::vector<std::uint8_t> request(frame.begin(), frame.end());
  constexpr std::size_t ip = 14;
  constexpr std::size_t udp = ip + 24;
  struct Case {
    std::string reason;
    bool fromParser;
    std::vector<std::uint8_t> frame;
  };
  std::vector<Case> cases = {
      {"MPLS label stack too deep", true, request},
      {"Malformed IPv4 options", true, request},
      {"Truncated UDP header", true, request},
      {"the reply could not be sent to 10.0.0.1 port 0", false, request},
  };
  // 20 labels, the last one the bottom of the stack.
  std::vector<std::uint8_t> &labelled = cases[0].frame;
  labelled[12] = 0x88;
  labelled[13] = 0x47;
  for (int i = 0; i < 20; ++i) {
    const std::uint8_t entry[] = {0x00, 0x06, 0x40, 0xff};
    labelled.insert(labelled.begin() + ip + 4 * i, entry, entry + 4);
  }
  labelled[ip + 4 * 19 + 2] |= 0x01;
  cases[1].frame[ip] = 0x4f;   // a 60-byte header
  cases[2].frame[ip + 3] = 28; // total length: the header and 4 bytes
  cases[3].frame[udp] = 0;     // source port 0: the reply has nowhere to go
  cases[3].frame[udp + 1] = 0;
  std::vector<std::vector<std::uint8_t>> frames;
  for (const Case &c : cases) {
    frames.push_back(c.frame);
  }
  const auto damaged = path("damaged.pcap");
  LspPingTest::writeCapture(damaged, frames);

  const auto responded = runLspping(
      "respond --json --state " + quoted(example("egress.json")) + " --in " +
      quoted(damaged) + " --out " + quoted(path("out.pcap")));
  EXPECT_EQ(responded.status, 1);
  const auto decoded = runLspping("decode --json " + quoted(damaged));
  const std::vector<json> outcomes = jsonLines(responded.output);
  const std::vector<json> verdicts = jsonLines(decoded.output);
  ASSERT_EQ(outcomes.size(), cases.size()) << responded.output;
  ASSERT_EQ(verdicts.size(), cases.size()) << decoded.output;
  for (std::size_t i = 0; i < cases.size(); ++i) {
    SCOPED_TRACE(cases[i].reason);
    EXPECT_EQ(outcome(outcomes[i]), "dropped: " + cases[i].reason);
    if (cases[i].fromParser) {
      EXPECT_EQ(verdicts[i]["reason"],
                "not an MPLS echo message: " + cases[i].reason);
    }
  }

  const auto malformed = runLspping(
      "respond --json --state " + quoted(example("transit.json")) + " --in " +
      quoted(example("malformed.pcap")) + " --out " + quoted(path("m.pcap")));
  ASSERT_EQ(malformed.status, 1);
  const std::vector<json> lines = jsonLines(malformed.output);
  ASSERT_EQ(lines.size(), 9u);
  EXPECT_EQ(outcome(lines[0]), "dropped: LspPingHdr is corrupted");
  EXPECT_EQ(outcome(lines[2]),
            "dropped: Request message must have Target Fec TLV");
  EXPECT_EQ(outcome(lines[6]), "dropped: wrong message type");
  EXPECT_EQ(outcome(lines[7]), "dropped: Not an IP packet");
}

} // namespace

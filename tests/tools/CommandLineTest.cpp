// Command lines a user might type, right or wrong, against what the
// program's conventions promise: the exit status (0 all went well, 1 the
// data said no, 2 a usage or system error), the one line on standard error
// that names the file or option and the reason, and no output file, whole
// or in part, left behind by a run that failed.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <regex>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "RunProgram.h"
#include "ToolTestSupport.h"

namespace {

using LspPingTest::runLspping;

std::filesystem::path examples() {
  const char *env = std::getenv("LSPPING_SOURCE_DIR");
  return std::filesystem::path(env ? env : LSPPING_SOURCE_DIR) / "examples";
}

// The first `size` bytes of an example capture.
std::string examplePrefix(const std::string &name, std::size_t size) {
  std::ifstream in(examples() / name, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(in), {}).substr(0, size);
}

class CommandLine : public LspPingTest::ScratchDirTest {
protected:
  CommandLine() : ScratchDirTest("lspping-command-line-test-") {}

  // Captures that are not, or not wholly, captures of Ethernet frames.
  void SetUp() override {
    ScratchDirTest::SetUp();
    const std::pair<const char *, std::string> files[] = {
        {"empty.pcap", ""},
        {"magic.pcap", "not a capture file, not at all"},
        {"short.pcap", examplePrefix("request.pcap", 10)},
        // Cut inside the second of the five frames.
        {"cut.pcap", examplePrefix("requests.pcap", 200)},
    };
    for (const auto &[name, bytes] : files) {
      std::ofstream(path(name), std::ios::binary) << bytes;
    }
    LspPingTest::writeCapture(path("raw.pcap"), {}, 0, DLT_RAW);
    std::filesystem::create_directory(path("dir"));
  }

  std::set<std::string> files() const {
    std::set<std::string> names;
    for (const auto &entry : std::filesystem::directory_iterator(path(""))) {
      names.insert(entry.path().filename().string());
    }
    return names;
  }

  // `text` with %D standing for the scratch directory and %E for the
  // examples.
  std::string expanded(std::string text) const {
    const std::pair<std::string, std::string> names[] = {
        {"%D", path("").parent_path().string()}, {"%E", examples().string()}};
    for (const auto &[name, value] : names) {
      for (std::size_t at; (at = text.find(name)) != std::string::npos;) {
        text.replace(at, name.size(), value);
      }
    }
    return text;
  }
};

std::string repeated(const std::string &text, std::size_t times) {
  std::string all;
  for (std::size_t i = 0; i < times; ++i) {
    all += text;
  }
  return all;
}

struct Case {
  std::string args;
  int status;
  // Standard error, whole; "" for none.
  std::string error;
  // Where standard output goes.
  std::string out = "/dev/null";
};

TEST_F(CommandLine, ExitStatusAndMessage) {
  const std::string respond = "respond --state %E/egress.json ";
  const std::string requests = "--in %E/requests.pcap ";
  const Case cases[] = {
      {"bogus", 2,
       "lspping: unknown subcommand 'bogus': expected decode, craft, respond, "
       "responder, state, ping, trace, monitor or demo (see --help)\n"},
      {"", 2, "lspping: A subcommand is required (see --help)\n"},
      {"decode", 2, "lspping: FILE is required (see --help)\n"},
      {"--help", 0, ""},
      {"demo", 0, ""},
      {"demo", 2, "lspping: standard output: No space left on device\n",
       "/dev/full"},

      {"decode %E/request.pcap %E/reply.pcap", 0, ""},
      {"decode %E/request.pcap %E/malformed.pcap", 1, ""},
      {"decode %E/request.pcap", 2,
       "lspping: standard output: No space left on device\n", "/dev/full"},
      {"decode %D/empty.pcap", 2,
       "lspping: %D/empty.pcap: truncated dump file; tried to read 4 file "
       "header bytes, only got 0\n"},
      {"decode - <%D/empty.pcap", 2,
       "lspping: standard input: truncated dump file; tried to read 4 file "
       "header bytes, only got 0\n"},
      {"decode %D/magic.pcap", 2,
       "lspping: %D/magic.pcap: unknown file format\n"},
      {"decode %D/short.pcap", 2,
       "lspping: %D/short.pcap: truncated dump file; tried to read 24 file "
       "header bytes, only got 6\n"},
      {"decode %D/raw.pcap", 2,
       "lspping: %D/raw.pcap: link type RAW is not Ethernet\n"},
      {"decode %D/dir", 2, "lspping: %D/dir: Is a directory\n"},
      {"decode %D/missing.pcap %E/request.pcap", 2,
       "lspping: %D/missing.pcap: No such file or directory\n"},
      {"decode %D/cut.pcap", 2,
       "lspping: %D/cut.pcap: truncated dump file; tried to read 122 captured "
       "bytes, only got 50\n"},

      {"craft %D/out.pcap", 0, ""},
      {"craft --count 1000 /dev/full", 2,
       "lspping: /dev/full: No space left on device\n"},
      {"craft --count 1000 -", 2,
       "lspping: standard output: No space left on device\n", "/dev/full"},
      {"craft %D/dir", 2, "lspping: %D/dir: Is a directory\n"},
      {"craft %D/no/out.pcap", 2,
       "lspping: %D/no/out.pcap: No such file or directory\n"},
      {"craft" + repeated(" --label 16", 17) + " %D/out.pcap", 2,
       "lspping: craft: --label: 17 labels, more than the 16 a label stack "
       "holds\n"},
      {"craft --ds-map 10.0.0.2" + repeated(" --ds-label 3", 256) +
           " %D/out.pcap",
       2,
       "lspping: craft: --ds-label: 256 labels, more than the 255 a "
       "downstream mapping holds\n"},

      {respond + requests + "--out %D/out.pcap", 1, ""},
      {respond + "--in %D/cut.pcap --out %D/out.pcap", 2,
       "lspping: %D/cut.pcap: truncated dump file; tried to read 122 captured "
       "bytes, only got 50\n"},
      {respond + "--in %D/empty.pcap --out %D/out.pcap", 2,
       "lspping: %D/empty.pcap: truncated dump file; tried to read 4 file "
       "header bytes, only got 0\n"},
      {respond + "--in %D/dir --out %D/out.pcap", 2,
       "lspping: %D/dir: Is a directory\n"},
      {respond + requests + "--out %D/dir", 2,
       "lspping: %D/dir: Is a directory\n"},
      {respond + requests + "--out /dev/full", 2,
       "lspping: /dev/full: No space left on device\n"},
      {respond + requests + "--out -", 2,
       "lspping: respond: --out must name a file: the report goes to "
       "standard output\n"},
      {"respond --state %D/missing.json " + requests + "--out %D/out.pcap", 2,
       "lspping: %D/missing.json: No such file or directory\n"},
      {"respond --state %D/dir " + requests + "--out %D/out.pcap", 2,
       "lspping: %D/dir: Is a directory\n"},

      {"responder", 2,
       "lspping responder: give --state FILE, --state-from SOURCE or both "
       "(see --help)\n"},
      {"responder --state-from frr:a/b", 2,
       "lspping: --state-from: 'frr:a/b' is no state source (expected frr, "
       "frr:NAME or kernel) (see --help)\n"},
      {"state", 2,
       "lspping: state: give --from SOURCE, --state FILE or both (see "
       "--help)\n"},
      {"state --state %D/missing.json", 2,
       "lspping: state: %D/missing.json: No such file or directory\n"},
      {"responder --state %D/missing.json", 2,
       "lspping responder: %D/missing.json: No such file or directory\n"},
      {"responder --state %E/egress.json --rate -1", 2,
       "lspping: --rate: -1 is not a rate of 0 to 1e9 a second (see "
       "--help)\n"},
      {"responder --state %E/egress.json --reply-source ::1 --reply-source "
       "::2",
       2,
       "lspping responder: --reply-source ::2: a second address of its "
       "family\n"},

      {"ping", 2,
       "lspping ping: FEC is missing: ldp, rsvp, sr, nil, static or pw\n"},
      {"ping ldp 10.0.0.9/32 -i 0", 2,
       "lspping: -i: 0 is not a number of seconds above 0 (see --help)\n"},
      {"ping --fec-file %D/missing.txt", 2,
       "lspping ping: %D/missing.txt: No such file or directory\n"},
      {"ping --fec-file %D/empty.pcap ldp 10.0.0.9/32", 2,
       "lspping ping: --fec-file %D/empty.pcap: the FECs come from the file, "
       "not the command line\n"},
      {"trace ldp 10.0.0.9/32 --label 16/ttl=2", 2,
       "lspping trace: --label: a trace sets the labels' TTL itself, hop by "
       "hop\n"},
      {"trace ldp 10.0.0.9/32 -m 0", 2,
       "lspping: --max-ttl: Value 0 not in range 1 to 255 (see --help)\n"},
  };
  const std::set<std::string> fixtures = files();
  for (const Case &c : cases) {
    SCOPED_TRACE(c.args);
    const auto run = runLspping(expanded(c.args) + " 2>&1 >" + c.out);
    EXPECT_EQ(run.status, c.status);
    EXPECT_EQ(run.output, expanded(c.error));
    if (c.status == 2) {
      EXPECT_EQ(files(), fixtures) << "written in part";
    }
    std::filesystem::remove(path("out.pcap"));
  }
}

// Each subcommand's help names every option, and the forms of its values.
TEST_F(CommandLine, HelpDocumentsEveryOption) {
  const std::pair<std::string, std::vector<std::string>> helps[] = {
      {"decode", {"FILE", "--json"}},
      {"craft", {"FILE",       "--src ",        "--dst ",
                 "--src-mac",  "--dst-mac",     "--label",
                 "--src-port", "--dst-port",    "--sender-handle",
                 "--sequence", "--count",       "--timestamp",
                 "--fec",      "ldp=",          "rsvp=",
                 "sr=",        "nil=",          "none",
                 "--ds-map",   "--ds-intf",     "--ds-mtu",
                 "--ds-label", "--ds-multipath"}},
      {"respond", {"--state", "--state-from", "--in", "--out", "--json"}},
      {"state", {"--from", "--state", "--json", "Examples"}},
      {"responder",
       {"--state", "--state-from", "--state-refresh", "-I,--interface",
        "--rate", "--burst", "--reply-source", "--json", "-v,--verbose",
        "Examples"}},
      {"ping",
       {"FEC",
        "--label",
        "-I,--interface",
        "--nexthop ",
        "--nexthop-mac",
        "-s,--source",
        "--destination",
        "--tc",
        "--lsp-id",
        "--ext-tunnel-id",
        "--sender",
        "--igp",
        "--pw-type",
        "-c ",
        "-i ",
        "-W ",
        "--fec-file",
        "-q,--quiet",
        "--json",
        "--state-from",
        "Examples"}},
      {"trace",
       {"FEC", "--label", "-m,--max-ttl", "-W ", "--multipath", "--dot",
        "--fec-file", "-q,--quiet", "--json", "--state-from", "Examples"}},
  };
  for (const auto &[subcommand, options] : helps) {
    const auto run = runLspping(subcommand + " --help");
    EXPECT_EQ(run.status, 0);
    for (const std::string &option : options) {
      EXPECT_NE(run.output.find(option), std::string::npos)
          << subcommand << " " << option;
    }
  }
}

TEST_F(CommandLine, Version) {
  const auto run = runLspping("--version");
  EXPECT_EQ(run.status, 0);
  EXPECT_TRUE(std::regex_match(
      run.output, std::regex("lspping [0-9]+\\.[0-9]+\\.[0-9]+\n")))
      << run.output;
}

} // namespace

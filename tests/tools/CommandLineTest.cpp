// Command lines a user might type, right or wrong, against what the
// program's conventions promise: the exit status (0 all went well, 1 the
// data said no, 2 a usage or system error) and the one line on standard
// error that names the file or option and the reason.
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "RunProgram.h"
#include "ToolTestSupport.h"

namespace {

using LspPingTest::runLspping;

class CommandLine : public LspPingTest::ScratchDirTest {
protected:
  CommandLine() : ScratchDirTest("lspping-command-line-test-") {}
};

struct Case {
  std::string args;
  int status;
  // Standard error, whole; "" for none.
  std::string error;
  // Where standard output goes.
  std::string out = "/dev/null";
};

TEST_F(CommandLine, ExitStatusAndMessage) {
  const Case cases[] = {
      {"bogus", 2,
       "lspping: unknown subcommand 'bogus' (expected decode, craft, respond "
       "or demo) (see --help)\n"},
      {"", 2, "lspping: A subcommand is required (see --help)\n"},
      {"decode", 2, "lspping: FILE is required (see --help)\n"},
      {"--help", 0, ""},
      {"demo", 0, ""},
      {"demo", 2, "lspping: standard output: No space left on device\n",
       "/dev/full"},
  };
  for (const Case &c : cases) {
    SCOPED_TRACE(c.args);
    const auto run = runLspping(c.args + " 2>&1 >" + c.out);
    EXPECT_EQ(run.status, c.status);
    EXPECT_EQ(run.output, c.error);
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

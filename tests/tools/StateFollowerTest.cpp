// A daemon's state read by a child `lspping state`: a document when it
// changed (or when asked for whole), `unchanged` when not, and the child's
// complaint as the reading's error.
#include <gtest/gtest.h>

#include <fstream>
#include <optional>
#include <string>

#include "Kiv/EventLoop.h"
#include "tools/StateFollower.h"
#include "tools/ToolTestSupport.h"

namespace {

using LspPingTool::StateReading;

class StateFollowerTest : public LspPingTest::ScratchDirTest {
protected:
  StateFollowerTest() : ScratchDirTest("lspping-follower-") {}

  void write(const std::string &text) {
    std::ofstream(path("router.json")) << text;
  }

  StateReading read(LspPingTool::StateFollower &follower, bool whole) {
    std::optional<StateReading> reading;
    EXPECT_TRUE(follower.read(whole, [&](StateReading r) {
      reading = std::move(r);
      loop_.stop();
    }));
    EXPECT_FALSE(follower.read(whole, [](StateReading) {}));
    loop_.run();
    return std::move(*reading);
  }

  Kiv::EventLoop loop_;
};

TEST_F(StateFollowerTest, ParsesWhatChangedOnly) {
  write(R"({"hardware": [{"label": 16, "state": "programmed"}]})");
  LspPingTool::StateFollower follower(loop_, {path("router.json"), {}},
                                      LSPPING_PROGRAM);
  const auto labelOf = [](const StateReading &reading) {
    return reading.document
               ? reading.document->at("hardware")[0]["label"].get<int>()
               : -1;
  };
  EXPECT_EQ(labelOf(read(follower, false)), 16);
  StateReading again = read(follower, false);
  EXPECT_TRUE(again.unchanged);
  EXPECT_FALSE(again.document);
  StateReading whole = read(follower, true);
  EXPECT_TRUE(whole.unchanged);
  EXPECT_EQ(labelOf(whole), 16);

  write(R"({"hardware": [{"label": 17, "state": "programmed"}]})");
  StateReading changed = read(follower, false);
  EXPECT_FALSE(changed.unchanged);
  EXPECT_EQ(labelOf(changed), 17);

  write(R"({"hardware": [{"label": "x"}]})");
  const StateReading bad = read(follower, false);
  EXPECT_FALSE(bad.document);
  EXPECT_FALSE(bad.unchanged);
  EXPECT_NE(bad.error.find("router.json: /hardware/0"), std::string::npos)
      << bad.error;
  EXPECT_EQ(bad.error.find("lspping: state: "), std::string::npos);
  EXPECT_TRUE(bad.notes.empty());
}

} // namespace

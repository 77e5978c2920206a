#include <gtest/gtest.h>

#include <sstream>

#include "Orv/RangeError.h"
#include "PacketTracer/Request.h"
#include "PacketTracer/RequestId.h"

namespace {

using namespace PacketTracer;

TEST(RequestTest, LabelStackIsBoundedByTheHardwareDepth) {
  Request request(Wirx::IntfId("Ethernet1"));
  const Wirx::MplsLabelEntry entry(Wirx::MplsLabel(100), 0, true, 64);
  request.mplsLabelIs(Request::maxMplsLabels - 1, entry);
  EXPECT_EQ(request.mplsLabel(Request::maxMplsLabels - 1), entry);
  EXPECT_THROW(request.mplsLabelIs(Request::maxMplsLabels, entry),
               Orv::RangeError);
  EXPECT_THROW(request.mplsLabel(Request::maxMplsLabels), Orv::RangeError);
  request.numMplsLabelsIs(Request::maxMplsLabels);
  EXPECT_THROW(request.numMplsLabelsIs(Request::maxMplsLabels + 1),
               Orv::RangeError);
  EXPECT_EQ(request.numMplsLabels(), Request::maxMplsLabels);

  std::ostringstream text;
  text << RequestId("agent", 7);
  EXPECT_EQ(text.str(), "agent:7");
}

} // namespace

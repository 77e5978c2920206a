#include <gtest/gtest.h>

#include <sstream>

#include "Orv/RangeError.h"
#include "PacketTracer/ClientConfig.h"
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
}

TEST(RequestTest, FilingKeepsACopyPerRequestId) {
  auto config = Orv::make<ClientConfig>();
  Request request(Wirx::IntfId("Ethernet1"));
  L3Header l3(Wirx::AddrFamily::ipv4);
  l3.dstIpExternalIs(*Wirx::IpGenAddr::fromString("10.0.0.1"));
  request.innerL3HeaderIs(l3);
  config->requestIs(RequestId("agent", 0), request);

  l3.dstIpExternalIs(*Wirx::IpGenAddr::fromString("10.0.0.2"));
  request.innerL3HeaderIs(l3);
  config->requestIs(RequestId("agent", 1), request);

  EXPECT_EQ(config->request()[RequestId("agent", 0)].innerL3Header().dstIp(),
            *Wirx::IpGenAddr::fromString("10.0.0.1"));
  EXPECT_EQ(config->request()[RequestId("agent", 1)].innerL3Header().dstIp(),
            *Wirx::IpGenAddr::fromString("10.0.0.2"));
  EXPECT_FALSE(config->request().contains(RequestId("other", 0)));

  std::ostringstream text;
  text << RequestId("agent", 7);
  EXPECT_EQ(text.str(), "agent:7");
}

} // namespace

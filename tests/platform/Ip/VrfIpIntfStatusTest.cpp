#include <gtest/gtest.h>

#include <vector>

#include "Ip/VrfIpIntfStatus.h"
#include "Orv/RangeError.h"
#include "Orv/Reactor.h"

namespace {

using Wirx::IntfId;
using Wirx::IpAddr;

struct Watcher : Orv::Reactor {
  std::vector<IntfId> changed;
};

// Readers of the VRF's collection see interfaces come with their first
// address and go with their last, and nothing in between.
TEST(VrfIpIntfStatus, InterfaceIsPresentExactlyWhileItHasAnAddress) {
  auto vrf = Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"));
  Watcher watcher;
  watcher.watch(*vrf, Ip::VrfIpIntfStatus::ipIntfStatusAttr,
                [&](const IntfId &intf) {
                  watcher.changed.push_back(intf);
                  const auto status = vrf->ipIntfStatus(intf);
                  EXPECT_TRUE(!status || !status->addr().empty())
                      << "an entry is never seen empty";
                });
  const IntfId et1("Ethernet1");
  vrf->addrIs(et1, IpAddr(0x0a000001), 24);
  const auto status = vrf->ipIntfStatus(et1);
  vrf->addrIs(et1, IpAddr(0x0a000101), 24);
  vrf->addrIs(et1, IpAddr(0x0a000001), 31);
  EXPECT_EQ(vrf->ipIntfStatus(et1), status);
  EXPECT_EQ(status->addr()[IpAddr(0x0a000001)], 31);
  vrf->addrDel(et1, IpAddr(0x0a000001));
  EXPECT_TRUE(vrf->ipIntfStatus(et1));
  vrf->addrDel(et1, IpAddr(0x0a000101));
  EXPECT_FALSE(vrf->ipIntfStatus(et1));
  vrf->addrDel(et1, IpAddr(0x0a000101));
  EXPECT_EQ(watcher.changed, std::vector<IntfId>(2, et1));

  vrf->addrIs(et1, IpAddr(0x0a000001), 32);
  vrf->addrIs(et1, IpAddr(0x0a000101), 24);
  vrf->ipIntfStatusDel(et1);
  EXPECT_FALSE(vrf->ipIntfStatus(et1));
  EXPECT_EQ(watcher.changed.size(), 4u);
}

TEST(VrfIpIntfStatus, PrefixLongerThanTheAddressIsRefused) {
  auto vrf = Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"));
  EXPECT_THROW(vrf->addrIs(IntfId("Ethernet1"), IpAddr(0x0a000001), 33),
               Orv::RangeError);
  EXPECT_FALSE(vrf->ipIntfStatus(IntfId("Ethernet1")));
}

} // namespace

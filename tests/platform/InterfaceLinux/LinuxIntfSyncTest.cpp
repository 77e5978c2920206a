// The rtnetlink sync in a namespace of its own: each change made with `ip`
// reaches the platform's state, and the device directory the responder
// reads follows.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "Interface/LinuxIntfSync.h"
#include "Interface/NetNsIntfStatusManagerRoot.h"
#include "Kiv/EventLoop.h"
#include "Netns.h"

namespace {

using Wirx::IntfId;

TEST(LinuxIntfSync, FollowsTheKernelIntoThePlatformState) {
  LSPPING_NEED_NETNS();
  const LspPingTest::Netns netns;
  Kiv::EventLoop loop;
  Interface::LinuxIntfSync::Platform platform{
      Orv::make<Interface::AllIntfStatusDir>("all"),
      Orv::make<KernelNetInfo::Status>("kni"),
      Orv::make<Ip::VrfIpIntfStatus>("ip", L3::VrfName("default")),
      Orv::make<Ip6::VrfIp6IntfStatus>("ip6", L3::VrfName("default")),
      Wirx::NamespaceName("test")};
  const auto root = Orv::make<Interface::NetNsIntfStatusManagerRoot>(
      platform.allIntfStatusDir,
      Orv::make<Interface::AllIntfStatusLocalDir>("local"), false);
  const auto devices = Orv::make<Interface::DeviceIntfStatusDir>("disd");
  root->intfStatusManagerIs(devices, platform.kniStatus, platform.netNs);

  Orv::Ptr<Interface::LinuxIntfSync> sync;
  {
    const LspPingTest::NetnsScope in(netns);
    ASSERT_TRUE(in.entered());
    std::string error;
    sync = Interface::LinuxIntfSync::open(loop, platform, error);
    ASSERT_TRUE(sync) << error;
  }
  const IntfId lo("lo");
  ASSERT_TRUE(sync->linuxIntf(lo));
  EXPECT_TRUE(sync->linuxIntf(lo)->loopback);
  EXPECT_FALSE(sync->linuxIntf(lo)->up) << "a new namespace's lo is down";

  const std::string x = LspPingTest::uniqueName("vx");
  const std::string y = LspPingTest::uniqueName("vy");
  const std::string z = LspPingTest::uniqueName("vz");
  const auto mtu = [&](const std::string &name) -> Orv::U32 {
    const auto entry = devices->entry(IntfId(name));
    return entry.intfStatus ? entry.intfStatus->mtu() : 0;
  };
  const auto has4 = [&](const std::string &name) {
    const auto status = platform.vrfIpIntfStatus->ipIntfStatus(IntfId(name));
    return status && status->addr().find(
                         *Wirx::IpAddr::fromString("10.9.0.1")) != nullptr;
  };
  const auto has6 = [&](const std::string &name) {
    const auto status = platform.vrfIp6IntfStatus->ip6IntfStatus(IntfId(name));
    return status &&
           status->addr()[*Wirx::Ip6Addr::fromString("2001:db8::1")] == 64;
  };
  const auto gone = [&](const std::string &name) {
    return !sync->linuxIntf(IntfId(name)) && !devices->entry(IntfId(name)) &&
           !platform.allIntfStatusDir->intfStatus(IntfId(name)) &&
           !platform.kniStatus->kernelIntf(IntfId(name)) &&
           !platform.vrfIp6IntfStatus->ip6IntfStatus(IntfId(name));
  };
  const struct {
    std::vector<std::string> ip;
    std::function<bool()> follows;
  } steps[] = {
      {{"link", "add", x, "address", "02:00:00:00:00:0a", "type", "veth",
        "peer", "name", y},
       [&] {
         const auto *intf = sync->linuxIntf(IntfId(x));
         return intf && sync->linuxIntf(IntfId(y)) && intf->index > 0 &&
                intf->ethAddr.stringValue() == "02:00:00:00:00:0a" &&
                mtu(x) == 1500 && devices->entry(IntfId(x)).deviceName == x &&
                platform.kniStatus->kernelIntf(IntfId(x)).netNs ==
                    Wirx::NamespaceName("test");
       }},
      {{"addr", "add", "10.9.0.1/24", "dev", x}, [&] { return has4(x); }},
      {{"addr", "add", "2001:db8::1/64", "dev", x, "nodad"},
       [&] { return has6(x); }},
      {{"link", "set", x, "mtu", "1400"},
       [&] {
         return mtu(x) == 1400 && sync->linuxIntf(IntfId(x))->mtu == 1400;
       }},
      {{"link", "set", x, "up"},
       [&] { return sync->linuxIntf(IntfId(x))->up; }},
      {{"link", "set", x, "down"},
       [&] { return !sync->linuxIntf(IntfId(x))->up; }},
      {{"addr", "del", "10.9.0.1/24", "dev", x}, [&] { return !has4(x); }},
      {{"link", "set", x, "name", z},
       [&] { return gone(x) && sync->linuxIntf(IntfId(z)) && mtu(z) == 1400; }},
      {{"link", "del", z}, [&] { return gone(z) && gone(y); }},
  };
  for (const auto &step : steps) {
    std::string command = "ip";
    for (const std::string &arg : step.ip) {
      command += " " + arg;
    }
    SCOPED_TRACE(command);
    ASSERT_TRUE(netns.ip(step.ip));
    EXPECT_TRUE(LspPingTest::runUntil(loop, step.follows));
  }
  EXPECT_EQ(sync->error(), "");
}

} // namespace

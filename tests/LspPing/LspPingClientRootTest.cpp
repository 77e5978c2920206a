#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingUtilRoot.h"
#include "Orv/Factory.h"
#include "Orv/Reactor.h"
#include "TestSupport.h"
#include "Wirx/MemPam.h"
#include "Wirx/MemUdpPam.h"

namespace LspPing {
namespace {

using Wirx::IntfId;

const IntfId eth1("Ethernet1");
const IntfId eth2("Ethernet2");
const IntfId eth3("Ethernet3");
const IntfId mgmt1("Management1");
const IntfId internal1("Internal1");
const char *const rootTrace = "LspPing/LspPingClientRootSm";

Wirx::Ip6Addr ip6(const char *text) { return *Wirx::Ip6Addr::fromString(text); }

// What a hosting agent hands the client side: the interface and IP status it
// has mounted, a UDP module for the replies and its timer wheel.
struct Host {
  // The interface has a kernel device in the default namespace.
  void deviceIs(const IntfId &intf, const std::string &device) {
    kni->kernelIntfIs(intf,
                      KernelNetInfo::KernelIntf{
                          device, Wirx::NamespaceName::defaultNamespace()});
  }
  Orv::Ptr<LspPingClientRoot> start() {
    return lspPingClientRootFactory(all, local, kni, vrfIp, vrfIp6, udpPam,
                                    wheel);
  }

  Orv::Ptr<Interface::AllIntfStatusDir> all =
      Orv::make<Interface::AllIntfStatusDir>("all");
  Orv::Ptr<Interface::AllIntfStatusLocalDir> local =
      Orv::make<Interface::AllIntfStatusLocalDir>("local");
  Orv::Ptr<KernelNetInfo::Status> kni = Orv::make<KernelNetInfo::Status>("kni");
  Orv::Ptr<Ip::VrfIpIntfStatus> vrfIp =
      Orv::make<Ip::VrfIpIntfStatus>("vrfIp", L3::VrfName("default"));
  Orv::Ptr<Ip6::VrfIp6IntfStatus> vrfIp6 =
      Orv::make<Ip6::VrfIp6IntfStatus>("vrfIp6", L3::VrfName("default"));
  Orv::Ptr<Wirx::MemUdpPam> udpPam =
      Orv::make<Wirx::MemUdpPam>("lspPingClient", 49152);
  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
};

// The collections first, under their short names, then each state machine
// after what it relies on; the interface-status manager, desired-interface
// and PAM machines run theirs during the root's start-up.
TEST(LspPingClientRoot, CreatesItsEntitiesThenItsStateMachinesInOrder) {
  Host host;
  TestSupport::TraceCapture log(rootTrace, 8);
  const auto root = host.start();
  EXPECT_EQ(log.at(8),
            (std::vector<std::string>{
                "deviceIntfStatusDirIs disd",
                "pamDesiredIntfDirIs pdid",
                "ethDevPamCollectionIs edpc",
                "lspPingClientConfigCollIs lpccc",
                "lspPingClientStatusCollIs lpcsc",
                "lspPingClientSmCollIs lpcsmc",
                "lspPingClientRxMsgPipeCollIs lpcrpc",
                "void LspPing::LspPingClientRoot::handleInitialized()",
                "intfStatusManagerRootIs filterByNetNs 0",
                "lspPingPamDesiredIntfSmIs default",
                "void LspPing::LspPingPamDesiredIntfSm::handleInitialized()",
                "lspPingEthDevPamManagerIs edpm default",
                "void LspPing::LspPingEthDevPamManager::handleInitialized() "
                "netNs default",
                "lspPingClientSmManagerIs",
                "lspPingClientConfigSmIs",
                "lspPingClientListenerSmIs",
            }));

  EXPECT_TRUE(root->initialized());
  EXPECT_EQ(root->lspPingClientConfigColl()->name().stringValue(), "lpccc");
  EXPECT_EQ(root->lspPingClientConfigColl()->parent(), root.get());
  EXPECT_EQ(root->lspPingPamDesiredIntfSm()->vrfName(), L3::VrfName("default"));
  EXPECT_TRUE(root->lspPingClientSmManager());
  EXPECT_TRUE(root->lspPingClientConfigSm());
  EXPECT_TRUE(root->lspPingClientListenerSm());
  EXPECT_TRUE(root->intfStatusManagerRoot()->intfStatusManager(
      Wirx::NamespaceName::defaultNamespace()));
}

// Interfaces with IP status in the default VRF get a raw MPLS module, those
// there at start-up before any client is configured; it goes with the
// interface's last address.
TEST(LspPingClientRoot, InterfaceWithAnAddressGetsARawModule) {
  Host host;
  host.deviceIs(eth1, "et1");
  host.deviceIs(eth2, "et2");
  host.deviceIs(eth3, "et3");
  host.all->intfStatusIs(eth1)->mtuIs(9214);
  host.vrfIp->addrIs(eth1, Wirx::IpAddr(0x0a000001), 24);
  host.vrfIp->addrIs(eth1, Wirx::IpAddr(0x0a000101), 24);
  const auto root = host.start();
  const auto &pams = root->ethDevPamCollection();
  EXPECT_TRUE(root->pamDesiredIntfDir()->intfDesired(eth1));
  auto *pam = dynamic_cast<Wirx::MemPam *>(pams->intfPam(eth1).get());
  ASSERT_NE(pam, nullptr);
  EXPECT_EQ(pam->name().stringValue(), "et1");
  EXPECT_EQ(root->deviceIntfStatusDir()->entry(eth1).intfStatus->mtu(), 9214u);

  const auto &manager = root->lspPingEthDevPamManager()->ethDevPamManager();
  EXPECT_EQ(manager->ethProtocol(), 0x8847);
  EXPECT_EQ(manager->maxRxPktData(), 9600u);
  EXPECT_FALSE(manager->broadcast());
  EXPECT_TRUE(manager->perIntfSocket());
  EXPECT_TRUE(manager->enabled());

  host.vrfIp->addrIs(eth2, Wirx::IpAddr(0x0a000201), 24);
  host.vrfIp6->addrIs(eth3, ip6("2001:db8::3"), 64);
  EXPECT_TRUE(pams->intfPam(eth2));
  EXPECT_TRUE(pams->intfPam(eth3));
  EXPECT_NE(pams->intfPam(eth2), pams->intfPam(eth3));

  host.vrfIp->addrDel(eth1, Wirx::IpAddr(0x0a000001));
  EXPECT_TRUE(pams->intfPam(eth1)) << "one address left";
  host.vrfIp->addrDel(eth1, Wirx::IpAddr(0x0a000101));
  EXPECT_FALSE(root->pamDesiredIntfDir()->intfDesired(eth1));
  EXPECT_FALSE(pams->intfPam().contains(eth1));
  host.vrfIp6->ip6IntfStatusDel(eth3);
  EXPECT_FALSE(pams->intfPam().contains(eth3));
  EXPECT_EQ(pams->intfPam().size(), 1u);
}

TEST(LspPingClientRoot, ManagementAndInternalInterfacesNeverGetOne) {
  Host host;
  TestSupport::TraceCapture log(rootTrace, 2);
  host.deviceIs(mgmt1, "ma1");
  host.deviceIs(internal1, "in1");
  host.vrfIp->addrIs(mgmt1, Wirx::IpAddr(0xc0a80001), 24);
  const auto root = host.start();
  host.vrfIp6->addrIs(internal1, ip6("fd00::1"), 64);
  host.vrfIp->addrIs(internal1, Wirx::IpAddr(0xa9fe0001), 16);
  EXPECT_TRUE(root->pamDesiredIntfDir()->intfDesired().empty());
  EXPECT_TRUE(root->ethDevPamCollection()->intfPam().empty());
  EXPECT_EQ(log.at(2), (std::vector<std::string>{"Skip intf Management1",
                                                 "Skip intf Internal1",
                                                 "Skip intf Internal1"}));
}

// Both families share the interface's one desired entry, and each change
// decides alone: losing IPv6 takes the module away although IPv4 stays,
// until the interface's IPv4 status next comes or goes.
TEST(LspPingClientRoot, EachFamilysLastChangeDecides) {
  Host host;
  host.deviceIs(eth1, "et1");
  const auto root = host.start();
  host.vrfIp->addrIs(eth1, Wirx::IpAddr(0x0a000001), 24);
  host.vrfIp6->addrIs(eth1, ip6("2001:db8::1"), 64);
  host.vrfIp6->addrDel(eth1, ip6("2001:db8::1"));
  EXPECT_FALSE(root->ethDevPamCollection()->intfPam().contains(eth1));
  host.vrfIp->ipIntfStatusDel(eth1);
  host.vrfIp->addrIs(eth1, Wirx::IpAddr(0x0a000001), 24);
  EXPECT_TRUE(root->ethDevPamCollection()->intfPam(eth1));
}

// The host starts the client side once, by name if it likes, and stopping
// it closes the modules and stops every timer; what the host still holds no
// longer points back at the root.
TEST(LspPingUtilRoot, StartsTheClientSideOnceAndTearsItDown) {
  Host host;
  Kiv::VirtualTime time(host.wheel, 1'800'000'000.0);
  host.deviceIs(eth1, "et1");
  host.vrfIp->addrIs(eth1, Wirx::IpAddr(0x0a000001), 24);
  const auto object = Orv::create("LspPing::LspPingUtilRoot", "lspPing");
  auto *util = dynamic_cast<LspPingUtilRoot *>(object.get());
  ASSERT_NE(util, nullptr);
  struct : Orv::Reactor {
    int changes = 0;
  } watcher;
  watcher.watch(*util, LspPingUtilRoot::lspPingClientRootAttr,
                [&] { ++watcher.changes; });

  Orv::Ptr<LspPingClientConfigColl> configs;
  Orv::Ptr<Interface::EthDevPamCollection> pams;
  {
    const auto root =
        util->lspPingClientRootIs(host.all, host.local, host.kni, host.vrfIp,
                                  host.vrfIp6, host.udpPam, host.wheel);
    EXPECT_EQ(util->lspPingClientRootIs(host.all, host.local, host.kni,
                                        host.vrfIp, host.vrfIp6, host.udpPam,
                                        host.wheel),
              root);
    EXPECT_EQ(root->parent(), util);
    configs = root->lspPingClientConfigColl();
    pams = root->ethDevPamCollection();
  }
  EXPECT_EQ(pams->intfPam().size(), 1u);
  auto config = configs->pingClientConfigIs(1);
  config->enabledIs(true);
  EXPECT_GT(host.wheel->armedCount(), 0u);

  util->lspPingClientRootDel();
  EXPECT_FALSE(util->lspPingClientRoot());
  EXPECT_EQ(watcher.changes, 2);
  EXPECT_TRUE(pams->intfPam().empty());
  EXPECT_EQ(host.wheel->armedCount(), 0u);
  EXPECT_EQ(configs->parent(), nullptr);
  host.vrfIp->addrIs(eth2, Wirx::IpAddr(0x0a000201), 24);
  configs->pingClientConfigIs(2);
  EXPECT_TRUE(pams->intfPam().empty());
}

} // namespace
} // namespace LspPing

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "Kiv/VirtualTime.h"
#include "LspPing/LspPingClientConfigSm.h"
#include "LspPing/LspPingClientSmManager.h"
#include "TestSupport.h"
#include "Wirx/MemPam.h"

namespace LspPing {
namespace {

using Wirx::IntfId;

const IntfId eth1("Ethernet1");
const IntfId eth2("Ethernet2");

Wirx::EthAddr mac(const char *text) { return *Wirx::EthAddr::fromString(text); }

// The collections of the client side and the manager that gives each client
// its transmit state machine, with the configuration state machine created
// last, as the client root does.
struct Agent {
  explicit Agent(bool startConfigSm = true) {
    if (startConfigSm) {
      start();
    }
  }
  void start() {
    configSm =
        lspPingClientConfigSmFactory(configs, statuses, sms, pams, wheel);
  }

  // A client that passes every check once its interface has a module.
  Orv::Ptr<LspPingClientConfig>
  validClient(U32 id, const IntfId &intf = eth1,
              LspPingTunnelType type = LspPingTunnelType::tunnelLdpIpv4) {
    auto config = configs->pingClientConfigIs(id);
    config->tunnelTypeIs(type);
    config->txIntfIdIs(intf);
    config->mplsLabelIs(0, Wirx::MplsLabel(100));
    config->srcIpAddrIs(Wirx::IpAddr(0x0a000001));
    config->dstIpAddrIs(Wirx::IpAddr(0x7f000001));
    config->srcEthAddrIs(mac("02:00:00:00:00:01"));
    config->tunnelNexthopEthAddrIs(mac("02:00:00:00:00:02"));
    config->txCountIs(3);
    return config;
  }
  Orv::Ptr<Wirx::MemPam> pamIs(const IntfId &intf) {
    auto pam = Orv::make<Wirx::MemPam>(Orv::Name(intf.name()));
    pams->intfPamIs(intf, pam);
    return pam;
  }
  Orv::Ptr<LspPingClientTxSm> txSm(U32 id) const {
    return sms->pingClientTxSm(id);
  }
  Orv::Ptr<Wirx::Pam> txPam(U32 id) const {
    return txSm(id)->lspPingClientTxPam();
  }
  std::set<U32> clientsOn(const IntfId &intf) const {
    std::set<U32> ids;
    if (auto mapping = configSm->pingClientIntfIdMapping(intf)) {
      for (const auto &entry : mapping->pingClientId()) {
        ids.insert(entry.first);
      }
    }
    return ids;
  }

  Orv::Ptr<Kiv::TimerWheel> wheel = Orv::make<Kiv::TimerWheel>();
  Kiv::VirtualTime time{wheel, 1'800'000'000.0};
  Orv::Ptr<LspPingClientConfigColl> configs =
      lspPingClientConfigCollFactory("lpccc");
  Orv::Ptr<LspPingClientStatusColl> statuses =
      lspPingClientStatusCollFactory("lpcsc");
  Orv::Ptr<LspPingClientSmColl> sms = lspPingClientSmCollFactory("lpcsmc");
  Orv::Ptr<Interface::EthDevPamCollection> pams =
      Orv::make<Interface::EthDevPamCollection>("edpc");
  Orv::Ptr<LspPingClientSmManager> manager = lspPingClientSmManagerFactory(
      configs, statuses, sms, lspPingClientRxMsgPipeCollFactory("lpcrpc"),
      wheel);
  Orv::Ptr<LspPingClientConfigSm> configSm;
};

TEST(LspPingClientConfigSm, EachCheckInItsOrder) {
  using Break = std::function<void(LspPingClientConfig &)>;
  // Each check, and the fault that fails it alone.
  const std::vector<std::pair<std::string, Break>> checks = {
      {"Invalid Tunnel Type",
       [](LspPingClientConfig &c) {
         c.tunnelTypeIs(LspPingTunnelType::tunnelUnknown);
       }},
      {"Transmit Interface is not set",
       [](LspPingClientConfig &c) { c.txIntfIdIs(IntfId()); }},
      {"Transmit Interface is not ready",
       [](LspPingClientConfig &c) { c.txIntfIdIs(eth2); }},
      {"No MPLS label is found",
       [](LspPingClientConfig &c) { c.mplsLabelDelAll(); }},
      {"Invalid Source IP Address",
       [](LspPingClientConfig &c) { c.srcIpAddrIs(Wirx::IpGenAddr()); }},
      {"Invalid Destination IP Address",
       [](LspPingClientConfig &c) { c.dstIpAddrIs(Wirx::IpGenAddr()); }},
      {"Invalid Source Ethernet Address",
       [](LspPingClientConfig &c) { c.srcEthAddrIs(Wirx::EthAddr()); }},
      {"Invalid Nexthop Ethernet Address",
       [](LspPingClientConfig &c) {
         c.tunnelNexthopEthAddrIs(Wirx::EthAddr());
       }},
      {"Invalid Ping count", [](LspPingClientConfig &c) { c.txCountIs(0); }},
  };
  for (std::size_t first = 0; first < checks.size(); ++first) {
    for (bool alsoLater : {false, true}) {
      SCOPED_TRACE(checks[first].first + (alsoLater ? " and later" : ""));
      Agent a;
      a.pamIs(eth1);
      auto config = a.validClient(7);
      ASSERT_EQ(config->reason(), "Enabled");
      ASSERT_TRUE(config->enabled());
      const std::size_t last = alsoLater ? checks.size() : first + 1;
      for (std::size_t i = first; i < last; ++i) {
        // A client without interface cannot also be on one without module.
        if (!(i == 2 && first == 1)) {
          checks[i].second(*config);
        }
      }
      EXPECT_EQ(config->reason(), checks[first].first);
      EXPECT_FALSE(config->enabled());
    }
  }
}

TEST(LspPingClientConfigSm, OnlyNoCountAndAnUnsetCountAreRefused) {
  Agent a;
  a.pamIs(eth1);
  auto config = a.validClient(7);
  for (S32 count : {-1, 1, 1000, -3, -100}) {
    config->txCountIs(count);
    EXPECT_EQ(config->reason(), "Enabled") << count;
    EXPECT_TRUE(config->enabled()) << count;
  }
  for (S32 count : {0, LspPingTxCountConstants::invalid}) {
    config->txCountIs(count);
    EXPECT_EQ(config->reason(), "Invalid Ping count") << count;
    EXPECT_FALSE(config->enabled()) << count;
  }
}

TEST(LspPingClientConfigSm, NewClientFailsOnItsTunnelTypeFirst) {
  Agent a;
  auto config = a.configs->pingClientConfigIs(7);
  EXPECT_EQ(config->reason(), "Invalid Tunnel Type");
  EXPECT_FALSE(config->enabled());
  EXPECT_TRUE(a.configSm->clientConfig(7));
  EXPECT_TRUE(a.configSm->pingClientIntfIdMappingColl().empty());

  config->txIntfIdIs(eth1);
  EXPECT_EQ(config->reason(), "Invalid Tunnel Type");
  EXPECT_EQ(a.clientsOn(eth1), std::set<U32>{7}) << "indexed all the same";
}

TEST(LspPingClientConfigSm, ModuleComingAndGoingReachesTheClientsOnIt) {
  Agent a;
  auto c1 = a.validClient(1);
  auto c2 = a.validClient(2);
  auto c3 = a.validClient(3, eth2);
  for (const auto &c : {c1, c2, c3}) {
    EXPECT_EQ(c->reason(), "Transmit Interface is not ready");
    EXPECT_FALSE(c->enabled());
    EXPECT_FALSE(a.txPam(c->clientId()));
  }

  TestSupport::TraceCapture log("LspPing/LspPingClientConfigSm", 9);
  auto pam = a.pamIs(eth1);
  EXPECT_EQ(log.at(9),
            (std::vector<std::string>{"Setting pingClientTxSm clientId 1",
                                      "Setting pingClientTxSm clientId 2"}));
  for (const auto &c : {c1, c2}) {
    EXPECT_EQ(c->reason(), "Enabled");
    EXPECT_TRUE(c->enabled());
    EXPECT_EQ(a.txPam(c->clientId()), pam);
  }
  EXPECT_EQ(c3->reason(), "Transmit Interface is not ready");
  EXPECT_FALSE(a.txPam(3));

  // The transmit state machine sends on what it was given.
  a.time.runFor(10);
  EXPECT_EQ(pam->frames().size(), 6u);

  auto replacement = a.pamIs(eth1);
  EXPECT_EQ(a.txPam(1), replacement);
  EXPECT_TRUE(c1->enabled());

  log.lines.clear();
  a.pams->intfPamDel(eth1);
  EXPECT_EQ(log.at(9),
            (std::vector<std::string>{"Clearing pingClientTxSm clientId 1",
                                      "Clearing pingClientTxSm clientId 2"}));
  for (const auto &c : {c1, c2}) {
    EXPECT_EQ(c->reason(), "Transmit Interface is not ready");
    EXPECT_FALSE(c->enabled());
    EXPECT_FALSE(a.txPam(c->clientId()));
  }

  log.lines.clear();
  a.pamIs(IntfId("Ethernet9"));
  EXPECT_TRUE(log.at(9).empty()) << "no client there";
}

TEST(LspPingClientConfigSm, MovingAClientMovesItInTheIndex) {
  Agent a;
  auto pam1 = a.pamIs(eth1);
  auto pam2 = a.pamIs(eth2);
  auto c1 = a.validClient(1);
  auto c2 = a.validClient(2);
  EXPECT_EQ(a.clientsOn(eth1), (std::set<U32>{1, 2}));

  c1->txIntfIdIs(eth2);
  EXPECT_EQ(a.clientsOn(eth1), std::set<U32>{2});
  EXPECT_EQ(a.clientsOn(eth2), std::set<U32>{1});
  EXPECT_EQ(a.configSm->clientConfig(1)->prevTxIntfId(), eth2);
  EXPECT_EQ(a.txPam(1), pam2);
  EXPECT_EQ(c1->reason(), "Enabled");

  c2->txIntfIdIs(eth2);
  EXPECT_FALSE(a.configSm->pingClientIntfIdMapping(eth1))
      << "gone with its last client";
  EXPECT_EQ(a.clientsOn(eth2), (std::set<U32>{1, 2}));

  // Only eth2's clients hear of eth1 now.
  a.pams->intfPamDel(eth1);
  EXPECT_EQ(a.txPam(1), pam2);
  EXPECT_TRUE(c1->enabled());

  TestSupport::TraceCapture log("LspPing/LspPingClientConfigSm", 9);
  c2->txIntfIdIs(IntfId());
  EXPECT_EQ(log.at(9),
            std::vector<std::string>{"Clearing pingClientTxSm clientId 2"});
  EXPECT_FALSE(a.txPam(2));
  EXPECT_EQ(c2->reason(), "Transmit Interface is not set");
  EXPECT_FALSE(c2->enabled());
  EXPECT_EQ(a.clientsOn(eth2), std::set<U32>{1});
  EXPECT_EQ(a.configSm->clientConfig(2)->prevTxIntfId(), IntfId());
}

TEST(LspPingClientConfigSm, ClientMovedByAWatcherOfTheVerdict) {
  Agent a;
  a.pamIs(eth1);
  auto pam2 = a.pamIs(eth2);
  auto config = a.validClient(7);
  // A management layer that fails a client over to eth2 when it stops.
  struct Failover : Orv::Reactor {
  } failover;
  failover.watch(*config, LspPingClientConfig::enabledAttr, [&] {
    if (!config->enabled()) {
      config->txIntfIdIs(eth2);
    }
  });
  config->txIntfIdIs(IntfId("Ethernet3"));
  EXPECT_EQ(config->txIntfId(), eth2);
  EXPECT_EQ(config->reason(), "Enabled");
  EXPECT_EQ(a.txPam(7), pam2);
  EXPECT_EQ(a.configSm->clientConfig(7)->prevTxIntfId(), eth2);
  EXPECT_EQ(a.configSm->pingClientIntfIdMappingColl().size(), 1u);
  EXPECT_EQ(a.clientsOn(eth2), std::set<U32>{7});
}

TEST(LspPingClientConfigSm, DeletedClientStaysIndexedAndIsPassedOver) {
  Agent a;
  a.pamIs(eth1);
  a.validClient(1);
  auto c2 = a.validClient(2);
  a.configs->pingClientConfigDel(1);
  EXPECT_FALSE(a.configSm->clientConfig(1));
  EXPECT_EQ(a.clientsOn(eth1), (std::set<U32>{1, 2}));

  auto pam = a.pamIs(eth1);
  EXPECT_EQ(a.txPam(2), pam);
  EXPECT_TRUE(c2->enabled());

  // Back again, the client starts from no interface.
  auto again = a.validClient(1, eth2);
  EXPECT_EQ(again->reason(), "Transmit Interface is not ready");
  EXPECT_EQ(a.clientsOn(eth2), std::set<U32>{1});
  EXPECT_EQ(a.clientsOn(eth1), (std::set<U32>{1, 2}));
}

TEST(LspPingClientConfigSm, StaticAndUnknownTunnelsKeepTheirModule) {
  Agent a;
  auto pam = a.pamIs(eth1);
  auto config = a.validClient(7);
  config->tunnelTypeIs(LspPingTunnelType::tunnelStaticConfig);
  EXPECT_EQ(a.txPam(7), pam) << "kept from its earlier tunnel type";
  EXPECT_EQ(config->reason(), "Enabled");

  a.pams->intfPamDel(eth1);
  EXPECT_EQ(a.txPam(7), pam);
  EXPECT_TRUE(config->enabled());

  config->tunnelTypeIs(LspPingTunnelType::tunnelUnknown);
  EXPECT_EQ(a.txPam(7), pam);
  EXPECT_EQ(config->reason(), "Invalid Tunnel Type");

  a.pamIs(eth2);
  auto fresh = a.validClient(8, eth2, LspPingTunnelType::tunnelStaticConfig);
  EXPECT_FALSE(a.txPam(8)) << "never given one for a static tunnel";
  EXPECT_EQ(fresh->reason(), "Transmit Interface is not ready");
  a.pamIs(eth2);
  EXPECT_FALSE(a.txPam(8));
  EXPECT_EQ(fresh->reason(), "Transmit Interface is not ready");
}

TEST(LspPingClientConfigSm, ReasonIsWrittenBeforeEnabled) {
  Agent a;
  auto config = a.validClient(7);
  struct Order : Orv::Reactor {
    std::vector<std::string> seen;
  } order;
  order.watch(*config, LspPingClientConfig::reasonAttr,
              [&] { order.seen.push_back("reason " + config->reason()); });
  order.watch(*config, LspPingClientConfig::enabledAttr, [&] {
    order.seen.push_back(std::string("enabled ") +
                         (config->enabled() ? "true" : "false") + " with " +
                         config->reason());
  });
  a.pamIs(eth1);
  a.pams->intfPamDel(eth1);
  EXPECT_EQ(order.seen,
            (std::vector<std::string>{
                "reason Enabled",
                "enabled true with Enabled",
                "reason Transmit Interface is not ready",
                "enabled false with Transmit Interface is not ready",
            }));
}

TEST(LspPingClientConfigSm, ReChecksOnTheAttributesItReadsOnly) {
  Agent a;
  a.pamIs(eth1);
  a.pamIs(eth2);
  auto config = a.validClient(7);

  // An outside write of the verdict stands until something checked changes.
  config->reasonIs("outside");
  config->enabledIs(false);
  const std::vector<std::function<void()>> unchecked = {
      [&] { config->modeIs(LspPingMode::modeLspTraceRoute); },
      [&] {
        config->dstPrefixIs(Wirx::IpGenPrefix(Wirx::IpAddr(0x0a010101), 32));
      },
      [&] { config->mplsTtlIs(0, 64); },
      [&] { config->txRateIs(0.5); },
  };
  for (std::size_t i = 0; i < unchecked.size(); ++i) {
    unchecked[i]();
    EXPECT_EQ(config->reason(), "outside") << "change " << i;
    EXPECT_FALSE(config->enabled()) << "change " << i;
  }

  const std::vector<std::function<void()>> checked = {
      [&] { config->txIntfIdIs(eth2); },
      [&] { config->srcEthAddrIs(mac("02:00:00:00:00:0a")); },
      [&] { config->tunnelNexthopEthAddrIs(mac("02:00:00:00:00:0b")); },
      [&] { config->srcIpAddrIs(Wirx::IpAddr(0x0a00000a)); },
      [&] { config->dstIpAddrIs(Wirx::IpAddr(0x7f00000a)); },
      [&] { config->mplsLabelIs(1, Wirx::MplsLabel(200)); },
      [&] { config->mplsLabelIs(1, Wirx::MplsLabel(300)); },
      [&] { config->mplsLabelDel(1); },
      [&] { config->txCountIs(-1); },
      [&] { config->tunnelTypeIs(LspPingTunnelType::tunnelSrIpv4); },
  };
  for (std::size_t i = 0; i < checked.size(); ++i) {
    config->reasonIs("outside");
    config->enabledIs(false);
    checked[i]();
    EXPECT_EQ(config->reason(), "Enabled") << "change " << i;
    EXPECT_TRUE(config->enabled()) << "change " << i;
  }
}

TEST(LspPingClientConfigSm, ClientsConfiguredEarlierAreCheckedAtStart) {
  Agent a(false);
  auto pam = a.pamIs(eth1);
  auto ready = a.validClient(1);
  auto waiting = a.validClient(2, eth2);
  a.configs->pingClientConfigIs(3);
  EXPECT_EQ(ready->reason(), "");

  a.start();
  EXPECT_TRUE(a.configSm->initialized());
  EXPECT_EQ(a.configSm->clientConfig().size(), 3u);
  EXPECT_EQ(ready->reason(), "Enabled");
  EXPECT_EQ(a.txPam(1), pam);
  EXPECT_EQ(waiting->reason(), "Transmit Interface is not ready");
  EXPECT_EQ(a.configs->pingClientConfig(3)->reason(), "Invalid Tunnel Type");
  EXPECT_EQ(a.clientsOn(eth1), std::set<U32>{1});
  EXPECT_EQ(a.clientsOn(eth2), std::set<U32>{2});
}

TEST(LspPingClientConfigSm, WithoutModuleCollectionNoClientIsReady) {
  Agent a(false);
  a.pams = nullptr;
  a.start();
  auto config = a.validClient(7);
  EXPECT_EQ(config->reason(), "Transmit Interface is not ready");
  EXPECT_FALSE(a.txPam(7));
}

TEST(LspPingClientConfigSm, NoWorkOnceDeleted) {
  Agent a;
  auto config = a.validClient(7);
  a.configSm->handleDelete();
  EXPECT_FALSE(a.configSm->initialized());
  a.pamIs(eth1);
  config->txCountIs(5);
  a.validClient(8);
  EXPECT_FALSE(a.txPam(7));
  EXPECT_EQ(config->reason(), "Transmit Interface is not ready");
  EXPECT_EQ(a.configs->pingClientConfig(8)->reason(), "");

  // Dropping the machine leaves the configurations as they were.
  a.configSm = nullptr;
  config->txIntfIdIs(eth2);
  a.pams->intfPamDel(eth1);
  EXPECT_EQ(config->reason(), "Transmit Interface is not ready");
}

TEST(LspPingClientConfigSmDeathTest, ClientWithoutTransmitMachine) {
  EXPECT_DEATH(
      {
        auto configs = lspPingClientConfigCollFactory("lpccc");
        configs->pingClientConfigIs(7);
        lspPingClientConfigSmFactory(
            configs, lspPingClientStatusCollFactory("lpcsc"),
            lspPingClientSmCollFactory("lpcsmc"),
            Orv::make<Interface::EthDevPamCollection>("edpc"),
            Orv::make<Kiv::TimerWheel>());
      },
      "Assertion failed: pingClientTxSm && \"Internal Error\"");
}

} // namespace
} // namespace LspPing

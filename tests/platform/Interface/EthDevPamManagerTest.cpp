#include <gtest/gtest.h>

#include <vector>

#include "Interface/EthDevPamManager.h"
#include "Orv/Reactor.h"
#include "Wirx/MemPam.h"

namespace {

using Interface::DeviceIntfStatusEntry;
using Interface::EthDevPamCollection;
using Interface::EthDevPamParams;
using Wirx::IntfId;

const IntfId et1("Ethernet1");
const IntfId et2("Ethernet2");
const IntfId et3("Ethernet3");

struct EthDevPamManagerTest : ::testing::Test {
  EthDevPamManagerTest() {
    manager->pamOpenerIs([this](const EthDevPamParams &params) {
      opened.push_back(params);
      return failOpen ? nullptr
                      : Orv::Ptr<Wirx::Pam>(Orv::make<Wirx::MemPam>(
                            Orv::Name(params.deviceName)));
    });
    // Each notification must find the collection consistent with itself.
    watcher.watch(*pams, EthDevPamCollection::intfPamAttr,
                  [this](const IntfId &intf) {
                    changes.push_back(intf);
                    if (pams->intfPam().contains(intf)) {
                      EXPECT_TRUE(pams->intfPam(intf));
                    }
                  });
  }

  void deviceIs(const IntfId &intf, const std::string &device) {
    devices->entryIs(intf, DeviceIntfStatusEntry{nullptr, device});
  }

  Orv::Ptr<Interface::PamDesiredIntfDir> desired =
      Orv::make<Interface::PamDesiredIntfDir>("pdid");
  Orv::Ptr<EthDevPamCollection> pams = Orv::make<EthDevPamCollection>("edpc");
  Orv::Ptr<Interface::DeviceIntfStatusDir> devices =
      Orv::make<Interface::DeviceIntfStatusDir>("disd");
  Orv::Ptr<Interface::EthDevPamManager> manager =
      Orv::make<Interface::EthDevPamManager>(desired, pams, devices);
  std::vector<EthDevPamParams> opened;
  bool failOpen = false;
  struct : Orv::Reactor {
  } watcher;
  std::vector<IntfId> changes;
};

// A module exists exactly while the manager is enabled and the interface is
// both desired and backed by a device.
TEST_F(EthDevPamManagerTest, OpensWhereDesiredAndBackedByADevice) {
  manager->perIntfSocketIs(true);
  manager->ethProtocolIs(0x8847);
  desired->intfDesiredIs(et1, true);
  deviceIs(et1, "et1");
  desired->intfDesiredIs(et2, true);
  deviceIs(et3, "et3");
  EXPECT_TRUE(pams->intfPam().empty()) << "disabled";
  EXPECT_TRUE(opened.empty());

  manager->enabledIs(true);
  EXPECT_EQ(pams->intfPam().size(), 1u);
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_EQ(opened[0],
            (EthDevPamParams{
                et1, "et1", Wirx::NamespaceName::defaultNamespace(), 0x8847,
                false, Interface::EthDevPamManager::defaultMaxRxPktData}));

  deviceIs(et2, "et2");
  EXPECT_TRUE(pams->intfPam(et2));
  desired->intfDesiredIs(et1, false);
  EXPECT_FALSE(pams->intfPam(et1));
  devices->entryDel(et2);
  EXPECT_FALSE(pams->intfPam(et2));
  EXPECT_EQ(changes, (std::vector<IntfId>{et1, et2, et1, et2}));

  desired->intfDesiredIs(et3, true);
  EXPECT_TRUE(pams->intfPam(et3));
  manager->enabledIs(false);
  EXPECT_TRUE(pams->intfPam().empty());
}

TEST_F(EthDevPamManagerTest, ReopensOnANewDeviceOrNewSettingsInPlace) {
  manager->perIntfSocketIs(true);
  manager->enabledIs(true);
  desired->intfDesiredIs(et1, true);
  deviceIs(et1, "et1");
  const auto first = pams->intfPam(et1);
  ASSERT_TRUE(first);

  auto status = Orv::make<Interface::IntfStatus>(et1);
  devices->entryIs(et1, DeviceIntfStatusEntry{status, "et1"});
  EXPECT_EQ(pams->intfPam(et1), first) << "same device, same module";

  devices->entryIs(et1, DeviceIntfStatusEntry{status, "et1a"});
  const auto second = pams->intfPam(et1);
  EXPECT_NE(second, first);
  EXPECT_EQ(opened.back().deviceName, "et1a");

  manager->maxRxPktDataIs(9600);
  manager->broadcastIs(true);
  EXPECT_NE(pams->intfPam(et1), second);
  EXPECT_EQ(opened.back().maxRxPktData, 9600u);
  EXPECT_TRUE(opened.back().broadcast);
  EXPECT_EQ(opened.size(), 4u);
  // Readers saw the module change each time, never go.
  EXPECT_EQ(changes, std::vector<IntfId>(4, et1));
  EXPECT_TRUE(pams->intfPam().contains(et1));
}

TEST_F(EthDevPamManagerTest, SharedModuleServesEveryInterfaceUntilTheLastGoes) {
  manager->enabledIs(true);
  deviceIs(et1, "et1");
  deviceIs(et2, "et2");
  desired->intfDesiredIs(et1, true);
  desired->intfDesiredIs(et2, true);
  ASSERT_EQ(opened.size(), 1u);
  EXPECT_TRUE(!opened[0].intfId) << "on no interface in particular";
  EXPECT_EQ(pams->intfPam(et1), pams->intfPam(et2));

  desired->intfDesiredDel(et1);
  desired->intfDesiredDel(et2);
  desired->intfDesiredIs(et1, true);
  EXPECT_EQ(opened.size(), 2u) << "the last one out closed it";

  manager->perIntfSocketIs(true);
  EXPECT_EQ(opened.back().intfId, et1);
}

TEST_F(EthDevPamManagerTest, FailedOpenIsRetriedOnTheNextChange) {
  manager->enabledIs(true);
  manager->perIntfSocketIs(true);
  failOpen = true;
  desired->intfDesiredIs(et1, true);
  deviceIs(et1, "et1");
  EXPECT_FALSE(pams->intfPam().contains(et1));
  failOpen = false;
  deviceIs(et1, "et1a");
  EXPECT_TRUE(pams->intfPam(et1));
}

} // namespace

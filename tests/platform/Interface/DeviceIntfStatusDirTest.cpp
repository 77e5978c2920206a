#include <gtest/gtest.h>

#include <vector>

#include "Interface/DeviceIntfStatusDir.h"
#include "Orv/Reactor.h"

namespace {

using Interface::DeviceIntfStatusEntry;
using Wirx::IntfId;

TEST(DeviceIntfStatusDir, UnknownInterfaceReadsTheEmptyPair) {
  auto dir = Orv::make<Interface::DeviceIntfStatusDir>("disd");
  auto status = Orv::make<Interface::IntfStatus>(IntfId("Ethernet1"));
  status->mtuIs(9214);
  dir->entryIs(IntfId("Ethernet1"), DeviceIntfStatusEntry{status, "et1"});
  // Coming up: the device is known, the status not yet.
  dir->entryIs(IntfId("Ethernet2"), DeviceIntfStatusEntry{nullptr, "et2"});

  const Orv::Ptr<const Interface::DeviceIntfStatusDir> reader = dir;
  const DeviceIntfStatusEntry &one = reader->entry(IntfId("Ethernet1"));
  ASSERT_TRUE(one.intfStatus);
  EXPECT_EQ(one.intfStatus->mtu(), 9214u);
  EXPECT_EQ(one.deviceName, "et1");
  EXPECT_FALSE(!one);
  EXPECT_FALSE(reader->entry(IntfId("Ethernet2")).intfStatus);
  EXPECT_FALSE(!reader->entry(IntfId("Ethernet2")));
  EXPECT_TRUE(!reader->entry(IntfId("Ethernet3")));
  EXPECT_EQ(reader->size(), 2u);
}

TEST(DeviceIntfStatusDir, NotifiesEachChangedInterfaceOnce) {
  auto dir = Orv::make<Interface::DeviceIntfStatusDir>("disd");
  struct Watcher : Orv::Reactor {
    std::vector<IntfId> changed;
  } watcher;
  watcher.watch(*dir, Interface::DeviceIntfStatusDir::entryAttr,
                [&](const IntfId &intf) { watcher.changed.push_back(intf); });
  auto status = Orv::make<Interface::IntfStatus>(IntfId("Ethernet1"));
  dir->entryIs(IntfId("Ethernet1"), DeviceIntfStatusEntry{nullptr, "et1"});
  dir->entryIs(IntfId("Ethernet1"), DeviceIntfStatusEntry{nullptr, "et1"});
  dir->entryIs(IntfId("Ethernet1"), DeviceIntfStatusEntry{status, "et1"});
  dir->entryDel(IntfId("Ethernet1"));
  dir->entryDel(IntfId("Ethernet1"));
  EXPECT_EQ(watcher.changed, std::vector<IntfId>(3, IntfId("Ethernet1")));
  EXPECT_TRUE(dir->empty());
}

} // namespace

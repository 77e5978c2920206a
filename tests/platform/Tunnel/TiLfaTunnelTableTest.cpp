#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Orv/ValueText.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"

namespace {

using Tunnel::TunnelId;
using Tunnel::TunnelTable::TiLfaTunnelTable;
using Tunnel::TunnelTable::TiLfaTunnelTableEntry;

constexpr const char *tunnelIdRangeText =
    "TunnelId::value < TunnelId::minValue or > TunnelId::maxValue not allowed";

TEST(TiLfaTunnelTable, RecognisesTunnelInterfacesByName) {
  for (const char *name : {"TiLfaTunnel0", "TiLfaTunnel7", "TiLfaTunnel65535",
                           "TiLfaTunnel65536", "TiLfaTunnel007"}) {
    EXPECT_TRUE(TiLfaTunnelTable::isTiLfaTunnelIntf(Wirx::IntfId(name)))
        << name;
  }
  for (const char *name : {"", "TiLfaTunnel", "TiLfaTunnelx", "TiLfaTunnel-1",
                           "TiLfaTunnel+1", "TiLfaTunnel1a", "tilfatunnel1",
                           "Tunnel1", "Ethernet1", "xTiLfaTunnel1"}) {
    EXPECT_FALSE(TiLfaTunnelTable::isTiLfaTunnelIntf(Wirx::IntfId(name)))
        << name;
  }
  EXPECT_EQ(TiLfaTunnelTable::tunnelId(Wirx::IntfId("TiLfaTunnel007")),
            TunnelId(7));
  EXPECT_EQ(TiLfaTunnelTable::tunnelIntf(TunnelId(65535)),
            Wirx::IntfId("TiLfaTunnel65535"));
  EXPECT_EQ(
      TiLfaTunnelTable::tunnelId(TiLfaTunnelTable::tunnelIntf(TunnelId(65535))),
      TunnelId(65535));
}

TEST(TiLfaTunnelTable, TunnelIdOutOfRangeRaises) {
  // However many digits: the id saturates instead of wrapping into range.
  for (const char *name :
       {"TiLfaTunnel65536", "TiLfaTunnel4294967296", "TiLfaTunnel4294967297",
        "TiLfaTunnel18446744073709551617000"}) {
    try {
      const TunnelId id = TiLfaTunnelTable::tunnelId(Wirx::IntfId(name));
      FAIL() << name << " gave " << id;
    } catch (const Orv::RangeError &e) {
      EXPECT_STREQ(e.what(), tunnelIdRangeText) << name;
    }
  }
  EXPECT_EQ(TunnelId::fromString("65536"), std::nullopt);
  EXPECT_EQ(TunnelId::fromString("12"), TunnelId(12));
}

TEST(TiLfaTunnelTable, LooksTunnelsUpById) {
  auto table = Orv::make<TiLfaTunnelTable>("tiLfaTunnelTable");
  const TiLfaTunnelTableEntry entry{
      Wirx::IntfId("Ethernet4"), *Wirx::IpGenAddr::fromString("10.0.4.2"),
      *Wirx::MplsLabelStack::fromString("[16004, 16009]")};
  table->tunnelIs(TunnelId(4), entry);
  EXPECT_EQ(table->tunnelTable()[TunnelId(4)], entry);
  EXPECT_EQ(table->tunnelTable()[TunnelId(4)].topLabel(),
            Wirx::MplsLabel(16004));
  EXPECT_EQ(table->tunnelTable().find(TunnelId(5)), nullptr);
  EXPECT_TRUE(!table->tunnelTable()[TunnelId(5)]);

  std::vector<std::string> reported;
  table->tunnelTable().corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  table->tunnelTable().corruptIs(TunnelId(4));
  EXPECT_EQ(table->tunnelTable().find(TunnelId(4)), nullptr);
  EXPECT_EQ(reported,
            (std::vector<std::string>{"corruption detected in table "
                                      "tiLfaTunnelTable/tunnel at key '4'"}));
  table->tunnelDel(TunnelId(4));
  EXPECT_TRUE(table->tunnelTable().empty());
}

TEST(TiLfaTunnelTableEntry, TopLabelIsImplicitNullWithoutLabels) {
  TiLfaTunnelTableEntry entry{Wirx::IntfId("Ethernet4"),
                              *Wirx::IpGenAddr::fromString("10.0.4.2"),
                              Wirx::MplsLabelStack()};
  EXPECT_EQ(entry.topLabel(), Wirx::MplsLabel(Wirx::MplsLabel::implicitNull));
  EXPECT_EQ(Orv::valueFromText<TiLfaTunnelTableEntry>(Orv::valueText(entry)),
            entry);
}

} // namespace

#include <gtest/gtest.h>

#include "Orv/ValueText.h"
#include "TestSupport.h"
#include "Tunnel/TunnelTable/TiLfaTunnelTable.h"

namespace {

using Tunnel::TunnelId;
using Tunnel::TunnelTable::TiLfaTunnelTable;
using Tunnel::TunnelTable::TiLfaTunnelTableEntry;

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
    EXPECT_EQ(TestSupport::thrownText<Orv::RangeError>(
                  [name] { TiLfaTunnelTable::tunnelId(Wirx::IntfId(name)); }),
              "TunnelId::value < TunnelId::minValue or > TunnelId::maxValue "
              "not allowed")
        << name;
  }
  EXPECT_EQ(TunnelId::fromString("65536"), std::nullopt);
  EXPECT_EQ(TunnelId::fromString("12"), TunnelId(12));
}

TEST(TiLfaTunnelTableEntry, TopLabelIsImplicitNullWithoutLabels) {
  TiLfaTunnelTableEntry entry{
      Wirx::IntfId("Ethernet4"), *Wirx::IpGenAddr::fromString("10.0.4.2"),
      *Wirx::MplsLabelStack::fromString("[16004, 16009]")};
  EXPECT_EQ(entry.topLabel(), Wirx::MplsLabel(16004));
  EXPECT_EQ(Orv::valueFromText<TiLfaTunnelTableEntry>(Orv::valueText(entry)),
            entry);
  entry.labelStack = Wirx::MplsLabelStack();
  EXPECT_EQ(entry.topLabel(), Wirx::MplsLabel(Wirx::MplsLabel::implicitNull));
}

} // namespace

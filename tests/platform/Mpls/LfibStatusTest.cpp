#include <gtest/gtest.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "Mpls/FwdEqvClass.h"
#include "Mpls/LfibLabelAction.h"
#include "Mpls/LfibStatus.h"
#include "Mpls/LfibViaIndexRange.h"
#include "Orv/ValueText.h"

namespace {

using Mpls::LfibViaKey;
using Mpls::LfibViaSetKey;
using Mpls::RouteKey;
using Wirx::MplsLabel;

Mpls::FwdEqvClass fec(std::string_view text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

Wirx::MplsLabelStack stack(std::string_view text) {
  return *Wirx::MplsLabelStack::fromString(text);
}

TEST(LfibStatus, RouteLeadsToItsViaSetAndVias) {
  auto lfib = Orv::make<Mpls::LfibStatus>("transitLfib");
  Mpls::LfibRoute route;
  route.key = RouteKey::fromLabel(MplsLabel(16001));
  route.viaSetKey = LfibViaSetKey{5};
  route.source = 8;
  lfib->routeIs(route);
  Mpls::LfibViaSet viaSet;
  viaSet.viaType = Mpls::LfibViaType::viaTypeMpls;
  viaSet.viaIs(0, LfibViaKey{50});
  viaSet.viaIs(1, LfibViaKey{51});
  lfib->viaSetIs(route.viaSetKey, viaSet);
  lfib->viaIs(LfibViaKey{50},
              Mpls::LfibVia{Wirx::IntfId("Ethernet1"),
                            *Wirx::IpGenAddr::fromString("10.0.0.2"),
                            Mpls::LfibLabelAction::swap, stack("[17001]")});

  const Mpls::LfibRoute &found =
      lfib->routeTable()[RouteKey::fromLabel(MplsLabel(16001))];
  EXPECT_EQ(found, route);
  const Mpls::LfibViaSet &foundSet = lfib->viaSetTable()[found.viaSetKey];
  EXPECT_EQ(foundSet, viaSet);
  const Mpls::LfibVia *via = lfib->viaTable().find(foundSet.via[0]);
  ASSERT_NE(via, nullptr);
  EXPECT_EQ(via->labelOp[0].label(), MplsLabel(17001));
  EXPECT_EQ(lfib->viaTable().find(foundSet.via[1]), nullptr);

  // Unknown keys read as the empty values: the default route points at
  // via set 0, which reads as the empty set.
  const Mpls::LfibRoute &none =
      lfib->routeTable()[RouteKey::fromLabel(MplsLabel(3))];
  EXPECT_TRUE(!none);
  EXPECT_TRUE(!lfib->viaSetTable()[none.viaSetKey]);
  EXPECT_TRUE(!lfib->extFecViaTable()[LfibViaKey{50}]);

  lfib->routeDel(route.key);
  lfib->viaSetDel(route.viaSetKey);
  lfib->viaDel(LfibViaKey{50});
  EXPECT_TRUE(lfib->routeTable().empty());
  EXPECT_TRUE(lfib->viaSetTable().empty());
  EXPECT_TRUE(lfib->viaTable().empty());
}

TEST(LfibStatus, OneCorruptionHandlerServesEveryTable) {
  auto lfib = Orv::make<Mpls::LfibStatus>("transitLfib");
  std::vector<std::string> reported;
  lfib->corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  const RouteKey key = RouteKey::fromLabel(MplsLabel(100));
  lfib->routeIs(Mpls::LfibRoute{key, LfibViaSetKey{1}, 2});
  lfib->extFecViaIs(LfibViaKey{4},
                    Mpls::LfibExtFecVia{Mpls::LfibLabelAction::pop,
                                        fec("10.9.9.9/32"), Wirx::IntfId()});
  lfib->routeTable().corruptIs(key);
  lfib->viaSetTable().corruptIs(LfibViaSetKey{1});
  lfib->viaTable().corruptIs(LfibViaKey{4});
  lfib->extFecViaTable().corruptIs(LfibViaKey{4});

  EXPECT_TRUE(!lfib->routeTable()[key]);
  EXPECT_EQ(lfib->viaSetTable().find(LfibViaSetKey{1}), nullptr);
  EXPECT_EQ(lfib->viaTable().find(LfibViaKey{4}), nullptr);
  EXPECT_TRUE(!lfib->extFecViaTable()[LfibViaKey{4}]);
  EXPECT_EQ(reported,
            (std::vector<std::string>{
                "corruption detected in table transitLfib/route at key "
                "Value('Mpls::RouteKey', ** {'topLabel': '100'})",
                "corruption detected in table transitLfib/viaSet at key "
                "Value('Mpls::LfibViaSetKey', ** {'id': 1})",
                "corruption detected in table transitLfib/via at key "
                "Value('Mpls::LfibViaKey', ** {'id': 4})",
                "corruption detected in table transitLfib/extFecVia at key "
                "Value('Mpls::LfibViaKey', ** {'id': 4})"}));
}

TEST(LfibVia, TextFormsReadBack) {
  const Mpls::LfibVia via{Wirx::IntfId("Ethernet2"),
                          *Wirx::IpGenAddr::fromString("2001:db8::2"),
                          Mpls::LfibLabelAction::swap, stack("[16, 17]")};
  EXPECT_EQ(Orv::valueText(via),
            "Value('Mpls::LfibVia', ** {'intfId': 'Ethernet2', 'nexthop': "
            "'2001:db8::2', 'labelAction': 2, 'labelOp': '[16, 17]'})");
  EXPECT_EQ(Orv::valueFromText<Mpls::LfibVia>(Orv::valueText(via)), via);

  const Mpls::LfibExtFecVia extFecVia{Mpls::LfibLabelAction::popAndForward,
                                      fec("10.1.1.0/24"),
                                      Wirx::IntfId("TiLfaTunnel3")};
  EXPECT_EQ(Orv::valueText(extFecVia),
            "Value('Mpls::LfibExtFecVia', ** {'labelAction': 3, 'fec': "
            "Value('Mpls::FwdEqvClass', ** {'prefix': '10.1.1.0/24'}), "
            "'hierIntf': 'TiLfaTunnel3'})");
  EXPECT_EQ(Orv::valueFromText<Mpls::LfibExtFecVia>(Orv::valueText(extFecVia)),
            extFecVia);
}

TEST(LfibViaIndexRange, HoldsZeroTo127) {
  EXPECT_EQ(Mpls::LfibViaIndexRange(127).value(), 127);
  EXPECT_EQ(Mpls::LfibViaIndexRange().value(), 0);
  try {
    Mpls::LfibViaIndexRange index(128);
    FAIL() << index;
  } catch (const Orv::RangeError &e) {
    EXPECT_STREQ(e.what(), "LfibViaIndexRange::value < LfibViaIndexRange::min "
                           "or > LfibViaIndexRange::max not allowed");
  }
  EXPECT_EQ(Mpls::LfibViaIndexRange::fromString("127"),
            Mpls::LfibViaIndexRange(127));
  EXPECT_EQ(Mpls::LfibViaIndexRange::fromString("128"), std::nullopt);
  EXPECT_EQ(Mpls::LfibViaIndexRange::fromString("1x"), std::nullopt);
}

TEST(FwdEqvClass, EqualAndHashedByFamilyAddressAndLength) {
  const std::vector<Mpls::FwdEqvClass> distinct{
      fec("10.1.1.1/32"),         fec("10.1.1.0/32"),     fec("10.1.1.1/24"),
      fec("::ffff:10.1.1.1/128"), fec("2001:db8::1/128"), Mpls::FwdEqvClass()};
  std::unordered_set<Mpls::FwdEqvClass> set(distinct.begin(), distinct.end());
  EXPECT_EQ(set.size(), distinct.size());
  EXPECT_TRUE(set.contains(fec("10.1.1.1/32")));
  EXPECT_EQ(fec("2001:db8::1/128").hash(), fec("2001:db8::1/128").hash());
  EXPECT_TRUE(!Mpls::FwdEqvClass());
  EXPECT_EQ(Orv::valueFromText<Mpls::FwdEqvClass>(
                Orv::valueText(fec("2001:db8::1/128"))),
            fec("2001:db8::1/128"));
}

} // namespace

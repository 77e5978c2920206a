#include <gtest/gtest.h>

#include "Mpls/LfibRoute.h"
#include "Mpls/LfibViaSet.h"
#include "Orv/ValueText.h"

namespace {

using Mpls::LfibRoute;
using Mpls::LfibViaKey;
using Mpls::LfibViaSet;
using Mpls::LfibViaType;

TEST(LfibRoute, DefaultHasTheNullLabel) {
  const LfibRoute route;
  EXPECT_TRUE(!route);
  EXPECT_EQ(route.key.topLabel.value(), Wirx::MplsLabel::null);
  EXPECT_EQ(Orv::valueText(route),
            "Value('Mpls::LfibRoute', ** {'key': Value('Mpls::RouteKey', ** "
            "{'topLabel': 'none'}), 'viaSetKey': Value('Mpls::LfibViaSetKey', "
            "** {'id': 0}), 'source': 0})");
}

TEST(LfibRoute, ReadsBackWhatItPrints) {
  LfibRoute route;
  route.key = Mpls::RouteKey::fromLabel(Wirx::MplsLabel(16));
  route.viaSetKey.id = 9;
  route.source = 8;
  EXPECT_FALSE(!route);
  EXPECT_EQ(Orv::valueFromText<LfibRoute>(Orv::valueText(route)), route);
}

TEST(LfibViaSet, DefaultIsEmptyAndViasReadBack) {
  LfibViaSet viaSet;
  EXPECT_TRUE(!viaSet);
  EXPECT_TRUE(viaSet.via.empty());
  viaSet.viaType = LfibViaType::viaTypeExtFec;
  viaSet.viaIs(0, LfibViaKey{4});
  viaSet.viaIs(1, LfibViaKey{5});
  EXPECT_FALSE(!viaSet);
  EXPECT_EQ(Orv::valueText(viaSet),
            "Value('Mpls::LfibViaSet', ** {'viaType': viaTypeExtFec, 'via': "
            "{0: Value('Mpls::LfibViaKey', ** {'id': 4}), 1: "
            "Value('Mpls::LfibViaKey', ** {'id': 5})}})");
  EXPECT_EQ(Orv::valueFromText<LfibViaSet>(Orv::valueText(viaSet)), viaSet);
  viaSet.viaDel(0);
  EXPECT_EQ(viaSet.via.size(), 1u);
  viaSet.viaDelAll();
  viaSet.viaType = LfibViaType::viaTypeNone;
  EXPECT_EQ(viaSet, LfibViaSet());
}

} // namespace

#include <gtest/gtest.h>

#include <string>
#include <unordered_set>
#include <vector>

#include "Mpls/CommonLibEntry.h"
#include "Mpls/FwdEqvClass.h"
#include "Mpls/Hardware/RouteStatus.h"
#include "Mpls/LfibLabelAction.h"
#include "Mpls/LfibStatus.h"
#include "Mpls/LfibViaIndexRange.h"
#include "Orv/ValueText.h"
#include "TestSupport.h"

namespace {

using Mpls::LfibViaKey;
using Mpls::LfibViaSetKey;
using Mpls::RouteKey;
using Wirx::MplsLabel;

Mpls::FwdEqvClass fec(std::string_view text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

TEST(LfibStatus, OneCorruptionHandlerServesEveryTable) {
  auto lfib = Orv::make<Mpls::LfibStatus>("transitLfib");
  std::vector<std::string> reported;
  lfib->corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  const RouteKey key = RouteKey::fromLabel(MplsLabel(100));
  lfib->routeIs(Mpls::LfibRoute{key, LfibViaSetKey{1}, 2});
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

template <class T> void expectRoundTrip(const T &value) {
  EXPECT_EQ(Orv::valueFromText<T>(Orv::valueText(value)), value)
      << Orv::valueText(value);
}

TEST(MplsValues, EveryTypeReadsBackWhatItPrints) {
  expectRoundTrip(Mpls::LfibVia{Wirx::IntfId("Ethernet2"),
                                *Wirx::IpGenAddr::fromString("2001:db8::2"),
                                Mpls::LfibLabelAction::swap,
                                *Wirx::MplsLabelStack::fromString("[16, 17]")});
  expectRoundTrip(Mpls::LfibExtFecVia{Mpls::LfibLabelAction::popAndForward,
                                      fec("10.1.1.0/24"),
                                      Wirx::IntfId("TiLfaTunnel3")});
  expectRoundTrip(Mpls::LfibRoute());
  expectRoundTrip(
      Mpls::LfibRoute{RouteKey::fromLabel(MplsLabel(16)), LfibViaSetKey{9}, 8});
  Mpls::LfibViaSet viaSet;
  viaSet.viaType = Mpls::LfibViaType::viaTypeExtFec;
  viaSet.viaIs(0, LfibViaKey{4});
  viaSet.viaIs(1, LfibViaKey{5});
  expectRoundTrip(viaSet);
  Mpls::CommonLibEntry entry;
  entry.labelIs(MplsLabel(3), true);
  entry.labelIs(MplsLabel(16), false);
  expectRoundTrip(entry);
  expectRoundTrip(
      Mpls::Hardware::RouteStatus{Mpls::Hardware::RouteStatus::failed});
}

TEST(FwdEqvClass, EqualAndHashedByFamilyAddressAndLength) {
  const std::vector<Mpls::FwdEqvClass> distinct{
      fec("10.1.1.1/32"),         fec("10.1.1.0/32"),     fec("10.1.1.1/24"),
      fec("::ffff:10.1.1.1/128"), fec("2001:db8::1/128"), Mpls::FwdEqvClass()};
  std::unordered_set<Mpls::FwdEqvClass> set(distinct.begin(), distinct.end());
  EXPECT_EQ(set.size(), distinct.size());
  EXPECT_TRUE(set.contains(fec("10.1.1.1/32")));
  EXPECT_EQ(fec("2001:db8::1/128").hash(), fec("2001:db8::1/128").hash());
}

TEST(LfibViaIndexRange, HoldsZeroTo127) {
  EXPECT_EQ(Mpls::LfibViaIndexRange(127).value(), 127);
  EXPECT_EQ(TestSupport::thrownText<Orv::RangeError>(
                [] { static_cast<void>(Mpls::LfibViaIndexRange(128)); }),
            "LfibViaIndexRange::value < LfibViaIndexRange::min or > "
            "LfibViaIndexRange::max not allowed");
  EXPECT_EQ(Mpls::LfibViaIndexRange::fromString("127"),
            Mpls::LfibViaIndexRange(127));
  EXPECT_EQ(Mpls::LfibViaIndexRange::fromString("128"), std::nullopt);
}

} // namespace

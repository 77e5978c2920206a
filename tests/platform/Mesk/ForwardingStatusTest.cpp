#include <gtest/gtest.h>

#include "Mesk/Fib/ForwardingStatus.h"
#include "Mesk/Fib6/ForwardingStatus.h"
#include "Mesk/ViaIndex.h"
#include "Mpls/LfibLabelAction.h"
#include "Orv/ValueText.h"

namespace {

Mpls::FwdEqvClass fec(std::string_view text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

Mesk::FibVia via(std::string_view intf, std::string_view nexthop,
                 Orv::U8 labelAction, std::string_view labels) {
  return Mesk::FibVia{Wirx::IntfId(std::string(intf)),
                      *Wirx::IpGenAddr::fromString(nexthop), labelAction,
                      *Wirx::MplsLabelStack::fromString(labels)};
}

TEST(ForwardingStatus, EachFamilyHoldsOnlyItsOwnFecs) {
  auto fib = Orv::make<Mesk::Fib::ForwardingStatus>("forwardingStatus");
  auto fib6 = Orv::make<Mesk::Fib6::ForwardingStatus>("forwarding6Status");
  EXPECT_EQ(fib->af(), Wirx::AddrFamily::ipv4);
  EXPECT_EQ(fib6->af(), Wirx::AddrFamily::ipv6);

  Mesk::FibFec v4;
  v4.viaIs(0, via("Ethernet1", "10.0.0.2", Mpls::LfibLabelAction::pop, "[]"));
  v4.viaIs(
      1, via("Ethernet2", "10.0.1.2", Mpls::LfibLabelAction::swap, "[16009]"));
  fib->fecIs(fec("10.0.0.9/32"), v4);
  Mesk::FibFec v6;
  v6.viaIs(0, via("Ethernet3", "fe80::2", Mpls::LfibLabelAction::pop, "[]"));
  fib6->fecIs(fec("2001:db8::9/128"), v6);

  EXPECT_THROW(fib->fecIs(fec("2001:db8::9/128"), v6), Orv::RangeError);
  EXPECT_THROW(fib6->fecIs(fec("10.0.0.9/32"), v4), Orv::RangeError);
  EXPECT_THROW(fib->fecIs(Mpls::FwdEqvClass(), v4), Orv::RangeError);

  // A reader tries the IPv4 status first, then the IPv6 one.
  EXPECT_EQ(fib->fecTable().find(fec("2001:db8::9/128")), nullptr);
  ASSERT_NE(fib6->fecTable().find(fec("2001:db8::9/128")), nullptr);
  const Mesk::FibFec &found = fib->fecTable()[fec("10.0.0.9/32")];
  EXPECT_EQ(found, v4);
  EXPECT_EQ(found.via[1].labelStack[0].label(), Wirx::MplsLabel(16009));
  EXPECT_TRUE(!fib->fecTable()[fec("10.0.0.8/32")]);

  fib->fecDel(fec("10.0.0.9/32"));
  EXPECT_TRUE(fib->fecTable().empty());
}

TEST(FibFec, TextFormReadsBack) {
  Mesk::FibFec entry;
  entry.viaIs(511, via("Ethernet1", "10.0.0.2", Mpls::LfibLabelAction::swap,
                       "[16, 17]"));
  EXPECT_EQ(Orv::valueText(entry),
            "Value('Mesk::FibFec', ** {'via': {511: Value('Mesk::FibVia', ** "
            "{'intfId': 'Ethernet1', 'nexthop': '10.0.0.2', 'labelAction': 2, "
            "'labelStack': '[16, 17]'})}})");
  EXPECT_EQ(Orv::valueFromText<Mesk::FibFec>(Orv::valueText(entry)), entry);
}

TEST(ViaIndex, HoldsZeroTo511) {
  Mesk::FibFec entry;
  entry.viaIs(511, Mesk::FibVia());
  entry.viaIs(512, Mesk::FibVia()); // stored wider than a reader accepts
  EXPECT_EQ(Mesk::ViaIndex(entry.via.begin()->index).value(), 511);
  try {
    Mesk::ViaIndex index((entry.via.begin() + 1)->index);
    FAIL() << index;
  } catch (const Orv::RangeError &e) {
    EXPECT_STREQ(e.what(),
                 "ViaIndex::value < ViaIndex::min or > ViaIndex::max not "
                 "allowed");
  }
  EXPECT_EQ(Mesk::ViaIndex::fromString("511"), Mesk::ViaIndex(511));
  EXPECT_EQ(Mesk::ViaIndex::fromString("512"), std::nullopt);
}

} // namespace

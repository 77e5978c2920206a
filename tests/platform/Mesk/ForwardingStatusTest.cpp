#include <gtest/gtest.h>

#include "Mesk/Fib/ForwardingStatus.h"
#include "Mesk/Fib6/ForwardingStatus.h"
#include "Mesk/ViaIndex.h"
#include "Mpls/LfibLabelAction.h"
#include "Orv/ValueText.h"
#include "TestSupport.h"

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

// A reader tries the IPv4 status first, then the IPv6 one: each holds only
// its own family's FECs.
TEST(ForwardingStatus, EachFamilyHoldsOnlyItsOwnFecs) {
  auto fib = Orv::make<Mesk::Fib::ForwardingStatus>("forwardingStatus");
  auto fib6 = Orv::make<Mesk::Fib6::ForwardingStatus>("forwarding6Status");
  Mesk::FibFec v4;
  v4.viaIs(0, via("Ethernet1", "10.0.0.2", Mpls::LfibLabelAction::pop, "[]"));
  v4.viaIs(511, via("Ethernet2", "10.0.1.2", Mpls::LfibLabelAction::swap,
                    "[16009]"));
  fib->fecIs(fec("10.0.0.9/32"), v4);
  Mesk::FibFec v6;
  v6.viaIs(0, via("Ethernet3", "fe80::2", Mpls::LfibLabelAction::pop, "[]"));
  fib6->fecIs(fec("2001:db8::9/128"), v6);

  EXPECT_THROW(fib->fecIs(fec("2001:db8::9/128"), v6), Orv::RangeError);
  EXPECT_THROW(fib6->fecIs(fec("10.0.0.9/32"), v4), Orv::RangeError);
  EXPECT_THROW(fib->fecIs(Mpls::FwdEqvClass(), v4), Orv::RangeError);
  EXPECT_EQ(fib->fecTable().find(fec("2001:db8::9/128")), nullptr);
  EXPECT_EQ(fib->fecTable()[fec("10.0.0.9/32")], v4);
  EXPECT_EQ(Orv::valueFromText<Mesk::FibFec>(Orv::valueText(v4)), v4);
}

// Vias are stored by a wider index than a reader accepts.
TEST(ViaIndex, HoldsZeroTo511) {
  EXPECT_EQ(Mesk::ViaIndex(511).value(), 511);
  EXPECT_EQ(TestSupport::thrownText<Orv::RangeError>(
                [] { static_cast<void>(Mesk::ViaIndex(512)); }),
            "ViaIndex::value < ViaIndex::min or > ViaIndex::max not allowed");
  EXPECT_EQ(Mesk::ViaIndex::fromString("511"), Mesk::ViaIndex(511));
  EXPECT_EQ(Mesk::ViaIndex::fromString("512"), std::nullopt);
}

} // namespace

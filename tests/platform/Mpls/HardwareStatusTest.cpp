#include <gtest/gtest.h>

#include "Mpls/Hardware/Status.h"

namespace {

using Mpls::RouteKey;
using Mpls::Hardware::RouteStatus;
using Wirx::MplsLabel;

TEST(HardwareStatus, OnlyAProgrammedEntryIsProgrammed) {
  auto hw = Orv::make<Mpls::Hardware::Status>("mplsHwStatus");
  hw->routeIs(RouteKey::fromLabel(MplsLabel(16)),
              RouteStatus{RouteStatus::programmed});
  hw->routeIs(RouteKey::fromLabel(MplsLabel(17)),
              RouteStatus{RouteStatus::failed});
  EXPECT_TRUE(
      hw->routeTable()[RouteKey::fromLabel(MplsLabel(16))].isProgrammed());
  EXPECT_FALSE(
      hw->routeTable()[RouteKey::fromLabel(MplsLabel(17))].isProgrammed());
  // A route the hardware never heard of reads as not programmed, whichever
  // way it is read.
  EXPECT_EQ(hw->routeTable().find(RouteKey::fromLabel(MplsLabel(18))), nullptr);
  EXPECT_FALSE(
      hw->routeTable()[RouteKey::fromLabel(MplsLabel(18))].isProgrammed());
  hw->routeTable().corruptionHandlerIs([](const std::string &) {});
  hw->routeTable().corruptIs(RouteKey::fromLabel(MplsLabel(16)));
  EXPECT_FALSE(
      hw->routeTable()[RouteKey::fromLabel(MplsLabel(16))].isProgrammed());
}

} // namespace

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Rsvp/RsvpStatus.h"

namespace {

using Rsvp::RsvpSpId;
using Rsvp::RsvpSpState;
using Wirx::MplsLabel;

RsvpSpId spId(Orv::U16 tunnelId, Orv::U16 lspId) {
  return RsvpSpId{*Wirx::IpAddr::fromString("10.0.0.9"), tunnelId,
                  *Wirx::IpAddr::fromString("10.0.0.1"), lspId};
}

TEST(RsvpStatus, PathStateTableComesAndGoes) {
  auto rsvp = Orv::make<Rsvp::RsvpStatus>("rsvpStatus");
  EXPECT_EQ(rsvp->spState(), nullptr) << "RSVP publishes nothing yet";
  rsvp->spStateDel(spId(1, 1));
  EXPECT_EQ(rsvp->spState(), nullptr);

  rsvp->spStateIs(spId(1, 1), RsvpSpState{MplsLabel(24001)});
  const Orv::Ptr<const Rsvp::RsvpStatus> reader = rsvp;
  const Rsvp::RsvpStatus::SpStateTable *table = reader->spState();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->name(), "rsvpStatus/spState");
  EXPECT_EQ(table->get(spId(1, 1)).label, MplsLabel(24001));
  // Sessions that differ in any part of the identifier are other paths.
  EXPECT_EQ(table->find(spId(1, 2)), nullptr);
  EXPECT_EQ(table->find(spId(2, 1)), nullptr);
  EXPECT_TRUE(!table->get(spId(2, 1)));

  rsvp->spStateDel(spId(1, 1));
  ASSERT_NE(rsvp->spState(), nullptr) << "an empty table is still a table";
  EXPECT_TRUE(rsvp->spState()->empty());
  rsvp->spStateTableDel();
  EXPECT_EQ(rsvp->spState(), nullptr);
}

TEST(RsvpStatus, CorruptPathStateReadsAsMissing) {
  auto rsvp = Orv::make<Rsvp::RsvpStatus>("rsvpStatus");
  Rsvp::RsvpStatus::SpStateTable &table = rsvp->spStateTableIs();
  std::vector<std::string> reported;
  table.corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  table.is(spId(1, 1), RsvpSpState{MplsLabel(3)});
  table.corruptIs(spId(1, 1));
  EXPECT_EQ(table.find(spId(1, 1)), nullptr);
  ASSERT_EQ(reported.size(), 1u);
  EXPECT_EQ(reported[0],
            "corruption detected in table rsvpStatus/spState at key "
            "Value('Rsvp::RsvpSpId', ** {'tunnelDst': '10.0.0.9', "
            "'tunnelId': 1, 'extendedTunnelId': '10.0.0.1', 'lspId': 1})");
}

} // namespace

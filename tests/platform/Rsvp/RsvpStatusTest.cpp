#include <gtest/gtest.h>

#include "Rsvp/RsvpStatus.h"

namespace {

using Rsvp::RsvpSpId;
using Rsvp::RsvpSpState;
using Wirx::MplsLabel;

RsvpSpId spId(Orv::U16 tunnelId, Orv::U16 lspId) {
  return RsvpSpId{*Wirx::IpAddr::fromString("10.0.0.9"), tunnelId,
                  *Wirx::IpAddr::fromString("10.0.0.1"), lspId};
}

// No table means no RSVP at all, which readers tell apart from an empty
// table: the table comes with the first path and stays until deleted.
TEST(RsvpStatus, PathStateTableComesAndGoes) {
  auto rsvp = Orv::make<Rsvp::RsvpStatus>("rsvpStatus");
  rsvp->spStateDel(spId(1, 1));
  EXPECT_EQ(rsvp->spState(), nullptr);

  rsvp->spStateIs(spId(1, 1), RsvpSpState{MplsLabel(24001)});
  const Rsvp::RsvpStatus::SpStateTable *table = rsvp->spState();
  ASSERT_NE(table, nullptr);
  EXPECT_EQ(table->name(), "rsvpStatus/spState");
  EXPECT_EQ(table->get(spId(1, 1)).label, MplsLabel(24001));
  // Sessions that differ in any part of the identifier are other paths.
  EXPECT_EQ(table->find(spId(1, 2)), nullptr);
  EXPECT_EQ(table->find(spId(2, 1)), nullptr);

  rsvp->spStateDel(spId(1, 1));
  ASSERT_NE(rsvp->spState(), nullptr) << "an empty table is still a table";
  rsvp->spStateTableDel();
  EXPECT_EQ(rsvp->spState(), nullptr);
}

} // namespace

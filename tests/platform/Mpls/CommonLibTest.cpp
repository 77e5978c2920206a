#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mpls/CommonLib.h"

namespace {

using Wirx::MplsLabel;

Mpls::FwdEqvClass fec(std::string_view text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

// The LDP table is always there and is not among the tables by name; the
// others exist once created, and a handler set before reaches them too.
TEST(CommonLib, TablesByNameAndOneCorruptionHandlerForAll) {
  auto lib = Orv::make<Mpls::CommonLib>("lib");
  std::vector<std::string> reported;
  lib->corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  EXPECT_EQ(lib->table(Orv::Name(Mpls::CommonLib::ldpTableName)), nullptr);
  EXPECT_EQ(lib->table("isisV4"), nullptr);
  Mpls::CommonLib::BindingTable &isisV6 = lib->tableIs("isisV6");
  EXPECT_EQ(&lib->tableIs("isisV6"), &isisV6) << "created once";
  EXPECT_EQ(lib->table("isisV6"), &isisV6);
  EXPECT_EQ(lib->tableCount(), 1u);

  lib->ldpTable().corruptIs(fec("10.0.0.1/32"));
  isisV6.corruptIs(fec("2001:db8::1/128"));
  EXPECT_EQ(lib->ldpTable().find(fec("10.0.0.1/32")), nullptr);
  EXPECT_TRUE(!isisV6.get(fec("2001:db8::1/128")));
  EXPECT_EQ(reported,
            (std::vector<std::string>{
                "corruption detected in table lib/ldp at key "
                "Value('Mpls::FwdEqvClass', ** {'prefix': '10.0.0.1/32'})",
                "corruption detected in table lib/isisV6 at key "
                "Value('Mpls::FwdEqvClass', ** {'prefix': "
                "'2001:db8::1/128'})"}));
  lib->tableDel("isisV6");
  EXPECT_EQ(lib->table("isisV6"), nullptr);
}

TEST(CommonLibEntry, OnlyABoundLabelInUseCounts) {
  Mpls::CommonLibEntry entry;
  entry.labelIs(MplsLabel(3), true);
  entry.labelIs(MplsLabel(16), false);
  EXPECT_TRUE(entry.labelInUse(MplsLabel(3)));
  EXPECT_FALSE(entry.labelInUse(MplsLabel(16)));
  EXPECT_TRUE(entry.hasLabel(MplsLabel(16))) << "bound, not in use";
  EXPECT_FALSE(entry.hasLabel(MplsLabel(17)));
  entry.labelDel(MplsLabel(3));
  EXPECT_FALSE(entry.labelInUse(MplsLabel(3)));
}

} // namespace

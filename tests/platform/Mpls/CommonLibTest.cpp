#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Mpls/CommonLib.h"
#include "Orv/ValueText.h"

namespace {

using Wirx::MplsLabel;

Mpls::FwdEqvClass fec(std::string_view text) {
  return Mpls::FwdEqvClass{*Wirx::IpGenPrefix::fromString(text)};
}

TEST(CommonLib, LdpTableAlwaysThereOthersOnlyOnceCreated) {
  auto lib = Orv::make<Mpls::CommonLib>("ldpCommonLib");
  EXPECT_TRUE(lib->ldpTable().empty());
  EXPECT_EQ(lib->ldpTable().name(), "ldpCommonLib/ldp");
  EXPECT_EQ(lib->table(Orv::Name(Mpls::CommonLib::isisV4TableName)), nullptr);
  EXPECT_EQ(lib->table(Orv::Name(Mpls::CommonLib::ldpTableName)), nullptr)
      << "the LDP table is not among the tables by name";

  Mpls::CommonLib::BindingTable &isisV4 =
      lib->tableIs(Orv::Name(Mpls::CommonLib::isisV4TableName));
  EXPECT_EQ(&lib->tableIs("isisV4"), &isisV4) << "created once";
  EXPECT_EQ(isisV4.name(), "ldpCommonLib/isisV4");
  Mpls::CommonLibEntry entry;
  entry.labelIs(MplsLabel(16009), true);
  isisV4.is(fec("10.0.0.9/32"), entry);
  const Orv::Ptr<const Mpls::CommonLib> reader = lib;
  const Mpls::CommonLib::BindingTable *table = reader->table("isisV4");
  ASSERT_EQ(table, &isisV4);
  EXPECT_EQ(table->get(fec("10.0.0.9/32")), entry);
  EXPECT_TRUE(!table->get(fec("10.0.0.9/24")));
  EXPECT_EQ(reader->table("isisV6"), nullptr);
  EXPECT_EQ(lib->tableCount(), 1u);

  lib->tableDel("isisV4");
  EXPECT_EQ(lib->table("isisV4"), nullptr);
}

TEST(CommonLib, CorruptionHandlerReachesTablesCreatedLater) {
  auto lib = Orv::make<Mpls::CommonLib>("lib");
  std::vector<std::string> reported;
  lib->corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  lib->ldpTable().corruptIs(fec("10.0.0.1/32"));
  lib->tableIs("isisV6").corruptIs(fec("2001:db8::1/128"));
  EXPECT_EQ(lib->ldpTable().find(fec("10.0.0.1/32")), nullptr);
  EXPECT_TRUE(!lib->table("isisV6")->get(fec("2001:db8::1/128")));
  EXPECT_EQ(reported,
            (std::vector<std::string>{
                "corruption detected in table lib/ldp at key "
                "Value('Mpls::FwdEqvClass', ** {'prefix': '10.0.0.1/32'})",
                "corruption detected in table lib/isisV6 at key "
                "Value('Mpls::FwdEqvClass', ** {'prefix': "
                "'2001:db8::1/128'})"}));
}

TEST(CommonLibEntry, OnlyABoundLabelInUseCounts) {
  Mpls::CommonLibEntry entry;
  entry.labelIs(MplsLabel(3), true);
  entry.labelIs(MplsLabel(16), false);
  EXPECT_TRUE(entry.labelInUse(MplsLabel(3)));
  EXPECT_FALSE(entry.labelInUse(MplsLabel(16)));
  EXPECT_TRUE(entry.hasLabel(MplsLabel(16))) << "bound, not in use";
  EXPECT_FALSE(entry.labelInUse(MplsLabel(17)));
  EXPECT_FALSE(entry.hasLabel(MplsLabel(17)));
  EXPECT_EQ(Orv::valueText(entry), "Value('Mpls::CommonLibEntry', ** "
                                   "{'label': {3: True, 16: False}})");
  const auto back =
      Orv::valueFromText<Mpls::CommonLibEntry>(Orv::valueText(entry));
  ASSERT_TRUE(back);
  EXPECT_TRUE(back->hasLabel(MplsLabel(16)));
  entry.labelDel(MplsLabel(3));
  EXPECT_FALSE(entry.labelInUse(MplsLabel(3)));
}

} // namespace

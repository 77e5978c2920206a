#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Ruvo/ShmTable.h"
#include "TestSupport.h"

namespace {

using Table = Ruvo::ShmTable<Orv::U32, std::string>;

TEST(ShmTable, AbsentKeysReadAsNullOrTheEmptyValue) {
  Table table("t");
  table.is(1, "one");
  table.is(1, "uno");
  table.is(2, "two");
  ASSERT_NE(table.find(1), nullptr);
  EXPECT_EQ(*table.find(1), "uno");
  EXPECT_EQ(table[2], "two");
  EXPECT_EQ(table.lookup(3), nullptr);
  EXPECT_EQ(table.find(3), nullptr);
  EXPECT_EQ(&table.get(3), &table.emptyValue());
  EXPECT_EQ(table.get(3), "");
  EXPECT_EQ(table.size(), 2u);
  table.del(1);
  table.del(1);
  EXPECT_EQ(table.find(1), nullptr);
  EXPECT_EQ(table.size(), 1u);
}

TEST(ShmTable, CorruptKeyThrowsRawAndRunsTheHandlerOtherwise) {
  Table table("transitLfib/via");
  std::vector<std::string> reported;
  table.corruptionHandlerIs(
      [&](const std::string &message) { reported.push_back(message); });
  table.is(7, "seven");
  table.is(8, "eight");
  table.corruptIs(7);
  table.corruptIs(9); // no entry: the memory around the key is bad all the same

  const std::string message =
      "corruption detected in table transitLfib/via at key 7";
  try {
    table.lookup(7);
    FAIL() << "lookup of a corrupt key must throw";
  } catch (const Ruvo::CorruptionDetectedException &e) {
    EXPECT_EQ(e.what(), message);
  }
  EXPECT_TRUE(reported.empty()) << "the raw lookup leaves handling to its "
                                   "caller";

  EXPECT_EQ(table.find(7), nullptr);
  EXPECT_EQ(table.get(9), "");
  EXPECT_EQ(table[8], "eight") << "other keys are unaffected";
  EXPECT_EQ(reported,
            (std::vector<std::string>{
                message, "corruption detected in table transitLfib/via at "
                         "key 9"}));

  table.corruptDel(7);
  EXPECT_EQ(table.get(7), "seven");
  table.delAll();
  EXPECT_FALSE(table.corrupt(9)) << "delAll clears the marks too";
  EXPECT_EQ(table.find(9), nullptr);
  EXPECT_EQ(reported.size(), 2u);
}

TEST(ShmTable, DefaultHandlerTracesAndAnEmptyOneRestoresIt) {
  TestSupport::TraceCapture log("Ruvo/ShmTable", 0);
  Table table("t");
  int handled = 0;
  table.corruptionHandlerIs([&](const std::string &) { ++handled; });
  table.corruptionHandlerIs(nullptr);
  table.corruptIs(4);
  EXPECT_EQ(table.find(4), nullptr);
  EXPECT_EQ(handled, 0);
  EXPECT_EQ(log.at(0), std::vector<std::string>{
                           "corruption detected in table t at key 4"});
}

} // namespace

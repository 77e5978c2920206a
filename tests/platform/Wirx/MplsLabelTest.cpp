#include "Wirx/MplsLabel.h"
#include "Wirx/MplsLabelEntry.h"
#include "Wirx/MplsLabelStack.h"

#include "Orv/RangeError.h"
#include "TestSupport.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace Wirx {
namespace {

using namespace std::string_literals;
using Orv::U8;

TEST(MplsLabelTest, ValuesUpToLuWithdrawAndTheirText) {
  EXPECT_EQ(MplsLabel().value(), MplsLabel::null);
  EXPECT_EQ(MplsLabel().stringValue(), "none");
  EXPECT_TRUE(MplsLabel(MplsLabel::max).isWireLabel());
  EXPECT_FALSE(MplsLabel().isWireLabel());
  EXPECT_EQ(TestSupport::thrownText<Orv::RangeError>([] {
              static_cast<void>(MplsLabel(MplsLabel::luWithdraw + 1));
            }),
            "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not "
            "allowed");
  MplsLabel label(100);
  EXPECT_THROW(label.valueIs(0xFFFFFFFF), Orv::RangeError);
  EXPECT_EQ(label.value(), 100u) << "unchanged";

  for (Orv::U32 value :
       {0u, 3u, 1048575u, MplsLabel::null, MplsLabel::luWithdraw}) {
    EXPECT_EQ(MplsLabel::fromString(MplsLabel(value).stringValue()),
              MplsLabel(value));
  }
  for (const char *bad : {"", "-1", "+1", " 1", "1 ", "1a", "8388609",
                          "99999999999", "null", "0x10"}) {
    EXPECT_FALSE(MplsLabel::fromString(bad)) << bad;
  }
}

TEST(MplsLabelEntryTest, WireWordPacksEachFieldInItsPlace) {
  const MplsLabelEntry entry(MplsLabel(200), 5, true, 1);
  U8 wire[4];
  entry.toNbo(wire);
  EXPECT_EQ(std::vector<U8>(wire, wire + 4),
            (std::vector<U8>{0x00, 0x0C, 0x8B, 0x01}));
  EXPECT_EQ(MplsLabelEntry::fromNbo(wire), entry);
  const MplsLabelEntry full(MplsLabel(MplsLabel::max), 7, true, 255);
  EXPECT_EQ(full.word(), 0xFFFFFFFFu);
  EXPECT_EQ(MplsLabelEntry::fromWord(0xFFFFFFFF), full);
  EXPECT_EQ(MplsLabelEntry(MplsLabel(1), 0, false, 0).word(), 0x1000u);
  EXPECT_EQ(MplsLabelEntry(MplsLabel(0), 1, false, 0).word(), 0x200u);
  EXPECT_EQ(MplsLabelEntry(MplsLabel(0), 0, true, 0).word(), 0x100u);

  MplsLabelEntry seven(MplsLabel(16), 7, false, 64);
  EXPECT_THROW(seven.tcIs(8), Orv::RangeError);
  EXPECT_EQ(seven.tc(), 7) << "unchanged";
}

TEST(MplsLabelEntryTest, TextRoundTrips) {
  const MplsLabelEntry entry(MplsLabel(100), 0, true, 255);
  EXPECT_EQ(entry.stringValue(), "label=100 tc=0 bos=1 ttl=255");
  for (const MplsLabelEntry &e : {entry, MplsLabelEntry()}) {
    EXPECT_EQ(MplsLabelEntry::fromString(e.stringValue()), e);
  }
  for (const char *bad :
       {"", "label=100", "label=100 tc=8 bos=1 ttl=255",
        "label=100 tc=0 bos=2 ttl=255", "label=100 tc=0 bos=1 ttl=256",
        "label=100 tc=0 bos=1 ttl=255 ", "label=x tc=0 bos=1 ttl=1",
        "tc=0 label=100 bos=1 ttl=1"}) {
    EXPECT_FALSE(MplsLabelEntry::fromString(bad)) << bad;
  }
}

TEST(MplsLabelEntryDeathTest, EncodingALabelBeyondTwentyBitsIsAFault) {
  EXPECT_DEATH(MplsLabelEntry().word(), "isWireLabel");
}

MplsLabelStack stackOf(std::initializer_list<Orv::U32> values) {
  MplsLabelStack stack;
  for (Orv::U32 value : values) {
    stack.push(MplsLabel(value));
  }
  return stack;
}

TEST(MplsLabelStackTest, HoldsUpToCapacityAndComparesTheLabelsInUse) {
  MplsLabelStack stack;
  for (Orv::U32 i = 0; i < MplsLabelStack::capacity; ++i) {
    stack.push(MplsLabel(i));
  }
  EXPECT_THROW(stack.push(MplsLabel(1)), Orv::RangeError);
  EXPECT_EQ(stack.size(), MplsLabelStack::capacity);
  // Entries past the size left from earlier use do not count.
  stack.clear();
  stack.push(MplsLabel(0));
  EXPECT_EQ(stack, stackOf({0}));
  EXPECT_LT(stackOf({1}), stackOf({1, 2}));
  EXPECT_LT(stackOf({1, 9}), stackOf({2}));

  // Only a stack that can be written to the wire is valid.
  EXPECT_FALSE(MplsLabelStack().valid());
  EXPECT_TRUE(stackOf({0, MplsLabel::max}).valid());
  EXPECT_FALSE(stackOf({100, MplsLabel::null}).valid());
  EXPECT_FALSE(stackOf({MplsLabel::luWithdraw}).valid());
}

TEST(MplsLabelStackTest, TextRoundTrips) {
  MplsLabelStack received;
  received.push(MplsLabelEntry(MplsLabel(77), 3, false, 5));
  received.push(MplsLabelEntry(MplsLabel(200), 0, true, 1));
  EXPECT_EQ(received.stringValue(), "[77/tc=3/ttl=5, 200/bos/ttl=1]");
  EXPECT_EQ(stackOf({100, 200}).stringValue(), "[100, 200]");
  for (const MplsLabelStack &stack :
       {stackOf({}), stackOf({3}), stackOf({1048575, 16, MplsLabel::null}),
        received}) {
    EXPECT_EQ(MplsLabelStack::fromString(stack.stringValue()), stack);
  }
  std::string deep = "[0";
  for (Orv::U32 i = 1; i <= MplsLabelStack::capacity; ++i) {
    deep += ", " + std::to_string(i);
  }
  deep += "]";
  for (const std::string &bad :
       {""s, "["s, "]"s, "100"s, "[100"s, "[100,200]"s, "[100, ]"s, "[, 100]"s,
        "[100] "s, "[] "s, "[1, 2]x"s, "[9999999]"s, "[1/tc=8]"s,
        "[1/ttl=256]"s, "[1/ttl=1/tc=1]"s, deep}) {
    EXPECT_FALSE(MplsLabelStack::fromString(bad)) << bad;
  }
}

} // namespace
} // namespace Wirx

#include "Wirx/MplsLabel.h"
#include "Wirx/MplsLabelEntry.h"
#include "Wirx/MplsLabelStack.h"

#include "Orv/RangeError.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

namespace Wirx {
namespace {

using namespace std::string_literals;
using Orv::U8;

TEST(MplsLabelTest, DefaultIsNullAndValuesUpToLuWithdrawAreAccepted) {
  EXPECT_EQ(MplsLabel().value(), MplsLabel::null);
  EXPECT_TRUE(!MplsLabel());
  EXPECT_FALSE(!MplsLabel(0));
  EXPECT_TRUE(MplsLabel(MplsLabel::max).isWireLabel());
  EXPECT_FALSE(MplsLabel().isWireLabel());
  EXPECT_EQ(MplsLabel(MplsLabel::luWithdraw).value(), 0x800000u);
  EXPECT_LT(MplsLabel(16), MplsLabel(17));
}

TEST(MplsLabelTest, ValuesAboveLuWithdrawThrowAndChangeNothing) {
  const std::string text =
      "MplsLabel::value < MplsLabel::min or > MplsLabel::luWithdraw not "
      "allowed";
  try {
    static_cast<void>(MplsLabel(MplsLabel::luWithdraw + 1));
    FAIL() << "no throw";
  } catch (const Orv::RangeError &error) {
    EXPECT_EQ(error.what(), text);
  }
  MplsLabel label(100);
  EXPECT_THROW(label.valueIs(0xFFFFFFFF), Orv::RangeError);
  EXPECT_EQ(label.value(), 100u);
}

TEST(MplsLabelTest, TextIsDecimalWithNoneForNull) {
  for (Orv::U32 value :
       {0u, 3u, 1048575u, MplsLabel::null, MplsLabel::luWithdraw}) {
    const MplsLabel label(value);
    EXPECT_EQ(MplsLabel::fromString(label.stringValue()), label);
  }
  EXPECT_EQ(MplsLabel(16).stringValue(), "16");
  EXPECT_EQ(MplsLabel().stringValue(), "none");
  std::ostringstream os;
  os << MplsLabel(299776);
  EXPECT_EQ(os.str(), "299776");
  for (const char *bad : {"", "-1", "+1", " 1", "1 ", "1a", "8388609",
                          "99999999999", "null", "0x10"}) {
    EXPECT_FALSE(MplsLabel::fromString(bad)) << bad;
  }
}

TEST(MplsLabelEntryTest, WireWordPacksEveryField) {
  const MplsLabelEntry entry(MplsLabel(200), 5, true, 1);
  U8 wire[4];
  entry.toNbo(wire);
  EXPECT_EQ(wire[0], 0x00);
  EXPECT_EQ(wire[1], 0x0C);
  EXPECT_EQ(wire[2], 0x8B);
  EXPECT_EQ(wire[3], 0x01);
  EXPECT_EQ(MplsLabelEntry::fromNbo(wire), entry);

  const MplsLabelEntry full(MplsLabel(MplsLabel::max), 7, true, 255);
  EXPECT_EQ(full.word(), 0xFFFFFFFFu);
  EXPECT_EQ(MplsLabelEntry::fromWord(0xFFFFFFFF), full);
  const MplsLabelEntry empty = MplsLabelEntry::fromWord(0);
  EXPECT_EQ(empty.label(), MplsLabel(0));
  EXPECT_EQ(empty.tc(), 0);
  EXPECT_FALSE(empty.bos());
  EXPECT_EQ(empty.ttl(), 0);
  // Each field on its own, so a shift error shows as a wrong field.
  EXPECT_EQ(MplsLabelEntry(MplsLabel(1), 0, false, 0).word(), 0x1000u);
  EXPECT_EQ(MplsLabelEntry(MplsLabel(0), 1, false, 0).word(), 0x200u);
  EXPECT_EQ(MplsLabelEntry(MplsLabel(0), 0, true, 0).word(), 0x100u);
}

TEST(MplsLabelEntryTest, TcBeyondThreeBitsThrowsAndChangesNothing) {
  MplsLabelEntry entry(MplsLabel(16), 7, false, 64);
  EXPECT_THROW(entry.tcIs(8), Orv::RangeError);
  EXPECT_EQ(entry.tc(), 7);
  EXPECT_THROW(MplsLabelEntry(MplsLabel(1), 8, false, 0), Orv::RangeError);
  EXPECT_TRUE(!MplsLabelEntry());
  EXPECT_FALSE(!entry);
}

TEST(MplsLabelEntryTest, TextRoundTrips) {
  const MplsLabelEntry entry(MplsLabel(100), 0, true, 255);
  EXPECT_EQ(entry.stringValue(), "label=100 tc=0 bos=1 ttl=255");
  EXPECT_EQ(MplsLabelEntry::fromString(entry.stringValue()), entry);
  EXPECT_EQ(MplsLabelEntry::fromString(MplsLabelEntry().stringValue()),
            MplsLabelEntry());
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

TEST(MplsLabelStackTest, KeepsLabelsTopFirstUpToCapacity) {
  MplsLabelStack stack = stackOf({100, 200});
  ASSERT_EQ(stack.size(), 2u);
  EXPECT_EQ(stack[0], MplsLabelEntry(MplsLabel(100), 0, false, 0));
  EXPECT_EQ(stack[1].label(), MplsLabel(200));
  EXPECT_FALSE(!stack);
  stack.clear();
  EXPECT_TRUE(stack.empty());
  for (Orv::U32 i = 0; i < MplsLabelStack::capacity; ++i) {
    stack.push(MplsLabel(i));
  }
  EXPECT_TRUE(stack.full());
  EXPECT_THROW(stack.push(MplsLabel(1)), Orv::RangeError);
  EXPECT_EQ(stack.size(), MplsLabelStack::capacity);
}

TEST(MplsLabelStackTest, ComparesOnlyTheLabelsInUse) {
  MplsLabelStack reused = stackOf({1, 2, 3});
  reused.clear();
  reused.push(MplsLabel(1));
  EXPECT_EQ(reused, stackOf({1}));
  EXPECT_NE(stackOf({1}), stackOf({1, 2}));
  EXPECT_LT(stackOf({1}), stackOf({1, 2}));
  EXPECT_LT(stackOf({1, 9}), stackOf({2}));
  EXPECT_EQ(stackOf({}), MplsLabelStack());
}

// Only a stack that can be written to the wire is valid.
TEST(MplsLabelStackTest, ValidWhenNotEmptyAndEveryLabelFitsTwentyBits) {
  EXPECT_FALSE(MplsLabelStack().valid());
  EXPECT_TRUE(stackOf({0, MplsLabel::max}).valid());
  EXPECT_FALSE(stackOf({100, MplsLabel::null}).valid());
  EXPECT_FALSE(stackOf({MplsLabel::luWithdraw}).valid());
}

TEST(MplsLabelStackTest, TextRoundTrips) {
  EXPECT_EQ(stackOf({100, 200}).stringValue(), "[100, 200]");
  EXPECT_EQ(MplsLabelStack().stringValue(), "[]");
  MplsLabelStack received;
  received.push(MplsLabelEntry(MplsLabel(77), 3, false, 5));
  received.push(MplsLabelEntry(MplsLabel(200), 0, true, 1));
  EXPECT_EQ(received.stringValue(), "[77/tc=3/ttl=5, 200/bos/ttl=1]");
  for (const MplsLabelStack &stack :
       {stackOf({}), stackOf({3}), stackOf({1048575, 16, MplsLabel::null}),
        received}) {
    EXPECT_EQ(MplsLabelStack::fromString(stack.stringValue()), stack);
  }
  std::ostringstream os;
  os << stackOf({16});
  EXPECT_EQ(os.str(), "[16]");
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

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "Orv/SparseArray.h"
#include "Orv/ValueText.h"

namespace {

using Orv::U32;
using Orv::U8;

// Two inline entries, so that a handful of inserts moves the entries to the
// heap and deletions bring them back under the inline count.
using Small = Orv::SparseArray<U8, std::string, 2>;

std::vector<std::pair<U8, std::string>> entriesOf(const Small &a) {
  std::vector<std::pair<U8, std::string>> out;
  for (const auto &entry : a) {
    out.emplace_back(entry.index, entry.value);
  }
  return out;
}

TEST(SparseArray, RangeEndOfTheLargestIndexIsPastTheIndexType) {
  Orv::SparseArray<U8, int> a;
  a.is(255, 1);
  EXPECT_EQ(a.indexBegin(), 255u);
  EXPECT_EQ(a.indexEnd(), 256u);
  Orv::SparseArray<U32, int> b;
  b.is(0xFFFFFFFF, 1);
  EXPECT_EQ(b.indexEnd(), 0x100000000u);
}

TEST(SparseArray, DeletingByIteratorReturnsTheNextEntry) {
  for (int count : {2, 5}) { // inline, then on the heap
    Small a;
    for (int i = 0; i < count; ++i) {
      a.is(static_cast<U8>(i * 10), std::to_string(i));
    }
    for (auto it = a.begin(); it != a.end();) {
      it = it->index == 10 ? a.del(it) : it + 1;
    }
    EXPECT_FALSE(a.contains(10)) << count;
    EXPECT_EQ(a.size(), static_cast<std::size_t>(count - 1));
    EXPECT_EQ(a.begin()->index, 0);
    // Emptying it front to back.
    auto it = a.begin();
    while (it != a.end()) {
      it = a.del(it);
    }
    EXPECT_TRUE(a.empty());
  }
}

TEST(SparseArray, StoringAnEntryOfItsOwnIsSafe) {
  Small a;
  a.is(5, "five");
  a.is(9, "nine");
  a.is(1, a[9]); // shifts "nine" while copying it, then spills
  a.is(0, a[5]);
  EXPECT_EQ(entriesOf(a),
            (std::vector<std::pair<U8, std::string>>{
                {0, "five"}, {1, "nine"}, {5, "five"}, {9, "nine"}}));
}

// Random edits against std::map: crosses the inline/heap boundary both ways,
// and keeps the index range and the reads of missing indices right.
TEST(SparseArray, MatchesAnOrderedMapUnderRandomEdits) {
  std::mt19937 random(7);
  Small a;
  std::map<U8, std::string> model;
  for (int step = 0; step < 4000; ++step) {
    const U8 index = static_cast<U8>(random() % 12);
    switch (random() % 5) {
    case 0:
      a.del(index);
      model.erase(index);
      break;
    case 1:
      if (random() % 20 == 0) {
        a.delAll();
        model.clear();
      }
      break;
    default:
      a.is(index, std::to_string(step));
      model[index] = std::to_string(step);
    }
    ASSERT_EQ(entriesOf(a), (std::vector<std::pair<U8, std::string>>(
                                model.begin(), model.end())))
        << "step " << step;
    ASSERT_EQ(a.indexBegin(), model.empty() ? 0u : model.begin()->first);
    ASSERT_EQ(a.indexEnd(), model.empty() ? 0u : model.rbegin()->first + 1u);
    ASSERT_EQ(a[index],
              model.contains(index) ? model.at(index) : std::string());
  }
}

// Wherever the entries live, inline or on the heap.
TEST(SparseArray, EqualityTreatsAMissingIndexAsTheDefault) {
  Orv::SparseArray<U8, int> a;
  Orv::SparseArray<U8, int> b;
  a.is(3, 0);
  EXPECT_EQ(a, b);
  EXPECT_EQ(b, a);
  a.is(1, 4);
  EXPECT_NE(b, a);
  b.is(1, 4);
  b.is(9, 1);
  EXPECT_NE(a, b);
  b.is(0, 0);
  b.is(9, 0);
  EXPECT_EQ(a, b);

  Small spilled;
  for (U8 i = 0; i < 6; ++i) {
    spilled.is(i, std::string(i, 'x'));
  }
  for (U8 i = 2; i < 6; ++i) {
    spilled.del(i);
  }
  Small kept;
  kept.is(1, "x");
  EXPECT_EQ(spilled, kept);
  EXPECT_EQ(kept, spilled);
}

TEST(SparseArray, CopiesAndMovesKeepEntriesAndRange) {
  Small a;
  for (U8 i = 4; i < 9; ++i) {
    a.is(i, std::to_string(i));
  }
  Small copy = a;
  EXPECT_EQ(entriesOf(copy), entriesOf(a));
  copy.is(4, "changed");
  EXPECT_EQ(a[4], "4");
  Small moved = std::move(copy);
  EXPECT_EQ(moved[4], "changed");
  EXPECT_EQ(moved.indexBegin(), 4u);
  EXPECT_EQ(moved.indexEnd(), 9u);
  copy = a; // a moved-from array takes a new value
  EXPECT_EQ(entriesOf(copy), entriesOf(a));
}

TEST(SparseArrayText, PrintsEntriesInIndexOrderAndReadsThemBack) {
  using Bytes = Orv::SparseArray<U32, U8>;
  Bytes a;
  EXPECT_EQ(Orv::valueText(a), "{}");
  a.is(70000, 255);
  a.is(0, 1);
  EXPECT_EQ(Orv::valueText(a), "{0: 1, 70000: 255}");
  EXPECT_EQ(Orv::valueFromText<Bytes>(Orv::valueText(a)), a);
  auto reordered = Orv::valueFromText<Bytes>("{ 70000 : 255 , 0: 1 }");
  ASSERT_TRUE(reordered);
  EXPECT_EQ(reordered->begin()->index, 0u);
  EXPECT_EQ(*reordered, a);

  Small strings;
  strings.is(3, "it's");
  EXPECT_EQ(Orv::valueText(strings), "{3: 'it\\'s'}");
  EXPECT_EQ(Orv::valueFromText<Small>(Orv::valueText(strings)), strings);
}

TEST(SparseArrayText, RefusesTextThatDoesNotFit) {
  using Bytes = Orv::SparseArray<U8, U8>;
  for (const char *text :
       {"", "{", "{1: 2", "{1 2}", "{1: 2,}", "{256: 1}", "{1: 256}", "{-1: 1}",
        "{1: 2, 1: 2}", "{x: 1}", "{1: 2} 3", "[1: 2]"}) {
    EXPECT_FALSE(Orv::valueFromText<Bytes>(text)) << text;
  }
}

} // namespace

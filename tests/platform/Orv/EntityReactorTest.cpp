#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Orv/Coll.h"
#include "Orv/Reactor.h"

namespace {

using Orv::Attr;
using Orv::CollAttr;
using Orv::U32;

class Counter : public Orv::Entity {
public:
  static constexpr Attr<U32> valueAttr{1};
  static constexpr Attr<std::string> labelAttr{2};
  static constexpr CollAttr<U32> itemAttr{3};

  U32 value() const { return value_; }
  void valueIs(U32 v) { assign(value_, v, valueAttr); }
  void labelIs(const std::string &v) { assign(label_, v, labelAttr); }
  Orv::Coll<U32, std::string> item{*this, itemAttr};

private:
  U32 value_ = 0;
  std::string label_;
};

class Recorder : public Orv::Reactor {
public:
  std::vector<std::string> seen;
};

TEST(EntityReactor, NotifiesOnlyOnChangeAndCollectionsPerKey) {
  auto counter = Orv::make<Counter>();
  Recorder r;
  r.watch(*counter, Counter::valueAttr, [&] {
    r.seen.push_back("value " + std::to_string(counter->value()));
  });
  r.watch(*counter, Counter::itemAttr,
          [&](const U32 &key) { r.seen.push_back(std::to_string(key)); });
  Recorder all;
  all.watchAll(*counter,
               [&](Orv::AttrId id) { all.seen.push_back(std::to_string(id)); });
  counter->valueIs(0);
  counter->valueIs(3);
  counter->valueIs(3);
  counter->labelIs("x");
  counter->item.is(1, "one");
  counter->item.is(1, "one");
  counter->item.is(1, "uno");
  counter->item.is(2, "two");
  counter->item.del(9);
  counter->item.delAll();
  EXPECT_EQ(r.seen,
            (std::vector<std::string>{"value 3", "1", "1", "2", "1", "2"}));
  EXPECT_EQ(all.seen,
            (std::vector<std::string>{"1", "2", "3", "3", "3", "3", "3"}));
  r.unwatch(*counter);
  counter->valueIs(4);
  EXPECT_EQ(r.seen.size(), 6u) << "no callbacks once unwatched";
}

TEST(EntityReactor, ReactorMayDeleteItselfInsideItsCallback) {
  auto counter = Orv::make<Counter>();
  auto *doomed = new Recorder;
  Recorder survivor;
  int calls = 0;
  doomed->watch(*counter, Counter::valueAttr, [&] {
    ++calls;
    delete doomed;
  });
  survivor.watch(*counter, Counter::valueAttr, [&] { ++calls; });
  counter->valueIs(1);
  counter->valueIs(2);
  EXPECT_EQ(calls, 3);
}

TEST(EntityReactor, ReactorMayDeleteAnotherReactorDuringNotification) {
  auto counter = Orv::make<Counter>();
  auto *second = new Recorder;
  Recorder first;
  int secondCalls = 0;
  first.watch(*counter, Counter::valueAttr, [&] { delete second; });
  second->watch(*counter, Counter::valueAttr, [&] { ++secondCalls; });
  counter->valueIs(1);
  EXPECT_EQ(secondCalls, 0);
}

TEST(EntityReactor, WatchedEntityMayGoAwayInsideItsNotification) {
  Orv::Ptr<Counter> counter = Orv::make<Counter>();
  Counter *raw = counter.get();
  Recorder r;
  int calls = 0;
  r.watch(*raw, Counter::valueAttr, [&] {
    ++calls;
    counter = nullptr;
  });
  Recorder other;
  other.watch(*raw, Counter::valueAttr, [&] { ++calls; });
  raw->valueIs(5);
  EXPECT_EQ(calls, 2);
  EXPECT_FALSE(counter);
}

TEST(EntityReactor, ReactorOutlivingEntityIsSafe) {
  Recorder r;
  {
    auto counter = Orv::make<Counter>();
    r.watch(*counter, Counter::valueAttr, [&] { r.seen.push_back("x"); });
  }
  auto again = Orv::make<Counter>();
  r.watch(*again, Counter::valueAttr, [&] { r.seen.push_back("y"); });
  again->valueIs(1);
  EXPECT_EQ(r.seen, std::vector<std::string>{"y"});
}

} // namespace

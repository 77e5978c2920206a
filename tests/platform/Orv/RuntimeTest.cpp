#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Orv/Assert.h"
#include "Orv/Factory.h"
#include "Orv/NamedEntity.h"
#include "Orv/Trace.h"

namespace {

struct CapturingSink : Orv::TraceSink {
  std::vector<std::string> lines;
  void write(std::string_view source, int level,
             std::string_view text) override {
    lines.push_back(std::string(source) + ":" + std::to_string(level) + ":" +
                    std::string(text));
  }
};

struct Expensive {
  int *formatted;
  friend std::ostream &operator<<(std::ostream &os, const Expensive &e) {
    ++*e.formatted;
    return os << "expensive";
  }
};

TEST(Trace, FormatsNothingWhenDisabledAndHonoursLevels) {
  static Orv::TraceSource source("Test/TraceTest");
  CapturingSink sink;
  Orv::traceSinkIs(&sink);
  int formatted = 0;
  ORV_TRACE(source, 0, Expensive{&formatted});
  EXPECT_EQ(formatted, 0);
  Orv::traceLevelIs("Test/*", 5);
  ORV_TRACE(source, 5, "a ", 1, ' ', Expensive{&formatted});
  ORV_TRACE(source, 6, Expensive{&formatted});
  EXPECT_EQ(formatted, 1);
  Orv::traceLevelIs("Test/TraceTest", -1);
  ORV_TRACE(source, 0, "silenced");
  Orv::traceSinkIs(nullptr);
  EXPECT_EQ(sink.lines,
            std::vector<std::string>{"Test/TraceTest:5:a 1 expensive"});
}

TEST(Trace, RulesApplyToSourcesCreatedLater) {
  Orv::traceLevelIs("Later/Source", 3);
  Orv::TraceSource later("Later/Source");
  EXPECT_TRUE(later.enabled(3));
  EXPECT_FALSE(later.enabled(4));
}

class Widget : public Orv::NamedEntity {
public:
  using NamedEntity::NamedEntity;
};

TEST(Factory, CreatesRegisteredTypesByName) {
  Orv::factoryIs("Test::Widget",
                 [](const Orv::Name &name) -> Orv::Ptr<Orv::Object> {
                   return Orv::make<Widget>(name);
                 });
  auto object = Orv::create("Test::Widget", "w1");
  auto *widget = dynamic_cast<Widget *>(object.get());
  ASSERT_NE(widget, nullptr);
  EXPECT_EQ(widget->name().stringValue(), "w1");
  EXPECT_FALSE(Orv::create("Test::Missing", "x"));
}

TEST(AssertDeathTest, PrintsTheExpressionAsCompiled) {
  const void *holder = &holder;
  EXPECT_DEATH(ORV_ASSERT(holder == NULL),
               "Assertion failed: holder == __null");
  EXPECT_DEATH(ORV_ASSERT(0 && "Undefined address type"),
               "0 && \"Undefined address type\"");
}

} // namespace

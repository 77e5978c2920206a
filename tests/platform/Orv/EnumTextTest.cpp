#include <gtest/gtest.h>

#include <sstream>

#include "Orv/Enum.h"
#include "Orv/ValueText.h"

namespace Demo {

enum class Colour : Orv::U32 { red = 1, green = 2, blue = 4 };
inline constexpr Orv::EnumEntry colourNames[] = {
    {"red", 1}, {"green", 2}, {"blue", 4}};
using Orv::operator<<;

struct Pair {
  Orv::U32 a = 0;
  Colour colour = Colour::red;
  std::string note;
  bool flag = false;
  double seconds = 0.0;
  bool operator==(const Pair &) const = default;
  static constexpr std::string_view valueTypeName = "Demo::Pair";
  static constexpr auto valueFields = std::tuple{
      Orv::Field{"a", &Pair::a}, Orv::Field{"colour", &Pair::colour},
      Orv::Field{"note", &Pair::note}, Orv::Field{"flag", &Pair::flag},
      Orv::Field{"seconds", &Pair::seconds}};
};

struct Outer {
  Pair inner;
  Orv::S32 count = -2;
  bool operator==(const Outer &) const = default;
  static constexpr std::string_view valueTypeName = "Demo::Outer";
  static constexpr auto valueFields = std::tuple{
      Orv::Field{"inner", &Outer::inner}, Orv::Field{"count", &Outer::count}};
};

} // namespace Demo

template <> struct Orv::EnumTraits<Demo::Colour> {
  static constexpr EnumType type{"Demo::Colour", Demo::colourNames};
};

namespace {

using Demo::Colour;

TEST(Enum, NamesValuesAndUnnamedValues) {
  EXPECT_EQ(Orv::stringValue(Colour::green), "green");
  EXPECT_EQ(Orv::stringValue(Colour(3)), "Colour(3)");
  std::ostringstream os;
  os << Colour::blue;
  EXPECT_EQ(os.str(), "blue");
  EXPECT_EQ(Orv::enumInstance<Colour>("blue"), Colour::blue);
  EXPECT_EQ(Orv::enumInstance<Colour>("Colour(3)"), Colour(3));
  EXPECT_EQ(Orv::enumInstance<Colour>(7u), Colour(7));
  EXPECT_THROW(Orv::enumInstance<Colour>("purple"), Orv::RangeError);
  EXPECT_THROW(Orv::enumInstance<Colour>("Colour(x)"), Orv::RangeError);
}

TEST(ValueText, PrintsTheOneLineFormAndReadsItBack) {
  Demo::Pair p{7, Colour::green, "it's", true, 0.5};
  EXPECT_EQ(
      Orv::valueText(p),
      "Value('Demo::Pair', ** {'a': 7, 'colour': green, 'note': 'it\\'s', "
      "'flag': True, 'seconds': 0.5})");
  Demo::Outer o{{9, Colour(3), "a\\b", false, 1.25}, -1};
  EXPECT_EQ(Orv::valueFromText<Demo::Outer>(Orv::valueText(o)), o);
}

TEST(ValueText, RefusesTextThatDoesNotFit) {
  for (const char *text : {
           "",
           "Value('Demo::Other', ** {})",
           "Value('Demo::Pair', ** {'a': x})",
           "Value('Demo::Pair', ** {'nope': 1})",
           "Value('Demo::Pair', ** {'a': 1}) trailing",
           "Value('Demo::Pair', ** {'a': 99999999999})",
           "Value('Demo::Pair', ** {'note': 'unterminated})",
       }) {
    EXPECT_FALSE(Orv::valueFromText<Demo::Pair>(text)) << text;
  }
  EXPECT_EQ(Orv::valueFromText<Demo::Pair>("Value('Demo::Pair', ** {})"),
            Demo::Pair{});
}

} // namespace

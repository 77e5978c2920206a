#include <gtest/gtest.h>

#include <string>

#include "L3/VrfName.h"
#include "Orv/RangeError.h"

namespace {

TEST(VrfName, LongestNameIsKeptOneByteMoreIsRefused) {
  const std::string longest(L3::VrfName::maxLength, 'v');
  EXPECT_EQ(L3::VrfName(longest).stringValue(), longest);
  try {
    L3::VrfName tooLong(longest + "v");
    FAIL() << "a name past the bound was kept";
  } catch (const Orv::RangeError &e) {
    EXPECT_STREQ(e.what(), "VrfName::bytes > VrfName::maxLength not allowed");
  }
}

} // namespace

#include <gtest/gtest.h>

#include <string>

#include "L3/VrfName.h"
#include "Orv/RangeError.h"
#include "TestSupport.h"

namespace {

TEST(VrfName, LongestNameIsKeptOneByteMoreIsRefused) {
  const std::string longest(L3::VrfName::maxLength, 'v');
  EXPECT_EQ(L3::VrfName(longest).stringValue(), longest);
  EXPECT_EQ(TestSupport::thrownText<Orv::RangeError>(
                [&] { L3::VrfName tooLong(longest + "v"); }),
            "VrfName::bytes > VrfName::maxLength not allowed");
}

} // namespace

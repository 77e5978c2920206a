// The responder's rate limit, on given times: a burst at once, then the
// rate, never more than the burst kept; a rate of 0 never limits.
#include <gtest/gtest.h>

#include "tools/TokenBucket.h"

namespace {

// Replies let through of `asked` taken at `now`.
int take(LspPingTool::TokenBucket &bucket, double now, int asked) {
  int given = 0;
  for (int i = 0; i < asked; ++i) {
    if (bucket.available(now)) {
      bucket.take();
      ++given;
    }
  }
  return given;
}

TEST(TokenBucket, BurstThenRate) {
  LspPingTool::TokenBucket bucket(10.0, 5);
  EXPECT_EQ(take(bucket, 100.0, 20), 5);
  EXPECT_EQ(take(bucket, 100.5, 20), 5);
  EXPECT_EQ(take(bucket, 100.75, 20), 2);
  EXPECT_EQ(take(bucket, 200.0, 20), 5) << "an idle bucket keeps the burst";

  LspPingTool::TokenBucket unlimited(0.0, 1);
  EXPECT_EQ(take(unlimited, 0.0, 1000), 1000);
}

} // namespace

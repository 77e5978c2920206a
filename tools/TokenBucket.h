#pragma once

#include <algorithm>

#include "Orv/Types.h"

namespace LspPingTool {

// A token bucket, as routers police echo requests: `rate` tokens a second
// up to `burst` kept, the bucket full at start. A rate of 0 never limits.
// Times are seconds on any clock that does not go back.
class TokenBucket {
public:
  TokenBucket(double rate, Orv::U32 burst)
      : rate_(rate), burst_(std::max<Orv::U32>(burst, 1)), tokens_(burst_) {}

  // Whether a token is there at `now`; it is only spent by take().
  bool available(double now) {
    if (rate_ == 0.0) {
      return true;
    }
    tokens_ = std::min<double>(burst_, tokens_ + (now - last_) * rate_);
    last_ = now;
    return tokens_ >= 1.0;
  }
  void take() {
    if (rate_ != 0.0) {
      tokens_ -= 1.0;
    }
  }

private:
  double rate_;
  Orv::U32 burst_;
  double tokens_;
  double last_ = 0.0;
};

} // namespace LspPingTool

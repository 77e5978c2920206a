#pragma once

#include <string_view>
#include <tuple>

#include "LspPing/LspPingEnum.h"
#include "Orv/Export.h"
#include "Orv/ValueText.h"

namespace LspPing {

// An NTP time stamp. `microSeconds` holds the NTP fraction of a second in
// units of 2^-32 s, whatever its name says.
struct NtpTimeU64 {
  U32 seconds = 0;
  U32 microSeconds = 0;

  bool operator==(const NtpTimeU64 &) const = default;

  static constexpr std::string_view valueTypeName = "LspPing::NtpTimeU64";
  static constexpr auto valueFields =
      std::tuple{Orv::Field{"seconds", &NtpTimeU64::seconds},
                 Orv::Field{"microSeconds", &NtpTimeU64::microSeconds}};
};

LSPPING_EXPORT std::ostream &operator<<(std::ostream &os, const NtpTimeU64 &t);

// The NTP clock: the runtime's clock moved to the 1900 epoch. Stamps carry
// microsecond resolution only, like the stamps our peers send.
struct LSPPING_EXPORT NtpTime {
  static constexpr double unixToNtpSeconds = 2208988800.0;

  // Seconds since 1 January 1900.
  static double time();
  // A fraction of a second as a 32-bit NTP fraction, cut to whole
  // microseconds first.
  static U32 fractionToU32(double fraction);
  static U32 ntpSeconds();
  static U32 ntpFraction();
  // Reads the clock once.
  static NtpTimeU64 ntpTime();
  // Seconds from time0 to time1; correct across a wrap of the seconds field.
  static double elapsedTime(const NtpTimeU64 &time0, const NtpTimeU64 &time1);
};

} // namespace LspPing

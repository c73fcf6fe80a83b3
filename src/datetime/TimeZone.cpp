// SPDX-License-Identifier: MIT
// Local time and UTC by the bias of the moment of the call.
#include <kx/datetime/TimeZone.h>
#include <kx/rtl/SysUtils.h>

#include "platform/Platform.h"

#include <cmath>
#include <cstdlib>

namespace kx {

namespace detail {

int32_t CurrentTimeZoneBias() {
  platform::TTimeZoneBias Zone;
  switch (platform::GetTimeZoneInformation(Zone)) {
  case 1:
    return Zone.Bias + Zone.StandardBias;
  case 2:
    return Zone.Bias + Zone.DaylightBias;
  default:
    return Zone.Bias;
  }
}

} // namespace detail

TKxUTCDateTime KxLocalToUTC(TDateTime DT) {
  return TKxUTCDateTime(double(DT) + detail::CurrentTimeZoneBias() / double(MinsPerDay));
}

TDateTime KxUTCToLocal(TDateTime DT) {
  return TDateTime(double(DT) - detail::CurrentTimeZoneBias() / double(MinsPerDay));
}

AnsiString KxGetTimeZone() {
  // Integer division truncates toward zero: the minutes of a half-hour zone are dropped.
  const int32_t Hours = -detail::CurrentTimeZoneBias() / 60;
  if (Hours == 0) return "GMT";
  if (Hours > 0) return "GMT +" + IntToStr(Hours);
  return "GMT " + IntToStr(Hours);
}

void KxCalcTimeZoneOffset(TDateTime DT, int32_t& TotalMinutes, uint16_t& Hours, uint16_t& Minutes) {
  const double Local = DT;
  const double Utc = KxLocalToUTC(DT);
  double Difference;
  if (Utc < 0 || Local < 0) {
    // Before day zero the fraction runs forward from the day's start, so the parts are
    // subtracted apart.
    const double LocalInt = std::trunc(Local), UtcInt = std::trunc(Utc);
    Difference = (LocalInt - UtcInt) - ((Local - LocalInt) - (Utc - UtcInt));
  } else {
    Difference = Local - Utc;
  }
  TotalMinutes = int32_t(std::trunc(Difference * HoursPerDay * MinsPerHour));
  const int32_t Size = std::abs(TotalMinutes);
  Hours = uint16_t(Size / 60);
  Minutes = uint16_t(Size % 60);
  if (Minutes >= 58) {
    ++Hours;
    Minutes = 0;
  } else if (Minutes < 3) {
    Minutes = 0;
  }
}

} // namespace kx

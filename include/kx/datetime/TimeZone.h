// SPDX-License-Identifier: MIT
// Local time and UTC of uKxDateTimeUtils, by the operating system's current time zone.
#pragma once
// Every call reads the zone afresh and uses its bias at the moment of the call, whatever the
// date of the value converted: a winter date converted in summer moves by the summer bias.
// Windows asks GetTimeZoneInformation; elsewhere the zone is the one TZ names (localtime_r).

#include <kx/rtl/DateTime.h>
#include <kx/rtl/TypInfo.h>

namespace kx {

// Values meant as UTC: the same days, types of their own.
KX_DATETIME_KIND(TKxUTCDate)
KX_DATETIME_KIND(TKxUTCTime)
KX_DATETIME_KIND(TKxUTCDateTime)

// Their type information is the library's, as for the language's date-time types.
template <>
struct TTypeInfoOf<TKxUTCDate> : detail::TBuiltinTypeInfo<detail::btTKxUTCDate> {};
template <>
struct TTypeInfoOf<TKxUTCTime> : detail::TBuiltinTypeInfo<detail::btTKxUTCTime> {};
template <>
struct TTypeInfoOf<TKxUTCDateTime> : detail::TBuiltinTypeInfo<detail::btTKxUTCDateTime> {};

KX_API TKxUTCDateTime KxLocalToUTC(TDateTime DT);
KX_API TDateTime KxUTCToLocal(TDateTime DT);
// "GMT", "GMT +1", "GMT -5": the whole hours east of UTC, minutes dropped ("GMT +5" for a
// zone five and a half hours east).
KX_API AnsiString KxGetTimeZone();
// The offset of local time DT from UTC: TotalMinutes east (truncated), and its size in Hours
// and Minutes, where 58 minutes and more make the next hour and fewer than 3 none, absorbing
// the error of the floating-point difference.
KX_API void KxCalcTimeZoneOffset(TDateTime DT, int32_t& TotalMinutes, uint16_t& Hours,
                                 uint16_t& Minutes);

namespace detail {
// The bias of now in minutes (UTC = local + bias): Bias + StandardBias in standard time,
// Bias + DaylightBias in daylight time, Bias alone when the zone has no daylight saving or
// cannot be read.
KX_API int32_t CurrentTimeZoneBias();
} // namespace detail

} // namespace kx

// SPDX-License-Identifier: MIT
// ISO 8601 date-time text of uKxDateTimeUtils: the structured decoder, the writers, and the
// simple readers that give local time.
#pragma once
// The two readers differ on purpose. KxDecodeISODateTime reports what the text held (date,
// time, zone) and reads a fraction as a fraction ('.5' is 500 ms). The KxISOStrTo* family
// answers a local date-time directly and takes the digits after the point as the
// milliseconds themselves ('.5' is 5 ms).

#include <kx/datetime/TimeZone.h>
#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>

namespace kx {

enum TKxTimeZoneFormat : uint8_t {
  tzfNA,     // no zone designator: local time
  tzfOffset, // a numeric offset
  tzfUTC     // the designator "Z"
};

// What KxDecodeISODateTime found; all zero before decoding.
struct TKxISODateTime {
  bool HasDate = false;
  uint16_t Year = 0;
  uint16_t Month = 0;
  uint16_t Day = 0;
  bool HasTime = false;
  uint16_t Hour = 0;
  uint16_t Minute = 0;
  uint16_t Second = 0;
  uint16_t MSec = 0;
  // The text began with "-".
  bool Negative = false;
  TKxTimeZoneFormat TimeZone = tzfNA;
  // Minutes east of UTC, 0 unless TimeZone is tzfOffset.
  int16_t OffsetMinutes = 0;
};

// Reads "[-]yyyy[-]mm[-]dd[Thh:nn[:ss[.fff]]][Z|(+|-)hh:nn]" or a time "hh:nn[:ss[.fff]]..." by
// fixed widths: fields are two characters (the year four), a separator is whatever character
// stands there, seconds and fraction are digit runs ('.5' is 500 ms, digits after the third
// are dropped), and text after the zone is ignored. A field that is no number raises
// EConvertError; text that ends inside a fixed-width field raises EKxTextParserEOF. Fields are
// not range-checked. An empty S gives the all-zero record.
KX_API TKxISODateTime KxDecodeISODateTime(const AnsiString& S);
// As KxDecodeISODateTime; when that raises, the record holds Default's year to millisecond
// with HasDate and HasTime false and TimeZone tzfNA, which tells a fallback from a decoded
// value.
KX_API TKxISODateTime KxDecodeISODateTimeDef(const AnsiString& S, TDateTime Default);

// "yyyy-mm-dd" (a year of more than four digits is not cut).
KX_API AnsiString KxDateToISOStr(TDateTime D);
// "yyyy-mm-ddThh:nn:ss", with ".zzz" when WithMSec. No zone designator: the value is written
// as it is.
KX_API AnsiString KxDateTimeToISOStr(TDateTime DT, bool WithMSec);
// The time of day of DT written by KxDateTimeToISOStr, so always on day zero:
// "1899-12-30T12:00:00".
KX_API AnsiString KxTimeToISOStr(TDateTime DT, bool WithMSec);

// "yyyy-mm-dd" or "yyyymmdd" (every "-" is dropped, characters after the eighth are ignored);
// 0 for an empty text and for year, month and day adding up to 0. EConvertError for fields
// that are no number and for impossible dates.
KX_API TDateTime KxISOStrToDate(const AnsiString& S);
// The time after the first "T" (or from the start): "hh:nn:ss" at fixed places, then, after a
// ".", the digits up to a "-" or "+" taken as the milliseconds themselves ('.5' is 5 ms, more
// than three digits fail). An offset is ignored; a final "Z" converts from UTC to local time.
KX_API TDateTime KxISOStrToTime(const AnsiString& S);
// A date, or a date and time after "T", with "Z" or an offset "(+|-)hh:nn" converted to local
// time (by the bias of now); without a zone the value is taken as local. 0 for "" and "0".
KX_API TDateTime KxISOStrToDateTime(const AnsiString& S);
// "dd-MM-yyyy[ time]" read with the system default locale's settings, "-" as date separator.
KX_API TDateTime KxStrToDateTime(const AnsiString& S);

} // namespace kx

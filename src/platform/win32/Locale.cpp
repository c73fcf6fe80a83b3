// SPDX-License-Identifier: MIT
// Locale formats on Windows, from GetLocaleInfoW.
#include "platform/Platform.h"

#include <iterator>
#include <string>
#include <windows.h>

namespace kx::platform {

namespace {

bool Get(LCID Id, LCTYPE Type, UnicodeString& Value) {
  wchar_t Buf[256];
  const int Len = ::GetLocaleInfoW(Id, Type, Buf, int(std::size(Buf)));
  if (Len <= 0) return false;
  Value.assign(Buf, Buf + Len - 1); // without the terminator
  return true;
}

bool Flag(LCID Id, LCTYPE Type) {
  UnicodeString V;
  return Get(Id, Type, V) && V == u"1";
}

} // namespace

bool GetLocaleFormats(uint32_t Locale, const AnsiString& Name, TLocaleFormats& Formats) {
  Formats = TLocaleFormats();
  LCID Id = Locale == 0 ? LOCALE_USER_DEFAULT : Locale;
  if (!Name.empty()) {
    const int Len = ::MultiByteToWideChar(CP_ACP, 0, Name.data(), int(Name.size()), nullptr, 0);
    std::wstring Wide(size_t(Len), L'\0');
    ::MultiByteToWideChar(CP_ACP, 0, Name.data(), int(Name.size()), Wide.data(), Len);
    for (wchar_t& C : Wide)
      if (C == L'_') C = L'-'; // "de_DE" as "de-DE"
    Id = ::LocaleNameToLCID(Wide.c_str(), 0);
    if (Id == 0) return false;
  }
  TLocaleFormats& F = Formats;
  F.HasDates = Get(Id, LOCALE_SSHORTDATE, F.ShortDate) && Get(Id, LOCALE_SLONGDATE, F.LongDate) &&
               Get(Id, LOCALE_SDATE, F.DateSeparator) && Get(Id, LOCALE_STIME, F.TimeSeparator) &&
               Get(Id, LOCALE_S1159, F.TimeAM) && Get(Id, LOCALE_S2359, F.TimePM);
  if (F.HasDates) {
    F.TwelveHour = !Flag(Id, LOCALE_ITIME);
    F.HourLeadingZero = Flag(Id, LOCALE_ITLZERO);
    F.MarkBeforeTime = Flag(Id, LOCALE_ITIMEMARKPOSN);
    for (LCTYPE I = 0; I < 12; ++I) {
      Get(Id, LOCALE_SABBREVMONTHNAME1 + I, F.ShortMonths[I]);
      Get(Id, LOCALE_SMONTHNAME1 + I, F.LongMonths[I]);
    }
    // Windows counts the days from Monday.
    for (LCTYPE I = 0; I < 7; ++I) {
      Get(Id, LOCALE_SABBREVDAYNAME1 + (I + 6) % 7, F.ShortDays[I]);
      Get(Id, LOCALE_SDAYNAME1 + (I + 6) % 7, F.LongDays[I]);
    }
  }
  F.HasNumbers = Get(Id, LOCALE_SDECIMAL, F.Decimal) && Get(Id, LOCALE_STHOUSAND, F.Thousand) &&
                 Get(Id, LOCALE_SLIST, F.List);
  return F.HasDates || F.HasNumbers;
}

} // namespace kx::platform

// SPDX-License-Identifier: MIT
// TFormatSettings from the platform's locale data.
#include <kx/rtl/FormatSettings.h>

#include "platform/Platform.h"

namespace kx {

namespace {

constexpr const char* InvariantShortMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                                "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
constexpr const char* InvariantLongMonths[] = {"January",   "February", "March",    "April",
                                               "May",       "June",     "July",     "August",
                                               "September", "October",  "November", "December"};
constexpr const char* InvariantShortDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
constexpr const char* InvariantLongDays[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                             "Thursday", "Friday", "Saturday"};

// One separator character in the process code page. Spaces of other widths become the
// space; a character the code page holds in more than one byte keeps the default.
AnsiChar SeparatorChar(const UnicodeString& S, AnsiChar Default) {
  if (S.empty()) return Default;
  const char16_t C = S[0];
  if (C < 0x80) return AnsiChar(C);
  if (C == 0x00A0 || C == 0x2007 || C == 0x2009 || C == 0x202F) return ' ';
  const AnsiString A = UnicodeToAnsi(std::u16string_view(&C, 1));
  return A.size() == 1 ? A[0] : Default;
}

// A Win32 date picture in FormatDateTime's language. The letters mean the same (the pattern
// language ignores case); eras are left out, and text outside ASCII is quoted so that no
// byte of it is read as a pattern letter.
AnsiString DateFormatOf(const UnicodeString& Picture) {
  UnicodeString R;
  size_t I = 0;
  while (I < Picture.size()) {
    const char16_t C = Picture[I];
    if (C == u'\'' || C == u'"') {
      size_t End = Picture.find(C, I + 1);
      End = End == UnicodeString::npos ? Picture.size() : End + 1;
      R.append(Picture, I, End - I);
      I = End;
    } else if (C == u'g') {
      while (I < Picture.size() && Picture[I] == u'g') ++I;
      if (!R.empty() && R.back() == u' ') R.pop_back();
    } else if (C >= 0x80) {
      size_t End = I;
      while (End < Picture.size() && Picture[End] >= 0x80) ++End;
      R.append(1, u'"').append(Picture, I, End - I).append(1, u'"');
      I = End;
    } else {
      R += C;
      ++I;
    }
  }
  // A picture that starts with an era may now start with a space.
  if (!R.empty() && R.front() == u' ') R.erase(0, 1);
  return UnicodeToAnsi(R);
}

template <size_t N>
void SetNames(TLocaleNames<N>& Names, const UnicodeString (&From)[N]) {
  for (size_t I = 0; I < N; ++I)
    if (!From[I].empty()) Names[I + 1] = UnicodeToAnsi(From[I]);
}

TFormatSettings FromLocale(const platform::TLocaleFormats& F) {
  TFormatSettings S = TFormatSettings::Invariant();
  if (F.HasDates) {
    S.DateSeparator = SeparatorChar(F.DateSeparator, '/');
    S.TimeSeparator = SeparatorChar(F.TimeSeparator, ':');
    S.ShortDateFormat = DateFormatOf(F.ShortDate);
    S.LongDateFormat = DateFormatOf(F.LongDate);
    S.TimeAMString = UnicodeToAnsi(F.TimeAM);
    S.TimePMString = UnicodeToAnsi(F.TimePM);
    // The time formats are built from the locale's clock style, so that both carry the same
    // hour form and the AM/PM mark on the same side.
    const AnsiString Hour = F.HourLeadingZero ? "hh" : "h";
    const AnsiString Prefix = F.TwelveHour && F.MarkBeforeTime ? "AMPM " : "";
    const AnsiString Postfix = F.TwelveHour && !F.MarkBeforeTime ? " AMPM" : "";
    S.ShortTimeFormat = Prefix + Hour + ":mm" + Postfix;
    S.LongTimeFormat = Prefix + Hour + ":mm:ss" + Postfix;
    SetNames(S.ShortMonthNames, F.ShortMonths);
    SetNames(S.LongMonthNames, F.LongMonths);
    SetNames(S.ShortDayNames, F.ShortDays);
    SetNames(S.LongDayNames, F.LongDays);
  }
  if (F.HasNumbers) {
    S.DecimalSeparator = SeparatorChar(F.Decimal, '.');
    S.ThousandSeparator = SeparatorChar(F.Thousand, ',');
    S.ListSeparator = SeparatorChar(F.List, ',');
  }
  return S;
}

} // namespace

TFormatSettings TFormatSettings::Invariant() {
  TFormatSettings S;
  S.ShortDateFormat = "MM/dd/yyyy";
  S.LongDateFormat = "dddd, dd mmmm yyyy";
  S.ShortTimeFormat = "HH:mm";
  S.LongTimeFormat = "HH:mm:ss";
  S.TimeAMString = "AM";
  S.TimePMString = "PM";
  for (size_t I = 1; I <= 12; ++I) {
    S.ShortMonthNames[I] = InvariantShortMonths[I - 1];
    S.LongMonthNames[I] = InvariantLongMonths[I - 1];
  }
  for (size_t I = 1; I <= 7; ++I) {
    S.ShortDayNames[I] = InvariantShortDays[I - 1];
    S.LongDayNames[I] = InvariantLongDays[I - 1];
  }
  return S;
}

TFormatSettings TFormatSettings::Create() {
  return Create(LocaleUserDefault);
}

TFormatSettings TFormatSettings::Create(TLocaleID Locale) {
  if (Locale == LocaleInvariant) return Invariant();
  platform::TLocaleFormats F;
  return platform::GetLocaleFormats(Locale, AnsiString(), F) ? FromLocale(F) : Invariant();
}

TFormatSettings TFormatSettings::Create(const AnsiString& LocaleName) {
  platform::TLocaleFormats F;
  return platform::GetLocaleFormats(0, LocaleName, F) ? FromLocale(F) : Invariant();
}

TFormatSettings& FormatSettings() {
  static TFormatSettings Settings = TFormatSettings::Create();
  return Settings;
}

} // namespace kx

// SPDX-License-Identifier: MIT
// Locale formats on POSIX: the locale the environment names, with its data from ICU,
// rendered as Win32's GetLocaleInfo gives it.
#include "platform/Platform.h"

#include <unicode/udat.h>
#include <unicode/uloc.h>
#include <unicode/unum.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace kx::platform {

namespace {

using TIcuName = std::string;

// The locale setlocale(Category, "") would choose: LC_ALL, then the category's variable,
// then LANG. Empty for the C and POSIX locales and when none is set.
TIcuName EnvironmentLocale(const char* CategoryVariable) {
  const char* Value = nullptr;
  for (const char* Variable : {"LC_ALL", CategoryVariable, "LANG"}) {
    Value = std::getenv(Variable);
    if (Value && *Value) break;
    Value = nullptr;
  }
  if (!Value) return {};
  const std::string Name = Value;
  const std::string Base = Name.substr(0, Name.find_first_of(".@"));
  if (Base == "C" || Base == "POSIX") return {};
  return Name;
}

// ICU's canonical form of a POSIX or BCP 47 name ("de_DE.UTF-8@euro", "de-DE").
TIcuName Canonical(const std::string& Name) {
  char Buf[ULOC_FULLNAME_CAPACITY];
  UErrorCode Status = U_ZERO_ERROR;
  const int32_t Len = uloc_canonicalize(Name.c_str(), Buf, sizeof Buf, &Status);
  if (U_FAILURE(Status) || Status == U_STRING_NOT_TERMINATED_WARNING) return {};
  return TIcuName(Buf, size_t(Len));
}

TIcuName ForLcid(uint32_t Locale) {
  char Buf[ULOC_FULLNAME_CAPACITY];
  UErrorCode Status = U_ZERO_ERROR;
  const int32_t Len = uloc_getLocaleForLCID(Locale, Buf, sizeof Buf, &Status);
  if (U_FAILURE(Status) || Len <= 0) return {};
  return TIcuName(Buf, size_t(Len));
}

// Whether ICU has data for the language asked for: for a locale it does not know it falls
// back to its default locale (or the root one), whose language differs.
bool Known(const TIcuName& Requested, const char* Actual) {
  if (!Actual || !*Actual || std::strcmp(Actual, "root") == 0) return false;
  char A[ULOC_LANG_CAPACITY], B[ULOC_LANG_CAPACITY];
  UErrorCode Status = U_ZERO_ERROR;
  uloc_getLanguage(Requested.c_str(), A, sizeof A, &Status);
  uloc_getLanguage(Actual, B, sizeof B, &Status);
  return U_SUCCESS(Status) && std::strcmp(A, B) == 0;
}

UnicodeString Text(const UChar* Buf, int32_t Len) {
  return UnicodeString(reinterpret_cast<const char16_t*>(Buf), size_t(Len > 0 ? Len : 0));
}

template <class F>
UnicodeString Fetch(F Get) {
  UChar Buf[256];
  UErrorCode Status = U_ZERO_ERROR;
  const int32_t Len = Get(Buf, int32_t(std::size(Buf)), &Status);
  if (U_FAILURE(Status) || Status == U_STRING_NOT_TERMINATED_WARNING) return {};
  return Text(Buf, Len);
}

UnicodeString Pattern(const UDateFormat* Format) {
  return Fetch(
      [&](UChar* B, int32_t N, UErrorCode* S) { return udat_toPattern(Format, false, B, N, S); });
}

UnicodeString Symbol(const UDateFormat* Format, UDateFormatSymbolType Type, int32_t Index) {
  return Fetch([&](UChar* B, int32_t N, UErrorCode* S) {
    return udat_getSymbols(Format, Type, Index, B, N, S);
  });
}

bool IsLetter(char16_t C) {
  return (C >= u'a' && C <= u'z') || (C >= u'A' && C <= u'Z');
}

// An ICU (LDML) date pattern in Win32's picture letters: E becomes d (ddd, dddd), L becomes
// M, every year becomes yyyy (Windows shows four digits), eras and the rest of the fields
// are dropped; quoted text stays quoted.
UnicodeString WindowsDatePicture(const UnicodeString& P) {
  UnicodeString R;
  size_t I = 0;
  while (I < P.size()) {
    const char16_t C = P[I];
    if (C == u'\'') {
      const size_t End = P.find(u'\'', I + 1);
      const size_t Stop = End == UnicodeString::npos ? P.size() : End + 1;
      R.append(P, I, Stop - I);
      I = Stop;
      continue;
    }
    if (!IsLetter(C)) {
      R += C;
      ++I;
      continue;
    }
    size_t Count = 1;
    while (I + Count < P.size() && P[I + Count] == C) ++Count;
    I += Count;
    switch (C) {
    case u'd':
      R.append(Count > 2 ? 2 : Count, u'd');
      break;
    case u'E':
    case u'c':
      R.append(Count >= 4 ? 4 : 3, u'd');
      break;
    case u'M':
    case u'L':
      R.append(Count > 4 ? 4 : Count, u'M');
      break;
    case u'y':
    case u'Y':
    case u'u':
      R.append(4, u'y');
      break;
    default:
      // An era or a field Windows pictures lack: drop it with a space that precedes it.
      if (!R.empty() && R.back() == u' ') R.pop_back();
      break;
    }
  }
  return R;
}

// The first character of a pattern that separates its numeric fields.
UnicodeString SeparatorOf(const UnicodeString& P, char16_t Default) {
  bool InQuote = false, AfterField = false;
  for (char16_t C : P) {
    if (C == u'\'') InQuote = !InQuote;
    if (InQuote || C == u'\'') continue;
    if (IsLetter(C)) {
      AfterField = true;
    } else if (AfterField && C != u' ' && C != u',') {
      return UnicodeString(1, C);
    }
  }
  return UnicodeString(1, Default);
}

void ReadDates(const TIcuName& Name, TLocaleFormats& F) {
  UErrorCode Status = U_ZERO_ERROR;
  UDateFormat* Short =
      udat_open(UDAT_NONE, UDAT_SHORT, Name.c_str(), nullptr, 0, nullptr, 0, &Status);
  UDateFormat* Full =
      udat_open(UDAT_NONE, UDAT_FULL, Name.c_str(), nullptr, 0, nullptr, 0, &Status);
  UDateFormat* Time =
      udat_open(UDAT_SHORT, UDAT_NONE, Name.c_str(), nullptr, 0, nullptr, 0, &Status);
  if (U_SUCCESS(Status) && Known(Name, udat_getLocaleByType(Short, ULOC_ACTUAL_LOCALE, &Status))) {
    const UnicodeString ShortPattern = Pattern(Short);
    F.ShortDate = WindowsDatePicture(ShortPattern);
    F.LongDate = WindowsDatePicture(Pattern(Full));
    F.DateSeparator = SeparatorOf(ShortPattern, u'/');
    const UnicodeString TimePattern = Pattern(Time);
    F.TimeSeparator = SeparatorOf(TimePattern, u':');
    const size_t Hour = TimePattern.find_first_of(u"hHkK");
    const size_t Mark = TimePattern.find(u'a');
    F.TwelveHour = TimePattern.find_first_of(u"hK") != UnicodeString::npos;
    F.HourLeadingZero = Hour != UnicodeString::npos && Hour + 1 < TimePattern.size() &&
                        TimePattern[Hour + 1] == TimePattern[Hour];
    F.MarkBeforeTime = Mark != UnicodeString::npos && Mark < Hour;
    F.TimeAM = Symbol(Time, UDAT_AM_PMS, 0);
    F.TimePM = Symbol(Time, UDAT_AM_PMS, 1);
    for (int32_t I = 0; I < 12; ++I) {
      F.ShortMonths[I] = Symbol(Time, UDAT_STANDALONE_SHORT_MONTHS, I);
      F.LongMonths[I] = Symbol(Time, UDAT_STANDALONE_MONTHS, I);
    }
    // ICU's weekday symbols start at index 1 with Sunday.
    for (int32_t I = 0; I < 7; ++I) {
      F.ShortDays[I] = Symbol(Time, UDAT_STANDALONE_SHORT_WEEKDAYS, I + 1);
      F.LongDays[I] = Symbol(Time, UDAT_STANDALONE_WEEKDAYS, I + 1);
    }
    F.HasDates = true;
  }
  for (UDateFormat* Format : {Short, Full, Time})
    if (Format) udat_close(Format);
}

void ReadNumbers(const TIcuName& Name, TLocaleFormats& F) {
  UErrorCode Status = U_ZERO_ERROR;
  UNumberFormat* Format = unum_open(UNUM_DECIMAL, nullptr, 0, Name.c_str(), nullptr, &Status);
  if (U_SUCCESS(Status) && Known(Name, unum_getLocaleByType(Format, ULOC_ACTUAL_LOCALE, &Status))) {
    auto Get = [&](UNumberFormatSymbol Which) {
      return Fetch([&](UChar* B, int32_t N, UErrorCode* S) {
        return unum_getSymbol(Format, Which, B, N, S);
      });
    };
    F.Decimal = Get(UNUM_DECIMAL_SEPARATOR_SYMBOL);
    F.Thousand = Get(UNUM_GROUPING_SEPARATOR_SYMBOL);
    // ICU has no list separator; Windows uses ';' where the comma is the decimal one.
    F.List = F.Decimal == u"," ? u";" : u",";
    F.HasNumbers = true;
  }
  if (Format) unum_close(Format);
}

} // namespace

bool GetLocaleFormats(uint32_t Locale, const AnsiString& Name, TLocaleFormats& Formats) {
  Formats = TLocaleFormats();
  TIcuName DateLocale, NumberLocale;
  if (!Name.empty()) {
    const std::string Base = Name.substr(0, Name.find_first_of(".@"));
    if (Base != "C" && Base != "POSIX") DateLocale = NumberLocale = Canonical(Name);
  } else if (Locale == 0 || Locale == 0x400 || Locale == 0x800) {
    DateLocale = Canonical(EnvironmentLocale("LC_TIME"));
    NumberLocale = Canonical(EnvironmentLocale("LC_NUMERIC"));
  } else {
    DateLocale = NumberLocale = ForLcid(Locale);
  }
  if (!DateLocale.empty()) ReadDates(DateLocale, Formats);
  if (!NumberLocale.empty()) ReadNumbers(NumberLocale, Formats);
  return Formats.HasDates || Formats.HasNumbers;
}

} // namespace kx::platform

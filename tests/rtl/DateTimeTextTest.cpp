// SPDX-License-Identifier: MIT
// FormatDateTime's pattern language, the locale's date and time texts, and their readers.
#include <kx/rtl/DateTimeText.h>

#include <gtest/gtest.h>

using namespace kx;

namespace {

// 5 January 2024, a Friday, 09:03:07.045.
const TDateTime Morning = EncodeDateTime(2024, 1, 5, 9, 3, 7, 45);
const TDateTime Afternoon = EncodeDateTime(2024, 1, 5, 14, 5, 0, 0);

TFormatSettings Invariant() {
  return TFormatSettings::Invariant();
}

TFormatSettings DayMonthYear() {
  TFormatSettings S = TFormatSettings::Invariant();
  S.ShortDateFormat = "dd.mm.yyyy";
  S.DateSeparator = '.';
  S.DecimalSeparator = ',';
  return S;
}

TDateTime WithoutMSec(TDateTime V) {
  uint16_t H, N, S, Z;
  DecodeTime(V, H, N, S, Z);
  return IncMilliSecond(V, -Z);
}

AnsiString Fmt(const char* Pattern, TDateTime V, const TFormatSettings& S = Invariant()) {
  return FormatDateTime(Pattern, V, S);
}

} // namespace

TEST(FormatDateTime, NumbersAndNames) {
  EXPECT_EQ(Fmt("yyyy-mm-dd hh:nn:ss.zzz", Morning), "2024-01-05 09:03:07.045");
  EXPECT_EQ(Fmt("yy y yyy m d", Morning), "24 24 2024 1 5");
  EXPECT_EQ(Fmt("mmm mmmm ddd dddd aaa aaaa", Morning), "Jan January Fri Friday Fri Friday");
  EXPECT_EQ(Fmt("MMMMM", Morning), "January");
  EXPECT_EQ(Fmt("h:n:s z zz zzzz", Morning), "9:3:7 45 45 045");
  EXPECT_EQ(Fmt("YYYY/MM/DD", EncodeDate(1, 2, 3)), "0001/02/03");
  EXPECT_EQ(Fmt("yyyy-mm-dd hh:nn", -1.25), "1899-12-29 06:00");
  EXPECT_EQ(Fmt("xq!", Morning), "xq!"); // other characters are copied
}

TEST(FormatDateTime, MinutesAfterAnHour) {
  EXPECT_EQ(Fmt("hh:mm", Morning), "09:03");
  EXPECT_EQ(Fmt("mm", Morning), "01");
  EXPECT_EQ(Fmt("h 'and' m", Morning), "9 and 3"); // quoted text does not end the hour
  EXPECT_EQ(Fmt("hh dd mm", Morning), "09 05 01"); // another field does
  EXPECT_EQ(Fmt("mm/dd hh:mm", Morning), "01/05 09:03");
}

TEST(FormatDateTime, TwelveHourClock) {
  EXPECT_EQ(Fmt("h:nn am/pm", Afternoon), "2:05 pm");
  EXPECT_EQ(Fmt("h:nn AM/PM", Morning), "9:03 AM");
  EXPECT_EQ(Fmt("hh a/p", Afternoon), "02 p");
  EXPECT_EQ(Fmt("h A/P", Morning), "9 A");
  TFormatSettings S = Invariant();
  S.TimeAMString = "vorm.";
  S.TimePMString = "nachm.";
  EXPECT_EQ(Fmt("h:nn ampm", Afternoon, S), "2:05 nachm.");
  EXPECT_EQ(Fmt("AMPM h", Afternoon, S), "nachm. 2");
  EXPECT_EQ(Fmt("h am/pm", EncodeTime(0, 30, 0, 0)), "12 am");
  EXPECT_EQ(Fmt("h am/pm", EncodeTime(12, 0, 0, 0)), "12 pm");
  // An hour decides from the specifier that follows it, before the next hour.
  EXPECT_EQ(Fmt("h h am/pm", Afternoon), "14 2 pm");
  EXPECT_EQ(Fmt("h 'am/pm'", Afternoon), "14 am/pm");
  EXPECT_EQ(Fmt("h ax", Afternoon), "14 ax");
}

TEST(FormatDateTime, LocaleFormatsSeparatorsAndQuotes) {
  TFormatSettings S = DayMonthYear();
  S.TimeSeparator = '.';
  S.LongDateFormat = "dddd, d. mmmm yyyy";
  S.LongTimeFormat = "hh:nn:ss";
  S.ShortTimeFormat = "hh:nn";
  EXPECT_EQ(Fmt("ddddd", Morning, S), "05.01.2024");
  EXPECT_EQ(Fmt("dddddd", Morning, S), "Friday, 5. January 2024");
  EXPECT_EQ(Fmt("t|tt", Morning, S), "09.03|09.03.07");
  EXPECT_EQ(Fmt("c", Morning, S), "05.01.2024 09.03.07");
  EXPECT_EQ(Fmt("c", EncodeDate(2024, 1, 5), S), "05.01.2024");
  EXPECT_EQ(Fmt("", Morning, S), "05.01.2024 09.03.07");
  EXPECT_EQ(Fmt("yyyy/mm/dd hh:nn", Morning, S), "2024.01.05 09.03");
  EXPECT_EQ(Fmt("'yyyy' \"mm\" 'it''s'", Morning, S), "yyyy mm its");
  EXPECT_EQ(Fmt("d 'open", Morning, S), "5 open");
  S.DateSeparator = 0; // no separator at all
  EXPECT_EQ(Fmt("yyyy/mm", Morning, S), "202401");
}

TEST(FormatDateTime, NestedFormatsStopAtTheSecondLevel) {
  TFormatSettings S = Invariant();
  S.ShortDateFormat = "ddddd";
  S.LongTimeFormat = "tt";
  EXPECT_EQ(Fmt("ddddd", Morning, S), "");
  EXPECT_EQ(Fmt("tt", Morning, S), "");
  EXPECT_EQ(Fmt("c", Morning, S), " ");
  S.ShortDateFormat = "yyyy ddddd";
  EXPECT_EQ(Fmt("ddddd", Morning, S), "2024 ");
}

TEST(DateTimeToStr, UsesTheLocaleFormats) {
  TFormatSettings De = TFormatSettings::Create("de-DE");
  // Wine's German short date has no leading zeros ("d.M.yyyy"); the text follows it.
  const AnsiString Date = De.ShortDateFormat == "d.M.yyyy" ? "5.1.2024" : "05.01.2024";
  EXPECT_EQ(DateToStr(Morning, De), Date);
  EXPECT_EQ(TimeToStr(Morning, De), "09:03:07");
  EXPECT_EQ(DateTimeToStr(Morning, De), Date + " 09:03:07");
  EXPECT_EQ(DateTimeToStr(EncodeDate(2024, 1, 5), De), Date);
  const TFormatSettings Us = TFormatSettings::Create("en-US");
  EXPECT_EQ(DateToStr(Afternoon, Us), "1/5/2024");
  EXPECT_EQ(TimeToStr(Afternoon, Us), "2:05:00 PM");
  EXPECT_EQ(DateTimeToStr(Morning, Us), "1/5/2024 9:03:07 AM");
  // Without settings, the process's.
  EXPECT_EQ(DateToStr(Morning), FormatDateTime("ddddd", Morning, FormatSettings()));
}

TEST(StrToDate, ReadsTheNumbersInTheShortDateOrder) {
  const TFormatSettings Mdy = Invariant(), Dmy = DayMonthYear();
  TFormatSettings Ymd = Invariant();
  Ymd.ShortDateFormat = "yyyy-mm-dd";
  Ymd.DateSeparator = '-';
  const double Jan5 = EncodeDate(2024, 1, 5);
  EXPECT_EQ(double(StrToDate("01/05/2024", Mdy)), Jan5);
  EXPECT_EQ(double(StrToDate("05.01.2024", Dmy)), Jan5);
  EXPECT_EQ(double(StrToDate("2024-1-5", Ymd)), Jan5);
  EXPECT_EQ(double(StrToDate(" 5 . 1 . 2024 ", Dmy)), Jan5);
  EXPECT_EQ(double(StrToDate("05.01.2024.", Dmy)), Jan5);
  EXPECT_EQ(double(StrToDate("5.1", Dmy)), double(EncodeDate(CurrentYear(), 1, 5)));
  EXPECT_EQ(double(StrToDate("29.02.0", Dmy)), double(EncodeDate(2000, 2, 29)));
}

TEST(StrToDate, TwoDigitYearsFallInTheCenturyWindow) {
  TFormatSettings S = DayMonthYear();
  const int Now = CurrentYear();
  for (int Window : {0, 50, 99}) {
    S.TwoDigitYearCenturyWindow = uint16_t(Window);
    const int Base = Now - Window;
    for (int YY = 0; YY < 100; YY += 7) {
      const AnsiString Text = "1.6." + std::to_string(YY);
      int Expected = Base / 100 * 100 + YY;
      if (Window > 0 && Expected < Base) Expected += 100;
      EXPECT_EQ(YearOf(StrToDate(Text, S)), Expected) << Text << " window " << Window;
    }
  }
  // Three digits and more are years as written.
  EXPECT_EQ(YearOf(StrToDate("1.6.024", S)), 24);
}

TEST(StrToDate, RefusesWhatIsNoDate) {
  const TFormatSettings S = DayMonthYear();
  for (const char* Bad : {"", " ", "31.02.2024", "5/1/2024", "5.1.2024x", "1.2.3.4", "5", "5.",
                          ".1.2024", "5.1.12345", "0.1.2024", "5.13.2024", "5.1.-24"}) {
    TDateTime V = 7.0;
    EXPECT_FALSE(TryStrToDate(Bad, V, S)) << Bad;
    EXPECT_EQ(double(V), 7.0);
  }
  try {
    StrToDate("31.02.2024", S);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "'31.02.2024' is not a valid date");
  }
}

TEST(StrToTime, HoursMinutesSecondsMillisecondsAndMarks) {
  const TFormatSettings S = DayMonthYear(); // decimal comma
  auto Time = [&](const char* Text) { return double(StrToTime(Text, S)); };
  EXPECT_EQ(Time("9"), double(EncodeTime(9, 0, 0, 0)));
  EXPECT_EQ(Time("9:03"), double(EncodeTime(9, 3, 0, 0)));
  EXPECT_EQ(Time(" 9 : 03 : 07 "), double(EncodeTime(9, 3, 7, 0)));
  EXPECT_EQ(Time("9:03:07,045"), double(EncodeTime(9, 3, 7, 45)));
  EXPECT_EQ(Time("9:03:07,5"), double(EncodeTime(9, 3, 7, 5))); // a count, not a fraction
  EXPECT_EQ(Time("2:05 PM"), double(EncodeTime(14, 5, 0, 0)));
  EXPECT_EQ(Time("pm 2:05"), double(EncodeTime(14, 5, 0, 0)));
  EXPECT_EQ(Time("12:00 AM"), 0.0);
  EXPECT_EQ(Time("12 pm"), 0.5);
  for (const char* Bad : {"", "0:00 PM", "13 PM", "24:00", "9:", "9:60", "9:00:60", "9:00:00,1000",
                          "9 x", "9.03", "-1"}) {
    TDateTime V = 7.0;
    EXPECT_FALSE(TryStrToTime(Bad, V, S)) << Bad;
    EXPECT_EQ(double(V), 7.0);
  }
  TFormatSettings Marks = S;
  Marks.TimeAMString = "vorm.";
  Marks.TimePMString = "nachm.";
  EXPECT_EQ(double(StrToTime("2:05 NACHM.", Marks)), double(EncodeTime(14, 5, 0, 0)));
  EXPECT_EQ(double(StrToTime("2:05 PM", Marks)), double(EncodeTime(14, 5, 0, 0)));
  try {
    StrToTime("25:00", S);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "'25:00' is not a valid time");
  }
}

TEST(StrToDateTime, ADateWithAnOptionalTimeOrATimeAlone) {
  const TFormatSettings S = DayMonthYear();
  EXPECT_EQ(double(StrToDateTime("05.01.2024 09:03:07,045", S)), double(Morning));
  EXPECT_EQ(double(StrToDateTime("05.01.2024", S)), double(EncodeDate(2024, 1, 5)));
  EXPECT_EQ(double(StrToDateTime("2:05 pm", S)), double(EncodeTime(14, 5, 0, 0)));
  EXPECT_EQ(double(StrToDateTime("29.12.1899 06:00", S)), -1.25);
  TDateTime V;
  EXPECT_FALSE(TryStrToDateTime("05.01.2024 09:03 x", V, S));
  EXPECT_FALSE(TryStrToDateTime("05.01.2024 25:00", V, S));
  EXPECT_EQ(double(StrToDateTimeDef("nonsense", 3.5)), 3.5);
  try {
    StrToDateTime("05.01.2024 9:60", S);
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "'05.01.2024 9:60' is not a valid date and time");
  }
  // What FormatDateTime writes in a locale's formats, StrToDateTime reads back.
  for (const char* Locale : {"de-DE", "en-US", "fr-FR", "ja-JP"}) {
    const TFormatSettings L = TFormatSettings::Create(Locale);
    for (TDateTime T : {Morning, Afternoon, EncodeDateTime(1999, 12, 31, 0, 0, 1, 0)})
      EXPECT_EQ(double(StrToDateTime(DateTimeToStr(T, L), L)), double(WithoutMSec(T)))
          << Locale << " " << DateTimeToStr(T, L);
  }
}

// SPDX-License-Identifier: MIT
// TFormatSettings from named locales, locale identifiers and (on POSIX) the environment.
#include <kx/rtl/FormatSettings.h>

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>

using namespace kx;

namespace {

UnicodeString Wide(const AnsiString& S) {
  return AnsiToUnicode(S);
}

void ExpectInvariant(const TFormatSettings& S) {
  EXPECT_EQ(S.ShortDateFormat, "MM/dd/yyyy");
  EXPECT_EQ(S.LongDateFormat, "dddd, dd mmmm yyyy");
  EXPECT_EQ(S.ShortTimeFormat, "HH:mm");
  EXPECT_EQ(S.LongTimeFormat, "HH:mm:ss");
  EXPECT_EQ(S.DateSeparator, '/');
  EXPECT_EQ(S.TimeSeparator, ':');
  EXPECT_EQ(S.DecimalSeparator, '.');
  EXPECT_EQ(S.ThousandSeparator, ',');
  EXPECT_EQ(S.TimeAMString, "AM");
  EXPECT_EQ(S.LongMonthNames[1], "January");
  EXPECT_EQ(S.ShortMonthNames[12], "Dec");
  EXPECT_EQ(S.LongDayNames[1], "Sunday");
  EXPECT_EQ(S.ShortDayNames[7], "Sat");
  EXPECT_EQ(S.TwoDigitYearCenturyWindow, 50);
}

// Day, month, four-digit year between dots; Wine's locale data leaves the leading zeros out,
// as Windows before 10 did.
bool IsGermanShortDate(const AnsiString& F) {
  return F == "dd.MM.yyyy" || F == "d.M.yyyy";
}

void ExpectGerman(const TFormatSettings& S) {
  EXPECT_PRED1(IsGermanShortDate, S.ShortDateFormat);
  EXPECT_EQ(S.DateSeparator, '.');
  EXPECT_EQ(S.TimeSeparator, ':');
  EXPECT_EQ(S.ShortTimeFormat, "hh:mm");
  EXPECT_EQ(S.LongTimeFormat, "hh:mm:ss");
  EXPECT_EQ(S.DecimalSeparator, ',');
  EXPECT_EQ(S.ThousandSeparator, '.');
  EXPECT_EQ(S.ListSeparator, ';');
  EXPECT_EQ(S.LongMonthNames[1], "Januar");
  EXPECT_EQ(Wide(S.LongMonthNames[3]), u"M\u00E4rz");
  EXPECT_EQ(S.LongDayNames[1], "Sonntag");
  EXPECT_EQ(S.LongDayNames[2], "Montag");
  // The long date names the weekday and the month.
  EXPECT_NE(S.LongDateFormat.find("dddd"), AnsiString::npos) << S.LongDateFormat;
  EXPECT_NE(S.LongDateFormat.find("MMMM"), AnsiString::npos) << S.LongDateFormat;
}

} // namespace

TEST(FormatSettings, InvariantValues) {
  ExpectInvariant(TFormatSettings::Invariant());
  ExpectInvariant(TFormatSettings::Create(LocaleInvariant));
}

TEST(FormatSettings, NamedLocalesAndIdentifiers) {
  ExpectGerman(TFormatSettings::Create("de-DE"));
  ExpectGerman(TFormatSettings::Create("de_DE"));
  ExpectGerman(TFormatSettings::Create(0x0407));

  const TFormatSettings Us = TFormatSettings::Create("en-US");
  EXPECT_EQ(Us.ShortDateFormat, "M/d/yyyy");
  EXPECT_EQ(Us.ShortTimeFormat, "h:mm AMPM");
  EXPECT_EQ(Us.LongTimeFormat, "h:mm:ss AMPM");
  EXPECT_EQ(Us.TimeAMString, "AM");
  EXPECT_EQ(Us.TimePMString, "PM");
  EXPECT_EQ(Us.DecimalSeparator, '.');
  EXPECT_EQ(Us.ListSeparator, ',');
  EXPECT_EQ(Us.LongDayNames[7], "Saturday");

  const TFormatSettings Fr = TFormatSettings::Create("fr-FR");
  EXPECT_EQ(Fr.ShortDateFormat, "dd/MM/yyyy");
  EXPECT_EQ(Fr.DecimalSeparator, ',');
  EXPECT_EQ(Fr.ThousandSeparator, ' '); // a no-break space in the locale
  EXPECT_EQ(Fr.LongMonthNames[1], "janvier");

  // Unknown locales fall back to the invariant values.
  ExpectInvariant(TFormatSettings::Create("xx-YY"));
}

TEST(FormatSettings, TheProcessLocaleIsReadOnce) {
  TFormatSettings& Global = FormatSettings();
  EXPECT_EQ(&Global, &FormatSettings());
  EXPECT_FALSE(Global.ShortDateFormat.empty());
  EXPECT_FALSE(Global.LongTimeFormat.empty());
}

#if !defined(_WIN32)
namespace {
// Sets the locale variables for one test and puts them back.
class LocaleEnvironment : public ::testing::Test {
protected:
  void SetUp() override {
    for (const char* Name : Names) {
      const char* V = std::getenv(Name);
      Saved.push_back(V ? std::make_pair(true, std::string(V)) : std::make_pair(false, ""));
      unsetenv(Name);
    }
  }
  void TearDown() override {
    for (size_t I = 0; I < std::size(Names); ++I) {
      if (Saved[I].first)
        setenv(Names[I], Saved[I].second.c_str(), 1);
      else
        unsetenv(Names[I]);
    }
  }
  static constexpr const char* Names[] = {"LC_ALL", "LC_TIME", "LC_NUMERIC", "LANG"};
  std::vector<std::pair<bool, std::string>> Saved;
};
} // namespace

TEST_F(LocaleEnvironment, FollowsTheVariablesSetlocaleReads) {
  ExpectInvariant(TFormatSettings::Create()); // nothing set: the C locale
  setenv("LANG", "de_DE.UTF-8", 1);
  ExpectGerman(TFormatSettings::Create());
  ExpectGerman(TFormatSettings::Create(LocaleSystemDefault));
  setenv("LC_ALL", "C.UTF-8", 1);
  ExpectInvariant(TFormatSettings::Create());
  unsetenv("LC_ALL");
  // Dates and numbers by their own categories.
  setenv("LC_NUMERIC", "POSIX", 1);
  TFormatSettings Mixed = TFormatSettings::Create();
  EXPECT_PRED1(IsGermanShortDate, Mixed.ShortDateFormat);
  EXPECT_EQ(Mixed.DecimalSeparator, '.');
  setenv("LC_TIME", "en_US.UTF-8", 1);
  setenv("LC_NUMERIC", "de_DE@euro", 1);
  Mixed = TFormatSettings::Create();
  EXPECT_EQ(Mixed.ShortDateFormat, "M/d/yyyy");
  EXPECT_EQ(Mixed.DecimalSeparator, ',');
}
#endif

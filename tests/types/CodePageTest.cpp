// SPDX-License-Identifier: MIT
// KxCodePage: charset names to code pages and back, and which code pages the platform
// converts.
#include <kx/rtl/Exceptions.h>
#include <kx/uKxTypes.h>

#include <gtest/gtest.h>

#include <map>
#include <set>

using namespace kx;

namespace {

// Every code page of the number table with its name, found by asking for all 16-bit numbers.
const std::map<uint16_t, AnsiString>& NamedCodePages() {
  static const std::map<uint16_t, AnsiString> Named = [] {
    std::map<uint16_t, AnsiString> R;
    for (uint32_t Cp = 0; Cp <= 0xFFFF; ++Cp) {
      try {
        R.emplace(uint16_t(Cp), KxCodePage(uint16_t(Cp)));
      } catch (const Exception&) {
      }
    }
    return R;
  }();
  return Named;
}

} // namespace

TEST(CodePage, NamesGiveCodePagesWhateverTheirCase) {
  struct TCase {
    const char* Name;
    uint16_t CodePage;
  } Cases[] = {
      {"utf-8", 65001},
      {"UTF-8", 65001},
      {"Utf-16", 1200},
      {"UCS-2", 1200},
      {"iso-10646-ucs-2", 1200},
      {"unicodeFFFE", 1201},
      {"utf-32", 12000},
      {"UTF-32BE", 12001},
      {"windows-1250", 1250},
      {"Windows-1258", 1258},
      {"ISO-8859-1", 28591},
      {"iso-8859-9", 28599},
      {"iso-8859-13", 28603},
      {"iso-8859-15", 28605},
      {"us-ascii", 20127},
      {"x-cp1250", 1250},
      {"x-cp1251", 1251},
      {"IBM037", 37},
      {"ibm437", 437},
      {"macintosh", 10000},
      {"Johab", 1361},
      {"shift_jis", 932},
      {"Shift-JIS", 932},
      {"x-sjis", 932},
      {"x-EBCDIC-KoreanExtended", 20833},
      {"iso-2022-jp", 50220},
      {"csISO2022JP", 50221},
      {"EUC-JP", 20932},
      {"x-euc-jp", 51932},
      {"ks_c_5601-1987", 949},
      {"korean", 949},
      {"gb2312", 936},
      {"GB18030", 54936},
      {"hz-gb-2312", 52936},
      {"big5", 950},
      {"latin1", 28591},
      {"L2", 28592},
      {"iso_8859-8:1988", 28598},
      {"x-iscii-pa", 57011},
      {"utf-7", 65000},
      {"ibm01149", 1149},
  };
  for (const TCase& C : Cases) EXPECT_EQ(KxCodePage(AnsiString(C.Name)), C.CodePage) << C.Name;
}

TEST(CodePage, EmptyUntrimmedAndUnknownNames) {
  EXPECT_EQ(KxCodePage(AnsiString()), 0);
  // Two keys of the table end in a space and match only with it.
  EXPECT_EQ(KxCodePage(AnsiString("ms_kanji ")), 932);
  EXPECT_EQ(KxCodePage(AnsiString("CSGB2312 ")), 936);
  for (const char* Name : {"ms_kanji", "csgb2312", " utf-8", "utf-8 ", "utf8", "cp1252"}) {
    try {
      KxCodePage(AnsiString(Name));
      FAIL() << Name;
    } catch (const Exception& E) {
      EXPECT_EQ(E.Message(), AnsiString("No CodePage ID found for ") + Name + "!");
    }
  }
}

TEST(CodePage, NumbersGiveTheirCanonicalNames) {
  EXPECT_EQ(KxCodePage(uint16_t(28591)), "iso-8859-1");
  EXPECT_EQ(KxCodePage(uint16_t(37)), "IBM037");
  EXPECT_EQ(KxCodePage(uint16_t(708)), "ASMO-708");
  EXPECT_EQ(KxCodePage(uint16_t(1200)), "utf-16");
  EXPECT_EQ(KxCodePage(uint16_t(1201)), "unicodeFFFE");
  EXPECT_EQ(KxCodePage(uint16_t(12001)), "utf-32BE");
  EXPECT_EQ(KxCodePage(uint16_t(65001)), "utf-8");
  EXPECT_EQ(KxCodePage(uint16_t(20932)), "EUC-JP");
  EXPECT_EQ(KxCodePage(uint16_t(51932)), "euc-jp");
  for (uint16_t Cp : {0, 1, 42, 50222, 65535}) {
    try {
      KxCodePage(Cp);
      FAIL() << Cp;
    } catch (const Exception& E) {
      EXPECT_EQ(E.Message(), "No CodePage Name found for " + std::to_string(Cp) + "!");
    }
  }
}

TEST(CodePage, TheTwoTablesAgree) {
  const auto& Named = NamedCodePages();
  EXPECT_EQ(Named.size(), 141u);
  // Every canonical name leads back to its code page, except the lower-case "euc-jp": the
  // name table gives the first of the two code pages spelt so.
  for (const auto& [Cp, Name] : Named)
    EXPECT_EQ(KxCodePage(Name), Cp == 51932 ? 20932 : Cp) << Cp << " " << Name;
}

TEST(CodePage, ThePlatformConvertsTheTableCodePagesItHas) {
  // Code pages the platform lacks raise ERROR_INVALID_PARAMETER, as do the UTF-16 and UTF-32
  // ones, which the conversion pair never takes.
  std::set<uint16_t> Refused;
  for (const auto& [Cp, Name] : NamedCodePages()) {
    try {
      TKxEncoding::ConvertA(AnsiString("A"), Cp);
    } catch (const EOSError& E) {
      EXPECT_EQ(E.ErrorCode, 87u) << Cp;
      Refused.insert(Cp);
    }
  }
  for (uint16_t Cp : {1200, 1201, 12000, 12001}) EXPECT_TRUE(Refused.count(Cp)) << Cp;
  for (uint16_t Cp : {37,    437,   850,   866,   874,   932,   936,   949,  950,   1250,
                      1251,  1252,  1253,  1254,  1255,  1256,  1257,  1258, 10000, 20127,
                      20866, 21866, 28591, 28592, 28595, 28605, 65000, 65001})
    EXPECT_FALSE(Refused.count(Cp)) << Cp;
#if !defined(_WIN32)
  // What ICU has no converter for; everything else of the table opens one.
  const std::set<uint16_t> Lacking = {709,   710,   1200,  1201,  1361,  10001, 10002, 10003, 10004,
                                      10005, 10008, 10010, 10021, 10079, 10082, 12000, 12001, 20000,
                                      20001, 20002, 20003, 20004, 20005, 20105, 20106, 20107, 20108,
                                      20261, 20269, 20423, 20833, 20880, 20905, 20924, 29001};
  EXPECT_EQ(Refused, Lacking);
#endif
}

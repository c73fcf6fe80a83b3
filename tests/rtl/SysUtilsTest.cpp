// SPDX-License-Identifier: MIT
#include <kx/rtl/SysUtils.h>

#include <gtest/gtest.h>

#include <limits>

using namespace kx;

namespace {
// Pins the process code page for the 8-bit Ansi* cases and restores the default.
class CodePage1252 : public ::testing::Test {
protected:
  void SetUp() override { KxSetSystemCodePage(1252); }
  void TearDown() override { KxSetSystemCodePage(0); }
};
} // namespace

TEST(StrToInt, AcceptsDecimalHexAndSigns) {
  EXPECT_EQ(StrToInt("123"), 123);
  EXPECT_EQ(StrToInt("   42"), 42);
  EXPECT_EQ(StrToInt("-7"), -7);
  EXPECT_EQ(StrToInt("+7"), 7);
  EXPECT_EQ(StrToInt("007"), 7);
  EXPECT_EQ(StrToInt("$FF"), 255);
  EXPECT_EQ(StrToInt("$ff"), 255);
  EXPECT_EQ(StrToInt("0x1A"), 26);
  EXPECT_EQ(StrToInt("0X1a"), 26);
  EXPECT_EQ(StrToInt("x10"), 16);
  EXPECT_EQ(StrToInt("-$10"), -16);
  EXPECT_EQ(StrToInt(" $0000000001"), 1); // leading zeros do not overflow
  // Hexadecimal may use all 32 bits; decimal must fit the signed range.
  EXPECT_EQ(StrToInt("$FFFFFFFF"), -1);
  EXPECT_EQ(StrToInt("$80000000"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(StrToInt("2147483647"), 2147483647);
  EXPECT_EQ(StrToInt("-2147483648"), std::numeric_limits<int32_t>::min());
  EXPECT_EQ(StrToInt(u"$7f"), 127);
  EXPECT_EQ(StrToInt(u"-12"), -12);
}

TEST(StrToInt, RejectsEverythingElseWithTheConvertMessage) {
  for (const char* Bad : {"", " ", "-", "+", "$", "0x", "12 ", "1 2", "12a", "\t5", "1.0", "--1",
                          "2147483648", "-2147483649", "$100000000", "$G", "0x-1", "1e3"}) {
    int32_t V = 99;
    EXPECT_FALSE(TryStrToInt(AnsiString(Bad), V)) << Bad;
    EXPECT_EQ(V, 99) << "a failed conversion leaves the value alone: " << Bad;
    EXPECT_EQ(StrToIntDef(AnsiString(Bad), -5), -5) << Bad;
  }
  AnsiString WithZero = AnsiString("12") + '\0' + "3";
  EXPECT_EQ(StrToIntDef(WithZero, 0), 0); // a zero is not the end of the text
  try {
    StrToInt(" 12 ");
    FAIL();
  } catch (const EConvertError& E) {
    EXPECT_EQ(E.Message(), "' 12 ' is not a valid integer value");
  }
  try {
    StrToInt(u"\uFF11\uFF12"); // full-width digits are not digits here
    FAIL();
  } catch (const EConvertError& E) {
    // The text is narrowed to the code page; only the frame is fixed.
    EXPECT_TRUE(E.Message().starts_with("'")) << E.Message();
    EXPECT_TRUE(E.Message().ends_with("' is not a valid integer value")) << E.Message();
  }
}

TEST(StrToInt, SixtyFourBitForms) {
  EXPECT_EQ(StrToInt64("9223372036854775807"), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(StrToInt64("-9223372036854775808"), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(StrToInt64("$FFFFFFFFFFFFFFFF"), -1);
  EXPECT_EQ(StrToInt64("0x100000000"), int64_t(1) << 32);
  EXPECT_EQ(StrToInt64(u" 4294967296"), int64_t(4294967296));
  EXPECT_EQ(StrToInt64Def("9223372036854775808", 3), 3);
  EXPECT_EQ(StrToInt64Def(u"$10000000000000000", 4), 4);
  int64_t V = 0;
  EXPECT_TRUE(TryStrToInt64("-$1", V));
  EXPECT_EQ(V, -1);
  EXPECT_THROW(StrToInt64("x"), EConvertError);
}

TEST(IntToStr, DecimalAndHexadecimal) {
  EXPECT_EQ(IntToStr(0), "0");
  EXPECT_EQ(IntToStr(std::numeric_limits<int32_t>::min()), "-2147483648");
  EXPECT_EQ(IntToStr(std::numeric_limits<int64_t>::max()), "9223372036854775807");
  EXPECT_EQ(IntToStr(uint32_t(4000000000u)), "4000000000");
  EXPECT_EQ(IntToStr(static_cast<long long>(-5)), "-5");
  EXPECT_EQ(IntToHex(255, 4), "00FF");
  EXPECT_EQ(IntToHex(0xABCDEF, 2), "ABCDEF");
  EXPECT_EQ(IntToHex(-1, 2), "FFFFFFFF");
  EXPECT_EQ(IntToHex(int64_t(-1), 2), "FFFFFFFFFFFFFFFF");
  EXPECT_EQ(IntToHex(uint8_t(10), 0), "A");
}

TEST(Trim, RemovesBlanksAndControlsOnly) {
  EXPECT_EQ(Trim(AnsiString("\t\r\n x y \x01")), "x y");
  EXPECT_EQ(TrimLeft(AnsiString("  x ")), "x ");
  EXPECT_EQ(TrimRight(AnsiString("  x ")), "  x");
  EXPECT_EQ(Trim(AnsiString(" \t ")), "");
  // Bytes above 127 are not blanks, whatever the signedness of char.
  EXPECT_EQ(Trim(AnsiString("\xA0x\xA0")), "\xA0x\xA0");
  EXPECT_EQ(Trim(UnicodeString(u"\u00A0x \u0009")), u"\u00A0x");
  EXPECT_EQ(TrimLeft(UnicodeString(u"\u3000 x")), u"\u3000 x");
}

TEST(CaseAndCompare, OrdinalFunctionsFoldAToZOnly) {
  EXPECT_EQ(UpperCase(AnsiString("abc\xE4z")), "ABC\xE4Z");
  EXPECT_EQ(LowerCase(UnicodeString(u"ABC\u00C4")), u"abc\u00C4");
  EXPECT_LT(CompareStr("a", "b"), 0);
  EXPECT_EQ(CompareStr("B", "a"), 'B' - 'a');
  EXPECT_LT(CompareStr("a", "ab"), 0);
  EXPECT_GT(CompareStr("\xE4", "z"), 0); // unsigned bytes
  EXPECT_EQ(CompareText("abc", "ABC"), 0);
  EXPECT_LT(CompareText("abc", "ABD"), 0);
  // Folded to upper case: 'a' is 'A' (65), below '_' (95).
  EXPECT_LT(CompareText("a", "_"), 0);
  EXPECT_GT(CompareText(u"\u00E4", u"Z"), 0);
  EXPECT_TRUE(SameText("Hello", "hELLO"));
  EXPECT_FALSE(SameText("Hello", "Hello "));
  EXPECT_FALSE(SameText(UnicodeString(u"\u00E4"), UnicodeString(u"\u00C4")));
}

TEST(CaseAndCompare, AnsiFunctionsFollowTheLocale) {
  EXPECT_EQ(AnsiUpperCase(UnicodeString(u"stra\u00DFe \u00E9t\u00E9")),
            u"STRA\u00DFE \u00C9T\u00C9");
  EXPECT_EQ(AnsiLowerCase(UnicodeString(u"\u00C4\u00D6 ABC \u0394")), u"\u00E4\u00F6 abc \u03B4");
  EXPECT_EQ(AnsiCompareText(AnsiString("ABC"), AnsiString("abc")), 0);
  EXPECT_EQ(AnsiCompareText(AnsiString("apple"), AnsiString("BANANA")), -1);
  EXPECT_EQ(AnsiCompareText(AnsiString("cherry"), AnsiString("Banana")), 1);
  EXPECT_NE(AnsiCompareStr(AnsiString("abc"), AnsiString("ABC")), 0);
  // Collation, not code units: 'a' before 'B', and an accented e before f.
  EXPECT_EQ(AnsiCompareStr(AnsiString("a"), AnsiString("B")), -1);
  EXPECT_EQ(AnsiCompareText(UnicodeString(u"\u00E9"), UnicodeString(u"f")), -1);
  EXPECT_NE(AnsiCompareText(UnicodeString(u"\u00E9"), UnicodeString(u"e")), 0);
  EXPECT_TRUE(AnsiSameText(UnicodeString(u"\u00C9COLE"), UnicodeString(u"\u00E9cole")));
}

TEST_F(CodePage1252, AnsiCaseMappingGoesThroughTheCodePage) {
  EXPECT_EQ(AnsiUpperCase(AnsiString("\xE4pfel \xFF")), "\xC4PFEL \x9F");
  EXPECT_EQ(AnsiLowerCase(AnsiString("\xC4RGER")), "\xE4rger");
  EXPECT_TRUE(AnsiSameText(AnsiString("\xC4rger"), AnsiString("\xE4RGER")));
  EXPECT_EQ(
      StringReplace(AnsiString("\xC4rger \xE4rger"), "\xE4", "ae", {rfReplaceAll, rfIgnoreCase}),
      "aerger aerger");
}

TEST(Quoting, QuotesAreDoubledAndUndoubled) {
  EXPECT_EQ(QuotedStr("it's"), "'it''s'");
  EXPECT_EQ(QuotedStr(""), "''");
  EXPECT_EQ(QuotedStr(UnicodeString(u"\u00E9'")), u"'\u00E9'''");
  EXPECT_EQ(AnsiQuotedStr("a\"b", '"'), "\"a\"\"b\"");
  EXPECT_EQ(AnsiDequotedStr("'it''s'", '\''), "it's");
  EXPECT_EQ(AnsiDequotedStr(UnicodeString(u"\"x\"\"\""), u'"'), u"x\"");
  EXPECT_EQ(AnsiDequotedStr("abc", '\''), "abc");    // not quoted: as it is
  EXPECT_EQ(AnsiDequotedStr("''", '\''), "''");      // empty comes out as the input
  EXPECT_EQ(AnsiDequotedStr("'ab'cd", '\''), "ab");  // text after the closing quote is dropped
  EXPECT_EQ(AnsiDequotedStr("'abc", '\''), "ab");    // unterminated: the last character goes
  EXPECT_EQ(AnsiDequotedStr("'a''bc", '\''), "a'b"); // ... also after a doubled quote

  AnsiString Src = "'a''b' rest";
  const char* P = Src.c_str();
  EXPECT_EQ(AnsiExtractQuotedStr(P, '\''), "a'b");
  EXPECT_STREQ(P, " rest");
  const char* NotQuoted = "abc";
  EXPECT_EQ(AnsiExtractQuotedStr(NotQuoted, '\''), "");
  EXPECT_STREQ(NotQuoted, "abc");
}

TEST(StringReplace, FirstOrAllCaseSensitiveOrNot) {
  EXPECT_EQ(StringReplace("aaa", "a", "b", {}), "baa");
  EXPECT_EQ(StringReplace("aaa", "a", "b", {rfReplaceAll}), "bbb");
  EXPECT_EQ(StringReplace("aaaa", "aa", "a", {rfReplaceAll}), "aa"); // no rescan of output
  EXPECT_EQ(StringReplace("abc", "", "x", {rfReplaceAll}), "abc");
  EXPECT_EQ(StringReplace("abc", "B", "x", {rfReplaceAll}), "abc");
  EXPECT_EQ(StringReplace("Hello hello HELLO", "hello", "x", {rfIgnoreCase}), "x hello HELLO");
  EXPECT_EQ(StringReplace("Hello hello HELLO", "hello", "<$0>", {rfIgnoreCase, rfReplaceAll}),
            "<$0> <$0> <$0>");
  EXPECT_EQ(StringReplace(UnicodeString(u"\u00C9t\u00E9 \u00E9T\u00C9"), UnicodeString(u"\u00E9t"),
                          UnicodeString(u"-"), {rfIgnoreCase, rfReplaceAll}),
            u"-\u00E9 -\u00C9");
}

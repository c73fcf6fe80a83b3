// SPDX-License-Identifier: MIT
// The text functions of uKxSysUtils, grouped by the rule each group pins down.
#include <kx/uKxSysUtils.h>

#include "support/SystemCodePage.h"

#include <gtest/gtest.h>

#include <vector>

using namespace kx;
using kxtest::TSystemCodePage;

namespace {

// A string list freed at the end of the test.
struct TOwnedList {
  TStringList* L = TStringList::Create();
  ~TOwnedList() { L->Free(); }
  TStringList* operator->() const { return L; }
  operator TStringList*() const { return L; }
  std::vector<AnsiString> Items() const {
    std::vector<AnsiString> R;
    for (int32_t I = 0; I < L->Count(); ++I) R.push_back(L->Strings(I));
    return R;
  }
};

using V = std::vector<AnsiString>;

} // namespace

TEST(StringUtilsTrim, LeftAndRightNeverRemoveTheirLastCandidate) {
  EXPECT_EQ(KxTrimLeft("   "), " ");
  EXPECT_EQ(KxTrimLeft(" \t x "), "x ");
  EXPECT_EQ(KxTrimLeft(""), "");
  EXPECT_EQ(KxTrimRight(" \t"), " ");
  EXPECT_EQ(KxTrimRight(" x \t\r\n"), " x");
  EXPECT_EQ(KxTrimRight("\t"), "\t");
  EXPECT_EQ(KxTrim("   "), "");
  EXPECT_EQ(KxTrim(" "), "");
  EXPECT_EQ(KxTrim("x"), "x");
  EXPECT_EQ(KxTrim("\x01 a b \x1F"), "a b");
  // Bytes above 127 are not blanks, whatever their sign as a char.
  EXPECT_EQ(KxTrim("\xA0x\xA0"), "\xA0x\xA0");
}

TEST(StringUtilsTrim, StripLiteralsStopsAtTheLastCharacter) {
  EXPECT_EQ(KxStripLiterals("'abc'"), "abc");
  EXPECT_EQ(KxStripLiterals("\"\""), "\"");
  EXPECT_EQ(KxStripLiterals(" \"it's\" "), "it's");
  EXPECT_EQ(KxStripLiterals("'"), "'");
  EXPECT_EQ(KxStripLiterals("  "), " ");
  EXPECT_EQ(KxStripLiterals(""), "");
}

TEST(StringUtilsPad, PadsBeforeTheSignAndLeavesLongerTextAlone) {
  EXPECT_EQ(KxPadLeft(int32_t(-5), 4, '0'), "00-5");
  EXPECT_EQ(KxPadLeft(int64_t(-9000000000LL), 13, '0'), "00-9000000000");
  EXPECT_EQ(KxPadLeft(int32_t(42), 5, '\0'), "   42");
  EXPECT_EQ(KxPadLeft("abc", 2, '\0'), "abc");
  EXPECT_EQ(KxPadLeft("abc", -1, 'x'), "abc");
  EXPECT_EQ(KxPadLeft("", 3, '*'), "***");
  EXPECT_EQ(KxPadRight("ab", 4, '\0'), "ab  ");
  EXPECT_EQ(KxPadRight("ab", 4, '.'), "ab..");
  EXPECT_EQ(KxPadRight("abcd", 4, '.'), "abcd");
}

TEST(StringUtilsSplit, StringToListKeepsEveryPieceAndAppends) {
  TOwnedList L;
  L->Add("kept");
  KxStringToList("a,b,", ",", L);
  EXPECT_EQ(L.Items(), (V{"kept", "a", "b", ""}));
  TOwnedList E;
  KxStringToList("", ",", E);
  EXPECT_EQ(E.Items(), V{""});
  TOwnedList N;
  KxStringToList("a,b", "", N);
  EXPECT_EQ(N.Items(), V{"a,b"});
  TOwnedList M;
  KxStringToList("x::y::::z", "::", M);
  EXPECT_EQ(M.Items(), (V{"x", "y", "", "z"}));
}

TEST(StringUtilsSplit, ListToStringCutsExactlyOneCharacter) {
  TOwnedList L;
  EXPECT_EQ(KxListToString(L, ","), "");
  L->Add("a");
  L->Add("b");
  EXPECT_EQ(KxListToString(L, ","), "a,b");
  EXPECT_EQ(KxListToString(L, ", "), " a, b");
  EXPECT_EQ(KxListToString(L, ""), "b");
  // The result is cut at 999999 characters.
  TOwnedList Big;
  Big->Add(AnsiString(600000, 'x'));
  Big->Add(AnsiString(600000, 'y'));
  const AnsiString R = KxListToString(Big, ";");
  ASSERT_EQ(R.size(), 999999u);
  EXPECT_EQ(R.substr(599999, 3), "x;y");
}

TEST(StringUtilsSplit, TokenizeSkipsEmptyTokensButRecordsEveryDelimiter) {
  TOwnedList Tokens, Delims;
  KxTokenize("a  b", Tokens, "", Delims);
  EXPECT_EQ(Tokens.Items(), (V{"a", "b"}));
  EXPECT_EQ(Delims.Items(), (V{" ", " "}));

  TOwnedList T2, D2;
  KxTokenize("x=1; y.z(q)", T2, "", D2);
  EXPECT_EQ(T2.Items(), (V{"x", "1", "y", "z", "q"}));
  EXPECT_EQ(D2.Items(), (V{"=", ";", " ", ".", "(", ")"}));

  TOwnedList T3;
  KxTokenize("a-b c", T3, "-", nullptr);
  EXPECT_EQ(T3.Items(), (V{"a", "b c"}));
  TOwnedList T4;
  KxTokenize("~~~", T4, "", nullptr);
  EXPECT_EQ(T4->Count(), 0);
  // Every one of the 31 default delimiters splits.
  EXPECT_EQ(AnsiString(SKxDefaultTokenDelimiters).size(), 31u);
  for (char C : AnsiString(SKxDefaultTokenDelimiters)) {
    TOwnedList T;
    KxTokenize(AnsiString("a") + C + "b", T, "", nullptr);
    EXPECT_EQ(T.Items(), (V{"a", "b"})) << C;
  }
}

TEST(StringUtilsSplit, StringReplaceChainsAndAssertsMatchingLengths) {
  EXPECT_EQ(KxStringReplace("abcabc", {"a", "bc"}, {"bc", "X"}, TReplaceFlags{rfReplaceAll}),
            "XXXX");
  EXPECT_EQ(KxStringReplace("abcabc", {"A"}, {"z"}, TReplaceFlags{}), "abcabc");
  EXPECT_EQ(KxStringReplace("abcabc", {"A"}, {"z"}, TReplaceFlags{rfIgnoreCase}), "zbcabc");
  if (KxAssertionsEnabled) {
    try {
      KxStringReplace("a", {"a", "b"}, {"c"}, TReplaceFlags{});
      ADD_FAILURE() << "no assertion";
    } catch (const EAssertionFailed& E) {
      EXPECT_EQ(E.Message(),
                "Assertion failure (source\\ComponentSets\\Components\\common\\uKxSysUtils, "
                "line 1385)");
    }
  }
}

TEST(StringUtilsSplit, NormalizeSpaceCountsOnlyTheSpace) {
  EXPECT_EQ(KxNormalizeSpace("  a   b  c "), "a b c");
  EXPECT_EQ(KxNormalizeSpace("a\t\tb\r\n c"), "a\t\tb\r\n c");
  EXPECT_EQ(KxNormalizeSpace(""), "");
  EXPECT_EQ(KxNormalizeSpace("    "), "");
  EXPECT_EQ(KxNormalizeSpace("x"), "x");
  // Bytes of any code page pass as they are.
  EXPECT_EQ(KxNormalizeSpace("\xC3\xA9  \xE2\x82\xAC\x00z"), "\xC3\xA9 \xE2\x82\xAC");
  const AnsiString WithZero("a \0  b", 6);
  EXPECT_EQ(KxNormalizeSpace(WithZero), AnsiString("a \0 b", 5));
}

TEST(StringUtilsCompare, TextComparisonsFoldOnlyAsciiLetters) {
  EXPECT_TRUE(KxSameText("Hello", "hELLO"));
  EXPECT_FALSE(KxSameText("Hello", "Hello "));
  EXPECT_TRUE(KxSameText(u"Straße", u"STRAßE"));
  EXPECT_FALSE(KxSameText(u"é", u"É")); // a-z only
  EXPECT_TRUE(KxSameTrimmedText(" abc\t", "ABC"));
  EXPECT_TRUE(KxContainsText("B", "abc"));
  EXPECT_FALSE(KxContainsText("abc", "B"));
  EXPECT_FALSE(KxContainsText("", "abc"));
  EXPECT_TRUE(KxContainsText(u"LLO w", u"hello world"));
  EXPECT_FALSE(KxContainsText(u"", u""));
  EXPECT_TRUE(KxIsUppercase("ABC-1"));
  EXPECT_TRUE(KxIsUppercase(""));
  EXPECT_TRUE(KxIsUppercase("123"));
  EXPECT_FALSE(KxIsUppercase("ABc"));
}

TEST(StringUtilsCompare, SetsGuidsAndCharacterClasses) {
  EXPECT_TRUE(KxStrInSet("b", {"a", "b"}));
  EXPECT_FALSE(KxStrInSet("B", {"a", "b"}));
  EXPECT_FALSE(KxStrInSet("", {}));
  const std::vector<AnsiString> Values{"x", ""};
  EXPECT_TRUE(KxStrInSet("", Values));

  const TGUID A = GuidLiteral("{0417F540-1234-5678-9ABC-DEF012345678}");
  TGUID B = A;
  EXPECT_TRUE(KxSameGuid(A, B));
  B.D4[7] ^= 1;
  EXPECT_FALSE(KxSameGuid(A, B));

  const TKxCharSet Set{'a', 'z', '\xE9'};
  EXPECT_TRUE(KxCharInSet('a', Set));
  EXPECT_TRUE(KxCharInSet('\xE9', Set));
  EXPECT_TRUE(KxCharInSet(u'\x00E9', Set));
  EXPECT_FALSE(KxCharInSet(u'\x0161', Set)); // 0x161 would wrap to 'a' as a byte
  EXPECT_FALSE(KxCharInSet('b', Set));

  for (char C : {'\n', '\r', ' ', ')', ',', ';'}) {
    EXPECT_TRUE(KxIsNameDelimiter(C)) << int(C);
    EXPECT_TRUE(KxIsNameDelimiter(WideChar(C))) << int(C);
  }
  EXPECT_FALSE(KxIsNameDelimiter('('));
  EXPECT_FALSE(KxIsNameDelimiter(u'\x0120')); // not a space, though its low byte is
  EXPECT_TRUE(KxIsLiteral('"'));
  EXPECT_TRUE(KxIsLiteral(u'\''));
  EXPECT_FALSE(KxIsLiteral('`'));
  EXPECT_FALSE(KxIsLiteral(u'\x0122'));
}

TEST(StringUtilsCompare, BitChecks) {
  EXPECT_TRUE(KxIsBitChecked(5, 3));
  EXPECT_FALSE(KxIsBitChecked(5, 2));
  EXPECT_TRUE(KxIsBitChecked(5, 1));
  EXPECT_TRUE(KxIsBitChecked(int32_t(0x80000000u), 32));
  EXPECT_FALSE(KxIsBitChecked(0x7FFFFFFF, 32));
  // An empty mask is always contained.
  EXPECT_TRUE(KxIsBitChecked(0, 0));
  EXPECT_TRUE(KxIsBitChecked(0, 33));
}

TEST(StringUtilsExtract, CopiesClipAndLastPosStopsAtZero) {
  EXPECT_EQ(KxLeft("abc", 2), "ab");
  EXPECT_EQ(KxLeft("abc", 9), "abc");
  EXPECT_EQ(KxLeft("abc", -1), "");
  EXPECT_EQ(KxRight("abc", 2), "bc");
  EXPECT_EQ(KxRight("abc", 9), "abc");
  EXPECT_EQ(KxRight("abc", 0), "");
  EXPECT_EQ(KxAnsiCopy("abcdef", 0, 2), "ab");
  EXPECT_EQ(KxAnsiCopy("abcdef", 5, 9), "ef");
  EXPECT_EQ(KxAnsiCopy("abcdef", 7, 1), "");
  EXPECT_EQ(KxIntToAnsiStr(-2147483647 - 1), "-2147483648");
  EXPECT_EQ(KxLastPos("a.b.c", '.'), 4);
  EXPECT_EQ(KxLastPos("abc", '.'), 0);
  EXPECT_EQ(KxLastPos(AnsiString("a.b\0.c", 6), '.'), 2);
  EXPECT_EQ(KxLastPos(AnsiString("ab\0", 3), '\0'), 0);
}

TEST(StringUtilsCase, ModesAndCamelRule) {
  EXPECT_EQ(KxCharCase("abc", rcTitleCase, ""), "Abc");
  EXPECT_EQ(KxCharCase("aBC dEF", rcTitleCase, ""), "Abc def");
  EXPECT_EQ(KxCharCase("aBc", rcNormal, ""), "aBc");
  EXPECT_EQ(KxCharCase("aBc", rcUpperCase, ""), "ABC");
  EXPECT_EQ(KxCharCase("aBc", rcLowerCase, ""), "abc");
  EXPECT_EQ(KxCharCase("hello big world", rcUpperCamelCase, " "), "Hello Big World");
  EXPECT_EQ(KxCharCase("hello big world", rcLowerCamelCase, " "), "hello Big World");
  EXPECT_EQ(KxCharCase("HELLO  bIG_wORLD", rcUpperCamelCase, " _"), "Hello  Big_World");
  EXPECT_EQ(KxCharCase("aBC", rcUpperCaseFirstLetter, ""), "ABC");
  EXPECT_EQ(KxCharCase("ABC", rcLowerCaseFirstLetter, ""), "aBC");
  EXPECT_EQ(KxCharCase("", rcTitleCase, ""), "");
  EXPECT_EQ(KxCharCase("aBc", TKxCharCase(8), ""), "aBc");
  EXPECT_EQ(KxCharCase("aBc", TKxCharCase(255), ""), "aBc");
  EXPECT_EQ(KxCharCase(u"élan vital", rcUpperCamelCase, u" "), u"Élan Vital");
  EXPECT_EQ(KxCharCase(u"ÉLAN", rcTitleCase, u""), u"Élan");
}

TEST(StringUtilsCase, EightBitTextConvertsByCharacter) {
  {
    // In UTF-8 the first character of "élan" is two bytes.
    TSystemCodePage Utf8(65001);
    EXPECT_EQ(KxCharCase("\xC3\xA9lan", rcTitleCase, ""), "\xC3\x89lan");
    EXPECT_EQ(KxCharCase("a\xC3\xA9"
                         "b",
                         rcUpperCamelCase, "\xC3\xA9"),
              "A\xC3\xA9"
              "B");
    // Bytes that are no UTF-8 stay where they are; only a-z change.
    EXPECT_EQ(KxCharCase("\xFF"
                         "ab",
                         rcUpperCase, ""),
              "\xFF"
              "AB");
  }
  TSystemCodePage Latin1(1252);
  EXPECT_EQ(KxCharCase("\xE9lan", rcTitleCase, ""), "\xC9lan");
}

TEST(StringUtilsIf, PicksByCondition) {
  EXPECT_EQ(KxIf(true, 'a', 'b'), 'a');
  EXPECT_EQ(KxIf(false, AnsiString("x"), AnsiString("y")), "y");
  EXPECT_EQ(KxIf(false, "x", "y"), AnsiString("y"));
  EXPECT_EQ(KxIf(true, 1, 2), 1);
  EXPECT_EQ(KxIf(false, 1.5, 2.5), 2.5);
  EXPECT_EQ(KxIf(false, true, false), false);
  // The variant form copies the chosen variant, array included.
  Variant Arr = VarArrayOf({1, "two"});
  Variant Picked = KxIf(true, Arr, Variant());
  VarArrayPut(Arr, Variant(9), 0);
  EXPECT_EQ(VarType(Picked), varArray | varVariant);
  EXPECT_EQ(int32_t(VarArrayGet(Picked, 0)), 1);
  EXPECT_TRUE(VarIsNull(KxIf(false, Variant(1), Null())));
}

TEST(StringUtilsCompare, SameVarNeedsTheSameTypeCode) {
  EXPECT_TRUE(KxSameVar(Variant(1), Variant(1)));
  EXPECT_FALSE(KxSameVar(Variant(1), Variant(1.0))); // equal by "=", different codes
  EXPECT_TRUE(Variant(1) == Variant(1.0));
  EXPECT_FALSE(KxSameVar(Variant(int16_t(1)), Variant(1)));
  EXPECT_FALSE(KxSameVar(Variant("a"), Variant(u"a")));
  EXPECT_TRUE(KxSameVar(Variant("abc"), Variant("abc")));
  EXPECT_FALSE(KxSameVar(Variant("abc"), Variant("ABC")));
  EXPECT_TRUE(KxSameVar(Variant(), Variant()));
  EXPECT_TRUE(KxSameVar(Null(), Null()));
  EXPECT_FALSE(KxSameVar(Null(), Variant()));
  EXPECT_THROW(KxSameVar(VarArrayOf({1}), VarArrayOf({1})), EVariantInvalidOpError);
}

TEST(StringUtilsCompare, SameArrayWalksTheFirstArraysBounds) {
  EXPECT_TRUE(KxSameArray(VarArrayOf({1, "x", 2.5}), VarArrayOf({1, "x", 2.5})));
  // Element "=" meets values in a common type: 1 and "1" are the same here.
  EXPECT_TRUE(KxSameArray(VarArrayOf({1}), VarArrayOf({"1"})));
  EXPECT_FALSE(KxSameArray(VarArrayOf({1, 2}), VarArrayOf({1, 3})));
  // B may be longer; a shorter B is indexed past its end.
  EXPECT_TRUE(KxSameArray(VarArrayOf({1}), VarArrayOf({1, 2})));
  EXPECT_THROW(KxSameArray(VarArrayOf({1, 2}), VarArrayOf({1})), EVariantBadIndexError);
  // The walk stops at the first difference, before the missing element.
  EXPECT_FALSE(KxSameArray(VarArrayOf({0, 2}), VarArrayOf({1})));
  // An empty A is the same as anything, even a variant that is no array.
  EXPECT_TRUE(KxSameArray(VarArrayCreate({0, -1}, varInteger), Variant(5)));
  // Bounds of A, not positions: an array from 5 to 6 against one from 0.
  Variant Shifted = VarArrayCreate({5, 6}, varInteger);
  EXPECT_THROW(KxSameArray(Shifted, VarArrayOf({0, 0})), EVariantBadIndexError);
  EXPECT_THROW(KxSameArray(Variant(1), VarArrayOf({1})), EVariantNotAnArrayError);
}

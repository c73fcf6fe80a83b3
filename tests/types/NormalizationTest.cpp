// SPDX-License-Identifier: MIT
// KxNormalizeString and KxSimplifyString.
#include <kx/rtl/Exceptions.h>
#include <kx/uKxTypes.h>

#include <gtest/gtest.h>

using namespace kx;

TEST(Normalization, TheFourForms) {
  EXPECT_EQ(KxNormalizeString(u"e\u0301", NormalizationC), u"\u00E9");
  EXPECT_EQ(KxNormalizeString(u"\u00E9t\u00E9", NormalizationD), u"e\u0301te\u0301");
  EXPECT_EQ(KxNormalizeString(u"\uFB01\u2460", NormalizationKC), u"fi1");
  EXPECT_EQ(KxNormalizeString(u"\u00C5\uFB01", NormalizationKD), u"A\u030Afi");
  // Canonical forms keep compatibility characters.
  EXPECT_EQ(KxNormalizeString(u"\uFB01", NormalizationC), u"\uFB01");
  // Hangul syllables decompose into jamo and back.
  const UnicodeString Jamo = KxNormalizeString(u"\uD55C", NormalizationD);
  EXPECT_EQ(Jamo, u"\u1112\u1161\u11AB");
  EXPECT_EQ(KxNormalizeString(Jamo, NormalizationC), u"\uD55C");
}

TEST(Normalization, FailuresRaiseTheFixedMessage) {
  // The platform measures nothing for an empty text, and knows no form 3.
  for (auto Call : {+[] { KxNormalizeString(u"", NormalizationC); },
                    +[] { KxNormalizeString(u"a", TNorm_Form(3)); },
                    +[] { KxNormalizeString(u"a", NormalizationOther); }}) {
    try {
      Call();
      FAIL() << "no exception";
    } catch (const Exception& E) {
      EXPECT_EQ(E.Message(), "Failed to normalize the given value");
    }
  }
  // An unpaired surrogate passes the measuring call and fails the second one: nothing is
  // left of the result.
  EXPECT_EQ(KxNormalizeString(UnicodeString(1, char16_t(0xD800)), NormalizationD), u"");
}

TEST(Normalization, SimplifyDropsDiacritics) {
  EXPECT_EQ(KxSimplifyString(u"Cr\u00E8me Br\u00FBl\u00E9e"), u"Creme Brulee");
  EXPECT_EQ(KxSimplifyString(u"\u00C5ngstr\u00F6m \u0179d\u017Ab\u0142o"), u"Angstrom Zdzb\u0142o");
  EXPECT_EQ(KxSimplifyString(u""), u"");
  // A decomposed mark stays: each character is simplified on its own.
  EXPECT_EQ(KxSimplifyString(u"e\u0301"), u"e\u0301");
  // Surrogate halves are not characters of their own: they are dropped.
  EXPECT_EQ(KxSimplifyString(u"a\U0001F600b"), u"ab");
}

// SPDX-License-Identifier: MIT
// Code-page conversions checked against iconv on real text, where iconv can be run.
#include <kx/uKxTypes.h>

#include "support/ExternalTool.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

struct TSample {
  uint16_t CodePage;
  const char* IconvName;
  const char* Utf8;
};

// The source is UTF-8, and so are these literals.
const TSample Samples[] = {
    {1252, "CP1252",
     "Über allen Gipfeln ist Ruh, in allen Wipfeln spürest du kaum einen Hauch. Longtemps, je "
     "me suis couché de bonne heure – “ça coûte 5 €”, œuvre, naïve ½\r\n"},
    {1251, "CP1251",
     "Все счастливые семьи похожи друг на друга, каждая несчастливая семья несчастлива "
     "по-своему. «Ёж» — №5\n"},
    {20866, "KOI8-R", "Все счастливые семьи похожи друг на друга\n"},
    {437, "CP437", "╔═╗ Café ½ ░▒▓ ßαΣ ╚═╝\r\n"},
    {932, "CP932",
     "吾輩は猫である。名前はまだ無い。どこで生れたかとんと見当がつかぬ。 ｶﾀｶﾅ ＡＢＣ\n"},
};

} // namespace

TEST(IconvCrossCheck, RealTextConvertsAsIconvConvertsIt) {
  if (!kxtest::ExternalToolPresent("iconv")) GTEST_SKIP() << "iconv absent";
  for (const TSample& S : Samples) {
    const AnsiString Utf8 = S.Utf8;
    const UnicodeString Wide = TKxEncoding::ConvertA(Utf8, 65001);
    const AnsiString Narrow = TKxEncoding::ConvertW(Wide, S.CodePage);

    auto To = kxtest::RunExternalTool("iconv", {"-f", "UTF-8", "-t", S.IconvName}, Utf8);
    ASSERT_FALSE(To.Absent) << To.Message;
    ASSERT_EQ(To.ExitCode, 0) << S.IconvName;
    EXPECT_EQ(Narrow, To.Output) << S.IconvName;

    auto From = kxtest::RunExternalTool("iconv", {"-f", S.IconvName, "-t", "UTF-8"}, Narrow);
    ASSERT_EQ(From.ExitCode, 0) << S.IconvName;
    EXPECT_EQ(TKxEncoding::ConvertW(TKxEncoding::ConvertA(Narrow, S.CodePage), 65001), From.Output)
        << S.IconvName;
    EXPECT_EQ(From.Output, Utf8) << S.IconvName;
  }
}

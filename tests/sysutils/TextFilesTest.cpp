// SPDX-License-Identifier: MIT
// Whole text files: saving in code pages with and without marks, and loading them back.
#include <kx/rtl/Files.h>
#include <kx/uKxSysUtils.h>

#include "support/SystemCodePage.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::TSystemCodePage;

namespace {} // namespace

TEST(TextFiles, SaveWritesTheCodePageAndItsMark) {
  TSystemCodePage Latin1(1252);
  kxtest::TTempFolder T;
  const AnsiString F = T.Name("t.txt");
  KxSaveString(F, "caf\xE9");
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(F), "\xEF\xBB\xBF"
                                              "caf\xC3\xA9");
  KxSaveString(F, "caf\xE9", 1252, false);
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(F), "caf\xE9");
  KxSaveString(F, UnicodeString(u"\u20AC"), 1200, true);
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(F), AnsiString("\xFF\xFE\xAC\x20", 4));
  KxSaveString(F, UnicodeString(u"\u20AC"), 65001, false);
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(F), "\xE2\x82\xAC");
  // Saving replaces what was there.
  KxSaveString(F, "", 1252, false);
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(F), "");
  EXPECT_THROW(KxSaveString(T.Name("missing/t.txt"), "x"), EFCreateError);
}

TEST(TextFiles, LoadHonoursTheMark) {
  TSystemCodePage Latin1(1252);
  kxtest::TTempFolder T;
  EXPECT_EQ(KxLoadStringFromFile(T.WriteFile("u8.txt", "\xEF\xBB\xBF"
                                                       "caf\xC3\xA9")),
            "caf\xE9");
  EXPECT_EQ(KxLoadStringFromFile(T.WriteFile("u16.txt", AnsiString("\xFF\xFE\xE9\0", 4))), "\xE9");
  EXPECT_EQ(KxLoadStringFromFile(T.WriteFile("plain.txt", "caf\xE9")), "caf\xE9");
  EXPECT_EQ(KxLoadStringFromFile(T.WriteFile("empty.txt", "")), "");
  const AnsiString Round = T.Name("round.txt");
  KxSaveString(Round, "r\xF6und", 65001, true);
  EXPECT_EQ(KxLoadStringFromFile(Round, fmOpenRead | fmShareDenyNone), "r\xF6und");
  EXPECT_THROW(KxLoadStringFromFile(T.Name("missing.txt")), EFOpenError);
}

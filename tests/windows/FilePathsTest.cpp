// SPDX-License-Identifier: MIT
// Path text of uKxWindows: the backslash rules, clean-up, aliases, expansion and short names.
#include <kx/rtl/Files.h>
#include <kx/uKxWindows.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace kx;

TEST(FilePathsText, IncludeTrailingBackslashMakesRelativeNamesDriveRoots) {
  EXPECT_EQ(KxIncludeTrailingBackslash("C:"), "C:\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("C"), "C:\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("temp"), "temp:\\");
  EXPECT_EQ(KxIncludeTrailingBackslash(""), ":\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("   "), ":\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("\\\\srv\\share"), "\\\\srv\\share\\");
  EXPECT_EQ(KxIncludeTrailingBackslash(" C:\\ "), "C:\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("C:\\dir"), "C:\\dir\\");
  EXPECT_EQ(KxIncludeTrailingBackslash("/usr/lib"), "/usr/lib:\\"); // the rule is textual
}

TEST(FilePathsText, CheckDirSlashAddsOrRemovesOneBackslash) {
  EXPECT_EQ(KxCheckDirSlash("C:\\x", true), "C:\\x\\");
  EXPECT_EQ(KxCheckDirSlash("C:\\x\\", true), "C:\\x\\");
  EXPECT_EQ(KxCheckDirSlash("C:\\x\\\\", false), "C:\\x\\");
  EXPECT_EQ(KxCheckDirSlash("C:\\x", false), "C:\\x");
  EXPECT_EQ(KxCheckDirSlash(" ", true), " ");
  EXPECT_EQ(KxCheckDirSlash("", false), "");
  EXPECT_EQ(KxCheckDirSlash(" x ", true), " x \\");
}

TEST(FilePathsText, CleanupRemovesTheFixedAndTheCallersCharacters) {
  EXPECT_EQ(KxCleanupFileName("a:b?c", TKxCharSet()), "abc");
  EXPECT_EQ(KxCleanupFileName("\"a*b/c:d<e>f?g\\h|i\x01j\x1Fk\x7F", TKxCharSet()),
            "abcdefghijk\x7F");
  EXPECT_EQ(KxCleanupFileName("2024-01-02 10.30", TKxCharSet{' ', '.'}), "2024-01-021030");
  EXPECT_EQ(KxCleanupFileName("\xC3\xA9t\xC3\xA9.log", TKxCharSet()), "\xC3\xA9t\xC3\xA9.log");
  EXPECT_EQ(KxCleanupFileName(AnsiString("a\0b", 3), TKxCharSet()), "ab");
}

TEST(FilePathsText, AliasedNamesAreTheRelativeOnes) {
  EXPECT_FALSE(KxIsAliasedFilename("C:\\x"));
  EXPECT_TRUE(KxIsAliasedFilename("x\\y"));
  EXPECT_TRUE(KxIsAliasedFilename(".\\x"));
  EXPECT_TRUE(KxIsAliasedFilename("..x"));
  EXPECT_FALSE(KxIsAliasedFilename("x"));
  EXPECT_FALSE(KxIsAliasedFilename("  "));
  EXPECT_FALSE(KxIsAliasedFilename("\\\\srv\\x:y"));
}

TEST(FilePathsShort, ShortNamesOfExistingPaths) {
  kxtest::TTempFolder T;
  const AnsiString File = T.WriteFile("a-rather-long-file-name.text", "x");
  const AnsiString Short = KxGetShortFileName(File);
  EXPECT_FALSE(Short.empty());
  EXPECT_TRUE(FileExists(Short));
  if (*DriveDelim == '\0') {
    EXPECT_EQ(Short, File); // no 8.3 names
  }
  EXPECT_THROW(KxGetShortFileName(T.Name("missing")), EOSError);
}

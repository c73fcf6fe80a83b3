// SPDX-License-Identifier: MIT
// Path text of uKxWindows: the backslash rules, clean-up, aliases, expansion and short names.
#include <kx/rtl/Files.h>
#include <kx/uKxWindows.h>

#include "support/ScopedEnv.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#if defined(_WIN32)
#include <windows.h>
#else
#include <unistd.h>
#endif

using namespace kx;

namespace {

// The test program's folder, found here without the library.
AnsiString OwnFolder() {
#if defined(_WIN32)
  char Buf[MAX_PATH] = {};
  const DWORD N = ::GetModuleFileNameA(nullptr, Buf, MAX_PATH);
#else
  char Buf[4096] = {};
  const ssize_t N = readlink("/proc/self/exe", Buf, sizeof Buf - 1);
#endif
  AnsiString Exe(Buf, N > 0 ? size_t(N) : 0);
  return Exe.substr(0, Exe.find_last_of(PathDelim) + 1);
}

// Sets the working folder for a scope.
class TScopedDir {
public:
  explicit TScopedDir(const AnsiString& Dir) : FSaved(GetCurrentDir()) { SetCurrentDir(Dir); }
  ~TScopedDir() { SetCurrentDir(FSaved); }
  TScopedDir(const TScopedDir&) = delete;
  TScopedDir& operator=(const TScopedDir&) = delete;

private:
  AnsiString FSaved;
};

} // namespace

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

TEST(FilePathsExpand, RelativeNamesResolveInTheExecutablesFolderNotTheWorkingOne) {
  const AnsiString Exe = OwnFolder();
  ASSERT_FALSE(Exe.empty());
  kxtest::TTempFolder T;
  TScopedDir Cwd(T.Name());
  const AnsiString Before = GetCurrentDir();
  const AnsiString D(1, PathDelim);

  EXPECT_EQ(KxExpandFileName("a" + D + "b.txt"), Exe + "a" + D + "b.txt");
  EXPECT_EQ(KxExpandFileName("x"), Exe + "x");
  EXPECT_EQ(KxExpandFileName("." + D + "x" + D + ".." + D + "y"), Exe + "y");
  const AnsiString Parent = ExtractFilePath(ExcludeTrailingPathDelimiter(Exe));
  EXPECT_EQ(KxExpandFileName(".." + D + "z"), Parent + "z");
  // Absolute names stay where they point.
  EXPECT_EQ(KxExpandFileName(T.Name("f.log")), T.Name("f.log"));
  EXPECT_EQ(GetCurrentDir(), Before);
}

TEST(FilePathsExpand, EnvironmentReferencesAreExpandedFirst) {
  const AnsiString Exe = OwnFolder();
  const AnsiString D(1, PathDelim);
  kxtest::TScopedEnv Sub("KX_EXPAND_SUB", "logs");
  EXPECT_EQ(KxExpandFileName("$(KX_EXPAND_SUB)" + D + "a.log"), Exe + "logs" + D + "a.log");
  EXPECT_EQ(KxExpandFileName("%KX_EXPAND_SUB%" + D + "a.log"), Exe + "logs" + D + "a.log");
  kxtest::TTempFolder T;
  kxtest::TScopedEnv Root("KX_EXPAND_ROOT", T.Name());
  EXPECT_EQ(KxExpandFileName("$(KX_EXPAND_ROOT)" + D + "a.log"), T.Name("a.log"));
  // An unknown "$(...)" name is the environment function's error, not a path.
  kxtest::TScopedEnv Missing("KX_EXPAND_MISSING", std::nullopt);
  EXPECT_THROW(KxExpandFileName("$(KX_EXPAND_MISSING)" + D + "x"), Exception);
}

TEST(FilePathsExpand, DriveRelativeNamesOnWindows) {
  if (*DriveDelim == '\0') GTEST_SKIP() << "no drives";
  const AnsiString Exe = OwnFolder();
  ASSERT_GE(Exe.size(), 3u);
  ASSERT_EQ(Exe[1], ':');
  // The root of the executable's drive, and that drive's folder for "D:name".
  EXPECT_EQ(KxExpandFileName("\\x.log"), Exe.substr(0, 2) + "\\x.log");
  EXPECT_EQ(KxExpandFileName(Exe.substr(0, 2) + "y.log"), Exe + "y.log");
  const AnsiString Lower(1, AnsiChar(Exe[0] | 0x20));
  EXPECT_EQ(KxExpandFileName(Lower + ":y.log"), Exe + "y.log");
  EXPECT_EQ(KxExpandFileName(Exe.substr(0, 2)), ExcludeTrailingPathDelimiter(Exe));
  EXPECT_EQ(KxExpandFileName("\\\\srv\\share\\x"), "\\\\srv\\share\\x");
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

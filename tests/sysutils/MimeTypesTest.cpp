// SPDX-License-Identifier: MIT
// MIME types by name: each source in its order, the built-in table's first-row rule and the
// default made from the extension.
#include <kx/uKxSysUtils.h>

#include "support/ScopedEnv.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

using namespace kx;
using kxtest::TScopedEnv;

namespace {

bool OnWindows() {
#if defined(_WIN32)
  return true;
#else
  return false;
#endif
}

// Linux: the three databases pointed at empty places, so only the table answers.
class TNoDatabases {
public:
  TNoDatabases()
      : FHome("XDG_DATA_HOME", FDir.Name("user")), FDirs("XDG_DATA_DIRS", FDir.Name("sys")) {
    KxSetMimeTypesFile(FDir.Name("mime.types"));
  }
  ~TNoDatabases() { KxSetMimeTypesFile(""); }
  const kxtest::TTempFolder& Dir() const { return FDir; }

private:
  kxtest::TTempFolder FDir;
  TScopedEnv FHome, FDirs;
};

} // namespace

TEST(MimeTable, FirstRowWinsAndTheDefault) {
  EXPECT_EQ(KxGetBuiltInMimeType(".com"), "application/octet-stream");
  EXPECT_EQ(KxGetBuiltInMimeType(".xls"), "application/x-excel");
  EXPECT_EQ(KxGetBuiltInMimeType(".XLT"), "application/x-excel");
  EXPECT_EQ(KxGetBuiltInMimeType(".ZSH"), "text/x-script.zsh");
  EXPECT_EQ(KxGetBuiltInMimeType(".jpe"), "image/pjpeg");
  EXPECT_EQ(KxGetBuiltInMimeType(".mhtml"), "message/rfc822");
  EXPECT_EQ(KxGetBuiltInMimeType(".unknownext"), "application/unknownext");
  EXPECT_EQ(KxGetBuiltInMimeType(""), "application/");
}

TEST(MimeTable, ByNameWithoutSystemInformation) {
  if (OnWindows()) GTEST_SKIP() << "the Windows registry cannot be emptied for a test";
  TNoDatabases None;
  EXPECT_EQ(KxGetFileMimeType("archive.COM"), "application/octet-stream");
  EXPECT_EQ(KxGetFileMimeType("sheet.xls"), "application/x-excel");
  EXPECT_EQ(KxGetFileMimeType("script.ZSH"), "text/x-script.zsh");
  EXPECT_EQ(KxGetFileMimeType("file.unknownext"), "application/unknownext");
  EXPECT_EQ(KxGetFileMimeType("README"), "application/");
}

TEST(MimeTable, LinuxDatabasesInTheirOrder) {
  if (OnWindows()) GTEST_SKIP() << "Windows asks its registry";
  TNoDatabases Db;
  const auto& D = Db.Dir();
  std::filesystem::create_directories(D.Path() / "user" / "mime");
  std::filesystem::create_directories(D.Path() / "sys" / "mime");
  D.WriteFile("mime.types", "# type extensions\n"
                            "application/x-kx-first\tkxa kxb\n"
                            "text/x-kx-shared kxs\n"
                            "no-slash kxn\n"
                            "application/vnd.kx-sheet xls\n");
  D.WriteFile("user/mime/globs2", "# weight:type:glob\n"
                                  "50:text/x-kx-user:*.kxs\n"
                                  "50:text/x-kx-user:*.kxu\n"
                                  "broken line\n"
                                  "x:text/x-bad-weight:*.kxh\n");
  D.WriteFile("sys/mime/globs2", "50:text/x-kx-sys:*.kxu\r\n"
                                 "40:text/x-kx-light:*.kxh\n"
                                 "80:text/x-kx-heavy:*.kxh\n"
                                 "60:text/x-kx-case:*.KXC:cs\n"
                                 "70:text/x-kx-glob:*.k?x\n");
  // mime.types first (ignoring case), and over the built-in table.
  EXPECT_EQ(KxGetFileMimeType("a.KXA"), "application/x-kx-first");
  EXPECT_EQ(KxGetFileMimeType("b.kxs"), "text/x-kx-shared");
  EXPECT_EQ(KxGetFileMimeType("sheet.xls"), "application/vnd.kx-sheet");
  EXPECT_EQ(KxGetFileMimeType("n.kxn"), "application/kxn");
  // Then globs2: the user's folder before the system's, the heaviest pattern of a file.
  EXPECT_EQ(KxGetFileMimeType("c.kxu"), "text/x-kx-user");
  EXPECT_EQ(KxGetFileMimeType("d.kxh"), "text/x-kx-heavy");
  // A case-sensitive pattern matches the name as written only.
  EXPECT_EQ(KxGetFileMimeType("e.KXC"), "text/x-kx-case");
  EXPECT_EQ(KxGetFileMimeType("e.kxc"), "application/kxc");
  // Patterns with wildcards past the star are no extensions.
  EXPECT_EQ(KxGetFileMimeType("f.kyx"), "application/kyx");
}

TEST(MimeTable, TheSystemsOwnDatabases) {
  if (OnWindows()) GTEST_SKIP() << "Wine's registry has no content types";
  if (!std::filesystem::exists("/etc/mime.types") &&
      !std::filesystem::exists("/usr/share/mime/globs2"))
    GTEST_SKIP() << "no MIME database installed";
  EXPECT_EQ(KxGetFileMimeType("picture.png"), "image/png");
  EXPECT_EQ(KxGetFileMimeType("paper.pdf"), "application/pdf");
  EXPECT_EQ(KxGetFileMimeType("page.html"), "text/html");
}

#if defined(_WIN32)
namespace {

// Writes a string value under HKLM\Software\Classes (Wine's HKCR shows those) and removes the
// key, with whatever was made under it, when the test ends.
class TClassesKey {
public:
  TClassesKey(const std::string& Key, const std::string& Name, const std::string& Value)
      : FKey("Software\\Classes\\" + Key) {
    HKEY H = nullptr;
    if (::RegCreateKeyExA(HKEY_LOCAL_MACHINE, FKey.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                          &H, nullptr) == ERROR_SUCCESS) {
      ::RegSetValueExA(H, Name.c_str(), 0, REG_SZ, reinterpret_cast<const BYTE*>(Value.c_str()),
                       DWORD(Value.size() + 1));
      ::RegCloseKey(H);
    }
  }
  ~TClassesKey() { ::RegDeleteTreeA(HKEY_LOCAL_MACHINE, FKey.c_str()); }

private:
  std::string FKey;
};

} // namespace

TEST(MimeTable, WindowsRegistrySourcesInTheirOrder) {
  TClassesKey Ext(".kxtest1", "Content Type", "application/x-kx-first");
  TClassesKey Db("MIME\\Database\\Content Type\\application/x-kx-second", "Extension", ".KXTEST2");
  // The extension's own key wins over the table.
  TClassesKey Shell(".zsh", "Content Type", "application/x-kx-registered");
  EXPECT_EQ(KxGetFileMimeType("a.KXTEST1"), "application/x-kx-first");
  EXPECT_EQ(KxGetFileMimeType("b.kxtest2"), "application/x-kx-second");
  EXPECT_EQ(KxGetFileMimeType("c.ZSH"), "application/x-kx-registered");
  EXPECT_EQ(KxGetFileMimeType("d.kxtest3"), "application/kxtest3");
}
#endif

TEST(MimeTable, TheLinuxSourcesReadAsText) {
  const AnsiString Types = "text/x-a kxa\napplication/x-b KXA kxb\n";
  EXPECT_EQ(KxMimeTypeFromMimeTypesText(Types, ".KxA"), "text/x-a");
  EXPECT_EQ(KxMimeTypeFromMimeTypesText(Types, ".kxb"), "application/x-b");
  EXPECT_EQ(KxMimeTypeFromMimeTypesText(Types, ".none"), "");
  EXPECT_EQ(KxMimeTypeFromMimeTypesText("text/x-dot .\n", "."), "");
  const AnsiString Globs = "10:text/x-light:*.kxg\n90:text/x-heavy:*.KXG:cs\n";
  EXPECT_EQ(KxMimeTypeFromGlobs2Text(Globs, ".KXG"), "text/x-heavy");
  EXPECT_EQ(KxMimeTypeFromGlobs2Text(Globs, ".Kxg"), "text/x-light");
  EXPECT_EQ(KxMimeTypeFromGlobs2Text(Globs, ".other"), "");
}

// SPDX-License-Identifier: MIT
// The system's version and name against what it reports, executable bitness on real and
// crafted files, elevation and the shell folders.
#include <kx/rtl/Files.h>
#include <kx/rtl/StringList.h>
#include <kx/uKxSysUtils.h>
#include <kx/uKxWindows.h>

#include "support/ExternalTool.h"
#include "support/ScopedEnv.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <string>

#if !defined(_WIN32)
#include <unistd.h>
#endif

using namespace kx;
using kxtest::TScopedEnv;

namespace {

std::string ToolLine(const std::string& Tool, const std::vector<std::string>& Args) {
  auto R = kxtest::RunExternalTool(Tool, Args, "");
  while (!R.Output.empty() && R.Output.back() == '\n') R.Output.pop_back();
  return R.Output;
}

// A PE image's first bytes: the DOS header pointing at "PE\0\0" and the machine field.
std::string PEHeader(uint16_t Machine, uint32_t Offset = 0x80) {
  std::string B(Offset + 248, '\0');
  B[0] = 'M';
  B[1] = 'Z';
  for (int I = 0; I < 4; ++I) B[60 + I] = char((Offset >> (8 * I)) & 0xFF);
  B.replace(Offset, 4, std::string("PE\0\0", 4));
  B[Offset + 4] = char(Machine & 0xFF);
  B[Offset + 5] = char(Machine >> 8);
  return B;
}

std::string ELFHeader(char Class) {
  std::string B(64, '\0');
  B.replace(0, 4,
            "\x7F"
            "ELF");
  B[4] = Class;
  return B;
}

// The running test program.
std::string OwnExecutable() {
#if defined(_WIN32)
  char Buf[MAX_PATH] = {};
  ::GetModuleFileNameA(nullptr, Buf, MAX_PATH);
  return Buf;
#else
  char Buf[4096] = {};
  const ssize_t N = readlink("/proc/self/exe", Buf, sizeof Buf - 1);
  return N > 0 ? std::string(Buf, size_t(N)) : std::string();
#endif
}

} // namespace

TEST(WindowsVersion, CodeOnWindowsAndRefusalElsewhere) {
  if (kxtest::ExternalToolPresent("uname")) {
    EXPECT_THROW(KxGetWindowsVersion(), EKxNotSupported);
    return;
  }
  const uint16_t Code = KxGetWindowsVersion();
  // Wine answers as a Windows 7 or later workstation.
  EXPECT_TRUE(Code == 611 || Code == 621 || Code == 630 || Code == 640) << Code;
  EXPECT_EQ(KxGetOSVersionInfo().Name, "Windows " + IntToStr(int32_t(Code)));
}

TEST(OSVersion, LinuxAnswersFromUnameAndOsRelease) {
  if (!kxtest::ExternalToolPresent("uname")) GTEST_SKIP() << "Windows names itself";
  kxtest::TTempFolder Dir;
  const std::string File = Dir.WriteFile("os-release", "# a comment\n"
                                                       "NAME=\"Debian GNU/Linux\"\n"
                                                       "PRETTY_NAME='Kx \"Test\" OS 12'\n"
                                                       "VERSION_ID=\"12\"\n"
                                                       "broken line\n");
  KxSetOSReleaseFile(File);
  TKxOSVersionInfo Info = KxGetOSVersionInfo();
  EXPECT_EQ(Info.Name, "Kx \"Test\" OS 12");
  EXPECT_EQ(Info.Version, "12");
  EXPECT_EQ(Info.Release, ToolLine("uname", {"-r"}));
  EXPECT_EQ(Info.Machine, ToolLine("uname", {"-m"}));
  EXPECT_EQ(KxGetOSVersionText(),
            "Kx \"Test\" OS 12 12 (" + Info.Release + ", " + Info.Machine + ")");

  // Without PRETTY_NAME the NAME serves; without the file the kernel's name.
  Dir.WriteFile("os-release", "NAME=Plain\n");
  EXPECT_EQ(KxGetOSVersionInfo().Name, "Plain");
  EXPECT_EQ(KxGetOSVersionInfo().Version, "");
  KxSetOSReleaseFile(Dir.Name("missing"));
  EXPECT_EQ(KxGetOSVersionInfo().Name, ToolLine("uname", {"-s"}));
  KxSetOSReleaseFile("");
  EXPECT_FALSE(KxGetOSVersionInfo().Name.empty());
}

TEST(OSVersion, WindowsAnswersItsNumbers) {
  if (kxtest::ExternalToolPresent("uname")) GTEST_SKIP() << "Linux names itself";
  const TKxOSVersionInfo Info = KxGetOSVersionInfo();
  EXPECT_EQ(Info.Version.substr(0, Info.Version.find('.')).empty(), false);
  EXPECT_EQ(std::count(Info.Version.begin(), Info.Version.end(), '.'), 2) << Info.Version;
  EXPECT_EQ(Info.Machine, IsCPU64() ? "x86_64" : "i686");
}

TEST(OSRelease, ParsesTheShellSubset) {
  TStringList* L = TStringList::Create();
  KxParseOSRelease("A=1\r\n"
                   "  B=\"two words\"  \n"
                   "C='single $ \\ kept'\n"
                   "D=\"esc\\\"aped\\\\\"\n"
                   "E=bare\\ word\n"
                   "# F=comment\n"
                   "=novalue\n"
                   "G H=bad name\n"
                   "I=\"unterminated\n"
                   "J=two words\n"
                   "K=",
                   L);
  EXPECT_EQ(L->Text(), AnsiString("A=1") + sLineBreak + "B=two words" + sLineBreak +
                           "C=single $ \\ kept" + sLineBreak + "D=esc\"aped\\" + sLineBreak +
                           "E=bare word" + sLineBreak + "K=" + sLineBreak);
  L->Free();
}

TEST(Bitness, ProcessAndSystem) {
  EXPECT_EQ(IsCPU64(), sizeof(void*) == 8);
  EXPECT_FALSE(IsWow64() && IsCPU64());
  EXPECT_EQ(IsOS64(), IsCPU64() || IsWow64());
}

TEST(Bitness, RealExecutables) {
  EXPECT_EQ(Is64BitFile(OwnExecutable()), IsCPU64());
  // A bare name is searched along the system's path.
  if (kxtest::ExternalToolPresent("uname"))
    EXPECT_TRUE(Is64BitFile("sh"));
  else
    EXPECT_TRUE(Is64BitFile("kernel32.dll"));
}

TEST(Bitness, CraftedHeaders) {
  kxtest::TTempFolder Dir;
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("i386.exe", PEHeader(332))));
  EXPECT_TRUE(Is64BitFile(Dir.WriteFile("amd64.exe", PEHeader(0x8664))));
  // Any machine other than i386 counts as 64-bit.
  EXPECT_TRUE(Is64BitFile(Dir.WriteFile("arm.exe", PEHeader(0x1C0))));
  EXPECT_TRUE(Is64BitFile(Dir.WriteFile("elf64", ELFHeader(2))));
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("elf32", ELFHeader(1))));

  std::string NoOffset = PEHeader(0x8664);
  NoOffset.replace(60, 4, std::string(4, '\0'));
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("nooffset.exe", NoOffset)));
  // An offset past the end of the file, a truncated header, text, nothing at all.
  std::string Far = PEHeader(0x8664).substr(0, 64);
  Far.replace(60, 4, "\xF0\xFF\xFF\x7F");
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("far.exe", Far)));
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("short.exe", PEHeader(0x8664).substr(0, 40))));
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("text.txt", "just some text, long enough to fill the "
                                                     "sixty-four bytes of a DOS header easily.")));
  EXPECT_FALSE(Is64BitFile(Dir.WriteFile("empty", "")));
  EXPECT_THROW(Is64BitFile(Dir.Name("missing.exe")), EFOpenError);
}

TEST(Elevation, MatchesTheUser) {
  const TKxElevationLevel Level = KxGetElevationLevel();
#if defined(_WIN32)
  EXPECT_NE(Level, elDefault);
#else
  EXPECT_EQ(Level, geteuid() == 0 ? elFull : elLimited);
#endif
}

TEST(ShellFolders, WindowsFoldersExist) {
  if (kxtest::ExternalToolPresent("uname")) GTEST_SKIP() << "Linux maps them to XDG folders";
  EXPECT_TRUE(DirectoryExists(KxGetSharedDocumentsFolder())) << KxGetSharedDocumentsFolder();
  EXPECT_TRUE(DirectoryExists(KxGetMyDocumentsFolder())) << KxGetMyDocumentsFolder();
  EXPECT_TRUE(DirectoryExists(KxGetShellFolder(csidlSystem)));
  EXPECT_THROW(KxGetShellFolder(0x7FFF), EOSError);
}

TEST(ShellFolders, LinuxTakesTheXdgFolders) {
  if (!kxtest::ExternalToolPresent("uname")) GTEST_SKIP() << "Windows asks the shell";
  kxtest::TTempFolder Dir;
  TScopedEnv Home("HOME", Dir.Name());
  TScopedEnv State("XDG_STATE_HOME", std::nullopt);
  TScopedEnv Config("XDG_CONFIG_HOME", std::nullopt);
  TScopedEnv Docs("XDG_DOCUMENTS_DIR", std::nullopt);
  EXPECT_EQ(KxGetSharedDocumentsFolder(), Dir.Name(".local/state"));
  EXPECT_EQ(KxGetShellFolder(csidlAppData), Dir.Name(".config"));
  EXPECT_EQ(KxGetMyDocumentsFolder(), Dir.Name("Documents"));
  {
    TScopedEnv Set("XDG_STATE_HOME", Dir.Name("state"));
    EXPECT_EQ(KxGetSharedDocumentsFolder(), Dir.Name("state"));
    // Relative values are ignored, as the XDG rules say.
    TScopedEnv Relative("XDG_STATE_HOME", "relative/state");
    EXPECT_EQ(KxGetSharedDocumentsFolder(), Dir.Name(".local/state"));
  }
  std::filesystem::create_directories(Dir.Path() / ".config");
  Dir.WriteFile(".config/user-dirs.dirs", "# written by xdg-user-dirs-update\n"
                                          "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n"
                                          "XDG_DOCUMENTS_DIR=\"$HOME/Dokumente/\"\n");
  EXPECT_EQ(KxGetMyDocumentsFolder(), Dir.Name("Dokumente"));
  EXPECT_EQ(KxGetShellFolder(csidlDesktopDirectory), Dir.Name("Schreibtisch"));
  EXPECT_THROW(KxGetShellFolder(0x7FFF), EKxNotSupported);
}

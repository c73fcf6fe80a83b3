// SPDX-License-Identifier: MIT
// Drive space text, the drives against what the system reports, the drive list's lookups,
// multi-line registry values and version resources.
#include <kx/rtl/FormatSettings.h>
#include <kx/rtl/StringList.h>
#include <kx/uKxSysUtils.h>
#include <kx/uKxWindows.h>

#include "support/ExternalTool.h"

#include <gtest/gtest.h>

#include <regex>
#include <sstream>
#include <string>

#if defined(_WIN32)
#include <windows.h>
#endif

using namespace kx;

namespace {

bool OnLinux() {
  return kxtest::ExternalToolPresent("uname");
}

AnsiString Sep(const char* Text) {
  AnsiString S = Text;
  for (char& C : S)
    if (C == '.') C = FormatSettings().DecimalSeparator;
  return S;
}

// The root every system has.
AnsiString SystemRoot() {
  return OnLinux() ? "/" : "C:\\";
}

} // namespace

TEST(DriveSpace, UnitsStepAbove1024AndTruncate) {
  EXPECT_EQ(KxGetDriveSpace(0), Sep("0.0 KB"));
  EXPECT_EQ(KxGetDriveSpace(1024), Sep("1024.0 KB"));
  EXPECT_EQ(KxGetDriveSpace(1025), Sep("1.0 MB"));
  EXPECT_EQ(KxGetDriveSpace(1536), Sep("1.5 MB"));
  EXPECT_EQ(KxGetDriveSpace(2047), Sep("1.9 MB")); // 1.999 is cut, not rounded
  EXPECT_EQ(KxGetDriveSpace(1536LL << 10), Sep("1.5 GB"));
  EXPECT_EQ(KxGetDriveSpace(1536LL << 20), Sep("1.5 TB"));
  EXPECT_EQ(KxGetDriveSpace(1024LL << 30), Sep("1024.0 TB"));
  // The 32-bit divisor wraps to zero past terabytes.
  EXPECT_THROW(KxGetDriveSpace(1025LL << 30), EZeroDivide);
}

TEST(Drives, RootsAndTheirInformation) {
  TStringList* Roots = TStringList::Create();
  KxGetDriveStrings(Roots);
  EXPECT_GE(Roots->IndexOf(SystemRoot()), 0) << Roots->Text();
  Roots->Free();

  const TKxDriveInfo Info = KxGetDriveInfo(SystemRoot());
  EXPECT_NE(Info.DriveType, driveNoRoot);
  EXPECT_FALSE(Info.FileSystem.empty());
  EXPECT_EQ(Info.SerialNumber.size(), 8u);
  EXPECT_GT(Info.TotalKB(), 0);
  EXPECT_LE(Info.FreeKB(), Info.TotalKB());
  if (OnLinux()) {
    // df's 1K-blocks of the root.
    auto R = kxtest::RunExternalTool("df", {"-P", "-k", "/"}, "");
    std::istringstream Lines(R.Output);
    std::string Header, Source;
    int64_t Blocks = 0;
    std::getline(Lines, Header);
    Lines >> Source >> Blocks;
    EXPECT_EQ(Info.TotalKB(), Blocks);
    EXPECT_EQ(Info.VolumeName, Source);
  } else {
    EXPECT_EQ(Info.DriveType, driveFixed);
  }
  EXPECT_EQ(KxGetDriveInfo(OnLinux() ? "/no/such/mount" : "Q:\\").DriveType, driveNoRoot);
}

TEST(Drives, ListLookups) {
  TKxDriveInfoList* List = TKxDriveInfoList::Create();
  ASSERT_GT(List->Count(), 0);
  const int32_t Index = List->IndexOf(OnLinux() ? "/" : "c:");
  ASSERT_GE(Index, 0);
  const TKxDriveInfo& Root = List->GetDriveInfo(Index);
  EXPECT_EQ(List->FindDriveBySerial(LowerCase(Root.SerialNumber))->Root,
            List->FindDriveBySerial(Root.SerialNumber)->Root);
  EXPECT_NE(List->FindDriveByName(Root.VolumeName), nullptr);
  EXPECT_EQ(List->FindDriveByName("no such volume name"), nullptr);
  EXPECT_EQ(List->FindDriveByLetter('c'), OnLinux() ? nullptr : &Root);
  EXPECT_THROW(List->GetDriveInfo(List->Count()), EListError);
  const int32_t Before = List->Count();
  List->Delete(Index);
  EXPECT_EQ(List->Count(), Before - 1);
  EXPECT_EQ(List->IndexOf(SystemRoot()), -1);
  List->Free();
}

TEST(Registry, MultiLineValues) {
  TStringList* Lines = TStringList::Create();
  Lines->Add("left over");
#if defined(_WIN32)
  const char* Key = "Software\\kxcommon-test";
  HKEY H = nullptr;
  ASSERT_EQ(::RegCreateKeyExA(HKEY_CURRENT_USER, Key, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, &H,
                              nullptr),
            ERROR_SUCCESS);
  const char Multi[] = "first\0second line\0\0third\0";
  ::RegSetValueExA(H, "Lines", 0, REG_MULTI_SZ, reinterpret_cast<const BYTE*>(Multi), 20);
  ::RegCloseKey(H);
  KxReadMultiLineReg(HKEY_CURRENT_USER, bit64, Key, "Lines", Lines);
  EXPECT_EQ(Lines->Count(), 2);
  EXPECT_EQ(Lines->Strings(0), "first");
  EXPECT_EQ(Lines->Strings(1), "second line");
  KxReadMultiLineReg(KxHKeyCurrentUser, Key, "Lines", Lines);
  EXPECT_EQ(Lines->Count(), 2);
  try {
    KxReadMultiLineReg(KxHKeyCurrentUser, Key, "Missing", Lines);
    FAIL() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "Failed to read the registry value!");
  }
  ::RegDeleteTreeA(HKEY_CURRENT_USER, Key);
#else
  try {
    KxReadMultiLineReg(KxHKeyLocalMachine, "Software", "Lines", Lines);
    FAIL() << "no exception";
  } catch (const EKxNotSupported& E) {
    EXPECT_EQ(E.Message(), "KxReadMultiLineReg is not supported on this platform");
  }
#endif
  Lines->Free();
}

TEST(FileVersion, VersionResource) {
  if (OnLinux()) {
    const TKxFileVersionInfo Info = KxFileVersionInfo("/bin/sh");
    EXPECT_EQ(Info.FileVersionNumber, "");
    EXPECT_EQ(Info.FileDescription, "");
    return;
  }
  char Dir[512] = {};
#if defined(_WIN32)
  ::GetSystemDirectoryA(Dir, sizeof Dir);
#endif
  const TKxFileVersionInfo Info = KxFileVersionInfo(AnsiString(Dir) + "\\kernel32.dll");
  EXPECT_TRUE(std::regex_match(Info.FileVersionNumber, std::regex(R"(\d+\.\d+\.\d+\.\d+)")))
      << Info.FileVersionNumber;
  EXPECT_FALSE(Info.FileVersion.empty());
  EXPECT_FALSE(Info.FileDescription.empty());
  EXPECT_EQ(KxFileVersionInfo(AnsiString(Dir) + "\\no-such.dll").FileVersionNumber, "");
}

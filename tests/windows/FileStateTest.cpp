// SPDX-License-Identifier: MIT
// Files of uKxWindows: attributes, use by others, sizes, times written and read back, and
// temporary names and folders.
#include <kx/rtl/Files.h>
#include <kx/rtl/Streams.h>
#include <kx/uKxDateTimeUtils.h>
#include <kx/uKxWindows.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cmath>

#if defined(_WIN32)
#include <windows.h>
#endif

using namespace kx;

namespace {

// Wine accepts a creation time but keeps none on the Unix file system beneath it.
bool KeepsNoCreationTime() {
#if defined(_WIN32)
  return GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version") != nullptr;
#else
  return false;
#endif
}

} // namespace

TEST(FileState, ReadOnlyAndHidden) {
  kxtest::TTempFolder T;
  const AnsiString Missing = T.Name("missing");
  EXPECT_FALSE(KxFileIsReadOnly(Missing));
  EXPECT_FALSE(KxFileIsHidden(Missing));
  const AnsiString Plain = T.WriteFile("plain.txt", "x");
  EXPECT_FALSE(KxFileIsReadOnly(Plain));
  EXPECT_FALSE(KxFileIsHidden(Plain));
  ASSERT_EQ(FileSetAttr(Plain, faReadOnly), 0);
  EXPECT_TRUE(KxFileIsReadOnly(Plain));
  ASSERT_EQ(FileSetAttr(Plain, faNormal), 0);
  EXPECT_FALSE(KxFileIsReadOnly(Plain));
#if defined(_WIN32)
  ASSERT_EQ(FileSetAttr(Plain, faHidden), 0);
  EXPECT_TRUE(KxFileIsHidden(Plain));
#else
  // A leading dot hides a name.
  EXPECT_TRUE(KxFileIsHidden(T.WriteFile(".hidden", "x")));
#endif
}

TEST(FileState, InUseWhileAnotherOpenDeniesSharing) {
  kxtest::TTempFolder T;
  const AnsiString Name = T.WriteFile("busy.txt", "x");
  EXPECT_FALSE(KxFileIsInUse(T.Name("missing")));
  EXPECT_FALSE(KxFileIsInUse(Name));
  {
    TFileStream* Holder = TFileStream::Create(Name, fmOpenReadWrite | fmShareExclusive);
    EXPECT_TRUE(KxFileIsInUse(Name));
    Holder->Free();
  }
  EXPECT_FALSE(KxFileIsInUse(Name));
  {
    TFileStream* Reader = TFileStream::Create(Name, fmOpenRead | fmShareDenyWrite);
    EXPECT_TRUE(KxFileIsInUse(Name));
    Reader->Free();
  }
  // The check itself leaves the file free.
  TFileStream* After = TFileStream::Create(Name, fmOpenReadWrite | fmShareExclusive);
  After->Free();
}

TEST(FileState, SizeFromTheFolderSearch) {
  kxtest::TTempFolder T;
  EXPECT_EQ(KxGetFileSize(T.WriteFile("a.bin", std::string(12345, 'a'))), 12345);
  EXPECT_EQ(KxGetFileSize(T.WriteFile("empty", "")), 0);
  EXPECT_EQ(KxGetFileSize(T.Name("missing")), -1);
}

TEST(FileState, CreationTimeWrittenIsReadBack) {
  kxtest::TTempFolder T;
  if (KeepsNoCreationTime()) GTEST_SKIP() << "Wine keeps no creation time";
  const AnsiString Name = T.WriteFile("log.txt", "line\n");
  // The DOS form keeps even seconds.
  const TDateTime Set = EncodeDateTime(2021, 3, 4, 5, 6, 8, 0);
  KxSetFileCreated(Name, Set);
  EXPECT_EQ(KxDateTimeToISOStr(KxGetFileCreated(Name), true), "2021-03-04T05:06:08.000");
  const TDateTime Odd = EncodeDateTime(2024, 12, 31, 23, 59, 59, 0);
  KxSetFileCreated(Name, Odd);
  EXPECT_EQ(KxDateTimeToISOStr(KxGetFileCreated(Name), false), "2024-12-31T23:59:58");
  EXPECT_THROW(KxSetFileCreated(T.Name("missing"), Set), EOSError);
  EXPECT_EQ(double(KxGetFileCreated(T.Name("missing"))), 0.0);
}

TEST(FileState, LastModifiedIsLocalTime) {
  kxtest::TTempFolder T;
  const AnsiString Name = T.WriteFile("new.txt", "x");
  // Written just now, so within the two-second step and a little scheduling of now.
  EXPECT_NEAR(double(KxGetFileLastModified(Name)), double(Now()), 5.0 / SecsPerDay);
  EXPECT_EQ(double(KxGetFileLastModified(T.Name("missing"))), 0.0);
}

TEST(FileState, FileTimesAndDateTimesWithoutZones) {
  const TFileTime Epoch1970 = KxDateTimeToFileTime(EncodeDate(1970, 1, 1));
  EXPECT_EQ((uint64_t(Epoch1970.dwHighDateTime) << 32) | Epoch1970.dwLowDateTime,
            116444736000000000ULL);
  const TFileTime Origin = KxDateTimeToFileTime(EncodeDate(1601, 1, 1));
  EXPECT_EQ(Origin.dwHighDateTime, 0u);
  EXPECT_EQ(Origin.dwLowDateTime, 0u);
  for (const TDateTime DT :
       {EncodeDateTime(2024, 1, 5, 9, 3, 7, 45), EncodeDateTime(1850, 6, 1, 18, 0, 0, 1)}) {
    EXPECT_EQ(KxDateTimeToISOStr(KxFileTimeToDateTime(KxDateTimeToFileTime(DT)), true),
              KxDateTimeToISOStr(DT, true));
  }
}

TEST(TempNames, FilesAndFolders) {
  kxtest::TTempFolder T;
  const AnsiString First = KxGetTempFilename(T.Name(), "kxtest");
  const AnsiString Second = KxGetTempFilename(T.Name(), "kxtest");
  EXPECT_NE(First, Second);
  EXPECT_TRUE(FileExists(First));
  EXPECT_TRUE(FileExists(Second));
  EXPECT_EQ(ExtractFilePath(First), IncludeTrailingPathDelimiter(T.Name()));
  EXPECT_EQ(ExtractFileName(First).substr(0, 3), "kxt");
  EXPECT_THROW(KxGetTempFilename(T.Name("missing"), "kx"), EOSError);

  const AnsiString TempDir = KxGetTempDirectory();
  EXPECT_EQ(TempDir.back(), PathDelim);
  EXPECT_TRUE(DirectoryExists(TempDir));
  const AnsiString Made = KxCreateTempDirectory();
  EXPECT_TRUE(DirectoryExists(Made));
  EXPECT_EQ(ExtractFileName(ExcludeTrailingPathDelimiter(Made)).substr(0, 3), "Ast");
  EXPECT_EQ(ExtractFilePath(ExcludeTrailingPathDelimiter(Made)), TempDir);
  const AnsiString Next = KxCreateTempDirectory();
  EXPECT_NE(Next, Made);
  EXPECT_TRUE(RemoveDir(Made));
  EXPECT_TRUE(RemoveDir(Next));
}

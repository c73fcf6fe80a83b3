// SPDX-License-Identifier: MIT
// The runtime's path text rules, files and folders, attributes and folder searches.
#include <kx/rtl/Files.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <set>
#include <vector>

using namespace kx;

namespace {

const bool Windows = *DriveDelim != '\0';

// Joins parts with the platform's delimiter.
AnsiString P(std::initializer_list<const char*> Parts) {
  AnsiString R;
  for (const char* Part : Parts) {
    if (!R.empty()) R += PathDelim;
    R += Part;
  }
  return R;
}

std::set<AnsiString> Found(const AnsiString& Path, int32_t Attr) {
  std::set<AnsiString> Names;
  TSearchRec F;
  if (FindFirst(Path, Attr, F) == 0) {
    do Names.insert(F.Name);
    while (FindNext(F) == 0);
    FindClose(F);
  }
  return Names;
}

// Restores the working folder.
struct TCurrentDir {
  AnsiString Saved = GetCurrentDir();
  ~TCurrentDir() { SetCurrentDir(Saved); }
};

} // namespace

TEST(FilesPathText, ExtractsSplitAtTheNativeDelimiter) {
  const AnsiString Name = P({"", "a.d", "b", "c.tar.gz"});
  EXPECT_EQ(ExtractFilePath(Name), P({"", "a.d", "b", ""}));
  EXPECT_EQ(ExtractFileDir(Name), P({"", "a.d", "b"}));
  EXPECT_EQ(ExtractFileName(Name), "c.tar.gz");
  EXPECT_EQ(ExtractFileExt(Name), ".gz");
  EXPECT_EQ(ChangeFileExt(Name, ".txt"), P({"", "a.d", "b", "c.tar.txt"}));
  // A dot in a folder's name is no extension.
  const AnsiString NoExt = P({"a.d", "b"});
  EXPECT_EQ(ExtractFileExt(NoExt), "");
  EXPECT_EQ(ChangeFileExt(NoExt, ".x"), P({"a.d", "b.x"}));
  EXPECT_EQ(ChangeFileExt("x.", ""), "x");
  EXPECT_EQ(ExtractFileExt(".profile"), ".profile");
  EXPECT_EQ(ExtractFilePath("bare"), "");
  EXPECT_EQ(ExtractFileName("bare"), "bare");
  EXPECT_EQ(ExtractFileName(P({"dir", ""})), "");
  // The root keeps its delimiter.
  const AnsiString Root(1, PathDelim);
  EXPECT_EQ(ExtractFileDir(Root + "x"), Root);
  EXPECT_EQ(ExtractFileDir(P({"", "", "x"})), P({"", "", ""}));
  EXPECT_EQ(IncludeTrailingPathDelimiter("dir"), P({"dir", ""}));
  EXPECT_EQ(IncludeTrailingPathDelimiter(P({"dir", ""})), P({"dir", ""}));
  EXPECT_EQ(IncludeTrailingPathDelimiter(""), Root);
  EXPECT_EQ(ExcludeTrailingPathDelimiter(P({"dir", ""})), "dir");
  EXPECT_EQ(ExcludeTrailingPathDelimiter("dir"), "dir");
  EXPECT_EQ(LastDelimiter("/\\", "a/b\\c"), 4);
  EXPECT_EQ(LastDelimiter(":", "abc"), 0);
  EXPECT_TRUE(IsDelimiter("ab", "xa", 2));
  EXPECT_FALSE(IsDelimiter("ab", "xa", 3));
}

TEST(FilesPathText, DrivesOnlyOnWindows) {
  if (!Windows) {
    EXPECT_EQ(ExtractFileDrive("C:\\x"), "");
    EXPECT_EQ(ExtractFilePath("C:x"), ""); // ':' is an ordinary character
    EXPECT_EQ(ExtractFileName("a\\b"), "a\\b");
    return;
  }
  EXPECT_EQ(ExtractFileDrive("C:\\x\\y"), "C:");
  EXPECT_EQ(ExtractFileDrive("\\\\srv\\share\\x"), "\\\\srv\\share");
  EXPECT_EQ(ExtractFileDrive("\\\\srv\\share"), "\\\\srv\\share");
  EXPECT_EQ(ExtractFileDrive("x\\y"), "");
  EXPECT_EQ(ExtractFilePath("C:x.txt"), "C:");
  EXPECT_EQ(ExtractFileDir("C:\\x.txt"), "C:\\");
  EXPECT_EQ(ExtractFileName("C:x.txt"), "x.txt");
  EXPECT_EQ(ExtractFileName("a/b"), "a/b"); // '/' is no delimiter of these text rules
}

TEST(FilesPathText, ExpandFileNameResolvesDotsAgainstTheWorkingFolder) {
  kxtest::TTempFolder T;
  TCurrentDir Restore;
  ASSERT_TRUE(SetCurrentDir(T.Name()));
  const AnsiString Here = GetCurrentDir();
  EXPECT_EQ(ExpandFileName("x.txt"), IncludeTrailingPathDelimiter(Here) + "x.txt");
  EXPECT_EQ(ExpandFileName(P({"a", "..", ".", "b", "c"})),
            IncludeTrailingPathDelimiter(Here) + P({"b", "c"}));
  EXPECT_EQ(ExpandFileName(P({"a", ""})), IncludeTrailingPathDelimiter(Here) + P({"a", ""}));
  EXPECT_EQ(ExpandFileName(P({Here.c_str(), "..", ExtractFileName(Here).c_str()})), Here);
  EXPECT_EQ(ExpandFileName(""), "");
}

TEST(FilesFolders, ExistenceCreationRemovalAndRenaming) {
  kxtest::TTempFolder T;
  const AnsiString File = T.WriteFile("f.txt", "abc");
  const AnsiString Dir = T.Name("d");
  EXPECT_TRUE(FileExists(File));
  EXPECT_FALSE(DirectoryExists(File));
  EXPECT_FALSE(FileExists(T.Name()));
  EXPECT_TRUE(DirectoryExists(T.Name()));
  EXPECT_FALSE(FileExists(T.Name("missing")));
  EXPECT_FALSE(DirectoryExists(T.Name("missing")));
  EXPECT_FALSE(FileExists(""));

  EXPECT_TRUE(CreateDir(Dir));
  EXPECT_FALSE(CreateDir(Dir));
  EXPECT_FALSE(DeleteFile(Dir)); // not a file
  EXPECT_TRUE(DirectoryExists(Dir));
  EXPECT_TRUE(RemoveDir(Dir));
  EXPECT_FALSE(RemoveDir(Dir));

  const AnsiString Other = T.WriteFile("g.txt", "x");
  EXPECT_FALSE(RenameFile(File, Other)); // never replaces
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(Other), "x");
  EXPECT_TRUE(RenameFile(File, T.Name("h.txt")));
  EXPECT_FALSE(FileExists(File));
  EXPECT_TRUE(FileExists(T.Name("h.txt")));
  EXPECT_TRUE(DeleteFile(T.Name("h.txt")));
  EXPECT_FALSE(DeleteFile(T.Name("h.txt")));
}

TEST(FilesFolders, ForceDirectoriesMakesEveryMissingParent) {
  kxtest::TTempFolder T;
  const AnsiString Deep = T.Name("a/b/c");
  EXPECT_TRUE(ForceDirectories(IncludeTrailingPathDelimiter(Deep)));
  EXPECT_TRUE(DirectoryExists(Deep));
  EXPECT_TRUE(ForceDirectories(Deep)); // exists already
  EXPECT_TRUE(ForceDirectories(AnsiString(1, PathDelim)));

  TCurrentDir Restore;
  ASSERT_TRUE(SetCurrentDir(T.Name()));
  EXPECT_TRUE(ForceDirectories(P({"rel", "x"})));
  EXPECT_TRUE(DirectoryExists(T.Name("rel/x")));
  EXPECT_TRUE(ForceDirectories("single"));
  EXPECT_TRUE(DirectoryExists(T.Name("single")));

  // A file in the way.
  T.WriteFile("file", "");
  EXPECT_FALSE(ForceDirectories(T.Name("file/sub")));
  try {
    ForceDirectories("");
    ADD_FAILURE() << "no exception";
  } catch (const EInOutError& E) {
    EXPECT_EQ(E.Message(), "Unable to create directory");
  }
}

TEST(FilesFolders, AttributesReadOnlyAndHidden) {
  kxtest::TTempFolder T;
  const AnsiString File = T.WriteFile("f.txt", "abc");
  EXPECT_EQ(FileGetAttr(T.Name("missing")), -1);
  EXPECT_NE(FileGetAttr(T.Name()) & faDirectory, 0);
  EXPECT_EQ(FileGetAttr(File) & (faDirectory | faReadOnly), 0);
  EXPECT_EQ(FileSetAttr(File, faReadOnly), 0);
  EXPECT_NE(FileGetAttr(File) & faReadOnly, 0);
  EXPECT_EQ(FileSetAttr(File, 0), 0);
  EXPECT_EQ(FileGetAttr(File) & faReadOnly, 0);
  EXPECT_NE(FileSetAttr(T.Name("missing"), 0), 0);

  if (!Windows) {
    // A leading dot is what hides a name.
    const AnsiString Dot = T.WriteFile(".hidden", "");
    EXPECT_NE(FileGetAttr(Dot) & faHidden, 0);
    EXPECT_EQ(FileGetAttr(File) & faHidden, 0);
    EXPECT_EQ(FileGetAttr(T.Name() + "/.") & faHidden, 0);
  }
}

TEST(FilesSearch, MasksAttributesAndRecords) {
  kxtest::TTempFolder T;
  T.WriteFile("a.txt", "12345");
  T.WriteFile("b.txt", "");
  T.WriteFile("c.log", "");
  T.WriteFile("noext", "");
  ASSERT_TRUE(CreateDir(T.Name("sub.txt")));
  const AnsiString Dir = IncludeTrailingPathDelimiter(T.Name());

  EXPECT_EQ(Found(Dir + "*.txt", 0), (std::set<AnsiString>{"a.txt", "b.txt"}));
  EXPECT_EQ(Found(Dir + "*.txt", faDirectory), (std::set<AnsiString>{"a.txt", "b.txt", "sub.txt"}));
  EXPECT_EQ(Found(Dir + "?.*", 0), (std::set<AnsiString>{"a.txt", "b.txt", "c.log"}));
  // "*.*" is everything, names without a dot and the folder's own entries included.
  EXPECT_EQ(Found(Dir + "*.*", faAnyFile),
            (std::set<AnsiString>{".", "..", "a.txt", "b.txt", "c.log", "noext", "sub.txt"}));
  EXPECT_EQ(Found(Dir + "no*.*", 0), (std::set<AnsiString>{"noext"}));
  EXPECT_EQ(Found(Dir + "a.txt", 0), (std::set<AnsiString>{"a.txt"}));

  TSearchRec F;
  ASSERT_EQ(FindFirst(Dir + "a.txt", faAnyFile, F), 0);
  EXPECT_EQ(F.Size, 5);
  EXPECT_EQ(F.FindData.nFileSizeLow, 5u);
  EXPECT_EQ(F.Attr & faDirectory, 0);
  EXPECT_NE(F.Time, 0); // a DOS date-time of this century
  EXPECT_GE(uint32_t(F.Time) >> 25, 40u);
  EXPECT_NE(F.FindData.ftLastWriteTime.dwHighDateTime, 0u);
  EXPECT_NE(FindNext(F), 0);
  FindClose(F);
  EXPECT_EQ(F.FindHandle, nullptr);

  TSearchRec None;
  EXPECT_NE(FindFirst(Dir + "*.none", faAnyFile, None), 0);
  EXPECT_EQ(None.FindHandle, nullptr);
  EXPECT_NE(FindFirst(T.Name("missing/*.*"), faAnyFile, None), 0);
  EXPECT_EQ(None.FindHandle, nullptr);
}

TEST(FilesSearch, HiddenNamesNeedTheHiddenAttribute) {
  if (Windows) GTEST_SKIP() << "hidden is an attribute there, set by other means";
  kxtest::TTempFolder T;
  T.WriteFile(".dot", "");
  T.WriteFile("plain", "");
  const AnsiString Dir = IncludeTrailingPathDelimiter(T.Name());
  EXPECT_EQ(Found(Dir + "*", 0), (std::set<AnsiString>{"plain"}));
  EXPECT_EQ(Found(Dir + "*", faHidden), (std::set<AnsiString>{".dot", "plain"}));
  // Names are compared as they are spelt.
  EXPECT_EQ(Found(Dir + "PLAIN", 0), (std::set<AnsiString>{}));
}

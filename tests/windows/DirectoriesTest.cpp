// SPDX-License-Identifier: MIT
// Folders of uKxWindows: the checked creation with its question, removal (with a hostile
// symbolic link), renaming and file searches.
#include <kx/rtl/Files.h>
#include <kx/uKxWindows.h>

#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <system_error>
#include <vector>

using namespace kx;

namespace {

int32_t Answer = KxAnswerYes;
std::vector<AnsiString> Asked;

int32_t AskRecorded(const AnsiString& Msg, const AnsiString& Caption) {
  Asked.push_back(Msg);
  EXPECT_EQ(Caption, "");
  return Answer;
}

// Installs the question for one test and removes it afterwards.
struct TQuestion {
  explicit TQuestion(int32_t AAnswer) {
    Answer = AAnswer;
    Asked.clear();
    SetKxMsgBoxYesNo(&AskRecorded);
  }
  ~TQuestion() { SetKxMsgBoxYesNo(nullptr); }
};

void ExpectNotCreated(const AnsiString& Dir) {
  try {
    KxCheckDirectory(Dir);
    ADD_FAILURE() << "no exception";
  } catch (const Exception& E) {
    EXPECT_EQ(E.Message(), "The directory '" + Dir + "' could not be created!");
  }
}

// A symbolic link to a folder, where the platform lets us make one.
bool LinkFolder(const std::filesystem::path& Target, const std::filesystem::path& Link) {
  std::error_code Ec;
  std::filesystem::create_directory_symlink(Target, Link, Ec);
  return !Ec;
}

std::vector<AnsiString> Items(TStrings* L) {
  std::vector<AnsiString> R;
  for (int32_t I = 0; I < L->Count(); ++I) R.push_back(L->Strings(I));
  return R;
}

} // namespace

TEST(DirectoriesCheck, WithoutAQuestionNothingIsTried) {
  kxtest::TTempFolder T;
  const AnsiString Dir = T.Name("a/b");
  ExpectNotCreated(Dir);
  EXPECT_FALSE(DirectoryExists(Dir));
  EXPECT_FALSE(KxCheckDirectory(Dir, true, false));
  // Existing and empty names need nothing.
  KxCheckDirectory(T.Name());
  KxCheckDirectory("");
  // Not asking creates directly, without a question installed.
  EXPECT_TRUE(KxCheckDirectory(Dir, false, true));
  EXPECT_TRUE(DirectoryExists(Dir));
}

TEST(DirectoriesCheck, TheAnswerDecides) {
  kxtest::TTempFolder T;
  const AnsiString Dir = T.Name("x/y");
  {
    TQuestion No(7);
    KxCheckDirectory(Dir);
    EXPECT_FALSE(DirectoryExists(Dir));
    ASSERT_EQ(Asked.size(), 1u);
    EXPECT_EQ(Asked[0], "The directory '" + Dir + "' does not exist\r\nDo you want to create it?");
    EXPECT_FALSE(KxCheckDirectory(Dir, true, true));
  }
  {
    TQuestion Yes(KxAnswerYes);
    KxCheckDirectory(Dir);
    EXPECT_TRUE(DirectoryExists(Dir));
    KxCheckDirectory(Dir);
    EXPECT_EQ(Asked.size(), 1u); // an existing folder asks nothing
    // A file in the way: the answer is yes, the creation fails.
    T.WriteFile("file", "");
    ExpectNotCreated(T.Name("file/sub"));
    EXPECT_FALSE(KxCheckDirectory(T.Name("file/sub"), true, false));
    EXPECT_FALSE(KxCheckDirectory(T.Name("file/sub"), false, false));
  }
}

TEST(DirectoriesRemove, RemovesTreesWithAndWithoutTheShell) {
  for (bool UseShell : {true, false}) {
    kxtest::TTempFolder T;
    ASSERT_TRUE(ForceDirectories(T.Name("d/a/b")));
    T.WriteFile("d/top.txt", "1");
    T.WriteFile("d/a/mid.txt", "2");
    T.WriteFile("d/a/b/.dot", "3");
    T.WriteFile("d/a/b/deep.bin", "4");
    EXPECT_TRUE(KxRemoveDir(T.Name("d"), UseShell)) << UseShell;
    EXPECT_FALSE(DirectoryExists(T.Name("d"))) << UseShell;
    EXPECT_FALSE(KxRemoveDir(T.Name("d"), UseShell)) << UseShell;
    EXPECT_FALSE(KxRemoveDir(T.WriteFile("plain", ""), UseShell)) << UseShell;
    EXPECT_TRUE(FileExists(T.Name("plain"))) << UseShell;
  }
}

TEST(DirectoriesRemove, NeverFollowsALinkOutOfTheFolder) {
  for (bool UseShell : {true, false}) {
    kxtest::TTempFolder T;
    ASSERT_TRUE(ForceDirectories(T.Name("outside/keep")));
    T.WriteFile("outside/keep/precious.txt", "do not delete");
    ASSERT_TRUE(ForceDirectories(T.Name("victim/sub")));
    T.WriteFile("victim/sub/f.txt", "x");
    if (!LinkFolder(T.Path() / "outside", T.Path() / "victim" / "sub" / "escape") ||
        !LinkFolder(T.Path() / "outside", T.Path() / "linkdir"))
      GTEST_SKIP() << "symbolic links to folders cannot be made here";
    EXPECT_TRUE(KxRemoveDir(T.Name("victim"), UseShell)) << UseShell;
    EXPECT_FALSE(DirectoryExists(T.Name("victim"))) << UseShell;
    EXPECT_EQ(kxtest::TTempFolder::ReadFile(T.Name("outside/keep/precious.txt")), "do not delete")
        << UseShell;
    // A link given as the folder itself: the link goes, its target stays.
    EXPECT_TRUE(KxRemoveDir(T.Name("linkdir"), UseShell)) << UseShell;
    EXPECT_FALSE(std::filesystem::is_symlink(T.Path() / "linkdir")) << UseShell;
    EXPECT_TRUE(FileExists(T.Name("outside/keep/precious.txt"))) << UseShell;
  }
}

TEST(DirectoriesRename, RenamesFoldersButNeverOverAnother) {
  kxtest::TTempFolder T;
  ASSERT_TRUE(ForceDirectories(T.Name("old/in")));
  T.WriteFile("old/in/f.txt", "content");
  EXPECT_TRUE(KxRenameFolder(T.Name("old"), T.Name("new")));
  EXPECT_FALSE(DirectoryExists(T.Name("old")));
  EXPECT_EQ(kxtest::TTempFolder::ReadFile(T.Name("new/in/f.txt")), "content");
  ASSERT_TRUE(CreateDir(T.Name("other")));
  EXPECT_FALSE(KxRenameFolder(T.Name("new"), T.Name("other")));
  EXPECT_TRUE(DirectoryExists(T.Name("new")));
  EXPECT_FALSE(KxRenameFolder(T.Name("missing"), T.Name("x")));
}

TEST(DirectoriesFind, MasksOrderAndRecursion) {
  kxtest::TTempFolder T;
  ASSERT_TRUE(ForceDirectories(T.Name("b-sub/deeper")));
  ASSERT_TRUE(ForceDirectories(T.Name("a-sub")));
  T.WriteFile("Zeta.txt", "");
  T.WriteFile("alpha.TXT", "");
  T.WriteFile("beta.log", "");
  T.WriteFile("gamma.bin", "");
  T.WriteFile("a-sub/in-a.txt", "");
  T.WriteFile("b-sub/in-b.log", "");
  T.WriteFile("b-sub/deeper/in-deeper.txt", "");
  const AnsiString D = IncludeTrailingPathDelimiter(T.Name());
  const bool Windows = *DriveDelim != '\0';

  TStringList* L = TStringList::Create();
  EXPECT_EQ(KxFindFiles(T.Name(), "*.txt;*.log", L, false), Windows ? 3 : 2);
  if (Windows) {
    EXPECT_EQ(Items(L), (std::vector<AnsiString>{D + "alpha.TXT", D + "beta.log", D + "Zeta.txt"}));
  } else {
    EXPECT_EQ(Items(L), (std::vector<AnsiString>{D + "beta.log", D + "Zeta.txt"}));
  }

  L->Clear();
  EXPECT_EQ(KxFindFiles(D, "*.txt; *.TXT", L, true), 4);
  EXPECT_EQ(Items(L),
            (std::vector<AnsiString>{D + "alpha.TXT", D + "Zeta.txt", T.Name("a-sub/in-a.txt"),
                                     T.Name("b-sub/deeper/in-deeper.txt")}));

  L->Clear();
  EXPECT_EQ(KxFindFiles(T.Name(), "", L, true), 7); // every file, no folders
  EXPECT_EQ(KxFindFiles(T.Name("missing"), "*", L, true), 0);
  EXPECT_EQ(L->Count(), 7);

  // A link back up the tree is no folder to enter.
  if (LinkFolder(T.Path(), T.Path() / "a-sub" / "loop")) {
    L->Clear();
    EXPECT_EQ(KxFindFiles(T.Name(), "*.bin", L, true), 1);
  }
  L->Free();
}

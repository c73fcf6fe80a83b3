// SPDX-License-Identifier: MIT
// Folders of uKxWindows.
#include <kx/rtl/Files.h>
#include <kx/windows/Directories.h>

#include "platform/Platform.h"

#include <algorithm>
#include <atomic>
#include <vector>

namespace kx {

namespace {

std::atomic<TKxMsgBoxYesNoFunc> MsgBoxYesNo{nullptr};

// The walk lists every entry: hidden, system and folders included.
constexpr int32_t WalkAttributes = 63;

bool Failed(const AnsiString& Dir, bool RaiseOnFailure) {
  if (RaiseOnFailure) throw Exception(SDirectoryNotCreated, {Dir});
  return false;
}

bool IsDotEntry(const AnsiString& Name) {
  return Name == "." || Name == "..";
}

// Removes one entry of a folder being emptied.
bool RemoveEntry(const AnsiString& Path, int32_t Attr);

bool RemoveWalk(const AnsiString& Dir) {
  const AnsiString Folder = IncludeTrailingPathDelimiter(Dir);
  bool Ok = true;
  TSearchRec SR;
  if (FindFirst(Folder + "*.*", WalkAttributes, SR) == 0) {
    do {
      if (!IsDotEntry(SR.Name)) Ok = RemoveEntry(Folder + SR.Name, SR.Attr);
    } while (Ok && FindNext(SR) == 0);
    FindClose(SR);
  }
  return Ok && RemoveDir(ExcludeTrailingPathDelimiter(Dir));
}

bool RemoveEntry(const AnsiString& Path, int32_t Attr) {
  // A link goes as a link: a link to a folder is removed as a folder, which takes the link.
  if (Attr & faSymLink) return (Attr & faDirectory) ? RemoveDir(Path) : DeleteFile(Path);
  if (Attr & faDirectory) return RemoveWalk(Path);
  return DeleteFile(Path);
}

// The names in Folder (with its delimiter) that the search finds and Keep accepts.
template <class F>
void Collect(const AnsiString& Pattern, int32_t Attr, F&& Keep, std::vector<AnsiString>& Names) {
  TSearchRec SR;
  if (FindFirst(Pattern, Attr, SR) != 0) return;
  do
    if (Keep(SR)) Names.push_back(SR.Name);
  while (FindNext(SR) == 0);
  FindClose(SR);
}

void SortNames(std::vector<AnsiString>& Names) {
  std::sort(Names.begin(), Names.end(), [](const AnsiString& A, const AnsiString& B) {
    const int32_t C = AnsiCompareText(A, B);
    return C != 0 ? C < 0 : CompareStr(A, B) < 0;
  });
  Names.erase(std::unique(Names.begin(), Names.end()), Names.end());
}

int32_t FindIn(const AnsiString& Dir, const std::vector<AnsiString>& Masks, TStrings* Files,
               bool Recursive) {
  const AnsiString Folder = IncludeTrailingPathDelimiter(Dir);
  std::vector<AnsiString> Names;
  for (const AnsiString& Mask : Masks)
    Collect(
        Folder + Mask, faAnyFile, [](const TSearchRec& SR) { return (SR.Attr & faDirectory) == 0; },
        Names);
  SortNames(Names);
  for (const AnsiString& Name : Names) Files->Add(Folder + Name);
  int32_t Count = int32_t(Names.size());
  if (!Recursive) return Count;
  std::vector<AnsiString> Folders;
  Collect(
      Folder + "*", faAnyFile,
      [](const TSearchRec& SR) {
        return (SR.Attr & faDirectory) != 0 && (SR.Attr & faSymLink) == 0 && !IsDotEntry(SR.Name);
      },
      Folders);
  SortNames(Folders);
  for (const AnsiString& Sub : Folders) Count += FindIn(Folder + Sub, Masks, Files, true);
  return Count;
}

} // namespace

void SetKxMsgBoxYesNo(TKxMsgBoxYesNoFunc Func) {
  MsgBoxYesNo.store(Func, std::memory_order_release);
}

void KxCheckDirectory(const AnsiString& Dir) {
  KxCheckDirectory(Dir, true, true);
}

bool KxCheckDirectory(const AnsiString& Dir, bool Ask, bool RaiseOnFailure) {
  if (Dir.empty() || DirectoryExists(Dir)) return true;
  if (Ask) {
    const TKxMsgBoxYesNoFunc Question = MsgBoxYesNo.load(std::memory_order_acquire);
    if (!Question) return Failed(Dir, RaiseOnFailure);
    if (Question(Format(SDirectoryQuestion, {Dir}), AnsiString()) != KxAnswerYes) return false;
  }
  if (!ForceDirectories(Dir)) return Failed(Dir, RaiseOnFailure);
  return true;
}

bool KxRenameFolder(const AnsiString& OldName, const AnsiString& NewName) {
  return platform::RenameTree(OldName, NewName);
}

bool KxRemoveDir(const AnsiString& Dir, bool UseShell) {
  // Only folders: the shell would delete a file given here too.
  const int32_t Attr = Dir.empty() ? -1 : FileGetAttr(Dir);
  if (Attr == -1 || (Attr & faDirectory) == 0) return false;
  if (Attr & faSymLink) return RemoveDir(Dir);
  if (UseShell && platform::RemoveTree(Dir)) return true;
  return RemoveWalk(Dir);
}

int32_t KxFindFiles(const AnsiString& Dir, const AnsiString& Masks, TStrings* Files,
                    bool Recursive) {
  std::vector<AnsiString> List;
  size_t From = 0;
  while (From <= Masks.size()) {
    const size_t At = std::min(Masks.find(';', From), Masks.size());
    const AnsiString Mask = Trim(Masks.substr(From, At - From));
    if (!Mask.empty()) List.push_back(Mask);
    From = At + 1;
  }
  if (List.empty()) List.push_back("*");
  return FindIn(Dir, List, Files, Recursive);
}

} // namespace kx

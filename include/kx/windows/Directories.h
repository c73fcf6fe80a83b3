// SPDX-License-Identifier: MIT
// Folders of uKxWindows: checking with a question to the user, renaming, removal and searches.
#pragma once

#include <kx/rtl/StringList.h>

namespace kx {

inline constexpr const char* SDirectoryQuestion =
    "The directory '%s' does not exist\r\nDo you want to create it?";
inline constexpr const char* SDirectoryNotCreated = "The directory '%s' could not be created!";
// The answer of the yes/no question that means yes (the message box's IDYES).
inline constexpr int32_t KxAnswerYes = 6;

// Asks the user a yes/no question (message, caption) and returns the message-box answer code.
using TKxMsgBoxYesNoFunc = int32_t (*)(const AnsiString& Msg, const AnsiString& Caption);
// Installs the question (an application with a user interface puts a message box here); an
// empty function removes it. Empty at start.
KX_API void SetKxMsgBoxYesNo(TKxMsgBoxYesNoFunc Func);

// Nothing for an empty Dir or an existing folder. Otherwise, without a question installed,
// Exception "The directory '<Dir>' could not be created!" without trying. With one, asks
// "The directory '<Dir>' does not exist\r\nDo you want to create it?" (empty caption); on yes
// creates the folder with its missing parents and raises the same text when that fails; on
// any other answer returns without creating.
KX_API void KxCheckDirectory(const AnsiString& Dir);
// The same procedure with two options: Ask false creates the folder without a question (and
// without needing one installed); RaiseOnFailure false returns false where the procedure would
// raise. True when the folder exists at the end.
KX_API bool KxCheckDirectory(const AnsiString& Dir, bool Ask, bool RaiseOnFailure);

// Renames a folder (Windows: the shell's file operation; Linux: rename, or a copy and removal
// across file systems). Fails when NewName exists. Never raises.
KX_API bool KxRenameFolder(const AnsiString& OldName, const AnsiString& NewName);
// Removes Dir with everything in it. UseShell asks the shell's delete first (Linux: a walk over
// descriptors); when that is not asked for or fails, a walk over the folder search deletes the
// files and sub-folders, stops at the first failure and removes Dir last. A symbolic link is
// removed as a link and never followed, Dir itself included. A name that is no folder is left
// alone (false). Never raises.
KX_API bool KxRemoveDir(const AnsiString& Dir, bool UseShell);

// Adds to Files the full names of the files (not folders, whatever their attributes) in Dir
// that match one of Masks ('*' and '?' wildcards, several separated by ';'; empty means every
// file); with Recursive, also those of its sub-folders, never entering a folder through a
// symbolic link. Folder by folder: a folder's files in name order (AnsiCompareText), then its
// sub-folders in name order. Returns the number added; a missing Dir adds none.
KX_API int32_t KxFindFiles(const AnsiString& Dir, const AnsiString& Masks, TStrings* Files,
                           bool Recursive);

} // namespace kx

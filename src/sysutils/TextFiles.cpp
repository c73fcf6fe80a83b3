// SPDX-License-Identifier: MIT
// Whole text files of uKxSysUtils.
#include <kx/classes/StreamStrings.h>
#include <kx/classes/StringStream.h>
#include <kx/sysutils/TextFiles.h>

#include "classes/StreamCodePage.h"

namespace kx {

namespace {
constexpr uint16_t DefaultFileCodePage = 65001;

void Save(TKxStringStream* Stream, const AnsiString& FileName, uint16_t CodePage, bool WriteBOM) {
  detail::TFreeOnExit Free{Stream};
  Stream->SaveToFile(FileName, CodePage, WriteBOM);
}
} // namespace

AnsiString KxLoadStringFromFile(const AnsiString& FileName, uint16_t Mode) {
  return KxStreamToAnsiString(TFileStream::Create(FileName, Mode), true);
}

void KxSaveString(const AnsiString& FileName, const AnsiString& Text, uint16_t CodePage,
                  bool WriteBOM) {
  Save(TKxStringStream::Create(Text, uint16_t(0)), FileName, CodePage, WriteBOM);
}

void KxSaveString(const AnsiString& FileName, const UnicodeString& Text, uint16_t CodePage,
                  bool WriteBOM) {
  Save(TKxStringStream::Create(Text), FileName, CodePage, WriteBOM);
}

void KxSaveString(const AnsiString& FileName, const AnsiString& Text) {
  KxSaveString(FileName, Text, DefaultFileCodePage, true);
}

} // namespace kx

// SPDX-License-Identifier: MIT
// Multi-line registry values of uKxWindows.
#include <kx/sysutils/SystemInfo.h>
#include <kx/windows/Environment.h>
#include <kx/windows/Registry.h>

#include "platform/Registry.h"

namespace kx {

void KxReadMultiLineReg(TKxRootKey RootKey, TKxBitness Bitness, const AnsiString& KeyName,
                        const AnsiString& ValueName, TStrings* Lines) {
  const uint32_t Access = platform::KEY_READ_ | (Bitness == bit64 ? platform::KEY_WOW64_64KEY_
                                                                  : platform::KEY_WOW64_32KEY_);
  platform::RegKey Key = nullptr;
  const uint32_t Rc =
      platform::RegOpenKey(reinterpret_cast<uintptr_t>(RootKey), KeyName, Access, Key);
  if (Rc == platform::ERROR_NOT_SUPPORTED_)
    throw EKxNotSupported(SNotSupportedOnPlatform, {"KxReadMultiLineReg"});
  if (Rc != 0) throw Exception(SFailedToReadRegValue);
  uint32_t Type = 0;
  std::vector<uint8_t> Data;
  const uint32_t Read = platform::RegQueryValue(Key, ValueName, Type, Data);
  platform::RegCloseKey(Key);
  if (Read != 0) throw Exception(SFailedToReadRegValue);
  Lines->Clear();
  // Items end at their zero; an empty item (two zeros) ends the list.
  size_t Start = 0;
  while (Start < Data.size() && Data[Start] != 0) {
    size_t End = Start;
    while (End < Data.size() && Data[End] != 0) ++End;
    Lines->Add(AnsiString(reinterpret_cast<const char*>(Data.data()) + Start, End - Start));
    Start = End + 1;
  }
}

void KxReadMultiLineReg(TKxRootKey RootKey, const AnsiString& KeyName, const AnsiString& ValueName,
                        TStrings* Lines) {
  KxReadMultiLineReg(RootKey, IsCPU64() ? bit64 : bit32, KeyName, ValueName, Lines);
}

} // namespace kx

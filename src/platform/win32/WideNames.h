// SPDX-License-Identifier: MIT
// Names between the process ANSI code page and the UTF-16 the W functions take.
#pragma once

#include "platform/Platform.h"

#include <windows.h>

#include <string>

namespace kx::platform {

// The name as UTF-16; false (with the conversion's error set) when it does not convert.
inline bool WideName(const AnsiString& Name, std::wstring& Wide) {
  Wide.clear();
  if (Name.empty()) return true;
  const UINT Cp = KxSystemCodePage();
  const int Len = ::MultiByteToWideChar(Cp, 0, Name.data(), int(Name.size()), nullptr, 0);
  if (Len <= 0) return false;
  Wide.assign(size_t(Len), L'\0');
  ::MultiByteToWideChar(Cp, 0, Name.data(), int(Name.size()), Wide.data(), Len);
  return true;
}

// UTF-16 text from the OS in the process ANSI code page.
inline AnsiString NarrowName(const wchar_t* Wide, size_t Count) {
  if (Count == 0) return AnsiString();
  const UINT Cp = KxSystemCodePage();
  const int Len = ::WideCharToMultiByte(Cp, 0, Wide, int(Count), nullptr, 0, nullptr, nullptr);
  if (Len <= 0) return AnsiString();
  AnsiString Result(size_t(Len), '\0');
  ::WideCharToMultiByte(Cp, 0, Wide, int(Count), Result.data(), Len, nullptr, nullptr);
  return Result;
}

inline AnsiString NarrowName(const std::wstring& Wide) {
  return NarrowName(Wide.data(), Wide.size());
}

} // namespace kx::platform

// SPDX-License-Identifier: MIT
// Content sniffing through urlmon's FindMimeFromData.
#include "platform/Mime.h"

#include "platform/win32/WideNames.h"

#include <windows.h>

#include <objbase.h>

namespace kx::platform {

bool MimeTypeOfData(const void* Data, size_t Size, AnsiString& Mime) {
  using TFindMimeFromData = HRESULT(WINAPI*)(void*, const wchar_t*, void*, DWORD, const wchar_t*,
                                             DWORD, wchar_t**, DWORD);
  static const auto Find = reinterpret_cast<TFindMimeFromData>(
      reinterpret_cast<void*>(::GetProcAddress(::LoadLibraryA("urlmon.dll"), "FindMimeFromData")));
  if (!Find || !Data) return false;
  wchar_t* Result = nullptr;
  const HRESULT Hr = Find(nullptr, nullptr, const_cast<void*>(Data),
                          DWORD(Size > 0xFFFFFFFFu ? 0xFFFFFFFFu : Size), nullptr, 0, &Result, 0);
  if (FAILED(Hr) || !Result) return false;
  Mime = NarrowName(Result, ::wcslen(Result));
  ::CoTaskMemFree(Result);
  return true;
}

} // namespace kx::platform

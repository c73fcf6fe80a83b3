// SPDX-License-Identifier: MIT
// Code pages on Windows: the process ANSI code page, the Win32 conversions and normaliz.dll.
#include "platform/Platform.h"

#include <windows.h>

namespace kx::platform {

uint32_t SystemCodePage() {
  return ::GetACP();
}

bool IsValidCodePage(uint32_t CodePage) {
  return ::IsValidCodePage(CodePage) != 0;
}

uint32_t CodePageMaxCharSize(uint32_t CodePage) {
  CPINFO Info;
  return ::GetCPInfo(CodePage, &Info) ? Info.MaxCharSize : 0;
}

int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen) {
  return ::MultiByteToWideChar(CodePage, Flags, Src, SrcLen, reinterpret_cast<wchar_t*>(Dst),
                               DstLen);
}

int32_t MultiByteToWideBound(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen) {
  return ::MultiByteToWideChar(CodePage, Flags, Src, SrcLen, nullptr, 0);
}

int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen) {
  return ::WideCharToMultiByte(CodePage, Flags, reinterpret_cast<const wchar_t*>(Src), SrcLen, Dst,
                               DstLen, nullptr, nullptr);
}

void* LoadNormalizationModule(const char* Name) {
  return ::LoadLibraryA(Name);
}

void* GetNormalizationProc(void* Module, const char* Name) {
  return Module ? reinterpret_cast<void*>(::GetProcAddress(static_cast<HMODULE>(Module), Name))
                : nullptr;
}

} // namespace kx::platform

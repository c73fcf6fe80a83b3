// Code pages on Windows: the process ANSI code page and the Win32 conversions.
#include "platform/Platform.h"

#include <windows.h>

namespace kx::platform {

uint32_t SystemCodePage() {
  return ::GetACP();
}
bool IsValidCodePage(uint32_t CodePage) {
  return ::IsValidCodePage(CodePage) != 0;
}

int32_t MultiByteToWide(uint32_t CodePage, uint32_t Flags, const char* Src, int32_t SrcLen,
                        char16_t* Dst, int32_t DstLen) {
  if (SrcLen == 0) return 0;
  return ::MultiByteToWideChar(CodePage, Flags, Src, SrcLen, reinterpret_cast<wchar_t*>(Dst),
                               DstLen);
}

int32_t WideToMultiByte(uint32_t CodePage, uint32_t Flags, const char16_t* Src, int32_t SrcLen,
                        char* Dst, int32_t DstLen) {
  if (SrcLen == 0) return 0;
  return ::WideCharToMultiByte(CodePage, Flags, reinterpret_cast<const wchar_t*>(Src), SrcLen, Dst,
                               DstLen, nullptr, nullptr);
}

} // namespace kx::platform

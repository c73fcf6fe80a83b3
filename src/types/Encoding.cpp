// SPDX-License-Identifier: MIT
// TKxEncoding over the platform's conversion pair, and byte-order-mark detection.
#include <kx/rtl/Exceptions.h>
#include <kx/types/Encoding.h>
#include <kx/types/TypesConsts.h>

#include "platform/Platform.h"

#include <cstring>

namespace kx {

namespace {

constexpr int32_t ConvertBAssertLine = 2842;
constexpr int32_t GetCodePageAssertLine = 4001;

// MB_ERR_INVALID_CHARS, and WC_COMPOSITECHECK | WC_DISCARDNS | WC_SEPCHARS | WC_DEFAULTCHAR.
constexpr uint32_t ToWideFlags = platform::MB_ERR_INVALID_CHARS_;
constexpr uint32_t FromWideFlags = platform::WC_COMPOSITECHECK_ | platform::WC_DISCARDNS_ |
                                   platform::WC_SEPCHARS_ | platform::WC_DEFAULTCHAR_;
static_assert(FromWideFlags == 624);

uint32_t Resolve(uint16_t CodePage) {
  return CodePage == 0 ? KxSystemCodePage() : CodePage;
}

// The code pages the platform converts only without flags.
bool RefusesFlags(uint32_t CodePage) {
  return CodePage == 42 || (CodePage >= 50220 && CodePage <= 50222) || CodePage == 50225 ||
         CodePage == 50227 || CodePage == 50229 || (CodePage >= 57002 && CodePage <= 57011) ||
         CodePage == 65000 || CodePage == 65001;
}

bool IsUnicodeCodePage(uint16_t CodePage) {
  return CodePage == 1200 || CodePage == 1201 || CodePage == 12000 || CodePage == 12001;
}

} // namespace

UnicodeString TKxEncoding::ConvertA(const AnsiString& S) {
  return ConvertA(S, 0);
}

UnicodeString TKxEncoding::ConvertA(const AnsiString& S, uint16_t CodePage) {
  UnicodeString Wide;
  return ConvertA(S.data(), int32_t(S.size()), Wide, CodePage);
}

UnicodeString& TKxEncoding::ConvertA(const void* Buffer, int32_t Length, UnicodeString& Wide,
                                     uint16_t CodePage) {
  if (!Buffer || Length == 0) {
    Wide.clear();
    return Wide;
  }
  const uint32_t Cp = Resolve(CodePage);
  const char* Src = static_cast<const char*>(Buffer);
  // The string form never fails on invalid input: it converts without flags.
  int32_t Needed = platform::MultiByteToWideBound(Cp, 0, Src, Length);
  if (Needed == 0) RaiseLastOSError();
  // Whatever Wide held is overwritten; resizing without emptying it first saves clearing
  // memory that is about to be written.
  Wide.resize(size_t(Needed));
  int32_t Written = platform::MultiByteToWide(Cp, 0, Src, Length, Wide.data(), Needed);
  if (Written == 0) {
    if (platform::LastError() != platform::ERROR_INSUFFICIENT_BUFFER_) RaiseLastOSError();
    // Some code pages measure one character short; one more is always enough.
    Wide.resize(size_t(Needed) + 1);
    if (platform::MultiByteToWide(Cp, 0, Src, Length, Wide.data(), Needed + 1) == 0)
      RaiseLastOSError();
    Written = Needed;
  }
  Wide.resize(size_t(Written));
  // A bound well above the result would keep its memory for the string's whole life.
  if (size_t(Needed - Written) > size_t(Needed) / 4) Wide.shrink_to_fit();
  if (Length == -1 && !Wide.empty() && Wide.back() == 0) Wide.pop_back();
  return Wide;
}

AnsiString& TKxEncoding::ConvertA(const void* Buffer, int32_t Length, AnsiString& S,
                                  uint16_t ToCodePage, uint16_t FromCodePage) {
  UnicodeString Wide;
  ConvertA(Buffer, Length, Wide, FromCodePage);
  return ConvertW(Wide.data(), int32_t(Wide.size()), S, ToCodePage);
}

int32_t TKxEncoding::ConvertA(const void* Buffer, int32_t Length, WideChar* WideBuffer,
                              int32_t WideLength, uint16_t CodePage) {
  if (Length == 0) return 0;
  const uint32_t Cp = Resolve(CodePage);
  int32_t Result =
      platform::MultiByteToWide(Cp, RefusesFlags(Cp) ? 0 : ToWideFlags,
                                static_cast<const char*>(Buffer), Length, WideBuffer, WideLength);
  if (Result == 0) RaiseLastOSError();
  return Result;
}

AnsiString TKxEncoding::ConvertW(const UnicodeString& Wide, uint16_t CodePage) {
  AnsiString S;
  return ConvertW(Wide.data(), int32_t(Wide.size()), S, CodePage);
}

AnsiString& TKxEncoding::ConvertW(const WideChar* WideBuffer, int32_t Length, AnsiString& S,
                                  uint16_t CodePage) {
  if (!WideBuffer || Length == 0) {
    S.clear();
    return S;
  }
  const uint32_t Cp = Resolve(CodePage);
  const uint32_t Flags = RefusesFlags(Cp) ? 0 : FromWideFlags;
  int32_t Needed = platform::WideToMultiByte(Cp, Flags, WideBuffer, Length, nullptr, 0);
  if (Needed == 0) RaiseLastOSError();
  S.resize(size_t(Needed));
  int32_t Written = platform::WideToMultiByte(Cp, Flags, WideBuffer, Length, S.data(), Needed);
  if (Written == 0) RaiseLastOSError();
  S.resize(size_t(Written));
  return S;
}

int32_t TKxEncoding::ConvertW(const WideChar* WideBuffer, int32_t Length, void* Buffer,
                              int32_t BufferLength, uint16_t CodePage) {
  if (Length == 0) return 0;
  const uint32_t Cp = Resolve(CodePage);
  int32_t Result = platform::WideToMultiByte(Cp, RefusesFlags(Cp) ? 0 : FromWideFlags, WideBuffer,
                                             Length, static_cast<char*>(Buffer), BufferLength);
  if (Result == 0) RaiseLastOSError();
  return Result;
}

AnsiString& TKxEncoding::ConvertB(const void* Buffer, int32_t Size, AnsiString& S,
                                  uint16_t ToCodePage, uint16_t FromCodePage) {
  KxAssert(!IsUnicodeCodePage(ToCodePage), SAssertionFailed, STypesUnit, ConvertBAssertLine);
  S.clear();
  if (!Buffer || Size <= 0) return S;
  if (FromCodePage == ToCodePage) {
    S.assign(static_cast<const char*>(Buffer), size_t(Size));
    return S;
  }
  if (FromCodePage == 1200) {
    const int32_t Chars = Size / 2;
    // The platform reads whole 16-bit units; bytes at an odd address are copied first.
    UnicodeString Aligned;
    const WideChar* Wide = static_cast<const WideChar*>(Buffer);
    if (reinterpret_cast<uintptr_t>(Buffer) % alignof(WideChar) != 0) {
      Aligned.resize(size_t(Chars));
      std::memcpy(Aligned.data(), Buffer, size_t(Chars) * 2);
      Wide = Aligned.data();
    }
    int32_t Needed = ConvertW(Wide, Chars, nullptr, 0, ToCodePage);
    S.resize(size_t(Needed));
    ConvertW(Wide, Chars, S.data(), Needed, ToCodePage);
    return S;
  }
  UnicodeString Wide;
  ConvertA(Buffer, Size, Wide, FromCodePage);
  return ConvertW(Wide.data(), int32_t(Wide.size()), S, ToCodePage);
}

UnicodeString& TKxEncoding::ConvertB(const void* Buffer, int32_t Size, UnicodeString& Wide,
                                     uint16_t FromCodePage) {
  if (FromCodePage == 1200) {
    Wide.clear();
    if (!Buffer || Size < 2) return Wide;
    Wide.resize(size_t(Size / 2));
    std::memcpy(Wide.data(), Buffer, Wide.size() * 2);
    return Wide;
  }
  return ConvertA(Buffer, Size, Wide, FromCodePage);
}

AnsiString& TKxEncoding::ConvertB(const TBytes& Bytes, AnsiString& S, uint16_t ToCodePage,
                                  uint16_t FromCodePage) {
  return ConvertB(Bytes.data(), int32_t(Bytes.size()), S, ToCodePage, FromCodePage);
}

uint16_t KxGetCodePage(const void* Buffer, int64_t Size) {
  const uint8_t* B = static_cast<const uint8_t*>(Buffer);
  if (!B) return 0;
  if (Size >= 4) {
    if (B[0] == 0x00 && B[1] == 0x00 && B[2] == 0xFE && B[3] == 0xFF) return 12001;
    if (B[0] == 0xFF && B[1] == 0xFE && B[2] == 0x00 && B[3] == 0x00) return 12000;
  }
  if (Size >= 3 && B[0] == 0xEF && B[1] == 0xBB && B[2] == 0xBF) return 65001;
  if (Size < 2) return 0;
  if (B[0] == 0xFE && B[1] == 0xFF) return 1201;
  if (B[0] == 0xFF && B[1] == 0xFE) return 1200;
  // Unmarked text whose first character is Latin: a zero high byte gives UTF-16LE away.
  if (Size >= 3 && B[0] != 0 && B[1] == 0) return 1200;
  return 0;
}

uint16_t KxGetCodePage(TStream* Stream) {
  KxAssert(Stream != nullptr, SAssertionFailed, STypesUnit, GetCodePageAssertLine);
  const int64_t Start = Stream->Position();
  uint8_t B[4] = {};
  const uint16_t CodePage = KxGetCodePage(B, Stream->ReadUpTo(B, 4));
  int64_t MarkSize = 0;
  switch (CodePage) {
  case 12000:
  case 12001:
    MarkSize = 4;
    break;
  case 65001:
    MarkSize = 3;
    break;
  case 1201:
    MarkSize = 2;
    break;
  case 1200:
    MarkSize = B[0] == 0xFF && B[1] == 0xFE ? 2 : 0;
    break;
  default:
    break;
  }
  Stream->SetPosition(Start + MarkSize);
  return CodePage;
}

} // namespace kx

// SPDX-License-Identifier: MIT
// 1-based string helpers and the conversions between the two string types.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Strings.h>

#include "platform/Platform.h"

#include <atomic>

namespace kx {

namespace {
std::atomic<uint32_t> CodePageOverride{0};

template <class S>
S CopyImpl(const S& Str, int64_t Index, int64_t Count) {
  if (Index < 1) Index = 1;
  int64_t Len = int64_t(Str.size());
  if (Index > Len || Count <= 0) return S();
  return Str.substr(size_t(Index - 1), size_t(std::min(Count, Len - Index + 1)));
}

template <class S>
int64_t PosImpl(const S& Sub, const S& Str, int64_t Offset) {
  if (Sub.empty() || Offset < 1 || Offset > int64_t(Str.size())) return 0;
  size_t P = Str.find(Sub, size_t(Offset - 1));
  return P == S::npos ? 0 : int64_t(P) + 1;
}

uint32_t Resolve(uint32_t CodePage) {
  return CodePage == 0 ? KxSystemCodePage() : CodePage;
}
} // namespace

uint32_t KxSystemCodePage() {
  uint32_t Cp = CodePageOverride.load(std::memory_order_relaxed);
  return Cp != 0 ? Cp : platform::SystemCodePage();
}

void KxSetSystemCodePage(uint32_t CodePage) {
  CodePageOverride.store(CodePage, std::memory_order_relaxed);
}

AnsiString Copy(const AnsiString& S, int64_t Index, int64_t Count) {
  return CopyImpl(S, Index, Count);
}
UnicodeString Copy(const UnicodeString& S, int64_t Index, int64_t Count) {
  return CopyImpl(S, Index, Count);
}
int64_t Pos(const AnsiString& Sub, const AnsiString& S, int64_t Offset) {
  return PosImpl(Sub, S, Offset);
}
int64_t Pos(const UnicodeString& Sub, const UnicodeString& S, int64_t Offset) {
  return PosImpl(Sub, S, Offset);
}

// Lossy by design: characters the code page lacks become its default character.
UnicodeString AnsiToUnicode(std::string_view S, uint32_t CodePage) {
  if (S.empty()) return {};
  uint32_t Cp = Resolve(CodePage);
  int32_t Len = platform::MultiByteToWide(Cp, 0, S.data(), int32_t(S.size()), nullptr, 0);
  if (Len <= 0) RaiseLastOSError();
  UnicodeString R(size_t(Len), u'\0');
  platform::MultiByteToWide(Cp, 0, S.data(), int32_t(S.size()), R.data(), Len);
  return R;
}

AnsiString UnicodeToAnsi(std::u16string_view S, uint32_t CodePage) {
  if (S.empty()) return {};
  uint32_t Cp = Resolve(CodePage);
  int32_t Len = platform::WideToMultiByte(Cp, 0, S.data(), int32_t(S.size()), nullptr, 0);
  if (Len <= 0) RaiseLastOSError();
  AnsiString R(size_t(Len), '\0');
  platform::WideToMultiByte(Cp, 0, S.data(), int32_t(S.size()), R.data(), Len);
  return R;
}

UnicodeString UTF8Decode(std::string_view S) {
  return AnsiToUnicode(S, 65001);
}
UTF8String UTF8Encode(std::u16string_view S) {
  return UnicodeToAnsi(S, 65001);
}

} // namespace kx

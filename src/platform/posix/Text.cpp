// SPDX-License-Identifier: MIT
// Case mappings and collation on POSIX, through ICU's root locale.
#include "platform/Platform.h"

#include <kx/rtl/SysUtils.h>

#include <unicode/uchar.h>
#include <unicode/ucol.h>
#include <unicode/utf16.h>

#include <climits>

namespace kx::platform {

namespace {

template <UChar32 (*Map)(UChar32)>
void MapSimple(char16_t* Text, size_t Length) {
  size_t I = 0;
  while (I < Length) {
    size_t Start = I;
    UChar32 C;
    U16_NEXT(Text, I, Length, C);
    UChar32 M = Map(C);
    // Simple mappings stay in their plane; anything else is left as it is.
    if (M != C && size_t(U16_LENGTH(M)) == I - Start) {
      size_t J = Start;
      U16_APPEND_UNSAFE(Text, J, M);
    }
  }
}

// One pair of collators per thread: ICU collators are not meant to be shared while in use.
struct TCollators {
  UCollator* Exact = nullptr;
  UCollator* Caseless = nullptr;
  TCollators() {
    UErrorCode Status = U_ZERO_ERROR;
    Exact = ucol_open("", &Status);
    Status = U_ZERO_ERROR;
    Caseless = ucol_open("", &Status);
    // Secondary strength tells accents apart but not case.
    if (Caseless) ucol_setStrength(Caseless, UCOL_SECONDARY);
  }
  ~TCollators() {
    if (Exact) ucol_close(Exact);
    if (Caseless) ucol_close(Caseless);
  }
};

int32_t CompareCodeUnits(const char16_t* S1, size_t Len1, const char16_t* S2, size_t Len2) {
  std::u16string_view A(S1, Len1), B(S2, Len2);
  int R = A.compare(B);
  return R < 0 ? -1 : R > 0 ? 1 : 0;
}

} // namespace

void UpperCaseWide(char16_t* Text, size_t Length) {
  MapSimple<u_toupper>(Text, Length);
}
void LowerCaseWide(char16_t* Text, size_t Length) {
  MapSimple<u_tolower>(Text, Length);
}

int32_t CompareStringWide(const char16_t* S1, size_t Len1, const char16_t* S2, size_t Len2,
                          bool IgnoreCase) {
  thread_local TCollators Collators;
  UCollator* Coll = IgnoreCase ? Collators.Caseless : Collators.Exact;
  if (!Coll || Len1 > size_t(INT32_MAX) || Len2 > size_t(INT32_MAX))
    return CompareCodeUnits(S1, Len1, S2, Len2);
  UCollationResult R = ucol_strcoll(Coll, reinterpret_cast<const UChar*>(S1), int32_t(Len1),
                                    reinterpret_cast<const UChar*>(S2), int32_t(Len2));
  return R == UCOL_LESS ? -1 : R == UCOL_GREATER ? 1 : 0;
}

} // namespace kx::platform

namespace kx {
// Declared with the runtime's string functions; its value is the platform's.
const char* const sLineBreak = "\n";
} // namespace kx

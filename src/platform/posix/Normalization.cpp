// SPDX-License-Identifier: MIT
// Unicode normalisation on POSIX: a stand-in for normaliz.dll whose NormalizeString follows the
// Win32 contract over ICU's normalisers.
#include "platform/Platform.h"

#include <cstring>
#include <strings.h>
#include <unicode/unorm2.h>
#include <unicode/ustring.h>
#include <unicode/utf16.h>

namespace kx::platform {

namespace {

constexpr int32_t NormalizationC = 1;
constexpr int32_t NormalizationD = 2;
constexpr int32_t NormalizationKC = 5;
constexpr int32_t NormalizationKD = 6;

const UNormalizer2* Normalizer(int32_t NormForm) {
  UErrorCode Status = U_ZERO_ERROR;
  const UNormalizer2* N = nullptr;
  switch (NormForm) {
  case NormalizationC:
    N = unorm2_getNFCInstance(&Status);
    break;
  case NormalizationD:
    N = unorm2_getNFDInstance(&Status);
    break;
  case NormalizationKC:
    N = unorm2_getNFKCInstance(&Status);
    break;
  case NormalizationKD:
    N = unorm2_getNFKDInstance(&Status);
    break;
  default:
    return nullptr;
  }
  return U_SUCCESS(Status) ? N : nullptr;
}

// Win32's result: the length written (or, with no destination, needed); on failure 0 or the
// negated position of the offending character, with the code in LastError().
int32_t KX_STDCALL NormalizeString(int32_t NormForm, const char16_t* Src, int32_t SrcLen,
                                   char16_t* Dst, int32_t DstLen) {
  const UNormalizer2* N = Normalizer(NormForm);
  if (!N || !Src || SrcLen < -1 || DstLen < 0 || (DstLen > 0 && !Dst)) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return 0;
  }
  const UChar* S = reinterpret_cast<const UChar*>(Src);
  if (SrcLen == -1) SrcLen = u_strlen(S) + 1;
  SetLastError(0);
  if (SrcLen == 0) return 0;
  // ICU passes unpaired surrogates through; Windows refuses them when it normalises (its
  // measuring call does not look).
  if (DstLen > 0) {
    for (int32_t I = 0; I < SrcLen;) {
      int32_t At = I;
      UChar32 C;
      U16_NEXT(S, I, SrcLen, C);
      if (U_IS_SURROGATE(C)) {
        SetLastError(ERROR_NO_UNICODE_TRANSLATION_);
        return -(At + 1);
      }
    }
  }
  UErrorCode Status = U_ZERO_ERROR;
  int32_t Len = unorm2_normalize(N, S, SrcLen, reinterpret_cast<UChar*>(DstLen ? Dst : nullptr),
                                 DstLen, &Status);
  if (Status == U_BUFFER_OVERFLOW_ERROR) {
    if (DstLen == 0) return Len;
    SetLastError(ERROR_INSUFFICIENT_BUFFER_);
    return -Len;
  }
  if (U_FAILURE(Status)) {
    SetLastError(ERROR_INVALID_PARAMETER_);
    return 0;
  }
  return Len;
}

// What the stand-in module's handle points at; only its address matters.
char NormalizModule;

} // namespace

void* LoadNormalizationModule(const char* Name) {
  if (Name && (strcasecmp(Name, "normaliz.dll") == 0 || strcasecmp(Name, "normaliz") == 0))
    return &NormalizModule;
  return nullptr;
}

void* GetNormalizationProc(void* Module, const char* Name) {
  if (Module != &NormalizModule || !Name) return nullptr;
  TNormalizeStringProc Proc = &NormalizeString;
  return std::strcmp(Name, "NormalizeString") == 0 ? reinterpret_cast<void*>(Proc) : nullptr;
}

} // namespace kx::platform

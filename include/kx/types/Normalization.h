// SPDX-License-Identifier: MIT
#pragma once
// Unicode normalisation through the platform's NormalizeString.

#include <kx/rtl/Strings.h>

namespace kx {

// The platform's normalisation forms.
enum TNorm_Form : int32_t {
  NormalizationOther = 0,
  NormalizationC = 1,
  NormalizationD = 2,
  NormalizationKC = 5,
  NormalizationKD = 6
};

// S in the given form. The platform's module is loaded on first use; failures raise Exception
// "Failed to load normaliz.dll!", "Failed to find the \"NormalizeString\" function!" or
// "Failed to normalize the given value" (also for an empty S, which the platform does not
// measure).
KX_API UnicodeString KxNormalizeString(const UnicodeString& S, TNorm_Form Form);
// S without its diacritics: each character is decomposed on its own and only the first
// character of its decomposition is kept.
KX_API UnicodeString KxSimplifyString(const UnicodeString& S);

} // namespace kx

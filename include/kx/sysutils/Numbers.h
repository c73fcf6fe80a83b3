// SPDX-License-Identifier: MIT
// Numbers in text and numbers of uKxSysUtils: numeric-suffix increment, decimal rounding and
// age in years.
#pragma once

#include <kx/rtl/DateTime.h>
#include <kx/rtl/Strings.h>

namespace kx {

// Adds Increment to the number at the end of S, keeping the field's width with leading zeros
// ("INV0099" + 1 gives "INV0100", "A9" + 1 gives "A10", "A0" - 1 gives "A-1"). A blank S gives
// the current year followed by "00001"; a text without trailing digits raises EConvertError.
KX_API AnsiString KxStringIncrement(const AnsiString& S, int32_t Increment);

// Rounds half away from zero to Digits decimals, taking a fraction that prints as a half at 15
// significant digits for a half: the extended form rounds 2.675L to 2.68 though it is stored
// just below. The double nearest 2.675 lies further below than 15 digits see, so the double
// form gives 2.67 for it. A negative Digits fails with EInvalidOp, as do values beyond 2^63.
KX_API double KxRound(double Value, int32_t Digits);
KX_API long double KxRound(long double Value, int32_t Digits);

// Whole years from BirthDate to Today (to now with one argument); 0 for a BirthDate of 0 or
// below.
KX_API int32_t KxAge(TDateTime BirthDate);
KX_API int32_t KxAge(TDateTime BirthDate, TDateTime Today);

} // namespace kx

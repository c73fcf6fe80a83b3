// SPDX-License-Identifier: MIT
// Floating-point numbers as text, with a locale's decimal separator: FloatToStr and StrToFloat.
#pragma once

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/FormatSettings.h>

namespace kx {

inline constexpr const char* SInvalidFloat = "'%s' is not a valid floating point value";

// The general format with 15 significant digits and no trailing zeros: fixed notation while
// the value has at most 15 integer digits and is at least 0.0001 in magnitude, otherwise
// scientific with the shortest exponent ("1E20", "1.5E-5"). "NAN", "INF" and "-INF" for the
// values that are no numbers. Without settings, FormatSettings() gives the separator.
KX_API AnsiString FloatToStr(double Value);
KX_API AnsiString FloatToStr(double Value, const TFormatSettings& Settings);

// Spaces around, an optional sign, digits with at most one decimal separator (at least one
// digit), and an optional exponent: "E" or "e", a sign, digits. Values beyond the range of a
// double are refused, values too small for it become 0. EConvertError
// "'<S>' is not a valid floating point value" for anything else.
KX_API double StrToFloat(const AnsiString& S);
KX_API double StrToFloat(const AnsiString& S, const TFormatSettings& Settings);
KX_API double StrToFloat(const UnicodeString& S);
KX_API double StrToFloat(const UnicodeString& S, const TFormatSettings& Settings);
KX_API double StrToFloatDef(const AnsiString& S, double Default);
KX_API double StrToFloatDef(const AnsiString& S, double Default, const TFormatSettings& Settings);
KX_API bool TryStrToFloat(const AnsiString& S, double& Value);
KX_API bool TryStrToFloat(const AnsiString& S, double& Value, const TFormatSettings& Settings);
KX_API bool TryStrToFloat(const UnicodeString& S, double& Value);
KX_API bool TryStrToFloat(const UnicodeString& S, double& Value, const TFormatSettings& Settings);

} // namespace kx

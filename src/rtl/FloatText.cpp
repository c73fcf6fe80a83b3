// SPDX-License-Identifier: MIT
// FloatToStr and StrToFloat.
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/FloatText.h>

#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <type_traits>

namespace kx {

namespace {

constexpr int Precision = 15;

template <class C>
bool ParseFloat(std::basic_string_view<C> S, C Separator, double& Value) {
  size_t I = 0, Len = S.size();
  while (I < Len && S[I] == C(' ')) ++I;
  while (Len > I && S[Len - 1] == C(' ')) --Len;
  // The number rewritten for from_chars: sign, digits, '.', exponent.
  std::string Text;
  Text.reserve(Len - I + 1);
  if (I < Len && (S[I] == C('+') || S[I] == C('-'))) {
    if (S[I] == C('-')) Text += '-';
    ++I;
  }
  size_t Digits = 0;
  bool Dot = false;
  // Where the first significant digit stands relative to the decimal point, to tell an
  // underflow from an overflow.
  int64_t Magnitude = 0;
  bool Significant = false;
  for (; I < Len; ++I) {
    const C Ch = S[I];
    if (Ch >= C('0') && Ch <= C('9')) {
      ++Digits;
      if (Ch != C('0')) Significant = true;
      if (!Dot && Significant) ++Magnitude;
      if (Dot && !Significant) --Magnitude;
      Text += char(Ch);
    } else if (Ch == Separator && !Dot) {
      Dot = true;
      Text += '.';
    } else {
      break;
    }
  }
  if (Digits == 0) return false;
  if (I < Len && (S[I] == C('E') || S[I] == C('e'))) {
    Text += 'e';
    ++I;
    bool Negative = false;
    if (I < Len && (S[I] == C('+') || S[I] == C('-'))) {
      Negative = S[I] == C('-');
      Text += char(S[I++]);
    }
    size_t ExpDigits = 0;
    int64_t Exponent = 0;
    for (; I < Len && S[I] >= C('0') && S[I] <= C('9'); ++I, ++ExpDigits) {
      Text += char(S[I]);
      if (Exponent < 100000) Exponent = Exponent * 10 + (S[I] - C('0'));
    }
    if (ExpDigits == 0) return false;
    Magnitude += Negative ? -Exponent : Exponent;
  }
  if (I != Len) return false;
  double V = 0;
  const auto R = std::from_chars(Text.data(), Text.data() + Text.size(), V);
  if (R.ptr != Text.data() + Text.size()) return false;
  if (R.ec == std::errc::result_out_of_range) {
    if (Magnitude > 0) return false;
    V = Text[0] == '-' ? -0.0 : 0.0;
  } else if (R.ec != std::errc()) {
    return false;
  }
  Value = V;
  return true;
}

// The separator in the string's own character type.
char Separator(const AnsiString&, const TFormatSettings& Settings) {
  return Settings.DecimalSeparator;
}
char16_t Separator(const UnicodeString&, const TFormatSettings& Settings) {
  const char C = Settings.DecimalSeparator;
  if ((C & 0x80) == 0) return char16_t(C);
  const UnicodeString W = AnsiToUnicode(std::string_view(&C, 1));
  return W.size() == 1 ? W[0] : char16_t(0xFFFF);
}

template <class S>
bool TryFloat(const S& Str, double& Value, const TFormatSettings& Settings) {
  return ParseFloat<typename S::value_type>(Str, Separator(Str, Settings), Value);
}

template <class S>
double ToFloat(const S& Str, const TFormatSettings& Settings) {
  double V;
  if (!TryFloat(Str, V, Settings)) throw EConvertError(SInvalidFloat, {Str});
  return V;
}

} // namespace

AnsiString FloatToStr(double Value, const TFormatSettings& Settings) {
  if (std::isnan(Value)) return "NAN";
  if (std::isinf(Value)) return Value < 0 ? "-INF" : "INF";
  if (Value == 0) return "0";
  // 15 significant digits, correctly rounded, and the exponent of the first one.
  char Buf[32];
  std::snprintf(Buf, sizeof Buf, "%.*e", Precision - 1, std::fabs(Value));
  const char* E = std::strchr(Buf, 'e');
  const int Exponent = std::atoi(E + 1);
  AnsiString Digits;
  for (const char* P = Buf; P < E; ++P)
    if (*P != '.') Digits += *P;
  while (Digits.size() > 1 && Digits.back() == '0') Digits.pop_back();

  AnsiString R = Value < 0 ? "-" : "";
  const int Point = Exponent + 1; // digits before the decimal point
  if (Point > Precision || Point < -3) {
    R += Digits[0];
    if (Digits.size() > 1) R.append(1, Settings.DecimalSeparator).append(Digits, 1);
    return R.append(1, 'E').append(std::to_string(Exponent));
  }
  if (Point <= 0) {
    R.append(1, '0').append(1, Settings.DecimalSeparator).append(size_t(-Point), '0');
    return R.append(Digits);
  }
  if (int(Digits.size()) <= Point)
    return R.append(Digits).append(size_t(Point) - Digits.size(), '0');
  return R.append(Digits, 0, size_t(Point))
      .append(1, Settings.DecimalSeparator)
      .append(Digits, size_t(Point));
}

AnsiString FloatToStr(double Value) {
  return FloatToStr(Value, FormatSettings());
}

double StrToFloat(const AnsiString& S, const TFormatSettings& Settings) {
  return ToFloat(S, Settings);
}
double StrToFloat(const AnsiString& S) {
  return ToFloat(S, FormatSettings());
}
double StrToFloat(const UnicodeString& S, const TFormatSettings& Settings) {
  return ToFloat(S, Settings);
}
double StrToFloat(const UnicodeString& S) {
  return ToFloat(S, FormatSettings());
}

bool TryStrToFloat(const AnsiString& S, double& Value, const TFormatSettings& Settings) {
  return TryFloat(S, Value, Settings);
}
bool TryStrToFloat(const AnsiString& S, double& Value) {
  return TryStrToFloat(S, Value, FormatSettings());
}
bool TryStrToFloat(const UnicodeString& S, double& Value, const TFormatSettings& Settings) {
  return TryFloat(S, Value, Settings);
}
bool TryStrToFloat(const UnicodeString& S, double& Value) {
  return TryStrToFloat(S, Value, FormatSettings());
}

double StrToFloatDef(const AnsiString& S, double Default, const TFormatSettings& Settings) {
  double V;
  return TryStrToFloat(S, V, Settings) ? V : Default;
}
double StrToFloatDef(const AnsiString& S, double Default) {
  return StrToFloatDef(S, Default, FormatSettings());
}

} // namespace kx

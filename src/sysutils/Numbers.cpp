// SPDX-License-Identifier: MIT
// Numeric-suffix increment, decimal rounding with its guard for halves, and age in years.
#include <kx/rtl/FloatText.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/Numbers.h>

#include <cmath>

namespace kx {

namespace {

template <class F>
int64_t TruncChecked(F Value) {
  // Beyond 64 bits (and NaN) truncation has no integer to give.
  if (!(std::fabs(Value) < F(9.2e18))) throw EInvalidOp(SInvalidOp);
  return int64_t(Value);
}

template <class F>
F RoundDigits(F Value, int32_t Digits) {
  int64_t Factor = 0;
  if (Digits >= 0) Factor = TruncChecked(std::pow(F(10), F(Digits)));
  const F IntPart = F(TruncChecked(Value));
  const F Scaled = (Value - IntPart) * F(Factor);
  const int64_t Whole = TruncChecked(Scaled);
  const F Fraction = std::fabs(Scaled - F(Whole));
  int64_t Rounded = Whole;
  // A fraction that prints as a half at 15 digits is a half binary floating point could not
  // hold.
  if (Fraction > F(0.5) || FloatToStr(double(Fraction * 10)) == "5")
    Rounded = Value < 0 ? Whole - 1 : Whole + 1;
  // Digits below 0 make the factor 0, and 0 / 0 is the runtime's invalid operation.
  if (Factor == 0) throw EInvalidOp(SInvalidOp);
  return F(Rounded) / F(Factor) + IntPart;
}

} // namespace

AnsiString KxStringIncrement(const AnsiString& S, int32_t Increment) {
  if (Trim(S).empty()) return IntToStr(int32_t(CurrentYear())) + "00001";
  size_t Start = S.size();
  while (Start > 0 && S[Start - 1] >= '0' && S[Start - 1] <= '9') --Start;
  const AnsiString Prefix = S.substr(0, Start);
  // No digits: the runtime's conversion of the empty text raises.
  const int32_t Value = StrToInt(S.substr(Start));
  // Integers wrap, as the runtime's arithmetic does without overflow checks.
  AnsiString Number = IntToStr(int32_t(uint32_t(Value) + uint32_t(Increment)));
  if (S.size() > Prefix.size() + Number.size())
    Number.insert(0, S.size() - Prefix.size() - Number.size(), '0');
  return Prefix + Number;
}

double KxRound(double Value, int32_t Digits) {
  return RoundDigits(Value, Digits);
}

long double KxRound(long double Value, int32_t Digits) {
  return RoundDigits(Value, Digits);
}

int32_t KxAge(TDateTime BirthDate) {
  return KxAge(BirthDate, Now());
}

int32_t KxAge(TDateTime BirthDate, TDateTime Today) {
  if (double(BirthDate) <= 0) return 0;
  uint16_t BY, BM, BD, TY, TM, TD;
  DecodeDate(BirthDate, BY, BM, BD);
  DecodeDate(Today, TY, TM, TD);
  int32_t Years = int32_t(TY) - BY;
  if (TM < BM || (TM == BM && TD < BD)) --Years;
  return Years;
}

} // namespace kx

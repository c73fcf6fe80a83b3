// SPDX-License-Identifier: MIT
// The tolerant variant converters over fuzzed text held as an 8-bit and as a UTF-16 string.
// For every target type: the raising form either answers or raises a library exception, the
// quiet forms answer the same value or their own default, ASCII text converts alike from both
// string kinds, and the narrower integer types agree with the 64-bit one where both answer.
#include <kx/rtl/Rtl.h>
#include <kx/types/VariantConversion.h>

#include "FuzzSupport.h"

#include <algorithm>
#include <cmath>
#include <limits>

using namespace kx;

namespace {

template <class T>
bool Same(const T& A, const T& B) {
  if constexpr (std::is_floating_point_v<T>)
    return (std::isnan(A) && std::isnan(B)) || (A == B && std::signbit(A) == std::signbit(B));
  else
    return A == B;
}

template <class T>
bool SameOutcome(const kxfuzz::TOutcome<T>& A, const kxfuzz::TOutcome<T>& B) {
  if (A.Value.has_value() != B.Value.has_value()) return false;
  return A.Value ? Same(*A.Value, *B.Value) : A.Error == B.Error;
}

// One converter on one variant: the raising and the quiet forms agree.
template <class T, class F>
kxfuzz::TOutcome<T> Convert(const Variant& V, T Default1, T Default2, F To) {
  const auto Raised = kxfuzz::Try([&] { return To(V, Default1, true); });
  const T Quiet1 = To(V, Default1, false);
  const T Quiet2 = To(V, Default2, false);
  if (Raised.Value) {
    KX_FUZZ_CHECK(Same(Quiet1, *Raised.Value) && Same(Quiet2, *Raised.Value));
  } else {
    KX_FUZZ_CHECK(Same(Quiet1, Default1) && Same(Quiet2, Default2));
  }
  return Raised;
}

// Both string kinds through one converter; ASCII text must convert alike.
template <class T, class F>
kxfuzz::TOutcome<T> Both(const Variant& Narrow, const Variant& Wide, bool Ascii, T D1, T D2, F To) {
  const auto A = Convert<T>(Narrow, D1, D2, To);
  const auto W = Convert<T>(Wide, D1, D2, To);
  if (Ascii) KX_FUZZ_CHECK(SameOutcome(A, W));
  return A;
}

// Where the narrow type and the 64-bit reading both answer and the latter fits, they agree.
template <class T>
void AgreesWithInt64(const kxfuzz::TOutcome<T>& Narrow, const kxfuzz::TOutcome<int64_t>& Wide) {
  if (!Narrow.Value || !Wide.Value) return;
  if (*Wide.Value < int64_t(std::numeric_limits<T>::min()) ||
      *Wide.Value > int64_t(std::numeric_limits<T>::max()))
    return;
  KX_FUZZ_CHECK(int64_t(*Narrow.Value) == *Wide.Value);
}

void Check(const std::string& Bytes) {
  const AnsiString S(Bytes);
  UnicodeString W;
  for (char C : Bytes) W += char16_t(uint8_t(C));
  const bool Ascii =
      std::all_of(Bytes.begin(), Bytes.end(), [](char C) { return uint8_t(C) < 0x80; });
  const Variant A(S);
  const Variant U(W);

  const auto I64 = Both<int64_t>(A, U, Ascii, 7, -7, KxVarToInt64);
  if (I64.Value) KX_FUZZ_CHECK(KxVarToInt64(Variant(IntToStr(*I64.Value)), 0, true) == *I64.Value);
  AgreesWithInt64(Both<int8_t>(A, U, Ascii, 7, -7, KxVarToShortint), I64);
  AgreesWithInt64(Both<int16_t>(A, U, Ascii, 7, -7, KxVarToSmallint), I64);
  AgreesWithInt64(Both<int32_t>(A, U, Ascii, 7, -7, KxVarToLongInt), I64);
  AgreesWithInt64(Both<int32_t>(A, U, Ascii, 7, -7, KxVarToInt), I64);
  AgreesWithInt64(Both<uint8_t>(A, U, Ascii, 7, 8, KxVarToByte), I64);
  AgreesWithInt64(Both<uint16_t>(A, U, Ascii, 7, 8, KxVarToWord), I64);
  const auto LongWord = Both<uint32_t>(A, U, Ascii, 7, 8, KxVarToLongword);
  AgreesWithInt64(LongWord, I64);
  // Both read through the 64-bit conversion, so a fitting value is no failure for either.
  if (I64.Value && *I64.Value >= 0 && *I64.Value <= int64_t(UINT32_MAX))
    KX_FUZZ_CHECK(LongWord.Value.has_value());

  const auto Dbl = Both<double>(A, U, Ascii, 7.5, -7.5, KxVarToDouble);
  const auto Direct = kxfuzz::Try([&] { return KxStrToFloat(S); });
  KX_FUZZ_CHECK(SameOutcome(Dbl, Direct));
  KX_FUZZ_CHECK(Same(KxStrToFloatDef(S, 2.5), Direct.Value ? *Direct.Value : 2.5));
  const auto Sgl = Both<float>(A, U, Ascii, 7.5f, -7.5f, KxVarToSingle);
  if (Sgl.Value && Dbl.Value) KX_FUZZ_CHECK(Same(*Sgl.Value, float(*Dbl.Value)));
  Both<Extended>(A, U, Ascii, Extended(7.5), Extended(-7.5), KxVarToExtended);
  Both<TDateTime>(A, U, Ascii, TDateTime(7.5), TDateTime(-7.5), KxVarToDate);

  const auto Bool = Both<bool>(A, U, Ascii, false, true, KxVarToBool);
  const auto StrBool = kxfuzz::Try([&] { return KxStrToBool(S); });
  KX_FUZZ_CHECK(SameOutcome(Bool, StrBool));
  KX_FUZZ_CHECK(KxStrToBool(S, false) == (StrBool.Value ? *StrBool.Value : false));
  KX_FUZZ_CHECK(KxStrToBool(S, true) == (StrBool.Value ? *StrBool.Value : true));
  const auto Nullable = kxfuzz::Try([&] { return KxNullableBool(A).ToBool(); });
  KX_FUZZ_CHECK(SameOutcome(Nullable, StrBool));

  // Text stays text.
  KX_FUZZ_CHECK(KxVarToStr(A, "d", true) == S);
  KX_FUZZ_CHECK(KxVarToAStr(A, "d", true) == S);
  KX_FUZZ_CHECK(KxVarToWStr(U, u"d", true) == W);
  KX_FUZZ_CHECK(KxVarIsEmpty(A) == Trim(S).empty());
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  Check(std::string(reinterpret_cast<const char*>(Data), Size));
  return 0;
}

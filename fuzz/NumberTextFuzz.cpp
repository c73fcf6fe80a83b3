// SPDX-License-Identifier: MIT
// StrToInt and its relatives, and Format, over fuzzed text. The raising, defaulting and
// trying forms agree, the 8-bit and 16-bit forms agree, a value read comes back from its
// decimal and hexadecimal text, and Format answers with text of a bounded size or the
// conversion error.
#include <kx/rtl/Rtl.h>

#include "FuzzSupport.h"

#include <algorithm>

using namespace kx;

namespace {

// Byte by byte, so both forms see the same code units.
UnicodeString Wide(const std::string& S) {
  UnicodeString W;
  for (char C : S) W += char16_t(uint8_t(C));
  return W;
}

bool IsAscii(const std::string& S) {
  return std::all_of(S.begin(), S.end(), [](char C) { return uint8_t(C) < 0x80; });
}

template <class T, class Strict, class Default, class Trying>
void CheckInteger(const std::string& S, Strict StrictForm, Default DefaultForm, Trying TryForm) {
  const auto Raised = kxfuzz::Try([&] { return StrictForm(AnsiString(S)); });
  const auto RaisedWide = kxfuzz::Try([&] { return StrictForm(Wide(S)); });
  KX_FUZZ_CHECK(Raised.Value == RaisedWide.Value);
  if (IsAscii(S)) KX_FUZZ_CHECK(Raised.Error == RaisedWide.Error);
  T Tried = 0;
  const bool Ok = TryForm(AnsiString(S), Tried);
  KX_FUZZ_CHECK(Ok == Raised.Value.has_value());
  if (Ok) {
    KX_FUZZ_CHECK(Tried == *Raised.Value);
    KX_FUZZ_CHECK(DefaultForm(AnsiString(S), T(7)) == Tried);
    KX_FUZZ_CHECK(StrictForm(IntToStr(Tried)) == Tried);
    KX_FUZZ_CHECK(StrictForm("$" + IntToHex(Tried, 1)) == Tried);
  } else {
    KX_FUZZ_CHECK(Raised.Error.rfind("EConvertError: ", 0) == 0);
    KX_FUZZ_CHECK(DefaultForm(AnsiString(S), T(7)) == T(7));
  }
}

void CheckFormat(const std::string& Fmt) {
  const TVarRec Args[] = {TVarRec(int32_t(-42)), TVarRec(int64_t(1) << 40), TVarRec(3.25),
                          TVarRec("text"),       TVarRec(u"wide"),          TVarRec(int32_t(7))};
  const auto Narrow = kxfuzz::Try([&] { return std::string(Format(Fmt, Args, std::size(Args))); });
  if (Narrow.Value) {
    // No field is wider than the bound, and there are at most as many fields as '%'s.
    const size_t Fields = size_t(std::count(Fmt.begin(), Fmt.end(), '%'));
    KX_FUZZ_CHECK(Narrow.Value->size() <= Fmt.size() + Fields * ((size_t(1) << 20) + 64));
  } else {
    KX_FUZZ_CHECK(Narrow.Error.rfind("EConvertError: ", 0) == 0);
  }
  // ASCII formats read the same in 16 bits (the arguments' texts are ASCII too).
  if (IsAscii(Fmt)) {
    const UnicodeString WideFmt = Wide(Fmt);
    const auto WideOut = kxfuzz::Try([&] {
      return Format(std::u16string_view(WideFmt),
                    {int32_t(-42), int64_t(1) << 40, 3.25, "text", u"wide", int32_t(7)});
    });
    KX_FUZZ_CHECK(WideOut.Value.has_value() == Narrow.Value.has_value());
    if (Narrow.Value) KX_FUZZ_CHECK(*WideOut.Value == Wide(*Narrow.Value));
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const std::string S(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  if (Data[0] & 1) {
    CheckFormat(S);
  } else {
    CheckInteger<int32_t>(
        S, [](const auto& T) { return StrToInt(T); },
        [](const AnsiString& T, int32_t D) { return StrToIntDef(T, D); },
        [](const AnsiString& T, int32_t& V) { return TryStrToInt(T, V); });
    CheckInteger<int64_t>(
        S, [](const auto& T) { return StrToInt64(T); },
        [](const AnsiString& T, int64_t D) { return StrToInt64Def(T, D); },
        [](const AnsiString& T, int64_t& V) { return TryStrToInt64(T, V); });
  }
  return 0;
}

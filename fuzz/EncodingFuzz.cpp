// SPDX-License-Identifier: MIT
// TKxEncoding between 65001, 1252, 932, 936, 949, 950 and 1200, with and without the flags
// of the counting forms: counts equal what the same call converts, the counting and the
// string forms agree wherever the counting form succeeds, and text that came out of a
// conversion goes back and forth unchanged. The first byte picks the code pages.
#include <kx/uKxTypes.h>

#include "FuzzSupport.h"

#include <vector>

using namespace kx;

namespace {

constexpr uint16_t CodePages[] = {65001, 1252, 932, 936, 949, 950};

UnicodeString Widen(const std::string& Bytes, uint16_t CodePage) {
  return TKxEncoding::ConvertA(AnsiString(Bytes), CodePage);
}

void CheckToWide(const std::string& Bytes, uint16_t CodePage) {
  // The string form substitutes and never fails.
  const UnicodeString Wide = Widen(Bytes, CodePage);
  if (Bytes.empty()) {
    KX_FUZZ_CHECK(Wide.empty());
    return;
  }
  const int32_t Length = int32_t(Bytes.size());
  // The counting form fails on invalid input where the code page takes flags, and then does
  // so when measuring and when converting alike.
  const auto Needed = kxfuzz::Try(
      [&] { return TKxEncoding::ConvertA(Bytes.data(), Length, nullptr, 0, CodePage); });
  std::vector<WideChar> Out(Wide.size() + 8);
  const auto Written = kxfuzz::Try([&] {
    return TKxEncoding::ConvertA(Bytes.data(), Length, Out.data(), int32_t(Out.size()), CodePage);
  });
  KX_FUZZ_CHECK(Needed.Value.has_value() == Written.Value.has_value());
  if (Needed.Value) {
    KX_FUZZ_CHECK(*Needed.Value == *Written.Value);
    // Valid input converts the same with or without flags.
    KX_FUZZ_CHECK(UnicodeString(Out.data(), size_t(*Written.Value)) == Wide);
  } else {
    KX_FUZZ_CHECK(Needed.Error == Written.Error);
    KX_FUZZ_CHECK(CodePage != 65001); // UTF-8 takes no flags, so it substitutes
  }
  // A destination one short fails rather than cutting the text (0 would ask for the size).
  if (Needed.Value && *Needed.Value > 1) {
    const auto Short = kxfuzz::Try([&] {
      return TKxEncoding::ConvertA(Bytes.data(), Length, Out.data(), *Needed.Value - 1, CodePage);
    });
    KX_FUZZ_CHECK(!Short.Value.has_value());
  }
  // Bytes to 16-bit text is the string form; to 8-bit text it goes through it.
  UnicodeString ByBytes;
  KX_FUZZ_CHECK(TKxEncoding::ConvertB(Bytes.data(), Length, ByBytes, CodePage) == Wide);
  AnsiString Utf8;
  TKxEncoding::ConvertB(Bytes.data(), Length, Utf8, 65001, CodePage);
  if (CodePage == 65001)
    KX_FUZZ_CHECK(std::string(Utf8) == Bytes);
  else
    KX_FUZZ_CHECK(Widen(std::string(Utf8), 65001) == Wide);
}

void CheckFromWide(const UnicodeString& Wide, uint16_t CodePage) {
  const AnsiString Narrow = TKxEncoding::ConvertW(Wide, CodePage);
  if (Wide.empty()) {
    KX_FUZZ_CHECK(Narrow.empty());
    return;
  }
  const int32_t Length = int32_t(Wide.size());
  const int32_t Needed = TKxEncoding::ConvertW(Wide.data(), Length, nullptr, 0, CodePage);
  KX_FUZZ_CHECK(Needed == int32_t(Narrow.size()));
  std::string Out(size_t(Needed), '\0');
  KX_FUZZ_CHECK(TKxEncoding::ConvertW(Wide.data(), Length, Out.data(), Needed, CodePage) == Needed);
  KX_FUZZ_CHECK(Out == std::string(Narrow));
  // 1200 bytes to 8-bit text: the same conversion.
  AnsiString FromUtf16;
  TKxEncoding::ConvertB(Wide.data(), Length * 2, FromUtf16, CodePage, 1200);
  KX_FUZZ_CHECK(FromUtf16 == Narrow);
  // Whatever came out is stable: back to 16-bit text and out again gives the same bytes.
  const UnicodeString Again = TKxEncoding::ConvertA(Narrow, CodePage);
  KX_FUZZ_CHECK(TKxEncoding::ConvertW(Again, CodePage) == Narrow);
  // UTF-8 keeps every character; lone surrogates become U+FFFD.
  if (CodePage == 65001) {
    UnicodeString Expected = Wide;
    for (size_t I = 0; I < Expected.size(); ++I) {
      const char16_t C = Expected[I];
      const bool Paired = C >= 0xD800 && C <= 0xDBFF && I + 1 < Expected.size() &&
                          Expected[I + 1] >= 0xDC00 && Expected[I + 1] <= 0xDFFF;
      if (Paired)
        ++I;
      else if (C >= 0xD800 && C <= 0xDFFF)
        Expected[I] = 0xFFFD;
    }
    KX_FUZZ_CHECK(Again == Expected);
  }
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const uint8_t Select = Data[0];
  const std::string Bytes(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const uint16_t CodePage = CodePages[(Select & 0x0F) % std::size(CodePages)];
  if (Select & 0x80) {
    // The input as UTF-16LE text (code page 1200), odd last byte dropped.
    UnicodeString Wide;
    TKxEncoding::ConvertB(Bytes.data(), int32_t(Bytes.size()), Wide, 1200);
    KX_FUZZ_CHECK(Wide.size() == Bytes.size() / 2);
    CheckFromWide(Wide, CodePage);
  } else {
    CheckToWide(Bytes, CodePage);
    // Text from one code page converted to another is stable there.
    const uint16_t Other = CodePages[((Select >> 4) & 0x07) % std::size(CodePages)];
    CheckFromWide(Widen(Bytes, CodePage), Other);
  }
  return 0;
}

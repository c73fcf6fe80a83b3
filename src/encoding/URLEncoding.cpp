// SPDX-License-Identifier: MIT
// Percent-encoding of 8-bit text for URLs.
#include <kx/encoding/URLEncoding.h>

#include <kx/classes/TextParser.h>
#include <kx/rtl/SysUtils.h>

#include <string_view>

namespace kx {

KX_IMPLEMENT_CLASS(TURLEncoding, TObject, "uKxNetEncoding")

namespace {

// The characters with a fixed escape besides the bytes up to the space.
constexpr std::string_view Reserved = "!#$&'()*+,/:;=?@[]";

// A one-byte code page that takes every byte as one character: the scan works on bytes.
constexpr uint16_t ScanCodePage = 28591;

constexpr char HexDigits[] = "0123456789ABCDEF";

bool HasFixedEscape(uint8_t C) {
  return C <= 32 || Reserved.find(char(C)) != std::string_view::npos;
}

} // namespace

AnsiString TURLEncoding::Encode(const AnsiString& Input, const TUnsafeChars& UnsafeChars,
                                TEncodeOptions) {
  TKxCharSet Escape;
  Escape.Include(AnsiChar(0), AnsiChar(32));
  if (UnsafeChars.Empty()) {
    for (char C : Reserved) Escape.Include(C);
  } else {
    for (unsigned C = 33; C < 256; ++C)
      if (UnsafeChars.Contains(AnsiChar(C))) Escape.Include(AnsiChar(C));
  }
  if (Input.empty()) return {};

  AnsiString Result;
  Result.reserve(Input.size());
  TKxTextParser* Parser = TKxTextParser::Create(Input.data(), uint32_t(Input.size()), ScanCodePage);
  try {
    while (!Parser->GetEOF()) {
      Parser->SetMark(tpMarkPos1);
      Parser->SkipWhile(sopNotIn, Escape);
      Result += Parser->SelectedA(tpMarkPos1, tpCurPos, true);
      if (Parser->GetEOF()) break;
      const uint8_t C = uint8_t(*Parser->ReadCharA());
      // Characters of a caller's set that have no fixed escape are left out altogether.
      if (HasFixedEscape(C)) {
        Result += '%';
        Result += HexDigits[C >> 4];
        Result += HexDigits[C & 15];
      }
    }
  } catch (...) {
    Parser->Free();
    throw;
  }
  Parser->Free();
  return Result;
}

AnsiString TURLEncoding::Decode(const AnsiString& Input, TDecodeOptions) {
  AnsiString Result;
  Result.reserve(Input.size());
  const size_t Size = Input.size();
  size_t I = 0;
  while (I < Size) {
    const size_t Percent = Input.find('%', I);
    if (Percent == AnsiString::npos) {
      Result.append(Input, I, AnsiString::npos);
      break;
    }
    Result.append(Input, I, Percent - I);
    // "$XY" through the runtime's integer conversion: its error is the one a caller sees.
    AnsiString Number(1, '$');
    Number.append(Input, Percent + 1, 2);
    const int32_t Value = StrToInt(Number);
    Result += AnsiChar(uint8_t(Value));
    I = Percent + 3;
  }
  return Result;
}

} // namespace kx

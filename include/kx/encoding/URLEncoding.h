// SPDX-License-Identifier: MIT
#pragma once
// Percent-encoding of 8-bit text for URLs.

#include <kx/rtl/Object.h>
#include <kx/rtl/Set.h>

#include <bitset>
#include <initializer_list>

namespace kx {

enum TEncodeOption : uint8_t { SpacesAsPlus, EncodePercent };
using TEncodeOptions = TSet<TEncodeOption>;
enum TDecodeOption : uint8_t { PlusAsSpaces };
using TDecodeOptions = TSet<TDecodeOption>;

// A set of byte values 0..255.
class TUnsafeChars {
public:
  TUnsafeChars() = default;
  TUnsafeChars(std::initializer_list<AnsiChar> Chars) {
    for (AnsiChar C : Chars) Include(C);
  }
  TUnsafeChars& Include(AnsiChar C) {
    FBits.set(uint8_t(C));
    return *this;
  }
  TUnsafeChars& Exclude(AnsiChar C) {
    FBits.reset(uint8_t(C));
    return *this;
  }
  bool Contains(AnsiChar C) const { return FBits.test(uint8_t(C)); }
  bool Empty() const { return FBits.none(); }

private:
  std::bitset<256> FBits;
};

class KX_API TURLEncoding : public TObject {
  KX_CLASS(TURLEncoding, TObject)
public:
  TURLEncoding() = default;

  // Escapes the bytes 0-32 and the reserved characters ! # $ & ' ( ) * + , / : ; = ? @ [ ]
  // as "%XY". With an empty UnsafeChars the set is the control bytes, space and those
  // reserved characters; otherwise it is the bytes 0-32 plus UnsafeChars. A member of the
  // set that is neither a control byte, a space nor a reserved character is left out of the
  // result. Options are accepted and change nothing.
  static AnsiString Encode(const AnsiString& Input, const TUnsafeChars& UnsafeChars = {},
                           TEncodeOptions Options = {});
  // Replaces each "%XY" by the byte XY; a malformed XY raises the integer-conversion error.
  // "+" stays "+": Options are accepted and change nothing.
  static AnsiString Decode(const AnsiString& Input, TDecodeOptions Options = {});
};

} // namespace kx

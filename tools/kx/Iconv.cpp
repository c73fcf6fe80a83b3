// SPDX-License-Identifier: MIT
// iconv over the library's code pages and charset names.
#include "Commands.h"

#include <kx/rtl/Format.h>
#include <kx/uKxTypes.h>

#include <cstring>

namespace kxtool {

namespace {

constexpr uint16_t Utf16LE = 1200;

// A code-page number as digits, or a charset name.
uint16_t CodePageOf(const std::string& Name) {
  if (!Name.empty() && Name.find_first_not_of("0123456789") == std::string::npos) {
    const unsigned long N = std::stoul(Name);
    if (N == 0 || N > 65535) throw TToolError{"invalid code page " + Name};
    return uint16_t(N);
  }
  std::string Lower = Name;
  for (char& C : Lower)
    if (C >= 'A' && C <= 'Z') C = char(C + 32);
  return kx::KxCodePage(kx::AnsiString(Lower));
}

} // namespace

int Iconv(const TIconvOptions& O, TToolIO& IO) {
  if (O.List) {
    // Every code page that has a charset name.
    std::string Out;
    for (uint32_t Cp = 1; Cp <= 65535; ++Cp) {
      try {
        Out += std::to_string(Cp) + " " + std::string(kx::KxCodePage(uint16_t(Cp))) + "\n";
      } catch (const kx::Exception&) {
      }
    }
    WriteText(IO.Out, Out);
    return 0;
  }
  if (O.From.empty() || O.To.empty()) throw TToolError{"both -f and -t are needed", 2};
  const uint16_t From = CodePageOf(O.From), To = CodePageOf(O.To);
  TInput In(O.File, IO);
  const std::string Data = ReadAll(In.Stream());
  if (Data.size() > 0x7FFFFFFF) throw TToolError{In.Name() + ": input too large"};
  kx::UnicodeString Wide;
  if (From == Utf16LE) {
    if (Data.size() % 2) throw TToolError{"incomplete character at end of input"};
    Wide.resize(Data.size() / 2);
    std::memcpy(Wide.data(), Data.data(), Data.size());
  } else if (!Data.empty()) {
    // The counting form refuses invalid input, as iconv does.
    const int32_t N =
        kx::TKxEncoding::ConvertA(Data.data(), int32_t(Data.size()), nullptr, 0, From);
    Wide.resize(size_t(N));
    kx::TKxEncoding::ConvertA(Data.data(), int32_t(Data.size()), Wide.data(), N, From);
  }
  if (To == Utf16LE)
    WriteText(IO.Out,
              std::string_view(reinterpret_cast<const char*>(Wide.data()), Wide.size() * 2));
  else
    WriteText(IO.Out, kx::TKxEncoding::ConvertW(Wide, To));
  return 0;
}

} // namespace kxtool

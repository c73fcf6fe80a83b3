// SPDX-License-Identifier: MIT
// base64, base64url and hex (basenc --base16), and uuencode/uudecode.
#include "Commands.h"

#include <kx/uKxBase64.h>
#include <kx/uKxNetEncoding.h>
#include <kx/uKxUUCode.h>

#include <filesystem>

namespace kxtool {

namespace {

bool InAlphabet(TTextCodec Codec, unsigned char C) {
  if (Codec == TTextCodec::Hex) return (C >= '0' && C <= '9') || (C >= 'A' && C <= 'F');
  if ((C >= 'A' && C <= 'Z') || (C >= 'a' && C <= 'z') || (C >= '0' && C <= '9')) return true;
  return Codec == TTextCodec::Base64 ? C == '+' || C == '/' : C == '-' || C == '_';
}

// Line breaks and other white space go, as the peers ignore them; any other byte outside
// the alphabet (or padding before the end) is invalid input, which the library's decoders
// would skip without a word.
std::string CheckedText(TTextCodec Codec, const std::string& In) {
  std::string T;
  T.reserve(In.size());
  size_t Pads = 0;
  for (unsigned char C : In) {
    if (C == '\n' || C == '\r' || C == ' ' || C == '\t') continue;
    if (Codec != TTextCodec::Hex && C == '=') {
      ++Pads;
      continue;
    }
    if (!InAlphabet(Codec, C) || Pads) throw TToolError{"invalid input"};
    T += char(C);
  }
  if (Codec == TTextCodec::Hex && T.size() % 2) throw TToolError{"invalid input"};
  if (Pads && (Pads > 2 || (T.size() + Pads) % 4)) throw TToolError{"invalid input"};
  return T;
}

std::string Wrapped(const std::string& Text, int Cols) {
  if (Cols <= 0 || Text.empty()) return Text;
  std::string R;
  R.reserve(Text.size() + Text.size() / size_t(Cols) + 1);
  for (size_t At = 0; At < Text.size(); At += size_t(Cols)) {
    R.append(Text, At, size_t(Cols));
    R += '\n';
  }
  return R;
}

} // namespace

int TextCodec(const TTextCodecOptions& O, TToolIO& IO) {
  TInput In(O.File, IO);
  const std::string Data = ReadAll(In.Stream());
  std::string Result;
  if (O.Decode) {
    const std::string T = CheckedText(O.Codec, Data);
    if (O.Codec == TTextCodec::Hex)
      Result = kx::TKxNetEncoding::Hex()->Decode(T);
    else
      Result = kx::KxDecodeBase64(T);
  } else {
    if (O.Codec == TTextCodec::Hex)
      Result = kx::TKxNetEncoding::Hex()->EncodeA(Data.data(), int32_t(Data.size()));
    else if (O.Codec == TTextCodec::Base64Url)
      Result = kx::KxEncodeBase64Url(Data);
    else
      Result = kx::KxEncodeBase64(Data);
    Result = Wrapped(Result, O.Wrap);
  }
  WriteText(IO.Out, Result);
  return 0;
}

int UUEncode(const std::vector<std::string>& Args, TToolIO& IO) {
  const std::string File = Args.size() == 2 ? Args[0] : "-";
  const std::string Name = Args.back();
  TInput In(File, IO);
  // The permission bits in octal digits, read as the decimal number the text shows.
  uint16_t Mode = 644;
  if (!In.IsStdIn()) {
    std::error_code Ec;
    const auto Perms = std::filesystem::status(File, Ec).permissions();
    if (!Ec) {
      const unsigned P = unsigned(Perms) & 0777;
      Mode = uint16_t((P >> 6) * 100 + ((P >> 3) & 7) * 10 + (P & 7));
    }
  }
  kx::KxUUEncode(In.Stream(), IO.Out, Name, Mode);
  // The library's text ends at "end"; decoders want that line ended too.
  WriteText(IO.Out, "\r\n");
  return 0;
}

int UUDecode(const std::string& File, const std::string& Output, TToolIO& IO) {
  TInput In(File, IO);
  const std::string Text = ReadAll(In.Stream());
  kx::TKxUUHeader Header;
  TOwned<kx::TMemoryStream> Data(kx::TMemoryStream::Create());
  kx::KxUUDecode(Text, Data.get(), &Header);
  const std::string Target = Output.empty() ? std::string(Header.FileName) : Output;
  if (Target.empty()) throw TToolError{"no file name in the begin line; use -o"};
  TOutput Out(Target == "/dev/stdout" ? "-" : Target, IO);
  WriteText(Out.Stream(),
            std::string_view(static_cast<const char*>(Data->Memory()), size_t(Data->Size())));
  Out.Commit();
  if (Target != "-" && Target != "/dev/stdout") {
    // The mode's digits read as octal, where they are octal digits.
    const unsigned M = Header.Mode;
    const unsigned D2 = M / 100, D1 = M / 10 % 10, D0 = M % 10;
    if (M < 1000 && D2 < 8 && D1 < 8 && D0 < 8) {
      std::error_code Ec;
      std::filesystem::permissions(Target, std::filesystem::perms(D2 << 6 | D1 << 3 | D0), Ec);
    }
  }
  return 0;
}

} // namespace kxtool

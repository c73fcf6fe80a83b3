// SPDX-License-Identifier: MIT
// Base64, Base64url or hexadecimal of a file, and back:
//
//   EncodeFile [base64|base64url|hex] FILE       prints FILE's bytes as text
//   EncodeFile -d [base64|base64url|hex] FILE    prints the bytes the text in FILE stands for
//
// The file is read through a TFileStream; the encoders take a stream from its position.

#include <kx/classes/BufferConversions.h>
#include <kx/classes/MemoryStream.h>
#include <kx/rtl/OwnedPtr.h>
#include <kx/rtl/Streams.h>

#include <cstdio>
#include <cstring>
#include <string>

using namespace kx;

namespace {

bool EncodingOf(const char* Name, TKxBinEncoding& Encoding) {
  if (std::strcmp(Name, "base64") == 0)
    Encoding = beBase64;
  else if (std::strcmp(Name, "base64url") == 0)
    Encoding = beBase64Url;
  else if (std::strcmp(Name, "hex") == 0)
    Encoding = beHexEncoded;
  else
    return false;
  return true;
}

int Usage() {
  std::fprintf(stderr, "usage: EncodeFile [-d] [base64|base64url|hex] FILE\n");
  return 2;
}

} // namespace

int main(int argc, char** argv) {
  int Arg = 1;
  const bool Decode = Arg < argc && std::strcmp(argv[Arg], "-d") == 0;
  if (Decode) ++Arg;
  TKxBinEncoding Encoding = beBase64;
  if (Arg + 1 < argc && !EncodingOf(argv[Arg++], Encoding)) return Usage();
  if (Arg + 1 != argc) return Usage();
  try {
    OwnedPtr<TFileStream> File = MakeOwned<TFileStream>(argv[Arg], fmOpenRead | fmShareDenyWrite);
    if (!Decode) {
      std::printf("%s\n", KxBufToString(File.Get(), Encoding).c_str());
      return 0;
    }
    // The text, then its bytes; line breaks in Base64 are allowed.
    std::string Text(size_t(File->Size()), '\0');
    File->ReadBuffer(Text.data(), int32_t(Text.size()));
    // A final line break is no part of the text (hex would read it as digits).
    while (!Text.empty() && (Text.back() == '\n' || Text.back() == '\r')) Text.pop_back();
    OwnedPtr<TKxMemoryStream> Bytes = MakeOwned<TKxMemoryStream>(uint32_t(4096));
    if (Encoding == beHexEncoded)
      KxHexToBuf(Text, Bytes.Get());
    else
      KxStringToBuf(Text, Encoding, Bytes.Get());
    std::fwrite(Bytes->Memory(), 1, size_t(Bytes->Size()), stdout);
    return 0;
  } catch (const Exception& E) {
    std::fprintf(stderr, "%s\n", E.Message().c_str());
    return 1;
  }
}

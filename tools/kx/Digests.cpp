// SPDX-License-Identifier: MIT
// md5sum and sha1sum with coreutils' output and -c checking.
#include "Commands.h"

#include <kx/uKxMD5.h>
#include <kx/uKxSha1.h>

namespace kxtool {

namespace {

// The SHA-1 entry points do not hash empty input; this is the digest of the empty message.
constexpr const char* EmptySha1 = "da39a3ee5e6b4b0d3255bfef95601890afd80709";
constexpr int64_t Chunk = 1 << 20;

std::string Lower(std::string S) {
  for (char& C : S)
    if (C >= 'A' && C <= 'F') C = char(C + 32);
  return S;
}

std::string MD5Of(kx::TStream* S) {
  kx::TMD5Context C;
  kx::MD5Init(C);
  std::unique_ptr<char[]> Buffer(new char[Chunk]);
  for (;;) {
    const int64_t Got = S->ReadUpTo(Buffer.get(), Chunk);
    kx::MD5Update(C, Buffer.get(), uint32_t(Got));
    if (Got < Chunk) break;
  }
  uint8_t D[16];
  kx::MD5Final(C, D);
  static const char* Digits = "0123456789abcdef";
  std::string R;
  for (uint8_t B : D) {
    R += Digits[B >> 4];
    R += Digits[B & 15];
  }
  return R;
}

std::string DigestOf(TDigest Kind, const std::string& Name, TToolIO& IO) {
  if (Kind == TDigest::MD5) {
    TInput In(Name, IO);
    return MD5Of(In.Stream());
  }
  std::string Hex;
  if (Name == "-" || Name.empty()) {
    const std::string Data = ReadAll(IO.In);
    if (Data.size() > 0xFFFFFFFFu) throw TToolError{"-: input too large"};
    Hex = kx::KxHashBuffer(Data.data(), uint32_t(Data.size()), kx::beHexEncoded);
  } else {
    Hex = kx::KxHashFile(Name, kx::beHexEncoded);
  }
  return Hex.empty() ? EmptySha1 : Lower(Hex);
}

const char* Tool(TDigest Kind) {
  return Kind == TDigest::MD5 ? "md5sum" : "sha1sum";
}

void Warn(TToolIO& IO, TDigest Kind, const std::string& Text) {
  WriteText(IO.Err, std::string("kx ") + Tool(Kind) + ": WARNING: " + Text + "\n");
}

std::string Counted(size_t N, const char* One, const char* Many) {
  return std::to_string(N) + " " + (N == 1 ? One : Many);
}

} // namespace

int DigestSum(TDigest Kind, bool Check, const std::vector<std::string>& Files, TToolIO& IO) {
  const std::vector<std::string> Names = Files.empty() ? std::vector<std::string>{"-"} : Files;
  const size_t HexLength = Kind == TDigest::MD5 ? 32 : 40;
  int Status = 0;
  for (const std::string& Name : Names) {
    if (!Check) {
      try {
        WriteText(IO.Out, DigestOf(Kind, Name, IO) + "  " + Name + "\n");
      } catch (const kx::Exception& E) {
        WriteText(IO.Err, std::string("kx ") + Tool(Kind) + ": " + OneLine(E.Message()) + "\n");
        Status = 1;
      }
      continue;
    }
    // A checksum list: "<digest>  <name>" or "<digest> *<name>" per line.
    TInput In(Name, IO);
    const std::string List = ReadAll(In.Stream());
    size_t Bad = 0, Unreadable = 0, Mismatched = 0, Lines = 0;
    size_t Start = 0;
    while (Start < List.size()) {
      size_t End = List.find('\n', Start);
      if (End == std::string::npos) End = List.size();
      std::string Line = List.substr(Start, End - Start);
      Start = End + 1;
      if (!Line.empty() && Line.back() == '\r') Line.pop_back();
      if (Line.empty()) continue;
      ++Lines;
      const bool Formed = Line.size() > HexLength + 2 && Line[HexLength] == ' ' &&
                          (Line[HexLength + 1] == ' ' || Line[HexLength + 1] == '*') &&
                          Line.find_first_not_of("0123456789abcdefABCDEF") >= HexLength;
      if (!Formed) {
        ++Bad;
        continue;
      }
      const std::string Want = Lower(Line.substr(0, HexLength));
      const std::string File = Line.substr(HexLength + 2);
      std::string Got;
      try {
        Got = DigestOf(Kind, File, IO);
      } catch (const kx::Exception&) {
        WriteText(IO.Out, File + ": FAILED open or read\n");
        ++Unreadable;
        continue;
      }
      const bool Ok = Got == Want;
      WriteText(IO.Out, File + (Ok ? ": OK\n" : ": FAILED\n"));
      if (!Ok) ++Mismatched;
    }
    if (Lines == Bad) {
      WriteText(IO.Err, std::string("kx ") + Tool(Kind) + ": " + In.Name() +
                            ": no properly formatted checksum lines found\n");
      Status = 1;
      continue;
    }
    if (Bad) Warn(IO, Kind, Counted(Bad, "line is", "lines are") + " improperly formatted");
    if (Unreadable)
      Warn(IO, Kind, Counted(Unreadable, "listed file", "listed files") + " could not be read");
    if (Mismatched)
      Warn(IO, Kind,
           Counted(Mismatched, "computed checksum", "computed checksums") + " did NOT match");
    if (Unreadable || Mismatched) Status = 1;
  }
  return Status;
}

} // namespace kxtool

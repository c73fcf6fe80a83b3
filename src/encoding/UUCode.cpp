// SPDX-License-Identifier: MIT
// uuencoding: 45-byte lines of 6-bit values offset by 32.
#include <kx/encoding/UUCode.h>

#include <kx/rtl/Format.h>
#include <kx/rtl/SysUtils.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <string_view>
#include <vector>

namespace kx {

namespace {

constexpr size_t LineBytes = 45;
// Input is read this many whole lines at a time.
constexpr size_t ReadBytes = LineBytes * 1456;
// Decoded bytes are handed to the output stream in blocks of this size.
constexpr size_t WriteBlock = 65536;
constexpr uint16_t DefaultMode = 644;

inline char Enc(uint32_t V) {
  return char((V & 63) + 32);
}

// One data line of N bytes at P (N <= 45), with the short-chunk rule for a final line.
void EncodeLine(const uint8_t* P, size_t N, std::string& Out) {
  Out += char(N + 32);
  uint8_t Chunk[LineBytes + 3] = {};
  std::memcpy(Chunk, P, N);
  // The chunk is extended by N mod 3 zero bytes and cut to whole groups: with a remainder
  // of 2 the last group gets one zero byte, with a remainder of 1 the last byte falls away.
  const size_t Groups = N == LineBytes ? 15 : (N + N % 3) / 3;
  for (size_t G = 0; G < Groups; ++G) {
    const uint8_t* B = Chunk + 3 * G;
    const uint32_t V = uint32_t(B[0]) << 16 | uint32_t(B[1]) << 8 | B[2];
    const char Four[4] = {Enc(V >> 18), Enc(V >> 12), Enc(V >> 6), Enc(V)};
    Out.append(Four, 4);
  }
  Out += "\r\n";
}

// Encodes the rest of Input, handing the text to Sink in pieces.
template <class F>
void Encode(TStream* Input, const AnsiString& FileName, uint16_t Mode, F&& Sink) {
  std::string Out = Format("begin %d %s", {int32_t(Mode), FileName}) + "\r\n";
  std::unique_ptr<uint8_t[]> Buffer(new uint8_t[ReadBytes]);
  for (;;) {
    const size_t Got = size_t(Input->ReadUpTo(Buffer.get(), int64_t(ReadBytes)));
    for (size_t At = 0; At < Got; At += LineBytes)
      EncodeLine(Buffer.get() + At, std::min(LineBytes, Got - At), Out);
    if (Got < ReadBytes) break;
    Sink(Out);
    Out.clear();
  }
  Out += "`\r\nend";
  Sink(Out);
}

// The stream that the encoders read a string from without copying it.
class TStringReadStream : public TCustomMemoryStream {
public:
  explicit TStringReadStream(const AnsiString& S) {
    SetPointer(const_cast<char*>(S.data()), int64_t(S.size()));
  }
  int32_t Write(const void*, int32_t) override { return 0; }
};

bool SameAscii(std::string_view A, std::string_view B) {
  if (A.size() != B.size()) return false;
  for (size_t I = 0; I < A.size(); ++I) {
    char X = A[I], Y = B[I];
    if (X >= 'A' && X <= 'Z') X = char(X + 32);
    if (Y >= 'A' && Y <= 'Z') Y = char(Y + 32);
    if (X != Y) return false;
  }
  return true;
}

// Lines split at CR LF, LF or CR, as string lists split text.
std::vector<std::string_view> SplitLines(std::string_view S) {
  std::vector<std::string_view> Lines;
  size_t Start = 0;
  for (size_t I = 0; I < S.size(); ++I) {
    if (S[I] != '\r' && S[I] != '\n') continue;
    Lines.push_back(S.substr(Start, I - Start));
    if (S[I] == '\r' && I + 1 < S.size() && S[I + 1] == '\n') ++I;
    Start = I + 1;
  }
  if (Start < S.size()) Lines.push_back(S.substr(Start));
  return Lines;
}

void Decode(const std::vector<std::string_view>& Lines, const AnsiString* FileName, TStream* Output,
            TKxUUHeader* Header) {
  size_t Line = 0;
  for (; Line < Lines.size(); ++Line) {
    const std::string_view L = Lines[Line];
    if (L.size() < 6 || !SameAscii(L.substr(0, 6), "begin ")) continue;
    const std::string_view Rest = L.substr(6);
    const size_t Space = Rest.find(' ');
    const std::string_view Name =
        Space == std::string_view::npos ? std::string_view() : Rest.substr(Space + 1);
    if (FileName && !SameAscii(Name, *FileName)) continue;
    if (Header) {
      Header->Mode = uint16_t(StrToIntDef(AnsiString(Rest.substr(0, Space)), DefaultMode));
      Header->FileName = AnsiString(Name);
    }
    break;
  }
  if (Line == Lines.size()) throw Exception(SUUInvalidData);

  std::string Out;
  Out.reserve(WriteBlock + LineBytes);
  for (++Line;; ++Line) {
    if (Line >= Lines.size()) throw Exception(SUUUnexpectedEOF);
    const std::string_view L = Lines[Line];
    if (L == "`" && Line + 1 < Lines.size() && SameAscii(Lines[Line + 1], "end")) break;
    if (L.empty()) continue;
    // "`" and space both stand for 0.
    size_t Left = (uint8_t(L[0]) - 32) & 63;
    for (size_t At = 1; Left > 0 && At < L.size(); At += 4) {
      uint32_t V = 0;
      for (size_t K = 0; K < 4; ++K) {
        const uint8_t C = At + K < L.size() ? uint8_t(L[At + K]) : uint8_t(32);
        V = V << 6 | ((C - 32) & 63);
      }
      const char Three[3] = {char(V >> 16), char(V >> 8), char(V)};
      const size_t N = std::min<size_t>(Left, 3);
      Out.append(Three, N);
      Left -= N;
    }
    if (Out.size() >= WriteBlock) {
      Output->WriteBuffer(Out.data(), int32_t(Out.size()));
      Out.clear();
    }
  }
  if (!Out.empty()) Output->WriteBuffer(Out.data(), int32_t(Out.size()));
}

std::string ReadRest(TStream* Input) {
  std::string S;
  std::unique_ptr<char[]> Buffer(new char[WriteBlock]);
  for (;;) {
    const int64_t Got = Input->ReadUpTo(Buffer.get(), int64_t(WriteBlock));
    S.append(Buffer.get(), size_t(Got));
    if (Got < int64_t(WriteBlock)) return S;
  }
}

std::vector<std::string_view> LinesOf(TStrings* Lines, std::vector<AnsiString>& Store) {
  Store.reserve(size_t(Lines->Count()));
  for (int32_t I = 0; I < Lines->Count(); ++I) Store.push_back(Lines->Strings(I));
  return std::vector<std::string_view>(Store.begin(), Store.end());
}

} // namespace

void KxUUEncode(TStream* Input, TStream* Output, const AnsiString& FileName, uint16_t Mode) {
  Encode(Input, FileName, Mode,
         [&](const std::string& Text) { Output->WriteBuffer(Text.data(), int32_t(Text.size())); });
}

AnsiString KxUUEncode(TStream* Input, const AnsiString& FileName, uint16_t Mode) {
  AnsiString R;
  Encode(Input, FileName, Mode, [&](const std::string& Text) { R += Text; });
  return R;
}

AnsiString KxUUEncode(const AnsiString& S, const AnsiString& FileName, uint16_t Mode) {
  TStringReadStream In(S);
  return KxUUEncode(&In, FileName, Mode);
}

void KxUUDecode(const AnsiString& S, TStream* Output, TKxUUHeader* Header) {
  Decode(SplitLines(S), nullptr, Output, Header);
}

void KxUUDecode(const AnsiString& S, const AnsiString& FileName, TStream* Output,
                TKxUUHeader* Header) {
  Decode(SplitLines(S), &FileName, Output, Header);
}

void KxUUDecode(TStream* Input, TStream* Output, TKxUUHeader* Header) {
  const std::string Text = ReadRest(Input);
  Decode(SplitLines(Text), nullptr, Output, Header);
}

void KxUUDecode(TStrings* Lines, TStream* Output, TKxUUHeader* Header) {
  std::vector<AnsiString> Store;
  Decode(LinesOf(Lines, Store), nullptr, Output, Header);
}

void KxUUDecode(TStrings* Lines, const AnsiString& FileName, TStream* Output, TKxUUHeader* Header) {
  std::vector<AnsiString> Store;
  Decode(LinesOf(Lines, Store), &FileName, Output, Header);
}

} // namespace kx

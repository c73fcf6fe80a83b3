// SPDX-License-Identifier: MIT
// uuencoding and uudecoding of 8 MiB against a plain table implementation written here: one
// loop over 45-byte lines with a 64-character table to encode, a 256-entry table to decode,
// into a buffer sized in advance. Both make and read the same text (begin line, CR LF lines,
// "`" and "end").
#include <kx/classes/MemoryStream.h>
#include <kx/uKxUUCode.h>

#include <benchmark/benchmark.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <random>
#include <string>

namespace {

constexpr size_t DataSize = 8u << 20;

const std::string& Data() {
  static const std::string D = [] {
    std::mt19937 Gen(45);
    std::string B(DataSize, '\0');
    for (char& X : B) X = char(Gen());
    return B;
  }();
  return D;
}

void Processed(benchmark::State& State) {
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(DataSize));
}

// The anchor's encoder: the same layout, including a final line that leaves a remainder of
// 1 when divided by 3 losing its last byte.
std::string TableEncode(const std::string& In, const char* Name) {
  static const char* Table = "`!\"#$%&'()*+,-./0123456789:;<=>?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_";
  std::string Out;
  Out.reserve(In.size() / 45 * 64 + 128);
  Out += "begin 644 ";
  Out += Name;
  Out += "\r\n";
  const uint8_t* P = reinterpret_cast<const uint8_t*>(In.data());
  for (size_t At = 0; At < In.size(); At += 45) {
    const size_t N = std::min<size_t>(45, In.size() - At);
    uint8_t Line[48] = {};
    std::memcpy(Line, P + At, N);
    Out += char(N + 32);
    const size_t Groups = N == 45 ? 15 : (N + N % 3) / 3;
    for (size_t G = 0; G < Groups; ++G) {
      const uint8_t* B = Line + 3 * G;
      const char Four[4] = {Table[B[0] >> 2], Table[(B[0] << 4 | B[1] >> 4) & 63],
                            Table[(B[1] << 2 | B[2] >> 6) & 63], Table[B[2] & 63]};
      Out.append(Four, 4);
    }
    Out += "\r\n";
  }
  Out += "`\r\nend";
  return Out;
}

// The anchor's decoder: the first section, lines split at CR and LF, into Out.
size_t TableDecode(const std::string& Text, char* Out) {
  static const auto Values = [] {
    std::array<uint8_t, 256> T{};
    for (int C = 0; C < 256; ++C) T[size_t(C)] = uint8_t((C - 32) & 63);
    return T;
  }();
  const char* P = Text.data();
  const char* End = P + Text.size();
  P = static_cast<const char*>(std::memchr(P, '\n', size_t(End - P))) + 1; // the begin line
  char* O = Out;
  while (P < End) {
    const char* Eol = static_cast<const char*>(std::memchr(P, '\r', size_t(End - P)));
    if (!Eol) Eol = End;
    if (Eol - P == 1 && *P == '`') break;
    size_t Left = Values[uint8_t(*P)];
    for (const char* Q = P + 1; Left > 0 && Q + 4 <= Eol; Q += 4) {
      const uint32_t V = uint32_t(Values[uint8_t(Q[0])]) << 18 |
                         uint32_t(Values[uint8_t(Q[1])]) << 12 |
                         uint32_t(Values[uint8_t(Q[2])]) << 6 | Values[uint8_t(Q[3])];
      const char Three[3] = {char(V >> 16), char(V >> 8), char(V)};
      const size_t N = std::min<size_t>(Left, 3);
      std::memcpy(O, Three, N);
      O += N;
      Left -= N;
    }
    P = Eol + 2;
  }
  return size_t(O - Out);
}

const std::string& Encoded() {
  static const std::string E = TableEncode(Data(), "data.bin");
  return E;
}

void UUEncodeKx(benchmark::State& State) {
  kx::TCustomMemoryStream* In = kx::TBytesStream::Create(kx::TBytes(Data().begin(), Data().end()));
  for (auto _ : State) {
    In->SetPosition(0);
    kx::AnsiString Text = kx::KxUUEncode(In, "data.bin", 644);
    benchmark::DoNotOptimize(Text.data());
  }
  In->Free();
  Processed(State);
}

void UUEncodeTable(benchmark::State& State) {
  for (auto _ : State) {
    std::string Text = TableEncode(Data(), "data.bin");
    benchmark::DoNotOptimize(Text.data());
  }
  Processed(State);
}

void UUDecodeKx(benchmark::State& State) {
  const kx::AnsiString Text(Encoded());
  kx::TMemoryStream* Out = kx::TMemoryStream::Create();
  Out->SetSize(int64_t(DataSize)); // room once, as the anchor's buffer
  for (auto _ : State) {
    Out->SetPosition(0);
    kx::KxUUDecode(Text, Out);
    benchmark::DoNotOptimize(Out->Memory());
  }
  if (Out->Position() != int64_t(DataSize) ||
      std::memcmp(Out->Memory(), Data().data(), DataSize) != 0)
    State.SkipWithError("kx decoded other bytes");
  Out->Free();
  Processed(State);
}

void UUDecodeTable(benchmark::State& State) {
  std::string Out(DataSize, '\0');
  size_t N = 0;
  for (auto _ : State) {
    N = TableDecode(Encoded(), Out.data());
    benchmark::DoNotOptimize(Out.data());
  }
  if (N != DataSize || Out != Data()) State.SkipWithError("the table decoded other bytes");
  Processed(State);
}

} // namespace

BENCHMARK(UUEncodeKx)->Name("UUEncode/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(UUEncodeTable)->Name("UUEncode/table")->Unit(benchmark::kMillisecond);
BENCHMARK(UUDecodeKx)->Name("UUDecode/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(UUDecodeTable)->Name("UUDecode/table")->Unit(benchmark::kMillisecond);

// SPDX-License-Identifier: MIT
// Code-page conversions through TKxEncoding against ICU called directly, on 16 MiB of text:
// UTF-8 to UTF-16 (mostly ASCII, and mixed Latin-1 and CJK) against u_strFromUTF8, and
// windows-1252 to and from UTF-16 against ucnv_toUChars / ucnv_fromUChars.
//
// Both sides produce the same string type and reuse it from one iteration to the next; ICU is
// given a destination sized by the source length, its cheapest correct use (one pass).
#include <kx/types/Encoding.h>

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <unicode/ucnv.h>
#include <unicode/ustring.h>

namespace {

constexpr size_t TextSize = size_t(16) << 20;

// Words of prose: mostly ASCII, with the share of Latin-1 and CJK words the mix asks for.
std::string MakeUtf8(int LatinPercent, int CjkPercent, uint32_t Start) {
  static const char* const Ascii[] = {"the",  "of",   "and",  "conversion", "stream", "text",
                                      "code", "page", "byte", "order",      "mark",   "value"};
  static const char* const Latin[] = {"café",  "naïve", "über",   "Straße", "façade",
                                      "señor", "été",   "Ørsted", "crème",  "à"};
  static const char* const Cjk[] = {"日本語", "文字列", "変換",       "東京", "中文",
                                    "编码",   "한국어", "ストリーム", "漢字", "テキスト"};
  std::mt19937 Gen(Start);
  std::string S;
  S.reserve(TextSize + 64);
  size_t Line = 0;
  while (S.size() < TextSize) {
    int Roll = int(Gen() % 100);
    const char* Word = Roll < LatinPercent                ? Latin[Gen() % 10]
                       : Roll < LatinPercent + CjkPercent ? Cjk[Gen() % 10]
                                                          : Ascii[Gen() % 12];
    S += Word;
    Line += std::char_traits<char>::length(Word);
    if (Line > 70) {
      S += "\r\n";
      Line = 0;
    } else {
      S += Gen() % 9 == 0 ? ", " : " ";
    }
  }
  // Cut on a character boundary.
  size_t End = TextSize;
  while (End > 0 && (uint8_t(S[End]) & 0xC0) == 0x80) --End;
  S.resize(End);
  return S;
}

const std::string& AsciiText() {
  static const std::string T = MakeUtf8(2, 0, 11);
  return T;
}

const std::string& MixedText() {
  static const std::string T = MakeUtf8(20, 20, 12);
  return T;
}

UConverter* Windows1252() {
  static UConverter* Cnv = [] {
    UErrorCode Status = U_ZERO_ERROR;
    return ucnv_open("windows-1252", &Status);
  }();
  return Cnv;
}

// Western text in windows-1252, and the same as UTF-16.
const std::string& Text1252() {
  static const std::string T = [] {
    std::string Utf8 = MakeUtf8(15, 0, 13);
    std::u16string Wide(Utf8.size(), u'\0');
    int32_t Len = 0;
    UErrorCode Status = U_ZERO_ERROR;
    u_strFromUTF8(Wide.data(), int32_t(Wide.size()), &Len, Utf8.data(), int32_t(Utf8.size()),
                  &Status);
    Wide.resize(size_t(Len));
    std::string R(Wide.size(), '\0');
    Status = U_ZERO_ERROR;
    Len = ucnv_fromUChars(Windows1252(), R.data(), int32_t(R.size()), Wide.data(),
                          int32_t(Wide.size()), &Status);
    R.resize(size_t(Len));
    return R;
  }();
  return T;
}

const std::u16string& Wide1252() {
  static const std::u16string W = kx::TKxEncoding::ConvertA(Text1252(), 1252);
  return W;
}

void Utf8ToUtf16Kx(benchmark::State& State, const std::string& Text) {
  kx::UnicodeString Wide;
  for (auto _ : State) {
    kx::TKxEncoding::ConvertA(Text.data(), int32_t(Text.size()), Wide, 65001);
    benchmark::DoNotOptimize(Wide.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Text.size()));
}

void Utf8ToUtf16Icu(benchmark::State& State, const std::string& Text) {
  std::u16string Wide;
  for (auto _ : State) {
    Wide.resize(Text.size());
    int32_t Len = 0;
    UErrorCode Status = U_ZERO_ERROR;
    u_strFromUTF8(Wide.data(), int32_t(Wide.size()), &Len, Text.data(), int32_t(Text.size()),
                  &Status);
    if (U_FAILURE(Status)) State.SkipWithError("u_strFromUTF8 failed");
    Wide.resize(size_t(Len));
    benchmark::DoNotOptimize(Wide.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Text.size()));
}

void Utf8ToUtf16AsciiKx(benchmark::State& State) {
  Utf8ToUtf16Kx(State, AsciiText());
}
void Utf8ToUtf16AsciiIcu(benchmark::State& State) {
  Utf8ToUtf16Icu(State, AsciiText());
}
void Utf8ToUtf16MixedKx(benchmark::State& State) {
  Utf8ToUtf16Kx(State, MixedText());
}
void Utf8ToUtf16MixedIcu(benchmark::State& State) {
  Utf8ToUtf16Icu(State, MixedText());
}

void Cp1252ToUtf16Kx(benchmark::State& State) {
  const std::string& Text = Text1252();
  kx::UnicodeString Wide;
  for (auto _ : State) {
    kx::TKxEncoding::ConvertA(Text.data(), int32_t(Text.size()), Wide, 1252);
    benchmark::DoNotOptimize(Wide.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Text.size()));
}

void Cp1252ToUtf16Icu(benchmark::State& State) {
  const std::string& Text = Text1252();
  std::u16string Wide;
  for (auto _ : State) {
    Wide.resize(Text.size());
    UErrorCode Status = U_ZERO_ERROR;
    int32_t Len = ucnv_toUChars(Windows1252(), Wide.data(), int32_t(Wide.size()), Text.data(),
                                int32_t(Text.size()), &Status);
    if (U_FAILURE(Status)) State.SkipWithError("ucnv_toUChars failed");
    Wide.resize(size_t(Len));
    benchmark::DoNotOptimize(Wide.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Text.size()));
}

void Utf16ToCp1252Kx(benchmark::State& State) {
  const std::u16string& Wide = Wide1252();
  kx::AnsiString Text;
  for (auto _ : State) {
    kx::TKxEncoding::ConvertW(Wide.data(), int32_t(Wide.size()), Text, 1252);
    benchmark::DoNotOptimize(Text.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Wide.size() * 2));
}

void Utf16ToCp1252Icu(benchmark::State& State) {
  const std::u16string& Wide = Wide1252();
  std::string Text;
  for (auto _ : State) {
    Text.resize(Wide.size());
    UErrorCode Status = U_ZERO_ERROR;
    int32_t Len = ucnv_fromUChars(Windows1252(), Text.data(), int32_t(Text.size()), Wide.data(),
                                  int32_t(Wide.size()), &Status);
    if (U_FAILURE(Status)) State.SkipWithError("ucnv_fromUChars failed");
    Text.resize(size_t(Len));
    benchmark::DoNotOptimize(Text.data());
  }
  State.SetBytesProcessed(int64_t(State.iterations()) * int64_t(Wide.size() * 2));
}

} // namespace

BENCHMARK(Utf8ToUtf16AsciiKx)->Name("Utf8ToUtf16Ascii/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(Utf8ToUtf16AsciiIcu)
    ->Name("Utf8ToUtf16Ascii/u_strFromUTF8")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Utf8ToUtf16MixedKx)->Name("Utf8ToUtf16Mixed/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(Utf8ToUtf16MixedIcu)
    ->Name("Utf8ToUtf16Mixed/u_strFromUTF8")
    ->Unit(benchmark::kMillisecond);
BENCHMARK(Cp1252ToUtf16Kx)->Name("Cp1252ToUtf16/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(Cp1252ToUtf16Icu)->Name("Cp1252ToUtf16/ucnv_toUChars")->Unit(benchmark::kMillisecond);
BENCHMARK(Utf16ToCp1252Kx)->Name("Utf16ToCp1252/kx")->Unit(benchmark::kMillisecond);
BENCHMARK(Utf16ToCp1252Icu)->Name("Utf16ToCp1252/ucnv_fromUChars")->Unit(benchmark::kMillisecond);

// SPDX-License-Identifier: MIT
// The text parser driven by a program of operations over fuzzed text. The same program runs
// over the text in place, over a memory stream, and over a stream that gives a few bytes per
// read (the streaming path); every answer, counter and error must be the same. A second run in
// place replaces the bulk skips by single steps and must again give the same trace.
#include <kx/uKxClasses.h>

#include "FuzzSupport.h"

#include <vector>

using namespace kx;

namespace {

struct TProgram {
  uint16_t CodePage = 1252;
  int32_t MaxMove = 1;
  std::vector<uint8_t> Ops;
  std::string Text;
};

// Reads program bytes; 0 once they are used up.
struct TOpReader {
  const std::vector<uint8_t>& Ops;
  size_t At = 0;
  uint8_t Next() { return At < Ops.size() ? Ops[At++] : 0; }
  bool More() const { return At < Ops.size(); }
};

const TKxTextParserPosType PosTypes[] = {tpPrevPos,  tpCurPos,   tpPeekPos,
                                         tpMarkPos1, tpMarkPos2, tpMarkPos3};

TKxCharSet SetOf(uint8_t Kind, uint8_t C) {
  switch (Kind % 4) {
  case 0:
    return TKxCharSet{AnsiChar(C & 0x7F)};
  case 1:
    return TKxCharSet().Include('0', '9');
  case 2:
    return TKxCharSet().Include('a', 'z').Include('A', 'Z').Include('_');
  default:
    return TKxCharSet().Include(AnsiChar(0x80), AnsiChar(0xFF));
  }
}

// Runs the program and writes down everything the parser answers.
std::string Run(TKxTextParser* P, const std::vector<uint8_t>& Ops, bool StepSkips) {
  std::string Trace;
  auto Note = [&](const auto&... Values) {
    ((Trace += std::to_string(int64_t(Values)), Trace += ','), ...);
  };
  auto NoteText = [&](const auto& Text) {
    for (auto C : Text) Note(C);
    Trace += ';';
  };
  TOpReader R{Ops};
  while (R.More()) {
    const uint8_t Op = R.Next();
    try {
      switch (Op % 16) {
      case 0:
        P->NextChar();
        break;
      case 1: {
        const int Count = R.Next() % 8;
        if (StepSkips)
          for (int I = 0; I < Count; ++I) P->NextChar();
        else
          P->SkipChars(Count);
        break;
      }
      case 2: {
        const uint8_t How = R.Next();
        P->SkipWhile(TKxTextParserSkipOp(How % 6), AnsiChar(R.Next()));
        break;
      }
      case 3: {
        const uint8_t How = R.Next();
        const WideChar W = WideChar(R.Next() | (R.Next() << 8));
        P->SkipWhile(TKxTextParserSkipOp(How % 6), W);
        break;
      }
      case 4: {
        const uint8_t How = R.Next(), C = R.Next();
        const bool In = How & 1;
        // A set of one ASCII character is the comparison with that character.
        if (StepSkips && (How >> 1) % 4 == 0)
          P->SkipWhile(In ? sopEq : sopUnEq, WideChar(C & 0x7F));
        else
          P->SkipWhile(In ? sopIn : sopNotIn, SetOf(How >> 1, C));
        break;
      }
      case 5:
        Note(*P->ReadCharA());
        break;
      case 6:
        Note(*P->ReadCharW());
        break;
      case 7:
        Note(*P->PeekCharA(), *P->PeekCharW());
        break;
      case 8:
        Note(*P->PrevCharA(), *P->PrevCharW(), *P->CurrCharA(), *P->CurrCharW());
        break;
      case 9: {
        const int32_t Count = R.Next() % 16;
        NoteText(P->PeekStringA(Count));
        NoteText(P->PeekStringW(Count));
        break;
      }
      case 10:
        P->SetMark(PosTypes[3 + R.Next() % 3]);
        break;
      case 11:
        P->ClearMark(PosTypes[3 + R.Next() % 3]);
        break;
      case 12: {
        const uint8_t Which = R.Next();
        const TKxTextParserPosType From = PosTypes[Which % 6], Till = PosTypes[(Which / 6) % 6];
        Note(P->SelectedCnt(From, Till));
        NoteText(P->SelectedA(From, Till));
        NoteText(P->SelectedW(From, Till, (Which & 0x80) != 0));
        break;
      }
      case 13:
        P->First();
        break;
      case 14:
        if (R.Next() % 4 == 0) P->Last(); // rarely: it ends the program's reach
        break;
      default:
        P->CheckEOF();
        break;
      }
    } catch (const Exception& E) {
      Trace += std::string(E.ClassName()) + ":" + std::string(E.Message()) + ";";
    }
    Note(P->GetEOF(), P->GetLineNr(), P->GetColNr(), P->GetCharsRead(), P->GetPosition());
    for (TKxTextParserPosType T : {tpMarkPos1, tpMarkPos2, tpMarkPos3})
      Note(P->GetPos(T) != nullptr);
    Trace += '\n';
  }
  return Trace;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  FuzzedDataProvider In(Data, Size);
  TProgram Program;
  const uint8_t Config = In.ConsumeIntegral<uint8_t>();
  static constexpr uint16_t CodePages[] = {1252, 1200, 65001, 1252};
  Program.CodePage = CodePages[Config & 3];
  Program.MaxMove = 1 + (Config >> 2);
  Program.Ops = In.ConsumeBytes<uint8_t>(In.ConsumeIntegralInRange<size_t>(0, 96));
  Program.Text = In.ConsumeRemainingBytesAsString();
  if (Program.Text.empty()) return 0;

  // Over a copy of exactly the text's bytes, so a read past the end is seen.
  std::vector<uint8_t> Exact(Program.Text.begin(), Program.Text.end());
  kxfuzz::TOwned<TKxTextParser> InPlace(
      TKxTextParser::Create(Exact.data(), uint32_t(Exact.size()), Program.CodePage));
  const std::string Want = Run(InPlace.get(), Program.Ops, false);

  std::vector<uint8_t> Again(Program.Text.begin(), Program.Text.end());
  kxfuzz::TOwned<TKxTextParser> Stepping(
      TKxTextParser::Create(Again.data(), uint32_t(Again.size()), Program.CodePage));
  KX_FUZZ_CHECK(Run(Stepping.get(), Program.Ops, true) == Want);

  auto Memory = kxfuzz::MemoryOf(Program.Text);
  kxfuzz::TOwned<TKxTextParser> OverMemory(TKxTextParser::Create(Memory.get(), Program.CodePage));
  KX_FUZZ_CHECK(Run(OverMemory.get(), Program.Ops, false) == Want);

  auto Short = kxfuzz::ShortReaderOf(Program.Text, Program.MaxMove);
  kxfuzz::TOwned<TKxTextParser> Chunked(TKxTextParser::Create(Short.get(), Program.CodePage));
  KX_FUZZ_CHECK(Run(Chunked.get(), Program.Ops, false) == Want);
  return 0;
}

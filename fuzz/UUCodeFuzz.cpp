// SPDX-License-Identifier: MIT
// uudecoding of arbitrary text. The first byte picks the largest read and write of the
// short-moving streams and the mode of the round trip; the first line after it is a section
// name, the rest the text. Every decoder form must give the same bytes and begin line or the
// same error; the first section is also the section found by its own name; and the bytes
// encoded under the name come back from a text that holds another section before them.
#include <kx/classes/MemoryStream.h>
#include <kx/uKxUUCode.h>

#include "FuzzSupport.h"

using namespace kx;
using kxfuzz::Try;

namespace {

struct TDecoded {
  std::string Bytes;
  uint16_t Mode = 0;
  std::string FileName;

  bool operator==(const TDecoded&) const = default;
};

std::string ContentOf(TStream* S) {
  std::string Bytes(size_t(S->Size()), '\0');
  S->SetPosition(0);
  if (!Bytes.empty()) S->ReadBuffer(Bytes.data(), int32_t(Bytes.size()));
  return Bytes;
}

// Runs one decoder form into a memory stream that already holds something: the decoder
// writes where the stream stands and leaves what is before it alone.
template <class F>
kxfuzz::TOutcome<TDecoded> Decode(F&& Form) {
  return Try([&] {
    auto Out = kxfuzz::MemoryOf("x");
    Out->SetPosition(1);
    TKxUUHeader Header;
    Form(Out.get(), &Header);
    const std::string All = ContentOf(Out.get());
    KX_FUZZ_CHECK(!All.empty() && All[0] == 'x');
    return TDecoded{All.substr(1), Header.Mode, std::string(Header.FileName)};
  });
}

bool SameIgnoringCase(const std::string& A, const std::string& B) {
  return std::string(UpperCase(AnsiString(A))) == std::string(UpperCase(AnsiString(B)));
}

void CheckError(const kxfuzz::TOutcome<TDecoded>& R) {
  if (!R.Value)
    KX_FUZZ_CHECK(R.Error == std::string("Exception: ") + SUUInvalidData ||
                  R.Error == std::string("Exception: ") + SUUUnexpectedEOF);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const int32_t MaxMove = 1 + (Data[0] & 0x3F);
  const uint16_t Mode = uint16_t(Data[0] * 7u);
  const std::string Rest(reinterpret_cast<const char*>(Data) + 1, Size - 1);
  const size_t Eol = Rest.find('\n');
  const std::string Name = Eol == std::string::npos ? std::string() : Rest.substr(0, Eol);
  const std::string Text = Eol == std::string::npos ? Rest : Rest.substr(Eol + 1);
  // String lists end their text at a zero character, as a C string would.
  const std::string ListText = Text.substr(0, Text.find('\0'));

  const auto ByString = Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Text, Out, H); });
  CheckError(ByString);
  const auto ByStream = Decode([&](TStream* Out, TKxUUHeader* H) {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    KxUUDecode(In.get(), Out, H);
  });
  KX_FUZZ_CHECK(ByStream == ByString);
  const auto ByShortWrites = Decode([&](TStream* Out, TKxUUHeader* H) {
    kxtest::TShortReadStream Short(Out, MaxMove);
    KxUUDecode(Text, &Short, H);
  });
  KX_FUZZ_CHECK(ByShortWrites == ByString);

  kxfuzz::TOwned<TStringList> Lines(TStringList::Create());
  Lines->SetText(ListText);
  const auto ByList =
      Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Lines.get(), Out, H); });
  if (ListText.size() == Text.size()) KX_FUZZ_CHECK(ByList == ByString);

  // The named forms: a section found by name carries that name.
  const auto Named = Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Text, Name, Out, H); });
  CheckError(Named);
  if (Named.Value) KX_FUZZ_CHECK(SameIgnoringCase(Named.Value->FileName, Name));
  const auto NamedByList =
      Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Lines.get(), Name, Out, H); });
  if (ListText.size() == Text.size()) KX_FUZZ_CHECK(NamedByList == Named);
  // The first section is the first one carrying its own name.
  if (ByString.Value) {
    const std::string First = ByString.Value->FileName;
    KX_FUZZ_CHECK(Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Text, First, Out, H); }) ==
                  ByString);
  }

  // Round trip: the text taken as bytes, encoded under the name (a name is one line) after a
  // section whose name differs, comes back by name. A final line whose length leaves a
  // remainder of 1 when divided by 3 loses its last byte: it has no characters to decode.
  std::string SafeName;
  for (char C : Name)
    if (C != '\r' && C != '\n' && C != '\0') SafeName += C;
  const AnsiString Encoded = KxUUEncode(Text, SafeName, Mode);
  {
    auto In = kxfuzz::ShortReaderOf(Text, MaxMove);
    KX_FUZZ_CHECK(std::string(KxUUEncode(In.get(), SafeName, Mode)) == std::string(Encoded));
    auto In2 = kxfuzz::ShortReaderOf(Text, MaxMove);
    kxfuzz::TOwned<TKxMemoryStream> Out(TKxMemoryStream::Create(uint32_t(64)));
    KxUUEncode(In2.get(), Out.get(), SafeName, Mode);
    KX_FUZZ_CHECK(ContentOf(Out.get()) == std::string(Encoded));
  }
  std::string Expected = Text;
  const size_t Last = Text.size() % 45;
  if (Last % 3 == 1) Expected.pop_back();
  const std::string Doc =
      std::string(KxUUEncode(Rest, SafeName + "~", 600)) + "\r\n" + std::string(Encoded);
  const auto Back =
      Decode([&](TStream* Out, TKxUUHeader* H) { KxUUDecode(Doc, SafeName, Out, H); });
  KX_FUZZ_CHECK(Back.Value && Back.Value->Bytes == Expected && Back.Value->Mode == Mode &&
                Back.Value->FileName == SafeName);
  return 0;
}

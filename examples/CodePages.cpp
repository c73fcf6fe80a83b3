// SPDX-License-Identifier: MIT
// Text between code pages with TKxStringStream: the stream holds its text in one code page,
// converts what is written or appended into it, changes its code page with the content, and
// saves and loads files with a byte-order mark.
//
//   CodePages [file]      (default: codepages.txt in the current folder)

#include <kx/classes/BufferConversions.h>
#include <kx/classes/StringStream.h>
#include <kx/rtl/OwnedPtr.h>

#include <cstdio>

using namespace kx;

namespace {

void Show(const char* What, TKxStringStream* S) {
  std::printf("%-24s code page %5u, %2lld bytes: %s\n", What, unsigned(S->CodePage()),
              static_cast<long long>(S->Size()),
              KxBufToHex(S->Memory(), uint32_t(S->Size())).c_str());
}

} // namespace

int main(int argc, char** argv) {
  const AnsiString FileName = argc > 1 ? argv[1] : "codepages.txt";
  try {
    // UTF-8 in, as the source file is written.
    OwnedPtr<TKxStringStream> Text = MakeOwned<TKxStringStream>(AnsiString("Gr\xC3\xBC\xC3\x9F"
                                                                           "e \xE2\x82\xAC"));
    Show("UTF-8:", Text.Get());

    // The same characters in Windows-1252: one byte each.
    Text->ChangeCodePage(1252, true);
    Show("Windows-1252:", Text.Get());

    // Appended text is converted from the code page it is in (here Cyrillic 1251) into the
    // stream's; what 1252 cannot hold becomes '?'.
    Text->Add(AnsiString(" \xEC\xE8\xF0"), 1251);
    Show("+ 1251 text:", Text.Get());

    // 16-bit text keeps every character.
    Text->ChangeCodePage(1200, true);
    Text->Add(u" \u043C\u0438\u0440");
    Show("UTF-16LE:", Text.Get());
    const UnicodeString Expected = Text->GetWString();

    // Saved as UTF-8 with its mark; loading reads the mark and converts back.
    Text->SaveToFile(FileName, 65001, true);
    OwnedPtr<TKxStringStream> Loaded = MakeOwned<TKxStringStream>(uint16_t(1200), uint32_t(64));
    Loaded->LoadFromFile(FileName);
    if (Loaded->GetWString() != Expected) {
      std::fprintf(stderr, "%s did not read back as written\n", FileName.c_str());
      return 1;
    }
    std::printf("%s holds: %s\n", FileName.c_str(), Loaded->GetAsUTF8().c_str());
    return 0;
  } catch (const Exception& E) {
    std::fprintf(stderr, "%s: %s\n", E.ClassName().c_str(), E.Message().c_str());
    return 1;
  }
}

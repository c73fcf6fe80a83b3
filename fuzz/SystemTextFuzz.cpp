// SPDX-License-Identifier: MIT
// The system's own text files over fuzzed text: os-release, mime.types and shared-mime-info's
// globs2. None of the readers raises. What os-release yields is written back with quotes and
// escapes and must read the same; the MIME lookups keep their first-wins and heaviest-wins
// rules when a line is appended.
#include <kx/rtl/StringList.h>
#include <kx/sysutils/MimeTypes.h>
#include <kx/windows/Environment.h>

#include "FuzzSupport.h"

#include <vector>

using namespace kx;

namespace {

std::vector<AnsiString> OSRelease(const AnsiString& Text) {
  kxfuzz::TOwned<TStringList> Values(TStringList::Create());
  KxParseOSRelease(Text, Values.get());
  std::vector<AnsiString> Items;
  for (int32_t I = 0; I < Values->Count(); ++I) Items.push_back(Values->Strings(I));
  return Items;
}

void CheckOSRelease(const AnsiString& Text) {
  const std::vector<AnsiString> Items = OSRelease(Text);
  AnsiString Written;
  for (const AnsiString& Item : Items) {
    const size_t Eq = Item.find('=');
    KX_FUZZ_CHECK(Eq != AnsiString::npos && Eq > 0);
    Written += Item.substr(0, Eq) + "=\"";
    for (char C : Item.substr(Eq + 1)) {
      KX_FUZZ_CHECK(C != '\n');
      if (C == '"' || C == '\\') Written += '\\';
      Written += C;
    }
    Written += "\"\n";
  }
  KX_FUZZ_CHECK(OSRelease(Written) == Items);
}

// An extension a line can name: no blanks, separators or wildcards.
bool Plain(const AnsiString& Ext) {
  if (Ext.size() < 2 || Ext[0] != '.') return false;
  for (size_t I = 1; I < Ext.size(); ++I) {
    const uint8_t C = uint8_t(Ext[I]);
    if (C <= ' ' || C == ':' || C == '#' || C == '*' || C == '?' || C == '[' || C == '.')
      return false;
  }
  return true;
}

void CheckMimeTypes(const AnsiString& Text, const AnsiString& Ext) {
  const AnsiString Found = KxMimeTypeFromMimeTypesText(Text, Ext);
  if (!Found.empty()) KX_FUZZ_CHECK(Found.find('/') != AnsiString::npos);
  if (!Plain(Ext)) return;
  // A later line never overrides; with no earlier one, it is the answer.
  const AnsiString More = Text + "\nkx/appended x " + Ext.substr(1) + " y\n";
  KX_FUZZ_CHECK(KxMimeTypeFromMimeTypesText(More, Ext) == (Found.empty() ? "kx/appended" : Found));
}

void CheckGlobs2(const AnsiString& Text, const AnsiString& Ext) {
  const AnsiString Found = KxMimeTypeFromGlobs2Text(Text, Ext);
  if (!Plain(Ext)) return;
  // Weight 0 never beats a match; any weight beats none.
  const AnsiString Light = Text + "\n0:kx/light:*" + Ext + "\n";
  KX_FUZZ_CHECK(KxMimeTypeFromGlobs2Text(Light, Ext) == (Found.empty() ? "kx/light" : Found));
  const AnsiString Heavy = Text + "\n9223372036854775807:kx/heavy:*" + Ext + ":cs\n";
  // Case-sensitive: the exact spelling matches; another spelling keeps the old answer.
  if (Found.empty()) KX_FUZZ_CHECK(KxMimeTypeFromGlobs2Text(Heavy, Ext) == "kx/heavy");
  const AnsiString Upper = UpperCase(Ext);
  if (Upper != Ext)
    KX_FUZZ_CHECK(KxMimeTypeFromGlobs2Text(Heavy, Upper) == KxMimeTypeFromGlobs2Text(Text, Upper));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  if (Size < 1) return 0;
  const uint8_t Mode = Data[0];
  FuzzedDataProvider In(Data + 1, Size - 1);
  const AnsiString Ext = "." + In.ConsumeRandomLengthString(12);
  const AnsiString Text = In.ConsumeRemainingBytesAsString();
  switch (Mode % 3) {
  case 0:
    CheckOSRelease(Text);
    break;
  case 1:
    CheckMimeTypes(Text, Ext);
    break;
  default:
    CheckGlobs2(Text, Ext);
    break;
  }
  return 0;
}

// SPDX-License-Identifier: MIT
// The INI log configurator over fuzzed UTF-8 text. It either reads the text or raises
// EConvertError naming a line: every line before that one reads, and that line fails on its
// own. Every "key = value" line read is found again, whatever the case of its names.
#include <kx/logging/IniConfigurator.h>
#include <kx/rtl/Rtl.h>

#include "FuzzSupport.h"

#include <vector>

using namespace kx;

namespace {

using TConfig = kxfuzz::TOwned<TKxIniLogConfigurator>;

kxfuzz::TOutcome<bool> Parses(const UnicodeString& Text) {
  return kxfuzz::Try([&] {
    TConfig(TKxIniLogConfigurator::FromText(Text, "fuzz"));
    return true;
  });
}

// The lines as the configurator splits them.
std::vector<UnicodeString> Lines(const UnicodeString& Text) {
  std::vector<UnicodeString> Result;
  size_t Start = 0;
  for (;;) {
    const size_t End = Text.find(u'\n', Start);
    Result.push_back(Text.substr(Start, End == UnicodeString::npos ? End : End - Start));
    if (End == UnicodeString::npos) return Result;
    Start = End + 1;
  }
}

void CheckFailure(const std::vector<UnicodeString>& Lines, const std::string& Error) {
  const std::string Prefix = "EConvertError: fuzz(";
  KX_FUZZ_CHECK(Error.rfind(Prefix, 0) == 0);
  const size_t Close = Error.find(')', Prefix.size());
  KX_FUZZ_CHECK(Close != std::string::npos);
  const int64_t LineNo = StrToInt64(Error.substr(Prefix.size(), Close - Prefix.size()));
  KX_FUZZ_CHECK(LineNo >= 1 && size_t(LineNo) <= Lines.size());
  UnicodeString Before;
  for (int64_t I = 0; I + 1 < LineNo; ++I) Before += Lines[size_t(I)] + u"\n";
  KX_FUZZ_CHECK(Parses(Before).Value.has_value());
  // The line fails by itself: a broken section header, no "key =", or a key before any section.
  KX_FUZZ_CHECK(!Parses(Lines[size_t(LineNo - 1)]).Value.has_value());
}

void CheckFound(const TConfig& Config, const std::vector<UnicodeString>& Lines) {
  UnicodeString Section;
  for (const UnicodeString& Raw : Lines) {
    const UnicodeString Line = Trim(Raw);
    if (Line.empty() || Line[0] == u';' || Line[0] == u'#') continue;
    if (Line[0] == u'[') {
      Section = Trim(Line.substr(1, Line.size() - 2));
      continue;
    }
    const size_t Eq = Line.find(u'=');
    KX_FUZZ_CHECK(Eq != UnicodeString::npos && !Section.empty());
    const UnicodeString Key = Trim(Line.substr(0, Eq));
    UnicodeString Value;
    KX_FUZZ_CHECK(Config->Find(Section, Key, Value));
    UnicodeString Upper;
    KX_FUZZ_CHECK(Config->Find(UpperCase(Section), LowerCase(Key), Upper) && Upper == Value);
    const Variant Read = Config->ReadValue(Section, Key, Variant(int32_t(7)));
    KX_FUZZ_CHECK(VarToWideStr(Read) == Value);
  }
  KX_FUZZ_CHECK(Config->ReadValue(u"", u"", Variant(int32_t(7))).ToInt64() == 7);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  kxfuzz::Start();
  const auto Decoded = kxfuzz::Try(
      [&] { return UTF8Decode(std::string_view(reinterpret_cast<const char*>(Data), Size)); });
  if (!Decoded.Value) return 0;
  const UnicodeString& Text = *Decoded.Value;
  const std::vector<UnicodeString> All = Lines(Text);
  const auto Outcome =
      kxfuzz::Try([&] { return TConfig(TKxIniLogConfigurator::FromText(Text, "fuzz")); });
  if (!Outcome.Value) {
    CheckFailure(All, Outcome.Error);
    return 0;
  }
  CheckFound(*Outcome.Value, All);
  return 0;
}

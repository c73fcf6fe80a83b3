// SPDX-License-Identifier: MIT
// The INI-style log configurator.
#include <kx/logging/IniConfigurator.h>
#include <kx/rtl/Streams.h>
#include <kx/rtl/SysUtils.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxIniLogConfigurator, TInterfacedObject, "uKxLogger")

bool TKxIniLogConfigurator::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxLogConfigurator>()) {
    IKxLogConfigurator* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TInterfacedObject::GetInterface(IID, Obj);
}

TKxIniLogConfigurator* TKxIniLogConfigurator::FromFile(const AnsiString& FileName) {
  TFileStream* Stream = TFileStream::Create(FileName, fmOpenRead | fmShareDenyWrite);
  std::string Bytes;
  try {
    Bytes.resize(size_t(Stream->Size()));
    Bytes.resize(size_t(Stream->ReadUpTo(Bytes.data(), int64_t(Bytes.size()))));
  } catch (...) {
    Stream->Free();
    throw;
  }
  Stream->Free();
  if (Bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) Bytes.erase(0, 3);
  return FromText(UTF8Decode(Bytes), FileName);
}

TKxIniLogConfigurator* TKxIniLogConfigurator::FromText(const UnicodeString& Text,
                                                       const AnsiString& SourceName) {
  TKxIniLogConfigurator* Config = TKxIniLogConfigurator::Create();
  try {
    Config->Parse(Text, SourceName);
  } catch (...) {
    Config->Free();
    throw;
  }
  return Config;
}

void TKxIniLogConfigurator::Parse(const UnicodeString& Text, const AnsiString& SourceName) {
  UnicodeString Section;
  int32_t LineNo = 0;
  size_t Start = 0;
  while (Start <= Text.size()) {
    size_t End = Text.find(u'\n', Start);
    if (End == UnicodeString::npos) End = Text.size();
    const UnicodeString Line = Trim(Text.substr(Start, End - Start));
    Start = End + 1;
    ++LineNo;
    if (Line.empty() || Line[0] == u';' || Line[0] == u'#') continue;
    if (Line[0] == u'[') {
      if (Line.back() != u']' || Line.size() < 3)
        throw EConvertError(Format(SKxIniSyntax, {SourceName, LineNo}));
      Section = Trim(Line.substr(1, Line.size() - 2));
      continue;
    }
    const size_t Eq = Line.find(u'=');
    if (Eq == UnicodeString::npos || Eq == 0 || Section.empty())
      throw EConvertError(Format(SKxIniSyntax, {SourceName, LineNo}));
    FEntries.push_back({Section, Trim(Line.substr(0, Eq)), Trim(Line.substr(Eq + 1))});
  }
}

bool TKxIniLogConfigurator::Find(const UnicodeString& Section, const UnicodeString& Key,
                                 UnicodeString& Value) const {
  // The last of repeated keys wins, as a later line overrides an earlier one.
  for (size_t I = FEntries.size(); I-- > 0;)
    if (SameText(FEntries[I].Section, Section) && SameText(FEntries[I].Key, Key)) {
      Value = FEntries[I].Value;
      return true;
    }
  return false;
}

Variant KX_STDCALL TKxIniLogConfigurator::ReadValue(const UnicodeString& Section,
                                                    const UnicodeString& Key,
                                                    const Variant& Default) {
  UnicodeString Value;
  if (!Find(Section, Key, Value)) return Default;
  return Variant(Value);
}

} // namespace kx

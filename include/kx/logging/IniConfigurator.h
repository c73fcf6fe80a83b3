// SPDX-License-Identifier: MIT
#pragma once
// A configurator over an INI-style file: one section per logger and per appender.

#include <kx/logging/LogIntf.h>
#include <kx/rtl/InterfacedObject.h>

#include <vector>

namespace kx {

inline constexpr const char* SKxIniSyntax = "%s(%d): expected [section] or key = value";

// Sections are named after loggers (their last name segment, "root" for the root) and
// appenders; keys are the ones the loggers and appenders read. Lines starting with ';' or '#'
// are comments; names compare without regard to case; values are returned as text and
// converted by the reader.
class KX_API TKxIniLogConfigurator : public TInterfacedObject, public IKxLogConfigurator {
  KX_CLASS(TKxIniLogConfigurator, TInterfacedObject)
public:
  TKxIniLogConfigurator() = default;
  KX_FORWARD_IINTERFACE(TInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;

  // The file is UTF-8, with or without a byte-order mark. EConvertError names the line of a
  // syntax error.
  static TKxIniLogConfigurator* FromFile(const AnsiString& FileName);
  static TKxIniLogConfigurator* FromText(const UnicodeString& Text,
                                         const AnsiString& SourceName = "");

  Variant KX_STDCALL ReadValue(const UnicodeString& Section, const UnicodeString& Key,
                               const Variant& Default) override;
  // The value as written, and whether it is there.
  bool Find(const UnicodeString& Section, const UnicodeString& Key, UnicodeString& Value) const;

private:
  void Parse(const UnicodeString& Text, const AnsiString& SourceName);
  struct TEntry {
    UnicodeString Section, Key, Value;
  };
  std::vector<TEntry> FEntries;
};

} // namespace kx

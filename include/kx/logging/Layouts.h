// SPDX-License-Identifier: MIT
#pragma once
// Layouts: one plain text line per message, or one XML element with a stylesheet beside the
// log.

#include <kx/logging/LogBase.h>

namespace kx {

class KX_API TKxLogLayoutBase : public TKxLogBase, public IKxLogLayout, public IKxLogLayoutEx {
  KX_CLASS(TKxLogLayoutBase, TKxLogBase)
public:
  TKxLogLayoutBase() = default;
  TKxLogLayoutBase(TKxLogger* ALogger, const UnicodeString& AName) : TKxLogBase(ALogger, AName) {}
  KX_FORWARD_IINTERFACE(TKxComponent)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  UnicodeString KX_STDCALL GetName() override { return FLogName; }
  TComponent* KX_STDCALL Component() override { return this; }
  AnsiString KX_STDCALL GetFileExt() override { return ".log"; }
  void KX_STDCALL Initialize(TKxLogBase*) override {}
};

class KX_API TKxSimpleLayout : public TKxLogLayoutBase {
  KX_CLASS(TKxSimpleLayout, TKxLogLayoutBase)
public:
  TKxSimpleLayout() = default;
  TKxSimpleLayout(TKxLogger* ALogger, const UnicodeString& AName)
      : TKxLogLayoutBase(ALogger, AName) {}
  UnicodeString KX_STDCALL GetFooter() override;
  UnicodeString KX_STDCALL GetHeader() override;
  UnicodeString KX_STDCALL FormatLine(const UnicodeString& LoggerName, TKxLogLevel Level,
                                      const UnicodeString& Msg, const TKxDataRec* Data,
                                      TKxLogIndent Indent) override;
  const UnicodeString& Indentation() const { return FIndent; }

private:
  UnicodeString FIndent;
};

class KX_API TKxXmlLayout : public TKxLogLayoutBase {
  KX_CLASS(TKxXmlLayout, TKxLogLayoutBase)
public:
  TKxXmlLayout() = default;
  TKxXmlLayout(TKxLogger* ALogger, const UnicodeString& AName) : TKxLogLayoutBase(ALogger, AName) {}
  UnicodeString KX_STDCALL GetFooter() override;
  UnicodeString KX_STDCALL GetHeader() override;
  UnicodeString KX_STDCALL FormatLine(const UnicodeString& LoggerName, TKxLogLevel Level,
                                      const UnicodeString& Msg, const TKxDataRec* Data,
                                      TKxLogIndent Indent) override;
  AnsiString KX_STDCALL GetFileExt() override { return ".log.xml"; }
  // Writes the stylesheet beside a file appender's log unless one is there already.
  void KX_STDCALL Initialize(TKxLogBase* Appender) override;
  const AnsiString& StyleSheetName() const { return FStyleSheet; }

private:
  AnsiString FStyleSheet;
};

// XML text escaping: the five markup characters as entities, NUL dropped, the rest as it is.
KX_API UnicodeString KxXmlEscape(const UnicodeString& S);
// The current time as UTC, "yyyy-mm-ddThh:nn:ssZ".
KX_API UnicodeString KxLogIsoTimeStamp();
// The stylesheet that shows an XML log as a table.
KX_API AnsiString KxLogStyleSheet();

namespace detail {
// The local time now as "yyyy-mm-dd hh:mm:ss:zzz", appended to Out.
KX_API void AppendLogTimeStamp(UnicodeString& Out);
} // namespace detail

} // namespace kx

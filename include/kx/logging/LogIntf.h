// SPDX-License-Identifier: MIT
#pragma once
// The logging framework's levels, payload record and interfaces.

#include <kx/classes/Interfaces.h>
#include <kx/rtl/DateTime.h>
#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Format.h>
#include <kx/rtl/Variants.h>
#include <kx/types/TypeRegistry.h>

#include <cstdint>
#include <vector>

namespace kx {

class TComponent;
class TKxLogger;
class TKxLoggerList;
class TKxLogAppenderList;
class TKxLogBase;

enum TKxLogLevel : uint8_t {
  llAll,
  llTrace,
  llDebug,
  llInfo,
  llWarn,
  llError,
  llFatal,
  llDoNotLog
};

enum TKxLogIndent : uint8_t { liIndentNone, liIndentIncrease, liIndentDecrease };

// Display names indexed by the level; levels are shown and read as text through them.
KX_API extern const char16_t* const KxLogLevelNames[8];

// One published property as an object dump shows it: a value as text, an event (which dumps
// skip), or an object (dumped in its turn).
struct TKxPublishedProperty {
  enum TKind : uint8_t { ppValue, ppEvent, ppObject };
  AnsiString Name;
  TKind Kind = ppValue;
  UnicodeString Value;
  TObject* Object = nullptr;
};
using TKxPublishedProperties = std::vector<TKxPublishedProperty>;

// Implemented by classes whose published properties an object dump lists, in declaration
// order (a descendant adds its own after its parent's). A component's Name comes first
// without it.
class KX_API IKxPublishedProperties {
public:
  virtual void GetPublishedProperties(TKxPublishedProperties& Properties) = 0;

protected:
  ~IKxPublishedProperties() = default;
};

// An optional payload: the kind says which of the fields holds the value.
struct KX_API TKxDataRec {
  TKxTypeKind Kind = rtkUnknown;
  int64_t Int = 0;                // integer kinds, enumeration and set ordinals, booleans
  double Float = 0;               // float kinds and date-times
  char16_t Char = 0;              // character kinds
  UnicodeString Str;              // string kinds
  Variant Var;                    // rtkVariant
  TObject* Obj = nullptr;         // rtkClass
  const Exception* Exc = nullptr; // rtkException
  TClass Cls = nullptr;           // rtkClassRef
  const void* Ptr = nullptr;      // rtkInterface, rtkPointer

  static TKxDataRec FromVariant(const Variant& V);
  static TKxDataRec FromObject(TObject* O);
  static TKxDataRec FromException(const Exception& E);
};

// The source of configuration values: one value of a section (a logger's or an appender's
// name), or the default when the section or key is absent.
struct IKxLogConfigurator : IInterface {
  virtual Variant KX_STDCALL ReadValue(const UnicodeString& Section, const UnicodeString& Key,
                                       const Variant& Default) = 0;
};

// A log record captured with its environment.
struct IKxLogData : IInterface {
  virtual TKxLogLevel KX_STDCALL Level() = 0;
  virtual TKxLogIndent KX_STDCALL Indent() = 0;
  virtual UnicodeString KX_STDCALL Message() = 0;
  virtual TKxDataRec* KX_STDCALL Data() = 0;
  virtual TDateTime KX_STDCALL TimeStamp() = 0;
  virtual AnsiString KX_STDCALL ComputerName() = 0;
  virtual AnsiString KX_STDCALL UserName() = 0;
  virtual AnsiString KX_STDCALL OSName() = 0;
  virtual AnsiString KX_STDCALL OSVersion() = 0;
  virtual AnsiString KX_STDCALL Screen() = 0;
  virtual AnsiString KX_STDCALL ActiveForm() = 0;
  virtual AnsiString KX_STDCALL ActiveControl() = 0;
};

struct IKxLogBase : IInterface {
  virtual UnicodeString KX_STDCALL GetName() = 0;
  virtual TComponent* KX_STDCALL Component() = 0;
};

struct IKxLogLayout : IKxLogBase {
  virtual UnicodeString KX_STDCALL GetFooter() = 0;
  virtual UnicodeString KX_STDCALL GetHeader() = 0;
  virtual UnicodeString KX_STDCALL FormatLine(const UnicodeString& LoggerName, TKxLogLevel Level,
                                              const UnicodeString& Msg, const TKxDataRec* Data,
                                              TKxLogIndent Indent) = 0;
  virtual AnsiString KX_STDCALL GetFileExt() = 0;
};

struct IKxLogLayoutEx : IInterface {
  virtual void KX_STDCALL Initialize(TKxLogBase* Appender) = 0;
};

struct IKxLogAppender : IKxLogBase {
  virtual void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                                TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                                TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Close() = 0;
  virtual void KX_STDCALL SetLayout(IKxLogLayout* Layout) = 0;
  virtual void KX_STDCALL SetLayout(TClass LayoutClass) = 0;
  virtual void KX_STDCALL SetLayout(const AnsiString& ClassName) = 0;
};

struct IKxRollingFileAppender : IKxLogBase {
  virtual void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                                TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                                TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Close() = 0;
  virtual AnsiString KX_STDCALL GetFileName() = 0;
  virtual bool KX_STDCALL GetAppendExisting() = 0;
  virtual AnsiString KX_STDCALL GetFileExt() = 0;
  virtual void KX_STDCALL SetFileName(const AnsiString& Value) = 0;
  virtual void KX_STDCALL SetAppendExisting(bool Value) = 0;
  virtual void KX_STDCALL SetFileExt(const AnsiString& Value) = 0;
  virtual uint32_t KX_STDCALL GetMaxFileSize() = 0;
  virtual uint16_t KX_STDCALL GetMaxBackupCount() = 0;
  virtual void KX_STDCALL SetMaxFileSize(uint32_t Value) = 0;
  virtual void KX_STDCALL SetMaxBackupCount(uint16_t Value) = 0;
  virtual void KX_STDCALL RollOver() = 0;
};

struct IKxDailyRollingFileAppender : IKxRollingFileAppender {
  virtual AnsiString KX_STDCALL GetDatePattern() = 0;
  virtual void KX_STDCALL SetDatePattern(const AnsiString& Value) = 0;
};

struct IKxLogger : IInterface {
  virtual IPtr<IKxLogger> KX_STDCALL GetParentLogger() = 0;
  virtual bool KX_STDCALL GetParentLevel() = 0;
  virtual TKxLogLevel KX_STDCALL GetLevel() = 0;
  virtual TKxLogAppenderList* KX_STDCALL GetAppenders() = 0;
  virtual TKxLoggerList* KX_STDCALL GetChildLoggers() = 0;
  virtual bool KX_STDCALL GetAdditive() = 0;
  virtual UnicodeString KX_STDCALL GetName() = 0;
  virtual UnicodeString KX_STDCALL GetFullName() = 0;
  virtual void KX_STDCALL SetAdditive(bool Value) = 0;
  virtual void KX_STDCALL SetParentLevel(bool Value) = 0;
  virtual void KX_STDCALL SetLevel(TKxLogLevel Value) = 0;
  virtual void KX_STDCALL SetConfig(IKxLogConfigurator* Config) = 0;
  virtual IPtr<IKxLogger> KX_STDCALL GetLogger(const UnicodeString& Name) = 0;
  virtual IPtr<IKxLogger> KX_STDCALL GetLogger(TObject* Obj) = 0;
  virtual bool KX_STDCALL IsDebugEnabled() = 0;
  virtual bool KX_STDCALL IsErrorEnabled() = 0;
  virtual bool KX_STDCALL IsFatalEnabled() = 0;
  virtual bool KX_STDCALL IsInfoEnabled() = 0;
  virtual bool KX_STDCALL IsWarnEnabled() = 0;
  virtual bool KX_STDCALL IsEnabledFor(TKxLogLevel Level) = 0;
  virtual void KX_STDCALL Trace(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Trace(TObject* Obj, const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Trace(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args) = 0;
  virtual void KX_STDCALL Debug(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Debug(const UnicodeString& Fmt, TVarRecs Args) = 0;
  virtual void KX_STDCALL Debug(const UnicodeString& Msg, const Variant& Value) = 0;
  virtual void KX_STDCALL Debug(const UnicodeString& Msg, TObject* Obj) = 0;
  virtual void KX_STDCALL Debug(const UnicodeString& Msg, const Exception& E) = 0;
  virtual void KX_STDCALL Info(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Warn(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Error(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Fatal(const UnicodeString& Msg) = 0;
  virtual void KX_STDCALL Fatal(const UnicodeString& Fmt, TVarRecs Args) = 0;
  virtual void KX_STDCALL Fatal(const Exception& E) = 0;
  virtual void KX_STDCALL Fatal(const UnicodeString& Msg, const Exception& E) = 0;
  virtual void KX_STDCALL Count(const UnicodeString& Name, int32_t Value) = 0;
  virtual void KX_STDCALL ClearLog() = 0;
  virtual void KX_STDCALL EnterMethod(const UnicodeString& Msg, TKxLogLevel Level) = 0;
  virtual void KX_STDCALL EnterMethod(const UnicodeString& Fmt, TVarRecs Args,
                                      TKxLogLevel Level) = 0;
  virtual void KX_STDCALL EnterMethod(TObject* Obj, const UnicodeString& Msg,
                                      TKxLogLevel Level) = 0;
  virtual void KX_STDCALL EnterMethod(TObject* Obj, const UnicodeString& Fmt, TVarRecs Args,
                                      TKxLogLevel Level) = 0;
  virtual void KX_STDCALL ExitMethod(const UnicodeString& Msg, TKxLogLevel Level) = 0;
  virtual void KX_STDCALL ExitMethod(const UnicodeString& Fmt, TVarRecs Args,
                                     TKxLogLevel Level) = 0;
  virtual void KX_STDCALL ExitMethod(TObject* Obj, const UnicodeString& Msg, TKxLogLevel Level) = 0;
  virtual void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, const Variant& Value,
                              TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, TObject* Obj,
                              TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Log(TKxLogLevel Level, const UnicodeString& Msg, const Exception& E,
                              TKxLogIndent Indent) = 0;
  virtual void KX_STDCALL Log(IKxLogData* Data) = 0;
  virtual void KX_STDCALL AddAppender(IKxLogAppender* Appender) = 0;
  virtual IPtr<IKxLogAppender> KX_STDCALL AddAppender(TClass AppenderClass) = 0;
  virtual void KX_STDCALL RemoveAppender(IKxLogAppender* Appender) = 0;
  virtual void KX_STDCALL ClearAppenders() = 0;
  virtual void KX_STDCALL LockAppenders() = 0;
  virtual void KX_STDCALL UnLockAppenders() = 0;
};

} // namespace kx

KX_INTERFACE_GUID(kx::IKxLogConfigurator, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E01}")
KX_INTERFACE_GUID(kx::IKxLogData, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E02}")
KX_INTERFACE_GUID(kx::IKxLogBase, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E03}")
KX_INTERFACE_GUID(kx::IKxLogLayout, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E04}")
KX_INTERFACE_GUID(kx::IKxLogLayoutEx, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E05}")
KX_INTERFACE_GUID(kx::IKxLogAppender, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E06}")
KX_INTERFACE_GUID(kx::IKxRollingFileAppender, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E07}")
KX_INTERFACE_GUID(kx::IKxDailyRollingFileAppender, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E08}")
KX_INTERFACE_GUID(kx::IKxLogger, "{5E1B7C40-2A63-4F0D-9B7E-3C1A8D2F6E09}")

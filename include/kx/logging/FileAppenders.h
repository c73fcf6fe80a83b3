// SPDX-License-Identifier: MIT
#pragma once
// File appenders: one UTF-8 log file, rolled over by size into numbered backups or by date
// into dated names.

#include <kx/logging/LogBase.h>
#include <kx/rtl/Streams.h>

#include <functional>
#include <mutex>

namespace kx {

inline constexpr const char* SKxAlreadyExists = "Already Exists";
inline constexpr const char* SKxFailedToGetAttributes = "Failed to get the attributes";

// A UTF-8 line writer. It opens an existing file at its first byte (no seek) and writes no
// byte-order mark; lines end with CR LF.
class KX_API TKxTextFile : public TObject {
  KX_CLASS(TKxTextFile, TObject)
public:
  explicit TKxTextFile(const AnsiString& FileName);
  ~TKxTextFile() override;
  void Write(const UnicodeString& Text);
  void WriteLn(const UnicodeString& Text);
  int64_t Size();
  TFileStream* Stream() const { return FStream; }

private:
  void WriteBytes(const UnicodeString& Text, bool LineEnd);
  TFileStream* FStream = nullptr;
  std::mutex FLock;
  // The size kept as lines are written, so a size check costs no system call.
  int64_t FSize = 0;
  int64_t FPosition = 0;
};

class KX_API TKxFileAppender : public TKxBaseAppender {
  KX_CLASS(TKxFileAppender, TKxBaseAppender)
public:
  TKxFileAppender();
  TKxFileAppender(TKxLogger* ALogger, const UnicodeString& AName);
  ~TKxFileAppender() override;

  void Initialize() override;
  void SetConfig(IKxLogConfigurator* Config) override;
  void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                        TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                        TKxLogIndent Indent) override;
  void KX_STDCALL Close() override;
  using TKxBaseAppender::SetLayout;
  void KX_STDCALL SetLayout(IKxLogLayout* Layout) override;

  virtual AnsiString KX_STDCALL GetFileName();
  virtual bool KX_STDCALL GetAppendExisting();
  virtual AnsiString KX_STDCALL GetFileExt();
  virtual void KX_STDCALL SetFileExt(const AnsiString& Value);
  virtual void KX_STDCALL SetAppendExisting(bool Value);
  virtual void KX_STDCALL SetFileName(const AnsiString& Value);

  TKxTextFile* TextFile() const { return FTextFile; }

protected:
  void FreeTextFile();
  // The file's footer, then the file closed; the file is closed even when the footer fails.
  void WriteFooterAndClose();
  std::atomic<int32_t> FBusy{0};
  AnsiString FFileName;
  TKxTextFile* FTextFile = nullptr;
  bool FAppendExisting = true;
  AnsiString FFileExt = ".log";
};

// One file found by a roll-over scan.
class KX_API TKxFileInfo : public TObject {
  KX_CLASS(TKxFileInfo, TObject)
public:
  TKxFileInfo() = default;
  AnsiString BaseName;
  int32_t Number = 0;
  AnsiString Suffix;
  AnsiString FileName; // the full name found
};

class KX_API TKxRollingFileAppender : public TKxFileAppender, public IKxRollingFileAppender {
  KX_CLASS(TKxRollingFileAppender, TKxFileAppender)
public:
  TKxRollingFileAppender() = default;
  TKxRollingFileAppender(TKxLogger* ALogger, const UnicodeString& AName)
      : TKxFileAppender(ALogger, AName) {}
  KX_FORWARD_IINTERFACE(TKxComponent)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  UnicodeString KX_STDCALL GetName() override { return FLogName; }
  TComponent* KX_STDCALL Component() override { return this; }

  void Initialize() override;
  void SetConfig(IKxLogConfigurator* Config) override;
  void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                        TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                        TKxLogIndent Indent) override;
  void KX_STDCALL Close() override { TKxFileAppender::Close(); }
  AnsiString KX_STDCALL GetFileName() override { return TKxFileAppender::GetFileName(); }
  bool KX_STDCALL GetAppendExisting() override { return TKxFileAppender::GetAppendExisting(); }
  AnsiString KX_STDCALL GetFileExt() override { return TKxFileAppender::GetFileExt(); }
  void KX_STDCALL SetFileName(const AnsiString& Value) override {
    TKxFileAppender::SetFileName(Value);
  }
  void KX_STDCALL SetAppendExisting(bool Value) override {
    TKxFileAppender::SetAppendExisting(Value);
  }
  void KX_STDCALL SetFileExt(const AnsiString& Value) override {
    TKxFileAppender::SetFileExt(Value);
  }
  uint32_t KX_STDCALL GetMaxFileSize() override;
  uint16_t KX_STDCALL GetMaxBackupCount() override;
  void KX_STDCALL SetMaxFileSize(uint32_t Value) override;
  void KX_STDCALL SetMaxBackupCount(uint16_t Value) override;

  virtual TKxFileInfo* CreateFileInfo(const AnsiString& FileName);
  virtual void CheckBackupCount();
  virtual void CheckRollover();
  void KX_STDCALL RollOver() override;

protected:
  // The log's folder (with a trailing delimiter) and its name without folder and extension.
  AnsiString LogDir();
  AnsiString LogBaseName();
  // The files whose names begin with the base name, sorted by number (stable).
  std::vector<TKxFileInfo*> ScanFiles();
  uint32_t FMaxFileSize = 10485760;
  uint16_t FMaxBackupCount = 5;
};

// The clock the daily appender reads; tests set their own.
using TKxLogClock = std::function<TDateTime()>;

class KX_API TKxDailyRollingFileAppender : public TKxRollingFileAppender,
                                           public IKxDailyRollingFileAppender {
  KX_CLASS(TKxDailyRollingFileAppender, TKxRollingFileAppender)
public:
  TKxDailyRollingFileAppender() { FMaxFileSize = 2147483647; }
  TKxDailyRollingFileAppender(TKxLogger* ALogger, const UnicodeString& AName)
      : TKxRollingFileAppender(ALogger, AName) {
    FMaxFileSize = 2147483647;
  }
  KX_FORWARD_IINTERFACE(TKxComponent)
  bool GetInterface(const TGUID& IID, void** Obj) override;
  UnicodeString KX_STDCALL GetName() override { return FLogName; }
  TComponent* KX_STDCALL Component() override { return this; }
  void KX_STDCALL Write(const UnicodeString& LoggerName, const UnicodeString& OwnerName,
                        TKxLogLevel Level, const UnicodeString& Msg, const TKxDataRec* Data,
                        TKxLogIndent Indent) override {
    TKxRollingFileAppender::Write(LoggerName, OwnerName, Level, Msg, Data, Indent);
  }
  void KX_STDCALL Close() override { TKxFileAppender::Close(); }
  AnsiString KX_STDCALL GetFileName() override { return TKxFileAppender::GetFileName(); }
  bool KX_STDCALL GetAppendExisting() override { return TKxFileAppender::GetAppendExisting(); }
  AnsiString KX_STDCALL GetFileExt() override { return TKxFileAppender::GetFileExt(); }
  void KX_STDCALL SetFileName(const AnsiString& Value) override {
    TKxFileAppender::SetFileName(Value);
  }
  void KX_STDCALL SetAppendExisting(bool Value) override {
    TKxFileAppender::SetAppendExisting(Value);
  }
  void KX_STDCALL SetFileExt(const AnsiString& Value) override {
    TKxFileAppender::SetFileExt(Value);
  }
  uint32_t KX_STDCALL GetMaxFileSize() override { return TKxRollingFileAppender::GetMaxFileSize(); }
  uint16_t KX_STDCALL GetMaxBackupCount() override {
    return TKxRollingFileAppender::GetMaxBackupCount();
  }
  void KX_STDCALL SetMaxFileSize(uint32_t Value) override {
    TKxRollingFileAppender::SetMaxFileSize(Value);
  }
  void KX_STDCALL SetMaxBackupCount(uint16_t Value) override {
    TKxRollingFileAppender::SetMaxBackupCount(Value);
  }
  AnsiString KX_STDCALL GetDatePattern() override;
  void KX_STDCALL SetDatePattern(const AnsiString& Value) override;

  void Initialize() override;
  void SetConfig(IKxLogConfigurator* Config) override;
  void CheckRollover() override;
  void KX_STDCALL RollOver() override;
  TKxFileInfo* CreateFileInfo(const AnsiString& FileName) override;

  void SetClock(TKxLogClock Clock);
  const AnsiString& CurrentDate() const { return FCurrentDate; }

private:
  TDateTime ClockNow();
  AnsiString FDatePattern = "yyyy-mm-dd";
  AnsiString FCurrentDate;
  TKxLogClock FClock;
};

} // namespace kx

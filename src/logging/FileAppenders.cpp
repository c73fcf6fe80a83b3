// SPDX-License-Identifier: MIT
// The file appenders and their UTF-8 line writer.
#include <kx/logging/FileAppenders.h>
#include <kx/logging/Logger.h>
#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/SysUtils.h>
#include <kx/windows/Environment.h>
#include <kx/windows/FilePaths.h>

#include "platform/Host.h"
#include "platform/Platform.h"

#include <algorithm>
#include <memory>

namespace kx {

KX_IMPLEMENT_CLASS(TKxTextFile, TObject, "uKxLogAppenders")
KX_IMPLEMENT_CLASS(TKxFileAppender, TKxBaseAppender, "uKxLogAppenders")
KX_IMPLEMENT_CLASS(TKxFileInfo, TObject, "uKxLogAppenders")
KX_IMPLEMENT_CLASS(TKxRollingFileAppender, TKxFileAppender, "uKxLogAppenders")
KX_IMPLEMENT_CLASS(TKxDailyRollingFileAppender, TKxRollingFileAppender, "uKxLogAppenders")

namespace {

// Share bits: read and write, others may read but not write.
constexpr uint16_t TextFileMode = fmOpenReadWrite | fmShareDenyWrite;

// UTF-16 to UTF-8 into Out (appended). Unpaired surrogates become U+FFFD, as the platform's
// UTF-8 conversion writes them.
void AppendUtf8(std::string& Out, const UnicodeString& Text) {
  const size_t Start = Out.size();
  Out.resize(Start + Text.size() * 3);
  char* P = Out.data() + Start;
  const char16_t* S = Text.data();
  const char16_t* End = S + Text.size();
  while (S < End) {
    uint32_t C = *S++;
    if (C < 0x80) {
      *P++ = char(C);
      continue;
    }
    if (C < 0x800) {
      *P++ = char(0xC0 | (C >> 6));
      *P++ = char(0x80 | (C & 0x3F));
      continue;
    }
    if (C >= 0xD800 && C <= 0xDFFF) {
      if (C <= 0xDBFF && S < End && *S >= 0xDC00 && *S <= 0xDFFF) {
        C = 0x10000 + ((C - 0xD800) << 10) + (uint32_t(*S++) - 0xDC00);
        *P++ = char(0xF0 | (C >> 18));
        *P++ = char(0x80 | ((C >> 12) & 0x3F));
        *P++ = char(0x80 | ((C >> 6) & 0x3F));
        *P++ = char(0x80 | (C & 0x3F));
        continue;
      }
      C = 0xFFFD;
    }
    *P++ = char(0xE0 | (C >> 12));
    *P++ = char(0x80 | ((C >> 6) & 0x3F));
    *P++ = char(0x80 | (C & 0x3F));
  }
  Out.resize(size_t(P - Out.data()));
}

platform::FileTime DateTimeToFileTime(TDateTime Value) {
  // 100 ns steps since 1601-01-01; the date-time epoch is 109205 days later.
  return platform::FileTime((double(Value) + 109205.0) * 864000000000.0 + 0.5);
}

TDateTime FileTimeToDateTime(platform::FileTime Value) {
  return TDateTime(double(Value) / 864000000000.0 - 109205.0);
}

// The creation time of a file in local time; false when it cannot be read.
bool FileCreationTime(const AnsiString& FileName, TDateTime& Created) {
  platform::FileTime Creation = 0, Access = 0, Write = 0;
  if (!platform::GetFileTimes(FileName, Creation, Access, Write)) return false;
  Created = FileTimeToDateTime(platform::FileTimeToLocal(Creation));
  return true;
}

struct TBusy {
  std::atomic<int32_t>& Counter;
  explicit TBusy(std::atomic<int32_t>& C) : Counter(C) { ++Counter; }
  ~TBusy() { --Counter; }
};

// The appender's own lock for the length of a scope.
struct TAppenderLock {
  TKxBaseAppender* Appender;
  explicit TAppenderLock(TKxBaseAppender* A) : Appender(A) { A->Lock(); }
  ~TAppenderLock() { Appender->Unlock(); }
};

} // namespace

// --- TKxTextFile -----------------------------------------------------------------------------

TKxTextFile::TKxTextFile(const AnsiString& FileName) {
  const AnsiString Dir = ExtractFileDir(FileName);
  if (!Dir.empty()) ForceDirectories(Dir);
  if (!FileExists(FileName)) {
    TFileStream::Create(FileName, fmCreate)->Free();
    // A new file is stamped, so the daily appender can tell its day on the next start.
    platform::SetFileCreationTime(FileName,
                                  platform::LocalFileTimeToUtc(DateTimeToFileTime(Now())));
  }
  // No seek: the position is the file's first byte.
  FStream = TFileStream::Create(FileName, TextFileMode);
  FSize = FStream->Size();
}

TKxTextFile::~TKxTextFile() {
  FreeAndNil(FStream);
}

void TKxTextFile::WriteBytes(const UnicodeString& Text, bool LineEnd) {
  thread_local std::string Bytes;
  Bytes.clear();
  AppendUtf8(Bytes, Text);
  if (LineEnd) Bytes += "\r\n";
  std::lock_guard<std::mutex> Guard(FLock);
  FStream->WriteBuffer(Bytes.data(), int32_t(Bytes.size()));
  FPosition += int64_t(Bytes.size());
  if (FPosition > FSize) FSize = FPosition;
}

void TKxTextFile::Write(const UnicodeString& Text) {
  WriteBytes(Text, false);
}

void TKxTextFile::WriteLn(const UnicodeString& Text) {
  WriteBytes(Text, true);
}

int64_t TKxTextFile::Size() {
  std::lock_guard<std::mutex> Guard(FLock);
  return FSize;
}

// --- TKxFileAppender -------------------------------------------------------------------------

TKxFileAppender::TKxFileAppender() {
  const AnsiString Program = platform::ModuleFileName();
  FFileName = ChangeFileExt(Program, FFileExt);
  uint16_t Code = 0;
  try {
    Code = KxGetWindowsVersion();
  } catch (const Exception&) {
    // Not Windows: no version code.
  }
  // Current Windows versions keep logs out of the program folder; so does every other system.
  if (Code >= 601 || Code == 0) {
    AnsiString Shared;
    try {
      Shared = KxGetSharedDocumentsFolder();
    } catch (const Exception&) {
      // No shared folder: the log stays beside the program.
    }
    if (!Shared.empty()) {
      const AnsiString Base = ChangeFileExt(ExtractFileName(Program), "");
      const AnsiString Folder = IncludeTrailingPathDelimiter(Shared) + Base;
      ForceDirectories(Folder);
      FFileName = IncludeTrailingPathDelimiter(Folder) + Base + FFileExt;
    }
  }
}

TKxFileAppender::TKxFileAppender(TKxLogger* ALogger, const UnicodeString& AName)
    : TKxFileAppender() {
  TKxLogBase::Setup(ALogger, AName);
}

TKxFileAppender::~TKxFileAppender() {
  delete FTextFile;
}

void TKxFileAppender::FreeTextFile() {
  TKxTextFile* File = FTextFile;
  FTextFile = nullptr;
  if (File) File->Free();
}

void TKxFileAppender::Initialize() {
  TAppenderLock Guard(this);
  TBusy Busy(FBusy);
  FreeTextFile();
  if (Trim(FFileName).empty()) return;
  bool WriteHeader = true;
  if (FileExists(FFileName)) {
    if (FAppendExisting)
      WriteHeader = false;
    else
      DeleteFile(FFileName);
  }
  FTextFile = TKxTextFile::Create(FFileName);
  if (FLayout && WriteHeader) {
    const UnicodeString Header = FLayout->GetHeader();
    if (!Header.empty()) FTextFile->WriteLn(Header);
  }
  TKxBaseAppender::Initialize();
}

void TKxFileAppender::SetConfig(IKxLogConfigurator* Config) {
  TAppenderLock Guard(this);
  TKxBaseAppender::SetConfig(Config);
  if (!Config) return;
  SetAppendExisting(bool(Config->ReadValue(FLogName, u"AppendExisting", Variant(FAppendExisting))));
  SetFileName(UnicodeToAnsi(
      VarToWideStr(Config->ReadValue(FLogName, u"FileName", Variant(AnsiToUnicode(FFileName))))));
  SetFileExt(UnicodeToAnsi(
      VarToWideStr(Config->ReadValue(FLogName, u"FileExt", Variant(AnsiToUnicode(FFileExt))))));
}

void KX_STDCALL TKxFileAppender::Write(const UnicodeString& LoggerName,
                                       const UnicodeString& OwnerName, TKxLogLevel Level,
                                       const UnicodeString& Msg, const TKxDataRec* Data,
                                       TKxLogIndent Indent) {
  TAppenderLock Guard(this);
  TKxBaseAppender::Write(LoggerName, OwnerName, Level, Msg, Data, Indent);
  if (!FLayout || !FTextFile) return;
  // The layout names the logger whose appender writes the line.
  const UnicodeString Line = FLayout->FormatLine(OwnerName, Level, Msg, Data, Indent);
  if (!Line.empty()) FTextFile->WriteLn(Line);
}

void TKxFileAppender::WriteFooterAndClose() {
  // Closed means uninitialised: the next Write opens the file again, also after a failure.
  FInitialized = false;
  try {
    if (FLayout && FTextFile) {
      const UnicodeString Footer = FLayout->GetFooter();
      if (!Footer.empty()) FTextFile->Write(Footer);
    }
  } catch (...) {
    FreeTextFile();
    throw;
  }
  FreeTextFile();
}

void KX_STDCALL TKxFileAppender::Close() {
  TAppenderLock Guard(this);
  try {
    WriteFooterAndClose();
  } catch (...) {
    TKxBaseAppender::Close();
    throw;
  }
  TKxBaseAppender::Close();
}

void KX_STDCALL TKxFileAppender::SetLayout(IKxLogLayout* Layout) {
  TAppenderLock Guard(this);
  Close();
  if (Layout) SetFileExt(Layout->GetFileExt());
  TKxBaseAppender::SetLayout(Layout);
}

AnsiString KX_STDCALL TKxFileAppender::GetFileName() {
  TAppenderLock Guard(this);
  return FFileName;
}

bool KX_STDCALL TKxFileAppender::GetAppendExisting() {
  TAppenderLock Guard(this);
  return FAppendExisting;
}

AnsiString KX_STDCALL TKxFileAppender::GetFileExt() {
  TAppenderLock Guard(this);
  return FFileExt;
}

void KX_STDCALL TKxFileAppender::SetFileExt(const AnsiString& Value) {
  TAppenderLock Guard(this);
  if (Value == FFileExt) return;
  Close();
  FFileExt = Value;
  if (FFileExt.empty() || FFileExt[0] != '.') FFileExt.insert(FFileExt.begin(), '.');
  FFileName = ChangeFileExt(FFileName, FFileExt);
}

void KX_STDCALL TKxFileAppender::SetAppendExisting(bool Value) {
  TAppenderLock Guard(this);
  FAppendExisting = Value;
}

void KX_STDCALL TKxFileAppender::SetFileName(const AnsiString& Value) {
  TAppenderLock Guard(this);
  if (Value == FFileName) return;
  Close();
  const AnsiString Ext = ExtractFileExt(Value);
  if (!Ext.empty()) {
    FFileName = Value;
    FFileExt = Ext;
  } else {
    FFileName = Value + FFileExt;
  }
  // A layout that keeps a file beside the log (the XML stylesheet) follows the log.
  if (IPtr<IKxLogLayoutEx> Ex = Supports<IKxLogLayoutEx>(FLayout)) Ex->Initialize(this);
}

// --- TKxRollingFileAppender ------------------------------------------------------------------

bool TKxRollingFileAppender::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxRollingFileAppender>()) {
    IKxRollingFileAppender* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxFileAppender::GetInterface(IID, Obj);
}

void TKxRollingFileAppender::SetConfig(IKxLogConfigurator* Config) {
  TAppenderLock Guard(this);
  TKxFileAppender::SetConfig(Config);
  if (!Config) return;
  SetMaxFileSize(uint32_t(
      Config->ReadValue(FLogName, u"MaxFileSize", Variant(int64_t(FMaxFileSize))).ToInt64()));
  SetMaxBackupCount(
      uint16_t(Config->ReadValue(FLogName, u"MaxBackupCount", Variant(int32_t(FMaxBackupCount)))
                   .ToInteger()));
}

void KX_STDCALL TKxRollingFileAppender::Write(const UnicodeString& LoggerName,
                                              const UnicodeString& OwnerName, TKxLogLevel Level,
                                              const UnicodeString& Msg, const TKxDataRec* Data,
                                              TKxLogIndent Indent) {
  TAppenderLock Guard(this);
  // A backup count of 0 switches the appender off.
  if (FMaxBackupCount == 0) return;
  CheckRollover();
  TKxFileAppender::Write(LoggerName, OwnerName, Level, Msg, Data, Indent);
}

void TKxRollingFileAppender::Initialize() {
  TAppenderLock Guard(this);
  // Without appending, the old file becomes backup 1 instead of being deleted.
  if (!FTextFile && FileExists(FFileName) && !FAppendExisting) RollOver();
  TKxFileAppender::Initialize();
}

uint32_t KX_STDCALL TKxRollingFileAppender::GetMaxFileSize() {
  TAppenderLock Guard(this);
  return FMaxFileSize;
}

uint16_t KX_STDCALL TKxRollingFileAppender::GetMaxBackupCount() {
  TAppenderLock Guard(this);
  return FMaxBackupCount;
}

void KX_STDCALL TKxRollingFileAppender::SetMaxFileSize(uint32_t Value) {
  TAppenderLock Guard(this);
  FMaxFileSize = Value;
}

void KX_STDCALL TKxRollingFileAppender::SetMaxBackupCount(uint16_t Value) {
  TAppenderLock Guard(this);
  if (Value == 0) Close();
  FMaxBackupCount = Value;
  CheckBackupCount();
}

AnsiString TKxRollingFileAppender::LogDir() {
  return IncludeTrailingPathDelimiter(ExtractFileDir(FFileName));
}

AnsiString TKxRollingFileAppender::LogBaseName() {
  return ChangeFileExt(ExtractFileName(FFileName), "");
}

TKxFileInfo* TKxRollingFileAppender::CreateFileInfo(const AnsiString& FileName) {
  auto* Info = TKxFileInfo::Create();
  Info->BaseName = LogBaseName();
  Info->FileName = FileName;
  const AnsiString Name = ChangeFileExt(ExtractFileName(FileName), "");
  if (Name.compare(0, Info->BaseName.size(), Info->BaseName) != 0) return Info;
  AnsiString Rest = Name.substr(Info->BaseName.size());
  if (!Rest.empty()) Rest.erase(0, 1);
  const size_t Dot = Rest.size() > 1 ? Rest.find('.', 1) : AnsiString::npos;
  if (Dot == AnsiString::npos) {
    Info->Number = StrToIntDef(Rest, 0);
  } else {
    Info->Number = StrToIntDef(Rest.substr(0, Dot), 0);
    Info->Suffix = Rest.substr(Dot);
  }
  return Info;
}

std::vector<TKxFileInfo*> TKxRollingFileAppender::ScanFiles() {
  const AnsiString Dir = LogDir();
  const AnsiString Base = LogBaseName();
  std::vector<TKxFileInfo*> Files;
  TSearchRec F;
  if (FindFirst(Dir + Base + "*.*", faAnyFile, F) == 0) {
    try {
      do {
        if ((F.Attr & faDirectory) != 0) continue;
        if (F.Name.compare(0, Base.size(), Base) != 0) continue;
        Files.push_back(CreateFileInfo(Dir + F.Name));
      } while (FindNext(F) == 0);
    } catch (...) {
      FindClose(F);
      for (TKxFileInfo* Info : Files) Info->Free();
      throw;
    }
    FindClose(F);
  }
  std::stable_sort(Files.begin(), Files.end(),
                   [](TKxFileInfo* A, TKxFileInfo* B) { return A->Number < B->Number; });
  return Files;
}

void TKxRollingFileAppender::CheckBackupCount() {
  TAppenderLock Guard(this);
  std::vector<TKxFileInfo*> Files = ScanFiles();
  // The live file counts as index 0 here, so one backup fewer survives than after a
  // roll-over.
  for (size_t I = FMaxBackupCount; I < Files.size(); ++I) DeleteFile(Files[I]->FileName);
  for (TKxFileInfo* Info : Files) Info->Free();
}

void TKxRollingFileAppender::CheckRollover() {
  TAppenderLock Guard(this);
  if (FTextFile && FMaxFileSize != 0 && FTextFile->Size() >= int64_t(FMaxFileSize)) RollOver();
}

void KX_STDCALL TKxRollingFileAppender::RollOver() {
  TAppenderLock Guard(this);
  WriteFooterAndClose();
  const AnsiString Dir = LogDir();
  const AnsiString Base = LogBaseName();
  std::vector<TKxFileInfo*> Files = ScanFiles();
  try {
    // Last first, so each name is free before the file below it moves up; numbers follow
    // positions, which closes gaps.
    for (size_t I = Files.size(); I-- > 0;) {
      const AnsiString& Name = Files[I]->FileName;
      if (I >= FMaxBackupCount) {
        if (!DeleteFile(Name)) RaiseLastOSError();
        continue;
      }
      const AnsiString Target =
          Dir + Base + "." + IntToStr(int32_t(I + 1)) + Files[I]->Suffix + FFileExt;
      if (Target == Name) continue;
      if (FileExists(Target) && !DeleteFile(Target)) RaiseLastOSError();
      if (!RenameFile(Name, Target)) RaiseLastOSError();
    }
  } catch (...) {
    for (TKxFileInfo* Info : Files) Info->Free();
    throw;
  }
  for (TKxFileInfo* Info : Files) Info->Free();
  if (FBusy == 0) Initialize();
}

// --- TKxDailyRollingFileAppender -------------------------------------------------------------

bool TKxDailyRollingFileAppender::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxDailyRollingFileAppender>() || IID == IIDOf<IKxRollingFileAppender>()) {
    IKxDailyRollingFileAppender* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxRollingFileAppender::GetInterface(IID, Obj);
}

void TKxDailyRollingFileAppender::SetClock(TKxLogClock Clock) {
  TAppenderLock Guard(this);
  FClock = std::move(Clock);
}

TDateTime TKxDailyRollingFileAppender::ClockNow() {
  return FClock ? FClock() : Now();
}

AnsiString KX_STDCALL TKxDailyRollingFileAppender::GetDatePattern() {
  TAppenderLock Guard(this);
  return FDatePattern;
}

void KX_STDCALL TKxDailyRollingFileAppender::SetDatePattern(const AnsiString& Value) {
  TAppenderLock Guard(this);
  FDatePattern = Value;
  if (FTextFile && FormatDateTime(FDatePattern, ClockNow()) != FCurrentDate) RollOver();
}

void TKxDailyRollingFileAppender::SetConfig(IKxLogConfigurator* Config) {
  TAppenderLock Guard(this);
  TKxRollingFileAppender::SetConfig(Config);
  if (!Config) return;
  SetDatePattern(UnicodeToAnsi(VarToWideStr(
      Config->ReadValue(FLogName, u"DatePattern", Variant(AnsiToUnicode(FDatePattern))))));
}

void TKxDailyRollingFileAppender::Initialize() {
  TAppenderLock Guard(this);
  {
    TBusy Busy(FBusy);
    TDateTime Created;
    if (!Trim(FFileName).empty() && FileExists(FFileName) && FileCreationTime(FFileName, Created)) {
      const AnsiString CreatedText = FormatDateTime(FDatePattern, Created);
      if (FormatDateTime(FDatePattern, ClockNow()) != CreatedText) {
        FCurrentDate = CreatedText;
        RollOver();
      }
    }
    TKxRollingFileAppender::Initialize();
  }
  FCurrentDate = FormatDateTime(FDatePattern, ClockNow());
}

void TKxDailyRollingFileAppender::CheckRollover() {
  TAppenderLock Guard(this);
  TKxRollingFileAppender::CheckRollover();
  if (FTextFile && FormatDateTime(FDatePattern, ClockNow()) != FCurrentDate) RollOver();
}

void KX_STDCALL TKxDailyRollingFileAppender::RollOver() {
  TAppenderLock Guard(this);
  WriteFooterAndClose();
  if (FileExists(FFileName)) {
    TDateTime Created;
    if (!FileCreationTime(FFileName, Created)) throw EAbort(SKxFailedToGetAttributes);
    const AnsiString Target =
        LogDir() + LogBaseName() + "." + FormatDateTime(FDatePattern, Created) + FFileExt;
    if (FileExists(Target)) throw EAbort(SKxAlreadyExists);
    if (!RenameFile(FFileName, Target)) RaiseLastOSError();
  }
  if (FBusy == 0) Initialize();
}

TKxFileInfo* TKxDailyRollingFileAppender::CreateFileInfo(const AnsiString& FileName) {
  TKxFileInfo* Info = TKxRollingFileAppender::CreateFileInfo(FileName);
  if (Info->Number == 0) {
    const AnsiString Clean = KxCleanupFileName(FCurrentDate, TKxCharSet{});
    AnsiString Suffix;
    Suffix.reserve(Clean.size() + 1);
    Suffix.push_back('.');
    Suffix.append(Clean);
    Info->Suffix = std::move(Suffix);
  }
  return Info;
}

} // namespace kx

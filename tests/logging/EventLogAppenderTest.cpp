// SPDX-License-Identifier: MIT
// The event log appender against the real system log: Linux sends to a datagram socket the
// test binds itself; under Wine the test reads the reports from Wine's own trace of them.
#include "LogTestSupport.h"

#include "support/TempFolder.h"

#include <kx/rtl/SysUtils.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/windows/Environment.h>

#include <algorithm>
#include <cstdlib>
#include <ctime>
#include <regex>
#include <string>
#include <vector>

#if defined(_WIN32)
#include <windows.h>
#else
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#endif

using namespace kx;
using kxtest::LoggingTest;
using kxtest::TTempFolder;

namespace {

// The line is "owner|message"; an empty message gives an empty line.
class TBareLayout : public TKxLogLayoutBase {
  KX_CLASS(TBareLayout, TKxLogLayoutBase)
public:
  TBareLayout() = default;
  UnicodeString KX_STDCALL GetFooter() override { return u""; }
  UnicodeString KX_STDCALL GetHeader() override { return u""; }
  UnicodeString KX_STDCALL FormatLine(const UnicodeString& LoggerName, TKxLogLevel,
                                      const UnicodeString& Msg, const TKxDataRec*,
                                      TKxLogIndent) override {
    return Msg.empty() ? UnicodeString() : LoggerName + u"|" + Msg;
  }
};
KX_IMPLEMENT_CLASS(TBareLayout, TKxLogLayoutBase, "EventLogAppenderTest")

struct THeld {
  TKxEventLogAppender* Appender;
  IPtr<IKxLogAppender> Ref;
};

THeld MakeAppender() {
  auto* A = TKxEventLogAppender::Create(nullptr, u"ev");
  THeld H{A, IPtr<IKxLogAppender>(static_cast<IKxLogAppender*>(A))};
  auto* L = TBareLayout::Create();
  A->SetLayout(IPtr<IKxLogLayout>(static_cast<IKxLogLayout*>(L)).Get());
  return H;
}

void Emit(TKxEventLogAppender* A, TKxLogLevel Level, const UnicodeString& Msg) {
  A->Write(u"root.app", u"root", Level, Msg, nullptr, liIndentNone);
}

const std::string ProgramName = "kx_test_logging";

TEST(EventLogAppender, LevelsMapToEventTypesAndIdentifiers) {
  struct {
    TKxLogLevel Level;
    uint16_t Type;
    uint32_t Id;
  } const Table[] = {{llAll, 4, 2},  {llTrace, 4, 2}, {llDebug, 4, 2}, {llInfo, 0, 1},
                     {llWarn, 2, 3}, {llError, 1, 4}, {llFatal, 1, 4}};
  for (const auto& Row : Table) {
    uint16_t Type = 99;
    uint32_t Id = 99;
    EXPECT_TRUE(TKxEventLogAppender::LevelToEvent(Row.Level, Type, Id)) << int(Row.Level);
    EXPECT_EQ(Type, Row.Type) << int(Row.Level);
    EXPECT_EQ(Id, Row.Id) << int(Row.Level);
  }
  uint16_t Type = 0;
  uint32_t Id = 0;
  EXPECT_FALSE(TKxEventLogAppender::LevelToEvent(llDoNotLog, Type, Id));
}

TEST(EventLogAppender, RegistersTheProgramAndIsCreatedByClassName) {
  THeld H = MakeAppender();
  EXPECT_TRUE(H.Appender->Registered());
  EXPECT_EQ(H.Appender->SourceName(), ProgramName);
  EXPECT_EQ(H.Appender->GetSysLogPath(), "/dev/log");
  EXPECT_EQ(RegisteredAppenders()->GetClass("tkxeventlogappender"),
            TKxEventLogAppender::ClassInfo());
}

#if !defined(_WIN32)

// A datagram socket standing in for /dev/log.
class TSysLogSocket {
public:
  explicit TSysLogSocket(const std::string& Path) : FPath(Path) {
    FFd = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un Addr{};
    Addr.sun_family = AF_UNIX;
    Path.copy(Addr.sun_path, sizeof Addr.sun_path - 1);
    if (FFd < 0 || ::bind(FFd, reinterpret_cast<sockaddr*>(&Addr), sizeof Addr) != 0)
      throw std::runtime_error("cannot bind " + Path);
  }
  ~TSysLogSocket() {
    ::close(FFd);
    ::unlink(FPath.c_str());
  }
  // Everything that has arrived; a local datagram is queued by the time sendto returns.
  std::vector<std::string> Received() {
    std::vector<std::string> R;
    char Buf[65536];
    for (ssize_t N; (N = ::recv(FFd, Buf, sizeof Buf, MSG_DONTWAIT)) >= 0;)
      R.emplace_back(Buf, size_t(N));
    return R;
  }

private:
  std::string FPath;
  int FFd = -1;
};

struct TDatagram {
  int Priority = -1;
  std::string Stamp, Ident, Pid, Text;
};

TDatagram Parse(const std::string& D) {
  static const std::regex Form(
      R"(<(\d+)>([A-Z][a-z]{2} [ 123]\d \d\d:\d\d:\d\d) ([^ \[]+)\[(\d+)\]: (.*))");
  std::smatch M;
  TDatagram R;
  if (std::regex_match(D, M, Form)) R = {std::stoi(M[1]), M[2], M[3], M[4], M[5]};
  return R;
}

std::string Stamp(time_t T) {
  static const char* Months[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                 "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  tm L{};
  localtime_r(&T, &L);
  char B[32];
  std::snprintf(B, sizeof B, "%s %2d %02d:%02d:%02d", Months[L.tm_mon], L.tm_mday, L.tm_hour,
                L.tm_min, L.tm_sec);
  return B;
}

TEST(EventLogAppender, SendsOneRfc3164DatagramPerEventWithThePriorityOfItsType) {
  TTempFolder Tmp;
  TSysLogSocket Log(Tmp.Name("log"));
  THeld H = MakeAppender();
  H.Appender->SetSysLogPath(Tmp.Name("log"));
  const time_t Before = time(nullptr);
  const TKxLogLevel Levels[] = {llInfo,  llWarn,  llError, llFatal,
                                llDebug, llTrace, llAll,   llDoNotLog};
  for (TKxLogLevel L : Levels) Emit(H.Appender, L, u"m" + AnsiToUnicode(std::to_string(int(L))));
  const time_t After = time(nullptr);
  const auto Got = Log.Received();
  // user.info, user.warning, user.err twice, user.debug three times; nothing for llDoNotLog.
  const int Priorities[] = {14, 12, 11, 11, 15, 15, 15};
  ASSERT_EQ(Got.size(), 7u);
  for (size_t I = 0; I < Got.size(); ++I) {
    const TDatagram D = Parse(Got[I]);
    EXPECT_EQ(D.Priority, Priorities[I]) << Got[I];
    EXPECT_EQ(D.Ident, ProgramName);
    EXPECT_EQ(D.Pid, std::to_string(getpid()));
    EXPECT_EQ(D.Text, "root|m" + std::to_string(int(Levels[I])));
    EXPECT_TRUE(D.Stamp == Stamp(Before) || D.Stamp == Stamp(After)) << D.Stamp;
  }
}

TEST(EventLogAppender, EachSourceKeepsItsOwnIdentity) {
  TTempFolder Tmp;
  TSysLogSocket Log(Tmp.Name("log"));
  THeld A = MakeAppender(), B = MakeAppender();
  A.Appender->RegisterLogger("first-service");
  B.Appender->RegisterLogger("second service");
  for (THeld* H : {&A, &B}) H->Appender->SetSysLogPath(Tmp.Name("log"));
  Emit(A.Appender, llInfo, u"a");
  Emit(B.Appender, llInfo, u"b");
  Emit(A.Appender, llInfo, u"c");
  const auto Got = Log.Received();
  ASSERT_EQ(Got.size(), 3u);
  EXPECT_NE(Got[0].find(" first-service["), std::string::npos) << Got[0];
  // The identity is sent as it is registered, spaces included.
  EXPECT_NE(Got[1].find(" second service["), std::string::npos) << Got[1];
  EXPECT_NE(Got[2].find(" first-service["), std::string::npos) << Got[2];
}

TEST(EventLogAppender, NothingIsSentWithoutALayoutOrForAnEmptyLine) {
  TTempFolder Tmp;
  TSysLogSocket Log(Tmp.Name("log"));
  auto* A = TKxEventLogAppender::Create(nullptr, u"bare");
  IPtr<IKxLogAppender> Ref(static_cast<IKxLogAppender*>(A));
  A->SetSysLogPath(Tmp.Name("log"));
  Emit(A, llError, u"no layout");
  THeld H = MakeAppender();
  H.Appender->SetSysLogPath(Tmp.Name("log"));
  Emit(H.Appender, llError, u"");
  EXPECT_TRUE(Log.Received().empty());
}

TEST(EventLogAppender, ALogThatIsNotThereLosesEventsQuietlyUntilItComes) {
  TTempFolder Tmp;
  THeld H = MakeAppender();
  H.Appender->SetSysLogPath(Tmp.Name("nobody"));
  EXPECT_NO_THROW(Emit(H.Appender, llError, u"lost"));
  // A path longer than a socket address holds, and no path at all.
  H.Appender->SetSysLogPath(Tmp.Name(std::string(200, 'x')));
  EXPECT_NO_THROW(Emit(H.Appender, llError, u"lost"));
  H.Appender->SetSysLogPath("");
  EXPECT_NO_THROW(Emit(H.Appender, llError, u"lost"));
  // Nothing was bound to the source's socket: the next event reaches a log started late.
  H.Appender->SetSysLogPath(Tmp.Name("nobody"));
  TSysLogSocket Late(Tmp.Name("nobody"));
  Emit(H.Appender, llError, u"found");
  const auto Got = Late.Received();
  ASSERT_EQ(Got.size(), 1u);
  EXPECT_EQ(Parse(Got[0]).Text, "root|found");
}

TEST_F(LoggingTest, EventLogAppenderFromConfiguration) {
  TTempFolder Tmp;
  TSysLogSocket Log(Tmp.Name("log"));
  const UnicodeString Text = u"[root]\nAppenders = ev\n"
                             u"[ev]\nclass = TKxEventLogAppender\nLayout = TKxSimpleLayout\n"
                             u"ServiceName = kx-configured\nSysLogPath = " +
                             AnsiToUnicode(Tmp.Name("log")) + u"\n";
  IPtr<IKxLogConfigurator> Config(
      static_cast<IKxLogConfigurator*>(TKxIniLogConfigurator::FromText(Text)));
  IPtr<IKxLogger> Root = Logger();
  Root->SetConfig(Config.Get());
  Root->Warn(u"disk nearly full");
  const auto Got = Log.Received();
  ASSERT_EQ(Got.size(), 1u);
  const TDatagram D = Parse(Got[0]);
  EXPECT_EQ(D.Priority, 12);
  EXPECT_EQ(D.Ident, "kx-configured");
  EXPECT_TRUE(D.Text.ends_with("disk nearly full")) << D.Text;
}

#else

// Wine traces each report: the advapi line carries type, category and identifier, the
// eventlog line that follows it the string. The test's output is a file it may read.
struct TTracedEvent {
  unsigned Type = 0, Category = 0, Id = 0, Strings = 0;
  std::string Text;
};

class TWineTrace {
public:
  TWineTrace() {
    const char* Out = std::getenv("KX_TEST_OUTPUT_FILE");
    if (!Out || !GetProcAddress(GetModuleHandleA("ntdll.dll"), "wine_get_version")) return;
    FName = std::string("Z:") + Out;
    for (char& C : FName)
      if (C == '/') C = '\\';
    FStart = Read().size();
  }
  bool Available() const { return !FName.empty(); }
  // The reports traced since the trace was opened.
  std::vector<TTracedEvent> Events() {
    static const std::regex Args(
        R"(:ReportEventW \([0-9A-Fa-f]+,0x([0-9a-f]+),0x([0-9a-f]+),0x([0-9a-f]+),[0-9A-Fa-f]+,0x([0-9a-f]+),)");
    static const std::regex Str(R"(:eventlog:ReportEventW L"(.*)\"\r?$)");
    std::vector<TTracedEvent> R;
    const std::string All = Read();
    size_t Pos = std::min(FStart, All.size());
    for (size_t End; (End = All.find('\n', Pos)) != std::string::npos; Pos = End + 1) {
      const std::string Line = All.substr(Pos, End - Pos);
      std::smatch M;
      if (std::regex_search(Line, M, Args)) {
        R.push_back(
            {unsigned(std::stoul(M[1], nullptr, 16)), unsigned(std::stoul(M[2], nullptr, 16)),
             unsigned(std::stoul(M[3], nullptr, 16)), unsigned(std::stoul(M[4], nullptr, 16)), ""});
      } else if (std::regex_search(Line, M, Str) && !R.empty()) {
        R.back().Text = M[1];
      }
    }
    return R;
  }

private:
  std::string Read() const {
    HANDLE F = CreateFileA(FName.c_str(), GENERIC_READ,
                           FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                           OPEN_EXISTING, 0, nullptr);
    std::string R;
    if (F == INVALID_HANDLE_VALUE) return R;
    char Buf[65536];
    DWORD N = 0;
    while (ReadFile(F, Buf, sizeof Buf, &N, nullptr) && N > 0) R.append(Buf, N);
    CloseHandle(F);
    return R;
  }
  std::string FName;
  size_t FStart = 0;
};

TEST(EventLogAppender, ReportsOneEventPerLineWithTheTypeAndIdentifierOfItsLevel) {
  TWineTrace Trace;
  if (!Trace.Available()) GTEST_SKIP() << "the event log is read through Wine's trace";
  THeld H = MakeAppender();
  Emit(H.Appender, llInfo, u"started");
  Emit(H.Appender, llFatal, u"gave up");
  Emit(H.Appender, llDebug, u"detail");
  Emit(H.Appender, llWarn, u"slow");
  Emit(H.Appender, llError, u"failed");
  Emit(H.Appender, llDoNotLog, u"never");
  Emit(H.Appender, llError, u"");
  const auto Events = Trace.Events();
  ASSERT_EQ(Events.size(), 5u);
  const TTracedEvent Expected[] = {{0, 0, 1, 1, "root|started"},
                                   {1, 0, 4, 1, "root|gave up"},
                                   {4, 0, 2, 1, "root|detail"},
                                   {2, 0, 3, 1, "root|slow"},
                                   {1, 0, 4, 1, "root|failed"}};
  for (size_t I = 0; I < Events.size(); ++I) {
    EXPECT_EQ(Events[I].Type, Expected[I].Type) << I;
    EXPECT_EQ(Events[I].Category, 0u) << I;
    EXPECT_EQ(Events[I].Id, Expected[I].Id) << I;
    EXPECT_EQ(Events[I].Strings, 1u) << I;
    EXPECT_EQ(Events[I].Text, Expected[I].Text) << I;
  }
}

TEST(EventLogAppender, TheSourceKeyIsWrittenOnlyWhenElevatedAndNeverChanged) {
  const std::string Base = "SYSTEM\\CurrentControlSet\\Services\\Eventlog\\Application\\";
  const std::string Fresh = "kx-test-" + std::to_string(GetCurrentProcessId());
  const std::string Kept = Fresh + "-kept";
  HKEY K = nullptr;
  const bool Elevated = KxGetElevationLevel() == elFull;
  if (Elevated) {
    // A key that is there already stays as it is.
    ASSERT_EQ(RegCreateKeyExA(HKEY_LOCAL_MACHINE, (Base + Kept).c_str(), 0, nullptr, 0,
                              KEY_ALL_ACCESS, nullptr, &K, nullptr),
              ERROR_SUCCESS);
    RegSetValueExA(K, "EventMessageFile", 0, REG_SZ, reinterpret_cast<const BYTE*>("keep"), 5);
    RegCloseKey(K);
  }
  THeld H = MakeAppender();
  H.Appender->RegisterLogger(Fresh);
  H.Appender->RegisterLogger(Kept);
  EXPECT_TRUE(H.Appender->Registered());

  char Value[MAX_PATH] = {};
  DWORD Size = sizeof Value, Types = 0, TypesSize = sizeof Types;
  const LONG Rc = RegGetValueA(HKEY_LOCAL_MACHINE, (Base + Fresh).c_str(), "EventMessageFile",
                               RRF_RT_REG_SZ, nullptr, Value, &Size);
  if (!Elevated) {
    EXPECT_EQ(Rc, ERROR_FILE_NOT_FOUND);
    return;
  }
  ASSERT_EQ(Rc, ERROR_SUCCESS);
  char Exe[MAX_PATH] = {};
  GetModuleFileNameA(nullptr, Exe, MAX_PATH);
  EXPECT_TRUE(SameText(Value, Exe)) << Value << " " << Exe;
  EXPECT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, (Base + Fresh).c_str(), "TypesSupported",
                         RRF_RT_REG_DWORD, nullptr, &Types, &TypesSize),
            ERROR_SUCCESS);
  EXPECT_EQ(Types, 7u);
  Size = sizeof Value;
  EXPECT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, (Base + Kept).c_str(), "EventMessageFile",
                         RRF_RT_REG_SZ, nullptr, Value, &Size),
            ERROR_SUCCESS);
  EXPECT_STREQ(Value, "keep");
  EXPECT_EQ(RegGetValueA(HKEY_LOCAL_MACHINE, (Base + Kept).c_str(), "TypesSupported",
                         RRF_RT_REG_DWORD, nullptr, &Types, &TypesSize),
            ERROR_FILE_NOT_FOUND);
  RegDeleteKeyA(HKEY_LOCAL_MACHINE, (Base + Fresh).c_str());
  RegDeleteKeyA(HKEY_LOCAL_MACHINE, (Base + Kept).c_str());
}

TEST(EventLogAppender, TheMessageTableIsInTheLibraryAndInTheProgram) {
  const wchar_t* const Texts[] = {L"%1\r\n",
                                  L"%1\r\n",
                                  L"%1\r\n",
                                  L"%1\r\n",
                                  L"Here is id5 success message\r\n",
                                  L"Here is id6 information message\r\n",
                                  L"Here is id5 warning message\r\n",
                                  L"Here is id5 error message\r\n"};
  HMODULE Library = nullptr;
  ASSERT_TRUE(GetModuleHandleExA(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                 reinterpret_cast<LPCSTR>(&RegisteredAppenders), &Library));
  for (HMODULE Module : {Library, GetModuleHandleA(nullptr)}) {
    for (DWORD Id = 1; Id <= 8; ++Id) {
      wchar_t Buf[128] = {};
      const DWORD N = FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS,
                                     Module, Id, 1033, Buf, 128, nullptr);
      EXPECT_GT(N, 0u) << Id;
      EXPECT_EQ(std::wstring(Buf, N), Texts[Id - 1]) << Id;
    }
    // The table is English only.
    wchar_t Buf[128];
    EXPECT_EQ(FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_IGNORE_INSERTS, Module, 1,
                             1031, Buf, 128, nullptr),
              0u);
  }
  // The inserted string is what the viewer shows.
  DWORD_PTR Args[1] = {reinterpret_cast<DWORD_PTR>(L"root|started")};
  wchar_t Shown[64] = {};
  FormatMessageW(FORMAT_MESSAGE_FROM_HMODULE | FORMAT_MESSAGE_ARGUMENT_ARRAY, Library, 1, 1033,
                 Shown, 64, reinterpret_cast<va_list*>(Args));
  EXPECT_STREQ(Shown, L"root|started\r\n");
}

#endif

} // namespace

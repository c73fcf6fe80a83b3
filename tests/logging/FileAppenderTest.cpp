// SPDX-License-Identifier: MIT
// File naming, opening, rolling by size and by date, on real files.
#include "LogTestSupport.h"

#include "support/TempFolder.h"

#include <kx/rtl/DateTimeText.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/SysUtils.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>

#include <algorithm>

using namespace kx;
using kxtest::LoggingTest;
using kxtest::TTempFolder;

namespace {

template <class T>
IPtr<IKxLogAppender> Hold(T* A) {
  return IPtr<IKxLogAppender>(static_cast<IKxLogAppender*>(A));
}

void WriteLine(TKxBaseAppender* A, const UnicodeString& Msg) {
  A->Write(u"root", u"root", llInfo, Msg, nullptr, liIndentNone);
}

std::vector<std::string> Lines(const std::string& Text) {
  std::vector<std::string> R;
  size_t Start = 0;
  for (size_t P; (P = Text.find("\r\n", Start)) != std::string::npos; Start = P + 2)
    R.push_back(Text.substr(Start, P - Start));
  if (Start < Text.size()) R.push_back(Text.substr(Start));
  return R;
}

std::vector<std::string> Names(const TTempFolder& Tmp) {
  std::vector<std::string> R;
  for (const auto& E : std::filesystem::directory_iterator(Tmp.Path()))
    R.push_back(E.path().filename().string());
  std::sort(R.begin(), R.end());
  return R;
}

TEST(FileAppender, NamesAndExtensions) {
  auto* F = TKxFileAppender::Create(nullptr, u"f");
  IPtr<IKxLogAppender> A = Hold(F);
  // By default the log lives in a folder named after the program.
  const AnsiString Program = "kx_test_logging";
  EXPECT_EQ(ExtractFileName(F->GetFileName()), Program + ".log");
  EXPECT_EQ(ExtractFileName(ExcludeTrailingPathDelimiter(ExtractFilePath(F->GetFileName()))),
            Program);
  EXPECT_TRUE(F->GetAppendExisting());
  F->SetFileName("logs" + AnsiString(1, PathDelim) + "app");
  EXPECT_EQ(F->GetFileName(), "logs" + AnsiString(1, PathDelim) + "app.log");
  F->SetFileExt("txt");
  EXPECT_EQ(F->GetFileExt(), ".txt");
  EXPECT_EQ(F->GetFileName(), "logs" + AnsiString(1, PathDelim) + "app.txt");
  F->SetFileName("other.csv");
  EXPECT_EQ(F->GetFileExt(), ".csv");
  F->SetLayout(cKxSimpleLayout);
  EXPECT_EQ(F->GetFileName(), "other.log");
}

TEST(FileAppender, WritesUtf8LinesWithoutMark) {
  TTempFolder Tmp;
  const AnsiString Name = Tmp.Name("sub/deeper/app.log");
  auto* F = TKxFileAppender::Create(nullptr, u"f");
  IPtr<IKxLogAppender> A = Hold(F);
  F->SetFileName(Name);
  F->SetLayout(cKxSimpleLayout);
  WriteLine(F, u"gr\u00fc\u00df \U0001F600");
  F->Close();
  const std::string Text = TTempFolder::ReadFile(Name);
  const auto L = Lines(Text);
  ASSERT_EQ(L.size(), 3u);
  EXPECT_TRUE(L[0].starts_with("Log started on : "));
  EXPECT_TRUE(L[1].ends_with(" - Info root - gr\xC3\xBC\xC3\x9F \xF0\x9F\x98\x80"));
  EXPECT_TRUE(L[2].starts_with("Log stopped on : "));
  EXPECT_FALSE(Text.ends_with("\r\n")); // the footer has no line end
  EXPECT_NE(Text.substr(0, 3), "\xEF\xBB\xBF");

  // An appended file is opened at its first byte: the old text is overwritten from there.
  TTempFolder::ReadFile(Name);
  const std::string Old(200, 'x');
  Tmp.WriteFile("sub/deeper/app.log", Old);
  WriteLine(F, u"new");
  F->Close();
  const std::string After = TTempFolder::ReadFile(Name);
  EXPECT_EQ(After.size(), Old.size());
  EXPECT_NE(After.find(" - Info root - new\r\nLog stopped on : "), std::string::npos);
  EXPECT_FALSE(After.starts_with("Log started"));
  EXPECT_TRUE(After.ends_with("xxx"));

  // Without appending, the old file is deleted and a new one gets a header.
  F->SetAppendExisting(false);
  WriteLine(F, u"fresh");
  F->Close();
  EXPECT_TRUE(TTempFolder::ReadFile(Name).starts_with("Log started on : "));

  // Without a layout nothing is written.
  auto* Bare = TKxFileAppender::Create(nullptr, u"bare");
  IPtr<IKxLogAppender> B = Hold(Bare);
  Bare->SetFileName(Tmp.Name("bare.log"));
  WriteLine(Bare, u"lost");
  Bare->Close();
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("bare.log")), "");
}

TKxRollingFileAppender* MakeRolling(const TTempFolder& Tmp, IPtr<IKxLogAppender>& Holder) {
  auto* R = TKxRollingFileAppender::Create(nullptr, u"r");
  Holder = Hold(R);
  R->SetFileName(Tmp.Name("app.log"));
  R->SetLayout(cKxSimpleLayout);
  return R;
}

TEST(RollingFileAppender, FiveBackupsShiftUp) {
  TTempFolder Tmp;
  for (int I = 1; I <= 5; ++I)
    Tmp.WriteFile("app." + std::to_string(I) + ".log", "backup " + std::to_string(I));
  Tmp.WriteFile("app.log", "live");
  IPtr<IKxLogAppender> H;
  TKxRollingFileAppender* R = MakeRolling(Tmp, H);
  EXPECT_EQ(R->GetMaxBackupCount(), 5);
  EXPECT_EQ(R->GetMaxFileSize(), 10485760u);
  R->RollOver();
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.1.log")), "live");
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.2.log")), "backup 1");
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.5.log")), "backup 4");
  // The new live file starts with a header.
  EXPECT_TRUE(TTempFolder::ReadFile(Tmp.Name("app.log")).starts_with("Log started on : "));
  EXPECT_EQ(Names(Tmp).size(), 6u);
}

TEST(RollingFileAppender, GapsCloseAndLookalikesJoin) {
  TTempFolder Tmp;
  Tmp.WriteFile("app.2.log", "two");
  Tmp.WriteFile("app.7.extra.log", "seven");
  Tmp.WriteFile("appx.txt", "lookalike");
  Tmp.WriteFile("other.log", "stays");
  Tmp.WriteFile("app.log", "live");
  IPtr<IKxLogAppender> H;
  TKxRollingFileAppender* R = MakeRolling(Tmp, H);
  R->RollOver();
  // Positions become numbers; a name that merely starts with the base counts as number 0.
  const auto N = Names(Tmp);
  EXPECT_EQ(N, (std::vector<std::string>{"app.1.log", "app.2.log", "app.3.log", "app.4.extra.log",
                                         "app.log", "other.log"}));
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.3.log")), "two");
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.4.extra.log")), "seven");
  const std::string First =
      TTempFolder::ReadFile(Tmp.Name("app.1.log")) + TTempFolder::ReadFile(Tmp.Name("app.2.log"));
  EXPECT_NE(First.find("live"), std::string::npos);
  EXPECT_NE(First.find("lookalike"), std::string::npos);
}

TEST(RollingFileAppender, SizeLimitAndBackupCounts) {
  TTempFolder Tmp;
  IPtr<IKxLogAppender> H;
  TKxRollingFileAppender* R = MakeRolling(Tmp, H);
  R->SetMaxFileSize(300);
  R->SetMaxBackupCount(2);
  for (int I = 0; I < 40; ++I) WriteLine(R, u"line " + AnsiToUnicode(IntToStr(I)));
  R->Close();
  EXPECT_EQ(Names(Tmp), (std::vector<std::string>{"app.1.log", "app.2.log", "app.log"}));
  EXPECT_LT(TTempFolder::ReadFile(Tmp.Name("app.1.log")).size(), 400u);
  EXPECT_NE(TTempFolder::ReadFile(Tmp.Name("app.log")).find("line 39"), std::string::npos);

  // Setting the count keeps one backup fewer than a roll-over would.
  R->SetMaxBackupCount(2);
  EXPECT_EQ(Names(Tmp), (std::vector<std::string>{"app.1.log", "app.log"}));

  // A count of 0 switches writing off.
  R->SetMaxBackupCount(0);
  EXPECT_TRUE(Names(Tmp).empty());
  WriteLine(R, u"never");
  EXPECT_TRUE(Names(Tmp).empty());
}

TEST(RollingFileAppender, InitializeWithoutAppendKeepsOldFileAsBackup) {
  TTempFolder Tmp;
  Tmp.WriteFile("app.log", "yesterday");
  IPtr<IKxLogAppender> H;
  TKxRollingFileAppender* R = MakeRolling(Tmp, H);
  R->SetAppendExisting(false);
  WriteLine(R, u"today");
  R->Close();
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.1.log")), "yesterday");
  EXPECT_NE(TTempFolder::ReadFile(Tmp.Name("app.log")).find("today"), std::string::npos);
}

TEST(DailyRollingFileAppender, DateChangeByClock) {
  TTempFolder Tmp;
  auto* D = TKxDailyRollingFileAppender::Create(nullptr, u"d");
  IPtr<IKxLogAppender> H = Hold(D);
  EXPECT_EQ(D->GetMaxFileSize(), 2147483647u);
  EXPECT_EQ(D->GetDatePattern(), "yyyy-mm-dd");
  TDateTime Today = Now();
  TDateTime Clock = Today;
  D->SetClock([&Clock] { return Clock; });
  D->SetFileName(Tmp.Name("app.log"));
  D->SetLayout(cKxSimpleLayout);
  WriteLine(D, u"first day");
  const AnsiString TodayText = FormatDateTime("yyyy-mm-dd", Today);
  EXPECT_EQ(D->CurrentDate(), TodayText);

  Clock = TDateTime(double(Today) + 1);
  WriteLine(D, u"second day");
  D->Close();
  // The file made today (its creation time) is renamed with today's date.
  const std::string Dated = Tmp.Name("app." + TodayText + ".log");
  EXPECT_NE(TTempFolder::ReadFile(Dated).find("first day"), std::string::npos);
  EXPECT_NE(TTempFolder::ReadFile(Tmp.Name("app.log")).find("second day"), std::string::npos);

  // A second roll-over on one day finds the dated name taken and aborts silently.
  Tmp.WriteFile("app.log", "again");
  try {
    D->RollOver();
    FAIL();
  } catch (const EAbort& E) {
    EXPECT_EQ(E.Message(), "Already Exists");
  }
  EXPECT_EQ(TTempFolder::ReadFile(Tmp.Name("app.log")), "again");
}

TEST(DailyRollingFileAppender, YesterdaysFileIsRenamedOnStart) {
  if (PathDelim == '\\') GTEST_SKIP() << "Wine does not keep a creation time that is set";
  TTempFolder Tmp;
  {
    auto* D = TKxDailyRollingFileAppender::Create(nullptr, u"d");
    IPtr<IKxLogAppender> H = Hold(D);
    D->SetFileName(Tmp.Name("app.log"));
    D->SetLayout(cKxSimpleLayout);
    WriteLine(D, u"made today");
  }
  // The next start happens tomorrow.
  auto* D = TKxDailyRollingFileAppender::Create(nullptr, u"d");
  IPtr<IKxLogAppender> H = Hold(D);
  const TDateTime Tomorrow(double(Now()) + 1);
  D->SetClock([Tomorrow] { return Tomorrow; });
  D->SetFileName(Tmp.Name("app.log"));
  D->SetLayout(cKxSimpleLayout);
  WriteLine(D, u"made tomorrow");
  D->Close();
  const std::string Dated = Tmp.Name("app." + FormatDateTime("yyyy-mm-dd", Now()) + ".log");
  EXPECT_NE(TTempFolder::ReadFile(Dated).find("made today"), std::string::npos);
  EXPECT_NE(TTempFolder::ReadFile(Tmp.Name("app.log")).find("made tomorrow"), std::string::npos);
}

TEST_F(LoggingTest, CloseRootLoggerWritesFooters) {
  TTempFolder Tmp;
  IPtr<IKxLogger> Root = Logger();
  auto* F = TKxFileAppender::Create(nullptr, u"f");
  F->SetFileName(Tmp.Name("end.log"));
  F->SetLayout(cKxSimpleLayout);
  Root->AddAppender(Hold(F).Get());
  Root->Info(u"last words");
  Root.Reset();
  CloseRootLogger();
  const auto L = Lines(TTempFolder::ReadFile(Tmp.Name("end.log")));
  ASSERT_EQ(L.size(), 3u);
  EXPECT_TRUE(L[2].starts_with("Log stopped on : "));
}

} // namespace

// SPDX-License-Identifier: MIT
// Many threads through one rolling appender with nothing lost; faults of the file system
// reach the caller, and logging goes on once they clear.
#include <kx/rtl/Files.h>
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/uKxLogger.h>

#include "support/LogCheck.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

using namespace kx;

namespace {

constexpr int Threads = 8;
// Every file operation under Wine is a round trip to its server: a tenth of the lines there
// keeps the run in minutes (the roll-overs still number in the tens).
const int PerThread = PathDelim == '\\' ? 25000 : 250000;

TKxRollingFileAppender* MakeRolling(const kxtest::TTempFolder& Tmp, const char* Name,
                                    IPtr<IKxLogAppender>& Holder) {
  auto* R = TKxRollingFileAppender::Create(nullptr, u"rolling");
  Holder = IPtr<IKxLogAppender>(static_cast<IKxLogAppender*>(R));
  R->SetFileName(Tmp.Name(Name));
  R->SetAppendExisting(false);
  R->SetLayout(cKxSimpleLayout);
  R->SetMaxFileSize(1024 * 1024);
  R->SetMaxBackupCount(5000);
  return R;
}

void RunThreads(const std::function<void(int)>& Body) {
  std::vector<std::thread> Pool;
  for (int T = 0; T < Threads; ++T) Pool.emplace_back(Body, T);
  for (std::thread& T : Pool) T.join();
}

void ExpectComplete(const kxtest::TTempFolder& Tmp, const std::string& Base) {
  const kxtest::TLogCheckResult C = kxtest::CheckLogLines(Tmp.Path(), Base, Threads, PerThread);
  EXPECT_EQ(C.Torn, 0u);
  EXPECT_EQ(C.Missing, 0u);
  EXPECT_EQ(C.Duplicates, 0u);
  EXPECT_EQ(C.Lines, size_t(Threads) * PerThread);
  EXPECT_GT(C.Files, PathDelim == '\\' ? 10u : 100u);
}

TEST(LoggingReliability, EightThreadsOneAppender) {
  kxtest::TTempFolder Tmp;
  {
    IPtr<IKxLogAppender> A;
    MakeRolling(Tmp, "one.log", A);
    IPtr<IKxLogger> L = Logger()->GetLogger(u"one");
    L->SetAdditive(false);
    L->AddAppender(A.Get());
    RunThreads([&L](int T) {
      for (int N = 0; N < PerThread; ++N) L->Info(kxtest::LogCheckMessage(T, N));
    });
    A->Close();
  }
  CloseRootLogger();
  ExpectComplete(Tmp, "one.");
}

TEST(LoggingReliability, TwoLoggersShareTheAppender) {
  kxtest::TTempFolder Tmp;
  {
    IPtr<IKxLogAppender> A;
    MakeRolling(Tmp, "two.log", A);
    IPtr<IKxLogger> L1 = Logger()->GetLogger(u"first");
    IPtr<IKxLogger> L2 = Logger()->GetLogger(u"second");
    for (const IPtr<IKxLogger>& L : {L1, L2}) {
      L->SetAdditive(false);
      L->AddAppender(A.Get());
    }
    RunThreads([&](int T) {
      const IPtr<IKxLogger>& L = T % 2 ? L1 : L2;
      for (int N = 0; N < PerThread; ++N) L->Info(kxtest::LogCheckMessage(T, N));
    });
    A->Close();
  }
  CloseRootLogger();
  ExpectComplete(Tmp, "two.");
}

// Lines that the caller saw written must all be in the file, whatever failed in between.
void ExpectLines(const std::string& Text, int From, int To) {
  for (int N = From; N < To; ++N) {
    const std::string Msg = "T0 N" + std::to_string(N) + " ";
    EXPECT_NE(Text.find(Msg), std::string::npos) << Msg;
  }
}

TEST(LoggingFaults, RefusedRenameReachesTheCallerAndClears) {
  kxtest::TTempFolder Tmp;
  IPtr<IKxLogAppender> A;
  TKxRollingFileAppender* R = MakeRolling(Tmp, "f.log", A);
  IPtr<IKxLogger> L = Logger()->GetLogger(u"faults");
  L->SetAdditive(false);
  L->AddAppender(A.Get());
  int Written = 0;
  for (; Written < 10; ++Written) L->Info(kxtest::LogCheckMessage(0, Written));
  // A folder where the first backup would go: the rename onto it is refused.
  ASSERT_TRUE(CreateDir(Tmp.Name("f.1.log")));
  EXPECT_THROW(R->RollOver(), EOSError);
  // The process goes on; a write while the fault lasts fails too, and is not counted.
  EXPECT_THROW(L->Info(kxtest::LogCheckMessage(0, 9999)), EOSError);
  ASSERT_TRUE(RemoveDir(Tmp.Name("f.1.log")));
  for (int N = 0; N < 10; ++N, ++Written) L->Info(kxtest::LogCheckMessage(0, Written));
  R->Close();
  const std::string All = kxtest::TTempFolder::ReadFile(Tmp.Name("f.log")) +
                          kxtest::TTempFolder::ReadFile(Tmp.Name("f.1.log"));
  ExpectLines(All, 0, Written);
  L.Reset();
  CloseRootLogger();
}

TEST(LoggingFaults, FullDiskReachesTheCallerAndClears) {
  if (!FileExists("/dev/full")) GTEST_SKIP() << "no /dev/full here";
  kxtest::TTempFolder Tmp;
  // The log's name must carry an extension, so a link stands for the device.
  std::error_code Ec;
  std::filesystem::create_symlink("/dev/full", Tmp.Path() / "full.log", Ec);
  if (Ec) GTEST_SKIP() << "cannot link to /dev/full: " << Ec.message();
  auto* F = TKxFileAppender::Create(nullptr, u"full");
  IPtr<IKxLogAppender> A(static_cast<IKxLogAppender*>(F));
  F->SetLayout(cKxSimpleLayout);
  F->SetFileName(Tmp.Name("full.log"));
  IPtr<IKxLogger> L = Logger()->GetLogger(u"full");
  L->SetAdditive(false);
  L->AddAppender(A.Get());
  EXPECT_THROW(L->Info(kxtest::LogCheckMessage(0, 0)), EWriteError);
  EXPECT_THROW(L->Info(kxtest::LogCheckMessage(0, 1)), EWriteError);
  // Closing writes the footer, which fails too; the file is closed all the same.
  EXPECT_THROW(F->Close(), EWriteError);
  // Space again: the appender moves to a file that can grow.
  F->SetFileName(Tmp.Name("after.log"));
  for (int N = 2; N < 12; ++N) L->Info(kxtest::LogCheckMessage(0, N));
  F->Close();
  ExpectLines(kxtest::TTempFolder::ReadFile(Tmp.Name("after.log")), 2, 12);
  L.Reset();
  CloseRootLogger();
}

TEST(LoggingFaults, ReadOnlyFolderReachesTheCaller) {
  kxtest::TTempFolder Tmp;
  // A file where the log's folder should be: the folder cannot be made.
  Tmp.WriteFile("blocked", "a file, not a folder");
  auto* F = TKxFileAppender::Create(nullptr, u"ro");
  IPtr<IKxLogAppender> A(static_cast<IKxLogAppender*>(F));
  F->SetLayout(cKxSimpleLayout);
  F->SetFileName(Tmp.Name("blocked/sub/app.log"));
  IPtr<IKxLogger> L = Logger()->GetLogger(u"ro");
  L->SetAdditive(false);
  L->AddAppender(A.Get());
  EXPECT_THROW(L->Info(kxtest::LogCheckMessage(0, 0)), Exception);
  F->SetFileName(Tmp.Name("ok/app.log"));
  L->Info(kxtest::LogCheckMessage(0, 1));
  F->Close();
  ExpectLines(kxtest::TTempFolder::ReadFile(Tmp.Name("ok/app.log")), 1, 2);
  L.Reset();
  CloseRootLogger();
}

} // namespace

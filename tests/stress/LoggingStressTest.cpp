// SPDX-License-Identifier: MIT
// Logging from many threads through loggers that share one rolling appender.
#include <kx/uKxLogAppenders.h>
#include <kx/uKxLogLayouts.h>
#include <kx/uKxLogger.h>

#include "stress/StressUtils.h"
#include "support/LogCheck.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

TEST(LoggingStress, EveryLineOnceAcrossRollOvers) {
  constexpr int Threads = 8, PerThread = 1500;
  kxtest::TTempFolder Tmp;
  {
    IPtr<IKxLogger> Root = Logger();
    IPtr<IKxLogger> A = Root->GetLogger(u"a");
    IPtr<IKxLogger> B = Root->GetLogger(u"b");
    A->SetAdditive(false);
    B->SetAdditive(false);
    auto* R = TKxRollingFileAppender::Create(nullptr, u"shared");
    IPtr<IKxLogAppender> Appender(static_cast<IKxLogAppender*>(R));
    R->SetFileName(Tmp.Name("s.log"));
    R->SetAppendExisting(false);
    R->SetLayout(cKxSimpleLayout);
    R->SetMaxFileSize(64 * 1024);
    R->SetMaxBackupCount(1000);
    A->AddAppender(Appender.Get());
    B->AddAppender(Appender.Get());
    // Loggers come and go while others write: the tree changes under the dispatch.
    kxtest::RunTogether(Threads, [&](int T) {
      IPtr<IKxLogger> L = T % 2 ? A : B;
      for (int N = 0; N < PerThread; ++N) {
        L->Info(kxtest::LogCheckMessage(T, N));
        if (N % 100 == 0) Root->GetLogger(u"transient")->Debug(u"dropped: no appender");
      }
    });
    R->Close();
  }
  CloseRootLogger();
  const kxtest::TLogCheckResult C = kxtest::CheckLogLines(Tmp.Path(), "s.", Threads, PerThread);
  EXPECT_EQ(C.Torn, 0u);
  EXPECT_EQ(C.Missing, 0u);
  EXPECT_EQ(C.Duplicates, 0u);
  EXPECT_EQ(C.Lines, size_t(Threads) * PerThread);
  EXPECT_GT(C.Files, 5u);
}

} // namespace

// SPDX-License-Identifier: MIT
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

#include <atomic>
#include <vector>

using namespace kx;
using kxtest::OnOtherThread;
using kxtest::TGate;

namespace {

enum TLockMode { lmOS, lmFallback };

// Builds the lock in the mode under test: the fallback routines are swapped in for the
// lock's lifetime only.
class MultiReadSingleWrite : public ::testing::TestWithParam<TLockMode> {
protected:
  void SetUp() override {
    if (GetParam() == lmFallback) {
      detail::KxSRWLockFunctions() = detail::KxFallbackSRWLockFunctions();
    }
    Lock = TKxMultiReadSingleWrite::Create();
  }
  void TearDown() override {
    Lock->Free();
    detail::KxSRWLockFunctions() = Saved;
  }

  // Holds the write lock on a thread of its own until released.
  struct TWriter {
    TGate Holding, Release;
    std::thread Thread;
    explicit TWriter(TKxMultiReadSingleWrite* Lock)
        : Thread([this, Lock] {
            Lock->BeginWrite();
            Holding.Open();
            Release.Wait();
            Lock->EndWrite();
          }) {
      Holding.Wait();
    }
    void Finish() {
      Release.Open();
      Thread.join();
    }
  };

  detail::TKxSRWLockFunctions Saved = detail::KxSRWLockFunctions();
  TKxMultiReadSingleWrite* Lock = nullptr;
};

TEST(MultiReadSingleWriteStartup, BindsTheOSLock) {
  const auto& F = detail::KxSRWLockFunctions();
  const auto& Fallback = detail::KxFallbackSRWLockFunctions();
  EXPECT_NE(F.AcquireSRWLockExclusive, nullptr);
  EXPECT_NE(F.AcquireSRWLockExclusive, Fallback.AcquireSRWLockExclusive);
  EXPECT_NE(F.ReleaseSRWLockShared, Fallback.ReleaseSRWLockShared);
}

TEST_P(MultiReadSingleWrite, ReadersShareAndKeepWritersOut) {
  Lock->BeginRead();
  EXPECT_FALSE(OnOtherThread([&] {
    bool Got = Lock->TryBeginWrite();
    if (Got) Lock->EndWrite();
    return Got;
  }));
  EXPECT_TRUE(OnOtherThread([&] {
    Lock->BeginRead();
    Lock->EndRead();
    return true;
  }));
  EXPECT_TRUE(OnOtherThread([&] {
    bool Got = Lock->TryBeginRead();
    if (Got) Lock->EndRead();
    return Got;
  }));

  // A blocked writer gets in once the last reader has gone.
  TGate Started;
  std::atomic<bool> Wrote{false};
  std::thread W([&] {
    Started.Open();
    Lock->BeginWrite();
    Wrote = true;
    Lock->EndWrite();
  });
  Started.Wait();
  EXPECT_FALSE(Wrote.load());
  Lock->EndRead();
  W.join();
  EXPECT_TRUE(Wrote.load());
}

TEST_P(MultiReadSingleWrite, AWriterKeepsReadersAndWritersOut) {
  TWriter Writer(Lock);
  EXPECT_FALSE(Lock->TryBeginRead());
  EXPECT_FALSE(Lock->TryBeginWrite());

  TGate Started;
  std::atomic<bool> Read{false};
  std::thread R([&] {
    Started.Open();
    Lock->BeginRead();
    Read = true;
    Lock->EndRead();
  });
  Started.Wait();
  EXPECT_FALSE(Read.load());
  Writer.Finish();
  R.join();
  EXPECT_TRUE(Read.load());
}

TEST_P(MultiReadSingleWrite, ReadersSeeOnlyCompleteWrites) {
  constexpr int Readers = 3, Rounds = 2000;
  // Both halves change together under the write lock; a reader must never see them apart.
  int64_t First = 0, Second = 0;
  std::atomic<int> Torn{0};
  std::vector<std::thread> Pool;
  Pool.emplace_back([&] {
    for (int I = 0; I < Rounds; ++I) {
      Lock->BeginWrite();
      ++First;
      ++Second;
      Lock->EndWrite();
    }
  });
  for (int R = 0; R < Readers; ++R)
    Pool.emplace_back([&] {
      for (int I = 0; I < Rounds; ++I) {
        Lock->BeginRead();
        if (First != Second) ++Torn;
        Lock->EndRead();
      }
    });
  for (auto& T : Pool) T.join();
  EXPECT_EQ(Torn.load(), 0);
  EXPECT_EQ(First, Rounds);
}

TEST_P(MultiReadSingleWrite, TryCallsAfterAWrite) {
  Lock->BeginWrite();
  Lock->EndWrite();
  if (GetParam() == lmOS) {
    EXPECT_TRUE(Lock->TryBeginWrite());
    Lock->EndWrite();
    EXPECT_TRUE(Lock->TryBeginRead());
    Lock->EndRead();
  } else {
    // The fallback leaves the last writer recorded, so every later try call fails, even
    // though the lock is free; the blocking calls still work.
    EXPECT_FALSE(Lock->TryBeginWrite());
    EXPECT_FALSE(Lock->TryBeginRead());
    EXPECT_FALSE(OnOtherThread([&] { return Lock->TryBeginWrite(); }));
    Lock->BeginRead();
    Lock->EndRead();
    Lock->BeginWrite();
    Lock->EndWrite();
  }
}

TEST_P(MultiReadSingleWrite, TheWriterReadsAndWritesAgainWithoutLettingGo) {
#if defined(_WIN32)
  // The Windows slim reader/writer lock does not nest: its owner would wait for itself.
  if (GetParam() == lmOS) GTEST_SKIP() << "the OS lock does not nest here";
#endif
  auto OthersGetIn = [&] {
    return OnOtherThread([&] {
      bool Read = Lock->TryBeginRead();
      if (Read) Lock->EndRead();
      bool Wrote = Lock->TryBeginWrite();
      if (Wrote) Lock->EndWrite();
      return Read || Wrote;
    });
  };
  Lock->BeginWrite();
  Lock->BeginRead();
  Lock->BeginWrite();
  Lock->EndWrite();
  EXPECT_FALSE(OthersGetIn());
  Lock->EndRead();
  EXPECT_FALSE(OthersGetIn());
  // An end from a thread that does not write leaves the writer's lock alone.
  OnOtherThread([&] {
    Lock->EndWrite();
    return true;
  });
  EXPECT_FALSE(OthersGetIn());
  Lock->EndWrite();

  // Free again. The fallback's recorded writer refuses try calls, so it is asked with a
  // blocking one.
  if (GetParam() == lmOS) {
    EXPECT_TRUE(OnOtherThread([&] {
      bool Got = Lock->TryBeginWrite();
      if (Got) Lock->EndWrite();
      return Got;
    }));
  } else {
    OnOtherThread([&] {
      Lock->BeginWrite();
      Lock->EndWrite();
      return true;
    });
  }
  Lock->BeginRead();
  EXPECT_TRUE(OnOtherThread([&] {
    Lock->BeginRead();
    Lock->EndRead();
    return true;
  }));
  Lock->EndRead();
}

INSTANTIATE_TEST_SUITE_P(Modes, MultiReadSingleWrite, ::testing::Values(lmOS, lmFallback),
                         [](const auto& Info) {
                           return Info.param == lmOS ? "OSLock" : "Fallback";
                         });

} // namespace

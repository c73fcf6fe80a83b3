// SPDX-License-Identifier: MIT
// The reader/writer lock from many threads, in both of its modes: readers never meet a
// writer, and the data a writer keeps consistent always reads consistent.
#include <kx/uKxThreads.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

#if defined(_WIN32)
constexpr bool OSLockNests = false; // the slim reader/writer lock would wait for itself
#else
constexpr bool OSLockNests = true;
#endif

class MultiReadSingleWriteStress : public ::testing::TestWithParam<bool> {
protected:
  bool Fallback() const { return GetParam(); }
  void SetUp() override {
    if (Fallback()) detail::KxSRWLockFunctions() = detail::KxFallbackSRWLockFunctions();
    Lock = TKxMultiReadSingleWrite::Create();
  }
  void TearDown() override {
    Lock->Free();
    detail::KxSRWLockFunctions() = Saved;
  }
  detail::TKxSRWLockFunctions Saved = detail::KxSRWLockFunctions();
  TKxMultiReadSingleWrite* Lock = nullptr;
};

TEST_P(MultiReadSingleWriteStress, ReadersNeverMeetAWriter) {
  constexpr int Threads = 8, Rounds = 1500;
  const bool Nests = Fallback() || OSLockNests;
  // Changed together under the write lock only.
  int64_t First = 0, Second = 0;
  std::atomic<int> Readers{0}, Writers{0}, Broken{0}, Writes{0};

  auto Read = [&] {
    ++Readers;
    if (Writers.load() != 0 || First != Second) ++Broken;
    --Readers;
  };
  auto Write = [&] {
    if (++Writers != 1 || Readers.load() != 0) ++Broken;
    ++First;
    ++Second;
    ++Writes;
    --Writers;
  };

  kxtest::RunTogether(Threads, [&](int Index) {
    kxtest::TRandom Random(Index);
    for (int Round = 0; Round < Rounds; ++Round) {
      switch (Random.Next(10)) {
      case 0: // a write, nested where the lock nests
        Lock->BeginWrite();
        Write();
        if (Nests) {
          Lock->BeginRead();
          if (First != Second) ++Broken;
          Lock->BeginWrite();
          Write();
          Lock->EndWrite();
          Lock->EndRead();
        }
        Lock->EndWrite();
        break;
      case 1:
        if (Lock->TryBeginWrite()) {
          Write();
          Lock->EndWrite();
        }
        break;
      case 2:
        if (Lock->TryBeginRead()) {
          Read();
          Lock->EndRead();
        }
        break;
      case 3: // a nested read never waits, even for a waiting writer
        Lock->BeginRead();
        Read();
        if (Nests) {
          Lock->BeginRead();
          Read();
          Lock->EndRead();
        }
        Lock->EndRead();
        break;
      default:
        Lock->BeginRead();
        Read();
        Lock->EndRead();
      }
    }
  });

  EXPECT_EQ(Broken.load(), 0);
  EXPECT_EQ(First, Second);
  EXPECT_EQ(First, Writes.load());
  EXPECT_GT(Writes.load(), 0);
}

INSTANTIATE_TEST_SUITE_P(Modes, MultiReadSingleWriteStress, ::testing::Values(false, true),
                         [](const auto& Info) { return Info.param ? "Fallback" : "OSLock"; });

} // namespace

// SPDX-License-Identifier: MIT
#include <kx/rtl/OwnedPtr.h>
#include <kx/rtl/Rtl.h>

#include <gtest/gtest.h>

#include <atomic>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

using namespace kx;

namespace {

// Blocks until opened.
class TGate {
public:
  void Open() {
    std::lock_guard G(FLock);
    FOpen = true;
    FChanged.notify_all();
  }
  void Wait() {
    std::unique_lock G(FLock);
    FChanged.wait(G, [this] { return FOpen; });
  }

private:
  std::mutex FLock;
  std::condition_variable FChanged;
  bool FOpen = false;
};

struct Synchronizer : ::testing::Test {
  OwnedPtr<TMultiReadExclusiveWriteSynchronizer> Sync =
      MakeOwned<TMultiReadExclusiveWriteSynchronizer>();

  // Starts a thread that writes once; returns after it has started.
  std::thread StartWriter(std::atomic<bool>& Wrote) {
    auto Started = std::make_shared<TGate>();
    std::thread T([this, &Wrote, Started] {
      Started->Open();
      Sync->BeginWrite();
      Wrote = true;
      Sync->EndWrite();
    });
    Started->Wait();
    return T;
  }
};

TEST_F(Synchronizer, TheWriterNestsAndReadsWhileWriting) {
  EXPECT_TRUE(Sync->BeginWrite());
  EXPECT_TRUE(Sync->BeginWrite());
  Sync->BeginRead();
  Sync->EndRead();
  Sync->EndWrite();

  std::atomic<bool> Wrote{false};
  std::thread Other = StartWriter(Wrote);
  EXPECT_FALSE(Wrote.load());
  Sync->EndWrite(); // the last one lets the other writer in
  Other.join();
  EXPECT_TRUE(Wrote.load());
  EXPECT_EQ(Sync->RevisionLevel(), 2u);
}

TEST_F(Synchronizer, ANestedReadDoesNotWaitForAWaitingWriter) {
  Sync->BeginRead();
  std::atomic<bool> Wrote{false};
  std::thread Writer = StartWriter(Wrote);
  // Whether or not the writer is already waiting, a nested read must not block.
  Sync->BeginRead();
  Sync->EndRead();
  EXPECT_FALSE(Wrote.load());
  Sync->EndRead();
  Writer.join();
  EXPECT_TRUE(Wrote.load());
}

TEST_F(Synchronizer, AReaderThatWritesKeepsItsReadAfterwards) {
  Sync->BeginRead();
  EXPECT_TRUE(Sync->BeginWrite()); // nobody wrote in between
  Sync->EndWrite();

  // Still a reader: a writer must wait for the final EndRead.
  std::atomic<bool> Wrote{false};
  std::thread Writer = StartWriter(Wrote);
  EXPECT_FALSE(Wrote.load());
  Sync->EndRead();
  Writer.join();
  EXPECT_TRUE(Wrote.load());
}

} // namespace

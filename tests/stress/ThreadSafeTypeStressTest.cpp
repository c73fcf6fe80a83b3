// SPDX-License-Identifier: MIT
// The thread-safe value from many threads: bracketed increments never lost, unbracketed
// reads never torn.
#include <kx/uKxThreads.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

using namespace kx;

namespace {

// A text that tells whether it was read whole: the number, then that number's digits
// repeated to a length beyond the standard library's short-string size.
AnsiString Encode(int32_t N) {
  AnsiString Digits = std::to_string(N), S = Digits + ":";
  while (S.size() < 64) S += Digits;
  return S;
}

bool Decode(const AnsiString& S, int32_t& N) {
  const size_t Colon = S.find(':');
  if (Colon == AnsiString::npos) return false;
  N = std::stoi(S.substr(0, Colon));
  return S == Encode(N);
}

TEST(ThreadSafeTypeStress, BracketedIncrementsAreNeverLostAndReadsNeverTorn) {
  constexpr int Writers = 4, Readers = 4, Rounds = 1500;
  TKxThreadSafeType* Holder = TKxThreadSafeType::Create(Variant(Encode(0)));
  std::atomic<int> Torn{0}, Backwards{0}, Increments{0};

  kxtest::RunTogether(Writers + Readers, [&](int Index) {
    kxtest::TRandom Random(Index);
    if (Index < Writers) {
      for (int Round = 0; Round < Rounds; ++Round) {
        Variant V;
        if (Random.Next(2)) {
          V = Holder->Lock();
        } else {
          while (!Holder->TryLock(Random.Next(3))) {
          }
          V = Holder->GetValue(); // held by the caller: read without locking again
        }
        int32_t N = 0;
        if (!Decode(VarToStr(V), N)) ++Torn;
        Holder->SetValue(Variant(Encode(N + 1))); // held: written in place
        ++Increments;
        Holder->Unlock();
      }
    } else {
      // Readers see values that only grow, each one whole, whether or not a writer holds
      // the section at that moment.
      int32_t Last = 0;
      for (int Round = 0; Round < Rounds * 2; ++Round) {
        int32_t N = 0;
        if (!Decode(VarToStr(Holder->GetValue()), N))
          ++Torn;
        else if (N < Last)
          ++Backwards;
        else
          Last = N;
        (void)Holder->GetLocked();
      }
    }
  });

  int32_t Final = -1;
  EXPECT_TRUE(Decode(VarToStr(Holder->GetValue()), Final));
  EXPECT_EQ(Final, Writers * Rounds);
  EXPECT_EQ(Increments.load(), Writers * Rounds);
  EXPECT_EQ(Torn.load(), 0);
  EXPECT_EQ(Backwards.load(), 0);
  EXPECT_FALSE(Holder->GetLocked());
  Holder->Free();
}

} // namespace

// SPDX-License-Identifier: MIT
// The process-wide slots of uKxSysUtils and uKxWindows used from many threads at once: the
// document and question hooks set while called, resources registered while looked up, the
// language records read.
#include <kx/uKxSysUtils.h>
#include <kx/uKxWindows.h>

#include "stress/StressUtils.h"

#include <gtest/gtest.h>

#include <atomic>
#include <string>

using namespace kx;

namespace {

constexpr int Threads = 8;
constexpr int Rounds = 2000;

IPtr<IInterface> NoDoc(const AnsiString&) {
  return nullptr;
}

int32_t SayNo(const AnsiString&, const AnsiString&) {
  return 7;
}

} // namespace

TEST(SharedStateStress, HooksAreSetWhileCalled) {
  std::atomic<int> Called{0}, Refused{0};
  kxtest::RunTogether(Threads, [&](int Index) {
    for (int R = 0; R < Rounds; ++R) {
      if (Index == 0) {
        SetCreateJSONDoc(R % 2 ? &NoDoc : nullptr);
        SetKxMsgBoxYesNo(R % 2 ? &SayNo : nullptr);
        continue;
      }
      try {
        KxCreateJSONDoc("{}");
        ++Called;
      } catch (const Exception&) {
        ++Refused;
      }
    }
  });
  SetCreateJSONDoc(nullptr);
  SetKxMsgBoxYesNo(nullptr);
  EXPECT_EQ(Called + Refused, (Threads - 1) * Rounds);
}

TEST(SharedStateStress, ResourcesAreRegisteredWhileLookedUp) {
  static const char Data[] = "0123456789";
  kxtest::RunTogether(Threads, [&](int Index) {
    kxtest::TRandom Random{uint32_t(Index)};
    for (int R = 0; R < Rounds; ++R) {
      const AnsiString Name = "STRESS" + std::to_string(Random.Next(16));
      if (Random.Next(4) == 0) {
        KxRegisterResource(Name, "#10", Data, 1 + Random.Next(10));
      } else if (KxFindResource(Name, "#10")) {
        const TBytes Bytes = KxGetResource(Name, "#10");
        EXPECT_GE(Bytes.size(), 1u);
        EXPECT_EQ(Bytes[0], '0');
      }
    }
  });
}

TEST(SharedStateStress, LanguagesAreReadFromManyThreads) {
  kxtest::RunTogether(Threads, [&](int Index) {
    for (int R = 0; R < Rounds / 10; ++R) {
      const TKxLanguage L = KxGetLanguageByIndex((Index * 31 + R) % KxGetLanguageCount());
      EXPECT_EQ(KxGetLanguage(L.LocaleID).Name, L.Name);
    }
  });
}

// SPDX-License-Identifier: MIT
#include <kx/uKxThreads.h>

#include "threads/ThreadTestUtils.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::OnOtherThread;

namespace {

TEST(ThreadName, IsKeptPerThreadAndCutAt255Characters) {
  EXPECT_EQ(OnOtherThread([] { return KxGetThreadName(); }), "");

  KxSetThreadName(AnsiString("main test thread"));
  EXPECT_EQ(OnOtherThread([] {
              KxSetThreadName(AnsiString(300, 'w'));
              return KxGetThreadName();
            }),
            AnsiString(255, 'w'));
  EXPECT_EQ(KxGetThreadName(), "main test thread");

  AnsiString Long;
  for (int I = 0; I < 300; ++I) Long += char('a' + I % 26);
  KxSetThreadName(Long);
  EXPECT_EQ(KxGetThreadName(), Long.substr(0, 255));

  KxSetThreadName(UnicodeString(u"worker 7"));
  EXPECT_EQ(KxGetThreadName(), "worker 7");
  KxSetThreadName(UnicodeString(300, u'u'));
  EXPECT_EQ(KxGetThreadName(), AnsiString(255, 'u'));

  KxSetThreadName(AnsiString());
  EXPECT_EQ(KxGetThreadName(), "");
}

} // namespace

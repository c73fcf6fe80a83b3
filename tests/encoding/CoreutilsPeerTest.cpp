// SPDX-License-Identifier: MIT
// The codecs against coreutils' base64 and basenc on the same bytes.
#include <kx/uKxNetEncoding.h>

#include "encoding/EncodingTestUtils.h"
#include "support/ExternalTool.h"

#include <gtest/gtest.h>

#include <algorithm>

using namespace kx;
using kxtest::AsBytes;
using kxtest::AsString;
using kxtest::RandomBytes;

namespace {

// Lengths around every remainder, and one long enough for the whole-block paths.
const size_t Lengths[] = {0, 1, 2, 3, 4, 5, 31, 32, 33, 100, 4097, 100000};

AnsiString StripPadding(AnsiString S) {
  while (!S.empty() && S.back() == '=') S.pop_back();
  return S;
}

} // namespace

TEST(CoreutilsPeer, Base64MatchesBase64) {
  for (size_t N : Lengths) {
    const TBytes In = RandomBytes(N, uint32_t(N) + 1);
    const auto Peer = kxtest::RunExternalToolBytes("base64", {"-w", "0"}, In);
    if (Peer.Absent) GTEST_SKIP() << Peer.Message;
    ASSERT_EQ(Peer.ExitCode, 0);
    const AnsiString Ours = TKxNetEncoding::Base64Ex()->EncodeBytesToString(In);
    EXPECT_EQ(Ours, Peer.Output) << N;
    const auto Back = kxtest::RunExternalTool("base64", {"-d"}, Ours);
    ASSERT_EQ(Back.ExitCode, 0);
    EXPECT_EQ(AsBytes(Back.Output), In) << N;
  }
}

TEST(CoreutilsPeer, WrappedBase64DecodesWithTheLineBreaksSkipped) {
  // base64 wraps at 76 characters and ends with a line feed; those count for the length rule.
  for (size_t N : {1000u, 100000u}) {
    const TBytes In = RandomBytes(N, uint32_t(N) + 2);
    const auto Peer = kxtest::RunExternalToolBytes("base64", {}, In);
    if (Peer.Absent) GTEST_SKIP() << Peer.Message;
    ASSERT_EQ(Peer.ExitCode, 0);
    ASSERT_NE(Peer.Output.size() % 4, 1u);
    ASSERT_GT(std::count(Peer.Output.begin(), Peer.Output.end(), '\n'), 10);
    EXPECT_EQ(TKxNetEncoding::Base64Ex()->DecodeStringToBytes(Peer.Output), In) << N;
  }
  // 57 bytes: one full line of 76 and its line feed, 77 in all, which the rule rejects.
  const auto Peer = kxtest::RunExternalToolBytes("base64", {}, RandomBytes(57));
  ASSERT_EQ(Peer.Output.size(), 77u);
  EXPECT_THROW(TKxNetEncoding::Base64Ex()->DecodeStringToBytes(Peer.Output), Exception);
}

TEST(CoreutilsPeer, Base64UrlMatchesBasencWithoutPadding) {
  for (size_t N : Lengths) {
    const TBytes In = RandomBytes(N, uint32_t(N) + 3);
    const auto Peer = kxtest::RunExternalToolBytes("basenc", {"--base64url", "-w", "0"}, In);
    if (Peer.Absent) GTEST_SKIP() << Peer.Message;
    ASSERT_EQ(Peer.ExitCode, 0);
    const AnsiString Ours = TKxNetEncoding::Base64Url()->EncodeBytesToString(In);
    EXPECT_EQ(Ours, StripPadding(Peer.Output)) << N;
    // basenc's padded form decodes too: the padding is skipped.
    EXPECT_EQ(TKxNetEncoding::Base64Url()->DecodeStringToBytes(Peer.Output), In) << N;
  }
}

TEST(CoreutilsPeer, HexMatchesBasencBase16) {
  for (size_t N : Lengths) {
    const TBytes In = RandomBytes(N, uint32_t(N) + 4);
    const auto Peer = kxtest::RunExternalToolBytes("basenc", {"--base16", "-w", "0"}, In);
    if (Peer.Absent) GTEST_SKIP() << Peer.Message;
    ASSERT_EQ(Peer.ExitCode, 0);
    const AnsiString Ours = TKxNetEncoding::Hex()->EncodeBytesToString(In);
    EXPECT_EQ(Ours, Peer.Output) << N;
    const auto Back = kxtest::RunExternalTool("basenc", {"--base16", "-d"}, Ours);
    ASSERT_EQ(Back.ExitCode, 0);
    EXPECT_EQ(AsBytes(Back.Output), In) << N;
  }
}

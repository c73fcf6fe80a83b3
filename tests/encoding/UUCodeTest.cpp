// SPDX-License-Identifier: MIT
// uuencoding: the line layout by length (with the short-chunk rule), both zero characters,
// sections by name, the errors, and sharutils as a peer.
#include <kx/rtl/OwnedPtr.h>
#include <kx/uKxUUCode.h>

#include "encoding/EncodingTestUtils.h"
#include "support/ExpectMessage.h"
#include "support/ExternalTool.h"
#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

using namespace kx;
using kxtest::ExpectMessage;

namespace {

std::vector<std::string> Lines(const std::string& Text) {
  std::vector<std::string> R;
  size_t Start = 0, At;
  while ((At = Text.find("\r\n", Start)) != std::string::npos) {
    R.push_back(Text.substr(Start, At - Start));
    Start = At + 2;
  }
  R.push_back(Text.substr(Start));
  return R;
}

std::string Decoded(const AnsiString& Text, TKxUUHeader* Header = nullptr) {
  OwnedPtr<TMemoryStream> M = MakeOwned<TMemoryStream>();
  KxUUDecode(Text, M.Get(), Header);
  return std::string(static_cast<char*>(M->Memory()), size_t(M->Size()));
}

// What decoding keeps of n encoded bytes: a final chunk with a remainder of 1 loses a byte.
size_t Kept(size_t N) {
  return N % 45 % 3 == 1 ? N - 1 : N;
}

} // namespace

TEST(UUCode, LineLayoutByLength) {
  for (size_t N : {0u, 1u, 2u, 3u, 4u, 5u, 44u, 45u, 46u, 90u}) {
    const std::string In = kxtest::AsString(kxtest::RandomBytes(N, uint32_t(N)));
    const auto L = Lines(KxUUEncode(In, "f.bin", 644));
    const size_t Full = N / 45, Rest = N % 45;
    ASSERT_EQ(L.size(), 1 + Full + (Rest ? 1 : 0) + 2) << N;
    EXPECT_EQ(L.front(), "begin 644 f.bin");
    EXPECT_EQ(L[L.size() - 2], "`");
    EXPECT_EQ(L.back(), "end");
    for (size_t I = 1; I <= Full; ++I) {
      EXPECT_EQ(L[I][0], 'M');
      EXPECT_EQ(L[I].size(), 61u);
    }
    if (Rest) {
      const std::string& Last = L[1 + Full];
      EXPECT_EQ(size_t(Last[0]), Rest + 32) << N;
      EXPECT_EQ(Last.size(), 1 + 4 * ((Rest + Rest % 3) / 3)) << N;
    }
    EXPECT_EQ(Decoded(KxUUEncode(In, "f.bin", 644)), In.substr(0, Kept(N))) << N;
  }
}

TEST(UUCode, ExactTextAndTheShortChunkRule) {
  EXPECT_EQ(KxUUEncode("Cat", "cat.txt", 644), "begin 644 cat.txt\r\n#0V%T\r\n`\r\nend");
  // Four bytes: the length says 4, one group carries the first three.
  EXPECT_EQ(KxUUEncode("Cats", "c", 644), "begin 644 c\r\n$0V%T\r\n`\r\nend");
  // Five: the second group is completed by one zero byte.
  EXPECT_EQ(KxUUEncode("Cats!", "c", 644), "begin 644 c\r\n%0V%T<R$ \r\n`\r\nend");
  EXPECT_EQ(KxUUEncode(std::string(3, '\0'), "z", 0), "begin 0 z\r\n#    \r\n`\r\nend");
  // The mode is printed in decimal as given.
  EXPECT_EQ(Lines(KxUUEncode("", "run.sh", 755))[0], "begin 755 run.sh");
  EXPECT_EQ(Lines(KxUUEncode("", "a b", 65535))[0], "begin 65535 a b");
}

TEST(UUCode, GraveAccentAndSpaceBothDecodeToZero) {
  const std::string In = kxtest::AsString(kxtest::RandomBytes(300, 5)) + std::string(90, '\0');
  const std::string Spaces = KxUUEncode(In, "z", 644);
  std::string Graves = Spaces;
  // Data lines only: the header holds a space of its own.
  for (size_t I = Graves.find("\r\n"); I < Graves.size(); ++I)
    if (Graves[I] == ' ') Graves[I] = '`';
  ASSERT_NE(Graves, Spaces);
  EXPECT_EQ(Decoded(Graves), In);
  EXPECT_EQ(Decoded(Spaces), In);
}

TEST(UUCode, SectionsAreChosenByName) {
  const std::string Two = "junk\nbegin 644 a.txt\n#86)C\n`\nend\nBEGIN 600 B.Txt\n#>'EZ\n`\nEND\n";
  TKxUUHeader H;
  EXPECT_EQ(Decoded(Two, &H), "abc");
  EXPECT_EQ(H.Mode, 644);
  EXPECT_EQ(H.FileName, "a.txt");
  TMemoryStream* M = TMemoryStream::Create();
  KxUUDecode(Two, "b.txt", M, &H);
  EXPECT_EQ(std::string(static_cast<char*>(M->Memory()), size_t(M->Size())), "xyz");
  EXPECT_EQ(H.Mode, 600);
  EXPECT_EQ(H.FileName, "B.Txt");
  ExpectMessage([&] { KxUUDecode(Two, "c.txt", M); }, "Invalid UUData");
  // The same from a string list and from a stream that hands out one byte per read.
  TStringList* L = TStringList::Create();
  L->SetText(Two);
  M->Clear();
  KxUUDecode(L, "B.TXT", M);
  EXPECT_EQ(M->Size(), 3);
  M->Clear();
  KxUUDecode(L, M);
  EXPECT_EQ(std::string(static_cast<char*>(M->Memory()), size_t(M->Size())), "abc");
  auto* S = kxtest::TShortReadStream::Create(std::string_view(Two), 1);
  M->Clear();
  KxUUDecode(S, M);
  EXPECT_EQ(M->Size(), 3);
  S->Free();
  L->Free();
  M->Free();
  // A begin line without a number takes the default mode.
  EXPECT_EQ(Decoded("begin rw f\n#86)C\n`\nend", &H), "abc");
  EXPECT_EQ(H.Mode, 644);
  EXPECT_EQ(H.FileName, "f");
}

TEST(UUCode, MissingBeginOrTerminator) {
  ExpectMessage([] { Decoded("no begin here\n`\nend"); }, "Invalid UUData");
  ExpectMessage([] { Decoded(""); }, "Invalid UUData");
  ExpectMessage([] { Decoded("begin 644 f\n#86)C\n"); }, "Unexpected EOF");
  // A "`" line stops only when "end" follows it.
  ExpectMessage([] { Decoded("begin 644 f\n#86)C\n`\n"); }, "Unexpected EOF");
  EXPECT_EQ(Decoded("begin 644 f\n#86)C\n`\n`\nEnd"), "abc");
}

TEST(UUCode, StreamsEncodeTheirRest) {
  const std::string In = kxtest::AsString(kxtest::RandomBytes(100000, 8));
  auto* S = kxtest::TShortReadStream::Create(std::string_view("skip" + In), 7);
  S->SetPosition(4);
  TMemoryStream* Out = TMemoryStream::Create();
  KxUUEncode(S, Out, "big", 644);
  const std::string Text(static_cast<char*>(Out->Memory()), size_t(Out->Size()));
  EXPECT_EQ(Text, KxUUEncode(In, "big", 644));
  Out->SetPosition(0);
  TMemoryStream* Back = TMemoryStream::Create();
  KxUUDecode(Out, Back);
  EXPECT_EQ(std::string(static_cast<char*>(Back->Memory()), size_t(Back->Size())),
            In.substr(0, Kept(In.size())));
  Back->Free();
  Out->Free();
  S->Free();
}

TEST(UUCode, SharutilsPeer) {
  for (size_t N : {0u, 1u, 2u, 3u, 4u, 44u, 45u, 46u, 1000u, 65537u}) {
    const std::string In = kxtest::AsString(kxtest::RandomBytes(N, uint32_t(N) + 3));
    const auto Theirs = kxtest::RunExternalTool("uuencode", {"peer.bin"}, In);
    if (Theirs.Absent) GTEST_SKIP() << Theirs.Message;
    ASSERT_EQ(Theirs.ExitCode, 0);
    // Their text: LF line ends, "`" for zero values, the mode in octal from the umask.
    EXPECT_EQ(Decoded(Theirs.Output), In) << N;
    if (Kept(N) != N) continue;
    // Ours, where nothing is lost, decodes with theirs (which wants a line end after "end");
    // and reads the same once their zero character and line ends are put into our form.
    const auto Back = kxtest::RunExternalTool("uudecode", {"-o", "/dev/stdout"},
                                              KxUUEncode(In, "peer.bin", 644) + "\r\n");
    ASSERT_EQ(Back.ExitCode, 0);
    EXPECT_EQ(Back.Output, In) << N;
    std::string Normal;
    for (auto L : Lines(KxUUEncode(In, "peer.bin", 644))) Normal += L + "\n";
    std::string Peer = Theirs.Output;
    for (size_t I = Peer.find('\n'); I < Peer.size(); ++I)
      if (Peer[I] == '`') Peer[I] = ' ';
    Peer.replace(Peer.size() - 6, 6, "`\nend\n");
    EXPECT_EQ(Normal.substr(Normal.find('\n')), Peer.substr(Peer.find('\n'))) << N;
  }
}

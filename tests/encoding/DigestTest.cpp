// SPDX-License-Identifier: MIT
// MD5 and SHA-1: the published vectors, the running MD5 record against the one-call digest,
// the text forms and the empty-input rules.
#include <kx/uKxMD5.h>
#include <kx/uKxSha1.h>

#include "encoding/EncodingTestUtils.h"
#include "support/ShortReadStream.h"
#include "support/TempFolder.h"

#include <gtest/gtest.h>

#include <cstring>

using namespace kx;

namespace {

std::string Hex(const uint8_t* P, size_t N) {
  static const char* Digits = "0123456789abcdef";
  std::string R;
  for (size_t I = 0; I < N; ++I) {
    R += Digits[P[I] >> 4];
    R += Digits[P[I] & 15];
  }
  return R;
}

std::string RunningMD5(const std::string& S, const std::vector<size_t>& Pieces) {
  TMD5Context C;
  MD5Init(C);
  size_t At = 0;
  for (size_t N : Pieces) {
    N = std::min(N, S.size() - At);
    MD5Update(C, S.data() + At, uint32_t(N));
    At += N;
  }
  MD5Update(C, S.data() + At, uint32_t(S.size() - At));
  uint8_t D[16];
  MD5Final(C, D);
  return Hex(D, 16);
}

struct TVector {
  const char* Input;
  const char* Digest;
};

// RFC 1321's test suite.
const TVector MD5Vectors[] = {
    {"", "d41d8cd98f00b204e9800998ecf8427e"},
    {"a", "0cc175b9c0f1b6a831c399e269772661"},
    {"abc", "900150983cd24fb0d6963f7d28e17f72"},
    {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
    {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
    {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
     "d174ab98d277d9f5a5611c2c9f419d9f"},
    {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
     "57edf4a22be3c955ac49da2e2107b67a"},
};

std::string Upper(std::string S) {
  for (char& C : S) C = char(std::toupper(uint8_t(C)));
  return S;
}

} // namespace

TEST(MD5, PublishedVectorsThroughEveryEntryPoint) {
  for (const TVector& V : MD5Vectors) {
    const std::string In = V.Input;
    EXPECT_EQ(RunningMD5(In, {}), V.Digest) << In;
    const TMD5Digest D = MD5Hash(In.data(), uint32_t(In.size()));
    EXPECT_EQ(Hex(D.data(), 16), V.Digest) << In;
    EXPECT_EQ(MD5Hash(AnsiString(In)), Upper(V.Digest)) << In;
  }
}

TEST(MD5, RunningRecordMatchesTheOneCallDigestWhateverThePieces) {
  // Lengths around the padding boundary (55/56/64) and pieces that straddle blocks.
  for (size_t N : {55u, 56u, 57u, 63u, 64u, 65u, 119u, 120u, 128u, 1000u, 70000u}) {
    const TBytes B = kxtest::RandomBytes(N, uint32_t(N));
    const std::string S = kxtest::AsString(B);
    const TMD5Digest D = MD5Hash(S.data(), uint32_t(S.size()));
    const std::string Want = Hex(D.data(), 16);
    EXPECT_EQ(RunningMD5(S, {}), Want) << N;
    EXPECT_EQ(RunningMD5(S, {1, 62, 1, 64, 3}), Want) << N;
    EXPECT_EQ(RunningMD5(S, {63, 65, 127, 129}), Want) << N;
    std::vector<size_t> Bytewise(std::min<size_t>(N, 300), 1);
    EXPECT_EQ(RunningMD5(S, Bytewise), Want) << N;
  }
}

TEST(MD5, MillionAsAndReuseAfterInit) {
  const std::string A(1000000, 'a');
  EXPECT_EQ(RunningMD5(A, {999, 1}), "7707d6ae4e027c70eea2a935c2296f21");
  TMD5Context C;
  MD5Init(C);
  MD5Update(C, "junk", 4);
  MD5Init(C);
  MD5Update(C, "abc", 3);
  uint8_t D[16];
  MD5Final(C, D);
  EXPECT_EQ(Hex(D, 16), "900150983cd24fb0d6963f7d28e17f72");
}

TEST(MD5, WideStringsHashTheirUTF8Form) {
  const UnicodeString W = u"Gr\u00fc\u00dfe \u20ac";
  EXPECT_EQ(MD5Hash(W), MD5Hash(AnsiString("Gr\xC3\xBC\xC3\x9F"
                                           "e \xE2\x82\xAC")));
  EXPECT_EQ(MD5Hash(UnicodeString()), "D41D8CD98F00B204E9800998ECF8427E");
}

TEST(Sha1, PublishedVectorsInEachEncoding) {
  EXPECT_EQ(KxHashString("abc", beHexEncoded), "A9993E364706816ABA3E25717850C26C9CD0D89D");
  EXPECT_EQ(KxHashString("abc", beBase64), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
  EXPECT_EQ(KxHashStringA("abc", beBase64Url), "qZk-NkcGgWq6PiVxeFDCbJzQ2J0");
  const AnsiString Two = "abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq";
  EXPECT_EQ(KxHashBuffer(Two.data(), uint32_t(Two.size()), beHexEncoded),
            "84983E441C3BD26EBAAE4AA1F95129E5E54670F1");
  const AnsiString Million(1000000, 'a');
  uint8_t D[20];
  KxHashBuffer(Million.data(), uint32_t(Million.size()), D);
  EXPECT_EQ(Hex(D, 20), "34aa973cd4c4daa4f61eeb2bdbad27316534016f");
}

TEST(Sha1, WideStringsHashTheirUTF16Units) {
  EXPECT_EQ(KxHashStringW(u"abc", beHexEncoded),
            KxHashString(AnsiString("a\0b\0c\0", 6), beHexEncoded));
  const UnicodeString W = u"\u00e9t\u00e9";
  EXPECT_NE(KxHashStringW(W, beHexEncoded), KxHashStringA(UTF8Encode(W), beHexEncoded));
}

TEST(Sha1, EmptyInputIsNotHashed) {
  uint8_t D[20];
  std::memset(D, 0xAB, sizeof D);
  KxHashBuffer("x", 0, D);
  for (uint8_t B : D) EXPECT_EQ(B, 0);
  std::memset(D, 0xAB, sizeof D);
  KxHashString(AnsiString(), D);
  for (uint8_t B : D) EXPECT_EQ(B, 0xAB);
  for (TKxBinEncoding E : {beBase64, beHexEncoded, beBase64Url}) {
    EXPECT_EQ(KxHashBuffer("x", 0, E), "");
    EXPECT_EQ(KxHashString(AnsiString(), E), "");
    EXPECT_EQ(KxHashStringA(AnsiString(), E), "");
    EXPECT_EQ(KxHashStringW(UnicodeString(), E), "");
  }
}

TEST(Sha1, StreamsAreReadWholeFromTheirPosition) {
  const std::string Abc = "xxabc";
  auto* S = kxtest::TShortReadStream::Create(std::string_view(Abc), 1);
  S->SetPosition(2);
  // From position 2 only three bytes remain, though the stream's size is five.
  EXPECT_EQ(KxHashStream(S, false), "qZk+NkcGgWq6PiVxeFDCbJzQ2J0=");
  EXPECT_EQ(KxHashStream(S, true), KxHashString(AnsiString(Abc), beBase64));
  S->Free();
  auto* Empty = TMemoryStream::Create();
  EXPECT_EQ(KxHashStream(Empty, true), "");
  Empty->Free();
}

TEST(Sha1, FilesAreHashedWholeAndMissingOnesRaise) {
  kxtest::TTempFolder Dir;
  const std::string Name = Dir.WriteFile("abc.txt", "abc");
  EXPECT_EQ(KxHashFile(Name, beHexEncoded), "A9993E364706816ABA3E25717850C26C9CD0D89D");
  EXPECT_EQ(KxHashFile(Name, TKxBinEncoding(7)), "");
  EXPECT_EQ(KxHashFile(Dir.WriteFile("empty", ""), beBase64), "");
  EXPECT_THROW(KxHashFile(Dir.Name("missing"), beBase64), EFOpenError);
}

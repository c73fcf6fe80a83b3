#include <kx/uKxNetEncoding.h>

#include <gtest/gtest.h>

using namespace kx;

TEST(KxNetEncoding, SharedInstancesAreMadeOnceAndKept) {
  TKxBase64Encoding* B = TKxNetEncoding::Base64Ex();
  ASSERT_NE(B, nullptr);
  EXPECT_EQ(TKxNetEncoding::Base64Ex(), B);
  EXPECT_EQ(TKxNetEncoding::Base64Url(), TKxNetEncoding::Base64Url());
  EXPECT_EQ(TKxNetEncoding::Hex(), TKxNetEncoding::Hex());
  EXPECT_EQ(TKxNetEncoding::URL(), TKxNetEncoding::URL());
  EXPECT_TRUE(TKxNetEncoding::Base64Url()->InheritsFrom(TKxBase64Encoding::ClassInfo()));
  EXPECT_FALSE(TKxNetEncoding::URL()->InheritsFrom(TNetEncoding::ClassInfo()));
}

TEST(KxNetEncoding, GetEncodingMapsEachBinaryEncoding) {
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64), TKxNetEncoding::Base64Ex());
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beHexEncoded), TKxNetEncoding::Hex());
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64Url), TKxNetEncoding::Base64Url());
  const TBytes B{0xFB, 0xFF};
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64)->EncodeBytesToString(B), "+/8=");
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beBase64Url)->EncodeBytesToString(B), "-_8");
  EXPECT_EQ(TKxNetEncoding::GetEncoding(beHexEncoded)->EncodeBytesToString(B), "FBFF");
}

TEST(KxNetEncoding, GetEncodingRejectsOtherValues) {
  try {
    TKxNetEncoding::GetEncoding(TKxBinEncoding(3));
    FAIL() << "nothing raised";
  } catch (const Exception& E) {
    EXPECT_EQ(E.ClassType(), Exception::ClassInfo());
    EXPECT_EQ(E.Message(), "The specified NetEncoding is not supported!");
  }
}

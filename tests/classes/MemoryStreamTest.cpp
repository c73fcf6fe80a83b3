// SPDX-License-Identifier: MIT
// TKxMemoryStream: growth, seeking, foreign memory, typed reads; in-place buffer access.
#include <kx/classes/MemoryStream.h>
#include <kx/rtl/OwnedPtr.h>

#include "support/ExpectMessage.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <numeric>

using namespace kx;
using kxtest::ExpectMessage;

namespace {

OwnedPtr<TKxMemoryStream> StreamWith(uint32_t BlockSize, int Bytes) {
  OwnedPtr<TKxMemoryStream> S(TKxMemoryStream::Create(BlockSize));
  for (int I = 0; I < Bytes; ++I) S->WriteByte(uint8_t(I));
  return S;
}

} // namespace

TEST(KxMemoryStream, GrowthKeepsOneSpareByteAndStepsByDelta) {
  auto S = StreamWith(16, 0);
  EXPECT_EQ(S->Capacity(), 16u);
  EXPECT_EQ(S->Delta(), 16u);
  S->WriteByte(1);
  EXPECT_EQ(S->Capacity(), 16u) << "need 2 fits";
  uint8_t Block[15] = {};
  S->Write(Block, 14); // 15 bytes: need 16 still fits
  EXPECT_EQ(S->Capacity(), 16u);
  S->WriteByte(2); // 16 bytes: need 17
  EXPECT_EQ(S->Capacity(), 32u);
  EXPECT_EQ(S->Size(), 16);

  // A need that is an exact multiple still takes a whole extra step.
  auto T = StreamWith(16, 0);
  uint8_t Big[31] = {};
  T->Write(Big, 31); // need 32
  EXPECT_EQ(T->Capacity(), 48u);
}

TEST(KxMemoryStream, GrowingKeepsContentAndReadsBack) {
  auto S = StreamWith(4, 1000);
  EXPECT_EQ(S->Size(), 1000);
  EXPECT_GT(S->Capacity(), 1000u);
  EXPECT_EQ(S->Capacity() % 4, 0u);
  S->SetPosition(0);
  for (int I = 0; I < 1000; ++I) ASSERT_EQ(S->ReadByte(), uint8_t(I)) << I;
}

TEST(KxMemoryStream, SeekRules) {
  auto S = StreamWith(16, 10);
  EXPECT_EQ(S->Seek(int64_t(3), soEnd), 7);
  EXPECT_EQ(S->Seek(int64_t(0), soEnd), 10);
  EXPECT_EQ(S->Seek(int64_t(20), soEnd), 0) << "beyond the start gives the start";
  EXPECT_EQ(S->Seek(int64_t(20), soBeginning), 10) << "clamped at the end";
  EXPECT_EQ(S->Seek(int64_t(4), soBeginning), 4);
  EXPECT_EQ(S->Seek(int64_t(3), soCurrent), 7);
  EXPECT_EQ(S->Seek(int64_t(5), soCurrent), 10) << "clamped at the end";
  EXPECT_EQ(S->Seek(int64_t(-4), soCurrent), 6);
  // The 32-bit entry sign-extends.
  EXPECT_EQ(S->Seek(int32_t(-2), soCurrent), 4);

  // Negative positions are not checked.
  EXPECT_EQ(S->Seek(int64_t(-3), soBeginning), -3);
  EXPECT_EQ(S->Seek(int64_t(-2), soCurrent), -5);
  uint8_t B = 0xEE;
  EXPECT_EQ(S->Read(&B, 1), 0) << "nothing to read before the start";
  EXPECT_EQ(B, 0xEE);
}

TEST(KxMemoryStream, PastTheEndReadsNegativeAndReturnsToTheEnd) {
  auto S = StreamWith(16, 10);
  // A negative offset from the end moves past it, unchecked.
  EXPECT_EQ(S->Seek(int64_t(-5), soEnd), 15);
  EXPECT_EQ(S->CurPos() - S->Memory(), 15);
  uint8_t Buf[4];
  EXPECT_EQ(S->Read(Buf, 4), -5);
  EXPECT_EQ(S->CurPos() - S->Memory(), 10);

  // Writing there leaves a zero-filled gap.
  S->Seek(int64_t(-2), soEnd);
  S->WriteByte(0xAB);
  EXPECT_EQ(S->Size(), 13);
  EXPECT_EQ(S->Memory()[10], 0);
  EXPECT_EQ(S->Memory()[11], 0);
  EXPECT_EQ(S->Memory()[12], 0xAB);
}

TEST(KxMemoryStream, WritePastTheEndThatReallocatesLandsAtTheOldEnd) {
  auto S = StreamWith(16, 10);
  S->Seek(int64_t(-3), soEnd); // position 13, capacity 16
  uint8_t Data[4] = {1, 2, 3, 4};
  EXPECT_EQ(S->Write(Data, 4), 4); // need 18: reallocation pulls the position back to 10
  EXPECT_EQ(S->Size(), 17);
  EXPECT_EQ(S->CurPos() - S->Memory(), 14);
  EXPECT_EQ(std::memcmp(S->Memory() + 10, Data, 4), 0);
  for (int I = 14; I < 17; ++I) EXPECT_EQ(S->Memory()[I], 0) << I;
}

TEST(KxMemoryStream, SetSizeAndClear) {
  auto S = StreamWith(16, 10);
  S->SetPosition(8);
  S->SetSize(int64_t(5));
  EXPECT_EQ(S->Size(), 5);
  EXPECT_EQ(S->Position(), 5);
  EXPECT_EQ(S->Capacity(), 16u);
  S->SetSize(int32_t(40));
  EXPECT_EQ(S->Size(), 40);
  EXPECT_EQ(S->Capacity(), 48u);
  EXPECT_EQ(S->Position(), 5) << "growing keeps the position";
  for (int I = 0; I < 5; ++I) EXPECT_EQ(S->Memory()[I], I);

  S->Clear();
  EXPECT_EQ(S->Size(), 0);
  EXPECT_EQ(S->Capacity(), 16u);
  EXPECT_EQ(S->Position(), 0);
}

TEST(KxMemoryStream, ForeignMemoryIsReadAndOverwrittenButNeverResized) {
  char Buf[8] = {'a', 'b', 'c', 'd', 'e', 'f', 'g', 'h'};
  OwnedPtr<TKxMemoryStream> S(TKxMemoryStream::Create(Buf, 8));
  EXPECT_FALSE(S->OwnsBuffer());
  EXPECT_EQ(S->Delta(), 0u);
  EXPECT_EQ(S->Size(), 8);
  EXPECT_EQ(S->Capacity(), 8u);
  EXPECT_EQ(S->ReadByte(), 'a');
  S->Write("XY", 2);
  EXPECT_EQ(std::string(Buf, 8), "aXYdefgh");
  S->Seek(int64_t(1), soEnd);
  S->WriteByte('Z'); // ends exactly at the size: no growth
  EXPECT_EQ(Buf[7], 'Z');

  // Any write past the end, resize or clear is refused and changes nothing.
  ExpectMessage([&] { S->WriteByte('!'); }, "It is not possible to resize the buffer!");
  EXPECT_EQ(S->Size(), 8);
  EXPECT_EQ(S->Position(), 8);
  S->SetPosition(6);
  ExpectMessage([&] { S->Write("123", 3); }, "It is not possible to resize the buffer!");
  EXPECT_EQ(std::string(Buf, 8), "aXYdefgZ");
  ExpectMessage([&] { S->SetSize(int64_t(4)); }, "It is not possible to resize the buffer!");
  ExpectMessage([&] { S->Clear(); }, "It is not possible to resize the buffer!");
  EXPECT_EQ(S->Size(), 8);
  EXPECT_EQ(S->Memory(), reinterpret_cast<uint8_t*>(Buf));
}

TEST(KxMemoryStream, TypedReadsAndWrites) {
  auto S = StreamWith(8, 0);
  S->WriteByte(0x12);
  S->WriteWord(0x3456);
  S->WriteLongWord(0x789ABCDEu);
  S->WriteInt64(-2);
  S->WriteBytes({9, 8, 7});
  EXPECT_EQ(S->Size(), 1 + 2 + 4 + 8 + 3);
  // Machine (little-endian) order.
  EXPECT_EQ(S->Memory()[1], 0x56);
  EXPECT_EQ(S->Memory()[3], 0xDE);
  S->SetPosition(0);
  EXPECT_EQ(S->ReadByte(), 0x12);
  EXPECT_EQ(S->ReadWord(), 0x3456);
  EXPECT_EQ(S->ReadLongWord(), 0x789ABCDEu);
  EXPECT_EQ(S->ReadInt64(), -2);
  EXPECT_EQ(S->ReadBytes(3), (TBytes{9, 8, 7}));
}

TEST(KxMemoryStream, ShortTypedReadsRaiseUnexpectedEOF) {
  auto S = StreamWith(16, 5);
  S->SetPosition(0);
  ExpectMessage([&] { S->ReadInt64(); }, "Unexpected EOF");
  EXPECT_EQ(S->Position(), 5) << "moved past what was there";
  S->SetPosition(4);
  ExpectMessage([&] { S->ReadWord(); }, "Unexpected EOF");
  ExpectMessage([&] { S->ReadByte(); }, "Unexpected EOF");
  S->SetPosition(2);
  uint8_t Buf[4];
  ExpectMessage([&] { S->ReadBytes(Buf, 4); }, "Unexpected EOF");
  S->SetPosition(3);
  ExpectMessage([&] { S->ReadBytes(3); }, "Unexpected EOF");
  if (KxAssertionsEnabled) {
    EXPECT_THROW(S->ReadBytes(0), EAssertionFailed);
  }
}

TEST(KxMemoryStream, ReadBufPointsIntoMemoryStreamsAndCopiesOthers) {
  auto S = StreamWith(16, 10);
  S->SetPosition(3);
  void* Buf = nullptr;
  int64_t Count = 0;
  EXPECT_FALSE(KxStreamToReadBuf(S.Get(), Buf, Count));
  EXPECT_EQ(Buf, S->Memory() + 3);
  EXPECT_EQ(Count, 7);

  OwnedPtr<TMemoryStream> M(TMemoryStream::Create());
  M->Write("hello", 5);
  M->SetPosition(1);
  EXPECT_FALSE(KxStreamToReadBuf(M.Get(), Buf, Count));
  EXPECT_EQ(Buf, static_cast<uint8_t*>(M->Memory()) + 1);
  EXPECT_EQ(Count, 4);

  // A stream that does not expose its memory gets a copy, read from the position.
  class TOpaque : public TStream {
  public:
    int32_t Read(void* Buffer, int32_t Count) override {
      int32_t N = int32_t(std::min<int64_t>(Count, 6 - FPos));
      for (int32_t I = 0; I < N; ++I) static_cast<char*>(Buffer)[I] = char('A' + FPos + I);
      FPos += N;
      return N;
    }
    int32_t Write(const void*, int32_t) override { return 0; }
    using TStream::Seek;
    int64_t Seek(int64_t Offset, TSeekOrigin Origin) override {
      return FPos = Origin == soBeginning ? Offset : Origin == soEnd ? 6 + Offset : FPos + Offset;
    }
    int64_t FPos = 0;
  } Opaque;
  Opaque.FPos = 2;
  EXPECT_TRUE(KxStreamToReadBuf(&Opaque, Buf, Count));
  EXPECT_EQ(Count, 4);
  EXPECT_EQ(std::string(static_cast<char*>(Buf), 4), "CDEF");
  std::free(Buf);
}

TEST(KxMemoryStream, WriteBufResizesInPlace) {
  auto S = StreamWith(16, 4);
  S->SetPosition(2);
  void* Buf = nullptr;
  EXPECT_FALSE(KxStreamToWriteBuf(S.Get(), Buf, 30));
  EXPECT_EQ(S->Size(), 32);
  EXPECT_EQ(S->Position(), 2);
  EXPECT_EQ(Buf, S->Memory() + 2);
  std::memset(Buf, 'x', 30);
  EXPECT_EQ(S->Memory()[31], 'x');

  OwnedPtr<TMemoryStream> M(TMemoryStream::Create());
  EXPECT_TRUE(KxStreamToWriteBuf(M.Get(), Buf, 8));
  std::memset(Buf, 'y', 8);
  M->Write(Buf, 8);
  std::free(Buf);
  EXPECT_EQ(M->Size(), 8);
}

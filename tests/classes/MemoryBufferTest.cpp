// SPDX-License-Identifier: MIT
// Length-prefixed blocks, IKxMemoryBuffer and its factories, and the pointer helpers.
#include <kx/classes/MemoryBuffer.h>
#include <kx/classes/MemoryStream.h>
#include <kx/classes/PointerArithmetic.h>

#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>
#include <memory>

using namespace kx;

TEST(KxMemoryBlock, LengthPrefixedBlocks) {
  PKxMemoryBuffer Buf = KxGetMem(6);
  ASSERT_NE(Buf, nullptr);
  EXPECT_EQ(Buf->Size, 6u);
  EXPECT_EQ(reinterpret_cast<uint8_t*>(Buf) + 4, Buf->Data()) << "the data follows the length";
  for (int I = 0; I < 6; ++I) EXPECT_EQ(Buf->Data()[I], 0) << I;
  std::memcpy(Buf->Data(), "abcdef", 6);

  PKxMemoryBuffer Copy = KxCloneMem(Buf);
  ASSERT_NE(Copy, Buf);
  EXPECT_EQ(Copy->Size, 6u);
  EXPECT_EQ(std::memcmp(Copy->Data(), "abcdef", 6), 0);

  KxReallocateMem(Buf, 3);
  EXPECT_EQ(Buf->Size, 3u);
  EXPECT_EQ(std::memcmp(Buf->Data(), "abc", 3), 0);
  KxReallocateMem(Buf, 100000);
  EXPECT_EQ(Buf->Size, 100000u);
  EXPECT_EQ(std::memcmp(Buf->Data(), "abc", 3), 0);

  KxFreeMem(Buf);
  EXPECT_EQ(Buf, nullptr);
  KxFreeMem(Copy);
  EXPECT_EQ(KxCloneMem(nullptr), nullptr);
  KxReallocateMem(Buf, 2); // a null block is allocated
  EXPECT_EQ(Buf->Size, 2u);
  KxFreeMem(Buf);
}

TEST(KxMemoryBuffer, InterfaceAndResizing) {
  static_assert(IIDOf<IKxMemoryBuffer>() == GuidLiteral("{F9DAEC94-FEDE-4A47-B9E8-317D256BD8E3}"));
  IPtr<IKxMemoryBuffer> B = KxCreateMemoryBuffer(4);
  ASSERT_TRUE(B);
  EXPECT_EQ(B->GetSize(), 4u);
  std::memcpy(B->GetBuffer(), "wxyz", 4);
  EXPECT_TRUE(Supports<IKxMemoryBuffer>(B.Get()));
  EXPECT_TRUE(Supports<IInterface>(B.Get()));

  B->SetSize(2);
  EXPECT_EQ(B->AsBytes(), (TBytes{'w', 'x'}));
  B->SetSize(2000);
  EXPECT_EQ(std::memcmp(B->GetBuffer(), "wx", 2), 0) << "the common prefix is kept";
  B->SetSize(0);
  EXPECT_EQ(B->GetBuffer(), nullptr);
  EXPECT_EQ(B->AsString(beBase64), "");
  EXPECT_TRUE(B->AsBytes().empty());

  B->SetBytes({'M', 'a', 'n'});
  EXPECT_EQ(B->GetSize(), 3u);
  EXPECT_EQ(B->AsString(beBase64), "TWFu");
  EXPECT_EQ(B->AsString(beHexEncoded), "4D616E");
  B->SetString(beHexEncoded, "0aFf");
  EXPECT_EQ(B->AsBytes(), (TBytes{0x0A, 0xFF}));
  B->SetString(beBase64Url, "-_8");
  EXPECT_EQ(B->AsBytes(), (TBytes{0xFB, 0xFF}));
  EXPECT_EQ(B->AsString(beBase64Url), "-_8");
  EXPECT_EQ(B->AsString(beBase64), "+/8=");
  B->SetBytes({});
  EXPECT_EQ(B->GetSize(), 0u);
  EXPECT_EQ(KxCreateMemoryBuffer(0u)->GetBuffer(), nullptr);

  // Adopted memory is freed with the object (the leak checker watches).
  void* Mem = std::malloc(16);
  IPtr<IKxMemoryBuffer> A = KxCreateMemoryBuffer(Mem, 16);
  EXPECT_EQ(A->GetBuffer(), Mem);
}

TEST(KxMemoryBuffer, FromStream) {
  std::unique_ptr<TKxMemoryStream, void (*)(TObject*)> S(TKxMemoryStream::Create(16),
                                                         [](TObject* O) { O->Free(); });
  S->Write("0123456789", 10);
  IPtr<IKxMemoryBuffer> All = KxCreateMemoryBuffer(S.get(), 3);
  EXPECT_EQ(All->GetSize(), 7u);
  EXPECT_EQ(std::memcmp(All->GetBuffer(), "3456789", 7), 0);
  EXPECT_EQ(S->Position(), 10);
  IPtr<IKxMemoryBuffer> Part = KxCreateMemoryBuffer(S.get(), 2, 4);
  EXPECT_EQ(Part->GetSize(), 4u);
  EXPECT_EQ(std::memcmp(Part->GetBuffer(), "2345", 4), 0);
  EXPECT_EQ(S->Position(), 6);
  EXPECT_EQ(KxCreateMemoryBuffer(S.get(), 8, 100)->GetSize(), 2u) << "clipped to the rest";
  EXPECT_EQ(KxCreateMemoryBuffer(S.get(), 10)->GetSize(), 0u);

  // A stream that gives a byte per read is read up to the count all the same.
  kxtest::TShortReadStream One(std::string_view("0123456789"), 1);
  IPtr<IKxMemoryBuffer> Slow = KxCreateMemoryBuffer(&One, 2, 5);
  ASSERT_EQ(Slow->GetSize(), 5u);
  EXPECT_EQ(std::memcmp(Slow->GetBuffer(), "23456", 5), 0);
  EXPECT_EQ(One.Position(), 7);
}

TEST(KxPointerArithmetic, Helpers) {
  char Block[64] = {};
  char* P = Block + 10;
  EXPECT_EQ(KxPtrDiff(P, Block), 10u);
  EXPECT_EQ(KxPtrDiffS(Block, P), -10);
  EXPECT_EQ(KxInt2Ptr(KxPtr2Int(P)), P);
  EXPECT_EQ(KxUInt2Ptr(KxPtr2UInt(P)), P);
  EXPECT_EQ(KxPtrAdd(P, -4), Block + 6);
  EXPECT_EQ(KxPtrAdd(P, 5u), Block + 15);
  KxIncPtr(P, int64_t(20));
  EXPECT_EQ(P, Block + 30);
  KxIncPtr(P, int32_t(-30));
  EXPECT_EQ(P, Block);
  EXPECT_EQ(KxOrdinal2Ptr(-1), reinterpret_cast<void*>(~uintptr_t(0))) << "sign-extended";
  EXPECT_EQ(KxOrdinal2Ptr(0xFFFFFFFFu), reinterpret_cast<void*>(uintptr_t(0xFFFFFFFFu)));

  TKxPtrHalf Hi = 0, Lo = 0;
  KxSplitPtr(Block + 7, Hi, Lo);
  EXPECT_EQ(KxCombinePtr(Hi, Lo), Block + 7);
  EXPECT_EQ(uintptr_t(Lo), KxPtr2UInt(Block + 7) & ((uintptr_t(1) << KxPtrHalfBits) - 1));
  EXPECT_EQ(sizeof(TKxPtrHalf) * 2, sizeof(void*));
}

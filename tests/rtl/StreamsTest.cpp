// SPDX-License-Identifier: MIT
#include <kx/rtl/OwnedPtr.h>
#include <kx/rtl/Streams.h>

#include "support/ShortReadStream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <string>

using namespace kx;
namespace fs = std::filesystem;

namespace {

std::string Content(TMemoryStream* S) {
  return std::string(static_cast<const char*>(S->Memory()), size_t(S->Size()));
}

class StreamFiles : public ::testing::Test {
protected:
  void SetUp() override {
    const auto* Info = ::testing::UnitTest::GetInstance()->current_test_info();
    Dir = fs::temp_directory_path() / (std::string("kx_rtl_streams_") + Info->name());
    fs::remove_all(Dir);
    fs::create_directories(Dir);
  }
  void TearDown() override {
    std::error_code Ec;
    fs::remove_all(Dir, Ec);
  }
  AnsiString Path(const char* Name) const { return (Dir / Name).string(); }
  static std::string ReadAll(const AnsiString& Name) {
    std::ifstream In(Name, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(In), {});
  }
  fs::path Dir;
};

} // namespace

TEST(MemoryStream, GrowsInWholeBlocksAndKeepsTheRoundingRule) {
  OwnedPtr<TMemoryStream> S(TMemoryStream::Create());
  EXPECT_EQ(S->Capacity(), 0);
  EXPECT_EQ(S->Memory(), nullptr);
  S->WriteBuffer("a", 1);
  EXPECT_EQ(S->Capacity(), 0x2000);
  std::string Block(0x2000, 'x');
  S->WriteBuffer(Block.data(), int32_t(Block.size()));
  EXPECT_EQ(S->Size(), 0x2001);
  EXPECT_EQ(S->Capacity(), 0x4000);
  // A capacity request equal to the size is taken as it is, not rounded.
  S->SetSize(S->Size());
  EXPECT_EQ(S->Capacity(), 0x2001);
  EXPECT_EQ(Content(S.Get()), "a" + Block);
  S->SetSize(10);
  EXPECT_EQ(S->Capacity(), 0x2000);
  EXPECT_EQ(S->Position(), 10); // was past the new end
  S->Clear();
  EXPECT_EQ(S->Size(), 0);
  EXPECT_EQ(S->Position(), 0);
  EXPECT_EQ(S->Capacity(), 0);
  EXPECT_EQ(S->Memory(), nullptr);
}

TEST(MemoryStream, SeekIsNotClampedButReadsAndWritesHonourTheEnd) {
  OwnedPtr<TMemoryStream> S(TMemoryStream::Create());
  S->WriteBuffer("0123456789", 10);
  EXPECT_EQ(S->Seek(-3, soEnd), 7);
  EXPECT_EQ(S->Seek(int64_t(20), soBeginning), 20);
  char Buf[8] = {};
  EXPECT_EQ(S->Read(Buf, 4), 0);
  EXPECT_EQ(S->Seek(-25, soCurrent), -5);
  EXPECT_EQ(S->Read(Buf, 4), 0);
  EXPECT_EQ(S->Write("x", 1), 0);
  EXPECT_EQ(S->Size(), 10);
  // Reads stop at the end.
  S->SetPosition(8);
  EXPECT_EQ(S->Read(Buf, 8), 2);
  EXPECT_EQ(std::string(Buf, 2), "89");
  // A write past the end fills the gap with zeros.
  S->SetPosition(12);
  S->WriteBuffer("z", 1);
  EXPECT_EQ(Content(S.Get()), std::string("0123456789\0\0z", 13));
  // SetSize keeps a position inside the new size and clamps one beyond it.
  S->SetPosition(3);
  S->SetSize(5);
  EXPECT_EQ(S->Position(), 3);
  S->SetSize(int32_t(8));
  EXPECT_EQ(Content(S.Get()), std::string("01234\0\0\0", 8));
  S->SetPosition(8);
  S->SetSize(2);
  EXPECT_EQ(S->Position(), 2);
}

TEST(MemoryStream, ReadBufferAndWriteBufferAreAllOrNothing) {
  OwnedPtr<TMemoryStream> S(TMemoryStream::Create());
  S->WriteBuffer("abc", 3);
  S->SetPosition(1);
  char Buf[4];
  try {
    S->ReadBuffer(Buf, 4);
    FAIL();
  } catch (const EReadError& E) {
    EXPECT_EQ(E.Message(), "Stream read error");
  }
  S->ReadBuffer(Buf, 0); // nothing asked, nothing raised
  S->SetPosition(-1);
  try {
    S->WriteBuffer("x", 1);
    FAIL();
  } catch (const EWriteError& E) {
    EXPECT_EQ(E.Message(), "Stream write error");
  }
}

TEST(Stream, ShortReadsAndWritesAreRepeatedUntilTheCountOrTheEnd) {
  kxtest::TShortReadStream One(std::string_view("abcdefg"), 1);
  char Buf[8] = {};
  One.ReadBuffer(Buf, 4);
  EXPECT_EQ(std::string(Buf, 4), "abcd");
  EXPECT_EQ(One.ReadUpTo(Buf, 8), 3) << "the end ends it, without an error";
  EXPECT_EQ(std::string(Buf, 3), "efg");
  EXPECT_EQ(One.Reads(), 8) << "a call per byte, and the one that found the end";
  EXPECT_THROW(One.ReadBuffer(Buf, 1), EReadError);

  OwnedPtr<TMemoryStream> Sink(TMemoryStream::Create());
  kxtest::TShortReadStream Pair(Sink.Get(), 2);
  Pair.WriteBuffer("hello", 5);
  EXPECT_EQ(Pair.Writes(), 3);
  EXPECT_EQ(Pair.WriteUpTo("!?", 2), 2);
  EXPECT_EQ(Content(Sink.Get()), "hello!?");
  Sink->SetPosition(-1);
  EXPECT_EQ(Pair.WriteUpTo("x", 1), 0) << "a stream that takes nothing ends it";
}

TEST(MemoryStream, ImpossibleSizesRaiseTheExpansionError) {
  OwnedPtr<TMemoryStream> S(TMemoryStream::Create());
  S->WriteBuffer("abc", 3);
  for (int64_t Bad : {int64_t(-1), std::numeric_limits<int64_t>::max() - 1}) {
    try {
      S->SetSize(Bad);
      FAIL() << Bad;
    } catch (const EStreamError& E) {
      EXPECT_EQ(E.Message(), "Out of memory while expanding memory stream");
    }
    EXPECT_EQ(Content(S.Get()), "abc");
  }
}

TEST(MemoryStream, CopyFromTakesCountBytesOrTheWholeSource) {
  OwnedPtr<TMemoryStream> Src(TMemoryStream::Create());
  std::string Big(0x25000, '\0');
  for (size_t I = 0; I < Big.size(); ++I) Big[I] = char(I * 7 + I / 256);
  Src->WriteBuffer(Big.data(), int32_t(Big.size()));

  OwnedPtr<TMemoryStream> Dst(TMemoryStream::Create());
  Src->SetPosition(5);
  EXPECT_EQ(Dst->CopyFrom(Src.Get(), 0x20000), 0x20000);
  EXPECT_EQ(Content(Dst.Get()), Big.substr(5, 0x20000));
  EXPECT_EQ(Src->Position(), 0x20005);

  Dst->Clear();
  EXPECT_EQ(Dst->CopyFrom(Src.Get(), 0), int64_t(Big.size())); // from the start, wherever it was
  EXPECT_EQ(Content(Dst.Get()), Big);

  Src->SetPosition(int64_t(Big.size()) - 2);
  EXPECT_THROW(Dst->CopyFrom(Src.Get(), 3), EReadError);

  // A source that delivers in small pieces must still be copied whole.
  kxtest::TShortReadStream Trickle(std::string_view("abcdefgh"), 3);
  Dst->Clear();
  EXPECT_EQ(Dst->CopyFrom(&Trickle, 5), 5);
  EXPECT_EQ(Content(Dst.Get()), "abcde");
  EXPECT_EQ(Dst->CopyFrom(&Trickle, 0), 8);
  EXPECT_EQ(Content(Dst.Get()), "abcdeabcdefgh");
}

TEST(MemoryStream, SavesToAndLoadsFromStreams) {
  OwnedPtr<TMemoryStream> A(TMemoryStream::Create());
  A->WriteBuffer("hello", 5);
  OwnedPtr<TMemoryStream> B(TMemoryStream::Create());
  B->WriteBuffer("xx", 2);
  A->SaveToStream(B.Get());
  EXPECT_EQ(Content(B.Get()), "xxhello");
  EXPECT_EQ(A->Position(), 5); // untouched
  A->LoadFromStream(B.Get());
  EXPECT_EQ(Content(A.Get()), "xxhello");
  EXPECT_EQ(A->Position(), 5); // kept, as it is still inside the content
  EXPECT_EQ(B->Position(), 7);
}

TEST(BytesStream, WorksOnItsArrayAndGrowsIt) {
  OwnedPtr<TBytesStream> S(TBytesStream::Create(TBytes{1, 2, 3}));
  EXPECT_EQ(S->Size(), 3);
  EXPECT_EQ(S->Position(), 0);
  EXPECT_EQ(S->Capacity(), 3);
  uint8_t B[3];
  S->ReadBuffer(B, 3);
  EXPECT_EQ(B[2], 3);
  S->WriteBuffer("\x09", 1);
  EXPECT_EQ(S->Size(), 4);
  EXPECT_EQ(S->Bytes().size(), 0x2000u); // the whole array is the capacity
  EXPECT_EQ(S->Bytes()[3], 9);
  EXPECT_EQ(S->Memory(), S->Bytes().data());
  S->Clear();
  EXPECT_TRUE(S->Bytes().empty());
  OwnedPtr<TBytesStream> Empty(TBytesStream::Create());
  EXPECT_EQ(Empty->Size(), 0);
  EXPECT_EQ(Empty->Memory(), nullptr);
}

TEST_F(StreamFiles, FileStreamCreatesWritesSeeksAndTruncates) {
  AnsiString Name = Path("data.bin");
  {
    OwnedPtr<TFileStream> F(TFileStream::Create(Name, fmCreate));
    EXPECT_EQ(F->FileName(), Name);
    F->WriteBuffer("0123456789", 10);
    EXPECT_EQ(F->Size(), 10);
    EXPECT_EQ(F->Seek(-4, soEnd), 6);
    EXPECT_EQ(F->Seek(int64_t(1), soCurrent), 7);
    char Buf[8] = {};
    EXPECT_EQ(F->Read(Buf, 8), 3);
    EXPECT_EQ(std::string(Buf, 3), "789");
    F->SetSize(4);
    EXPECT_EQ(F->Position(), 4);
    EXPECT_EQ(F->Size(), 4);
    // Seeking past the end is allowed; the next write extends the file.
    EXPECT_EQ(F->Seek(int64_t(6), soBeginning), 6);
    F->WriteBuffer("Z", 1);
    EXPECT_EQ(F->Size(), 7);
  }
  EXPECT_EQ(ReadAll(Name), std::string("0123\0\0Z", 7));

  // fmCreate empties an existing file.
  OwnedPtr<TFileStream>(TFileStream::Create(Name, fmCreate)).Reset();
  EXPECT_EQ(fs::file_size(Name), 0u);
}

TEST_F(StreamFiles, FileStreamOpenModesAndErrors) {
  AnsiString Name = Path("modes.txt");
  std::ofstream(Name, std::ios::binary) << "abc";
  {
    OwnedPtr<TFileStream> R(TFileStream::Create(Name, fmOpenRead));
    EXPECT_EQ(R->Write("x", 1), 0); // read-only: the write fails quietly
    EXPECT_THROW(R->WriteBuffer("x", 1), EWriteError);
    char Buf[3];
    R->ReadBuffer(Buf, 3);
  }
  {
    OwnedPtr<TFileStream> W(TFileStream::Create(Name, fmOpenWrite));
    char Buf[1];
    EXPECT_EQ(W->Read(Buf, 1), 0); // write-only
    W->WriteBuffer("X", 1);        // overwrites from the start, no truncation
  }
  EXPECT_EQ(ReadAll(Name), "Xbc");

  AnsiString Missing = Path("missing.txt");
  try {
    TFileStream::Create(Missing, fmOpenRead);
    FAIL();
  } catch (const EFOpenError& E) {
    EXPECT_EQ(E.Message(), "Cannot open file " + Missing);
  }
  // Bad access or share values are refused as the OS would refuse them.
  EXPECT_THROW(TFileStream::Create(Name, 3), EFOpenError);
  EXPECT_THROW(TFileStream::Create(Name, fmOpenRead | 0x50), EFOpenError);
  // A folder is not a file.
  EXPECT_THROW(TFileStream::Create(Dir.string(), fmOpenRead), EFOpenError);

  AnsiString NoFolder = Path("no/such/folder.txt");
  try {
    TFileStream::Create(NoFolder, fmCreate);
    FAIL();
  } catch (const EFCreateError& E) {
    EXPECT_EQ(E.Message(), "Cannot create file " + NoFolder);
    EXPECT_TRUE(E.InheritsFrom(EFileStreamError::ClassInfo()));
  }
}

TEST_F(StreamFiles, FileStreamShareModes) {
  AnsiString Name = Path("shared.log");
  std::ofstream(Name, std::ios::binary) << "line";
  {
    // The appender's mode: read/write, others may only read.
    OwnedPtr<TFileStream> Writer(TFileStream::Create(Name, fmOpenReadWrite | fmShareDenyWrite));
    EXPECT_THROW(TFileStream::Create(Name, fmOpenReadWrite | fmShareDenyWrite), EFOpenError);
    EXPECT_THROW(TFileStream::Create(Name, fmOpenRead | fmShareExclusive), EFOpenError);
    EXPECT_THROW(TFileStream::Create(Name, fmCreate), EFCreateError);
  }
  EXPECT_EQ(ReadAll(Name), "line"); // the refused create did not empty it
  {
    OwnedPtr<TFileStream> R1(TFileStream::Create(Name, fmOpenRead | fmShareDenyWrite));
    OwnedPtr<TFileStream> R2(TFileStream::Create(Name, fmOpenRead | fmShareDenyWrite));
    EXPECT_THROW(TFileStream::Create(Name, fmOpenWrite | fmShareDenyWrite), EFOpenError);
  }
  {
    OwnedPtr<TFileStream> Created(TFileStream::Create(Name, fmCreate));
    EXPECT_THROW(TFileStream::Create(Name, fmOpenRead | fmShareDenyWrite), EFOpenError);
  }
  OwnedPtr<TFileStream> A(TFileStream::Create(Name, fmOpenReadWrite | fmShareDenyNone));
  OwnedPtr<TFileStream> B(TFileStream::Create(Name, fmOpenReadWrite | fmShareDenyNone));
  A->WriteBuffer("ab", 2);
  char Buf[2];
  B->ReadBuffer(Buf, 2);
  EXPECT_EQ(std::string(Buf, 2), "ab");
}

TEST_F(StreamFiles, MemoryStreamFilesAndHandleStreams) {
  AnsiString Name = Path("mem.bin");
  OwnedPtr<TMemoryStream> M(TMemoryStream::Create());
  M->WriteBuffer("payload", 7);
  M->SaveToFile(Name);
  EXPECT_EQ(ReadAll(Name), "payload");

  OwnedPtr<TMemoryStream> L(TMemoryStream::Create());
  L->LoadFromFile(Name);
  EXPECT_EQ(Content(L.Get()), "payload");
  EXPECT_THROW(L->LoadFromFile(Path("nope.bin")), EFOpenError);

  // A handle stream uses the handle without owning it.
  OwnedPtr<TFileStream> F(TFileStream::Create(Name, fmOpenRead));
  {
    OwnedPtr<THandleStream> H(THandleStream::Create(F->Handle()));
    EXPECT_EQ(H->Size(), 7);
    H->SetPosition(3);
  }
  char Buf[4];
  F->ReadBuffer(Buf, 4); // same handle, same position, still open
  EXPECT_EQ(std::string(Buf, 4), "load");
}

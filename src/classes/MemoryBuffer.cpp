// SPDX-License-Identifier: MIT
// Length-prefixed memory blocks and the reference-counted memory buffer.
#include <kx/classes/BufferConversions.h>
#include <kx/classes/MemoryBuffer.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace kx {

KX_IMPLEMENT_CLASS(TKxMemoryBufferImpl, TInterfacedObject, "uKxClasses")

namespace {
constexpr const char* SOutOfMemory = "Out of memory";

void* Allocate(size_t Size) {
  void* P = std::malloc(std::max<size_t>(Size, 1));
  if (!P) throw EOutOfMemory(SOutOfMemory);
  return P;
}
} // namespace

// --- length-prefixed blocks -------------------------------------------------------------

PKxMemoryBuffer KxGetMem(uint32_t Size) {
  const size_t Total = size_t(Size) + sizeof(uint32_t);
  auto* Buf = static_cast<PKxMemoryBuffer>(Allocate(Total));
  std::memset(Buf, 0, Total);
  Buf->Size = Size;
  return Buf;
}

void KxReallocateMem(PKxMemoryBuffer& Buf, uint32_t NewSize) {
  void* P = std::realloc(Buf, size_t(NewSize) + sizeof(uint32_t));
  if (!P) throw EOutOfMemory(SOutOfMemory);
  Buf = static_cast<PKxMemoryBuffer>(P);
  Buf->Size = NewSize;
}

void KxFreeMem(PKxMemoryBuffer& Buf) {
  std::free(Buf);
  Buf = nullptr;
}

PKxMemoryBuffer KxCloneMem(const TKxMemoryBuffer* Buf) {
  if (!Buf) return nullptr;
  const size_t Total = size_t(Buf->Size) + sizeof(uint32_t);
  auto* Result = static_cast<PKxMemoryBuffer>(Allocate(Total));
  std::memcpy(Result, Buf, Total);
  return Result;
}

// --- TKxMemoryBufferImpl ----------------------------------------------------------------

TKxMemoryBufferImpl::~TKxMemoryBufferImpl() {
  std::free(FBuffer);
}

bool TKxMemoryBufferImpl::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IKxMemoryBuffer>(this, IID, Obj) ||
         TInterfacedObject::GetInterface(IID, Obj);
}

AnsiString KX_STDCALL TKxMemoryBufferImpl::AsString(TKxBinEncoding Encoding) {
  if (!FBuffer) return {};
  return KxBufToString(FBuffer, FSize, Encoding);
}

TBytes KX_STDCALL TKxMemoryBufferImpl::AsBytes() {
  return KxBufToByteArr(FBuffer, FSize);
}

void KX_STDCALL TKxMemoryBufferImpl::SetSize(uint32_t NewSize) {
  if (NewSize == FSize) return;
  if (NewSize == 0) {
    std::free(FBuffer);
    FBuffer = nullptr;
  } else {
    void* P = std::realloc(FBuffer, NewSize);
    if (!P) throw EOutOfMemory(SOutOfMemory);
    FBuffer = P;
  }
  FSize = NewSize;
}

void KX_STDCALL TKxMemoryBufferImpl::SetString(TKxBinEncoding Encoding, const AnsiString& Text) {
  uint32_t Size = 0;
  void* P = KxStringToBuf(Text, Encoding, Size);
  std::free(FBuffer);
  FBuffer = P;
  FSize = Size;
}

void KX_STDCALL TKxMemoryBufferImpl::SetBytes(const TBytes& Bytes) {
  uint32_t Size = 0;
  void* P = KxByteArrToBuf(Bytes, Size);
  std::free(FBuffer);
  FBuffer = P;
  FSize = Size;
}

// --- factories --------------------------------------------------------------------------

IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(void* Buffer, uint32_t Size) {
  return TKxMemoryBufferImpl::Create(Buffer, Size);
}

IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(uint32_t Size) {
  return TKxMemoryBufferImpl::Create(Size == 0 ? nullptr : Allocate(Size), Size);
}

IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(TStream* Stream, int64_t Position, int64_t Count) {
  Stream->SetPosition(Position);
  int64_t Length = std::max<int64_t>(Stream->Size() - Position, 0);
  if (Count != -1) Length = std::clamp<int64_t>(Count, 0, Length);
  IPtr<IKxMemoryBuffer> Result = KxCreateMemoryBuffer(uint32_t(Length));
  // A stream that ends before its size said leaves a buffer of what it gave.
  if (Length > 0) Result->SetSize(uint32_t(Stream->ReadUpTo(Result->GetBuffer(), Length)));
  return Result;
}

} // namespace kx

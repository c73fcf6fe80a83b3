// SPDX-License-Identifier: MIT
#pragma once
// Length-prefixed raw memory blocks, and a reference-counted memory buffer passed around
// through IKxMemoryBuffer.

#include <kx/classes/BinEncoding.h>
#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/Streams.h>

namespace kx {

// A raw block: a 32-bit length word followed by that many bytes. A PKxMemoryBuffer designates
// the length word.
struct TKxMemoryBuffer {
  uint32_t Size;
  uint8_t* Data() { return reinterpret_cast<uint8_t*>(this) + sizeof(uint32_t); }
  const uint8_t* Data() const { return reinterpret_cast<const uint8_t*>(this) + sizeof(uint32_t); }
};
using PKxMemoryBuffer = TKxMemoryBuffer*;

// A new block of Size zero bytes.
KX_API PKxMemoryBuffer KxGetMem(uint32_t Size);
// Resizes the block (a null one is allocated), keeping the common prefix; bytes added are not
// cleared.
KX_API void KxReallocateMem(PKxMemoryBuffer& Buf, uint32_t NewSize);
// Frees the block and clears the reference.
KX_API void KxFreeMem(PKxMemoryBuffer& Buf);
// A new block with the same length and bytes; null for null.
KX_API PKxMemoryBuffer KxCloneMem(const TKxMemoryBuffer* Buf);

struct IKxMemoryBuffer : IInterface {
  virtual void* KX_STDCALL GetBuffer() = 0;
  virtual uint32_t KX_STDCALL GetSize() = 0;
  // The bytes encoded by the selected net encoder; empty for a buffer without memory.
  virtual AnsiString KX_STDCALL AsString(TKxBinEncoding Encoding) = 0;
  virtual TBytes KX_STDCALL AsBytes() = 0;
  // 0 frees the memory; otherwise it is reallocated, keeping the common prefix.
  virtual void KX_STDCALL SetSize(uint32_t NewSize) = 0;
  // Replaces the memory by the bytes Text decodes to.
  virtual void KX_STDCALL SetString(TKxBinEncoding Encoding, const AnsiString& Text) = 0;
  virtual void KX_STDCALL SetBytes(const TBytes& Bytes) = 0;
};

// Memory from std::malloc, freed with the object.
class KX_API TKxMemoryBufferImpl : public TInterfacedObject, public IKxMemoryBuffer {
  KX_CLASS(TKxMemoryBufferImpl, TInterfacedObject)
public:
  // Adopts Buffer (which must come from std::malloc, or be null with Size 0).
  TKxMemoryBufferImpl(void* Buffer, uint32_t Size) : FBuffer(Buffer), FSize(Size) {}
  ~TKxMemoryBufferImpl() override;

  KX_FORWARD_IINTERFACE(TInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;

  void* KX_STDCALL GetBuffer() override { return FBuffer; }
  uint32_t KX_STDCALL GetSize() override { return FSize; }
  AnsiString KX_STDCALL AsString(TKxBinEncoding Encoding) override;
  TBytes KX_STDCALL AsBytes() override;
  void KX_STDCALL SetSize(uint32_t NewSize) override;
  void KX_STDCALL SetString(TKxBinEncoding Encoding, const AnsiString& Text) override;
  void KX_STDCALL SetBytes(const TBytes& Bytes) override;

private:
  void* FBuffer;
  uint32_t FSize;
};

// Adopts Buffer (from std::malloc); it is freed with the buffer object.
KX_API IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(void* Buffer, uint32_t Size);
// Size bytes, not cleared; no memory for 0.
KX_API IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(uint32_t Size);
// Moves Stream to Position and reads the rest of it (at most Count bytes unless Count is -1);
// the buffer holds what the stream gave.
KX_API IPtr<IKxMemoryBuffer> KxCreateMemoryBuffer(TStream* Stream, int64_t Position,
                                                  int64_t Count = -1);

} // namespace kx

KX_INTERFACE_GUID(kx::IKxMemoryBuffer, "{F9DAEC94-FEDE-4A47-B9E8-317D256BD8E3}")

// SPDX-License-Identifier: MIT
// SHA-1 through the platform's provider. Streams and files are read whole into one block
// and hashed in one call.
#include <kx/encoding/Sha1.h>

#include <kx/encoding/KxNetEncoding.h>
#include <kx/rtl/Exceptions.h>

#include "platform/Digest.h"

#include <bit>
#include <cstdlib>
#include <cstring>
#include <memory>

namespace kx {

namespace {

constexpr size_t DigestSize = 20;
constexpr const char* SOutOfMemory = "Out of memory";

void Digest(const void* Buffer, size_t Length, uint8_t* Out) {
  if (!platform::ComputeDigest(platform::TDigestAlgorithm::SHA1, Buffer, Length, Out))
    RaiseLastOSError();
}

bool KnownEncoding(TKxBinEncoding Encoding) {
  return Encoding == beBase64 || Encoding == beHexEncoded || Encoding == beBase64Url;
}

struct TFreeDeleter {
  void operator()(void* P) const { std::free(P); }
};

// Whole streams and files may pass 4 GiB; the count is not cut to 32 bits on their way.
AnsiString HashEncoded(const void* Buffer, size_t Length, TKxBinEncoding Encoding) {
  if (Length == 0) return {};
  uint8_t D[DigestSize];
  Digest(Buffer, Length, D);
  return TKxNetEncoding::GetEncoding(Encoding)->EncodeA(D, int32_t(DigestSize));
}

} // namespace

void KxHashBuffer(const void* Buffer, uint32_t Length, uint8_t* Digest) {
  if (Length == 0) {
    std::memset(Digest, 0, DigestSize);
    return;
  }
  kx::Digest(Buffer, Length, Digest);
}

AnsiString KxHashBuffer(const void* Buffer, uint32_t Length, TKxBinEncoding Encoding) {
  return HashEncoded(Buffer, Length, Encoding);
}

void KxHashString(const AnsiString& S, uint8_t* Digest) {
  if (S.empty()) return;
  kx::Digest(S.data(), S.size(), Digest);
}

AnsiString KxHashString(const AnsiString& S, TKxBinEncoding Encoding) {
  return HashEncoded(S.data(), S.size(), Encoding);
}

AnsiString KxHashStringA(const AnsiString& S, TKxBinEncoding Encoding) {
  return HashEncoded(S.data(), S.size(), Encoding);
}

AnsiString KxHashStringW(const UnicodeString& S, TKxBinEncoding Encoding) {
  static_assert(std::endian::native == std::endian::little);
  return KxHashBuffer(S.data(), uint32_t(S.size() * sizeof(char16_t)), Encoding);
}

AnsiString KxHashStream(TStream* Stream, bool FromStart) {
  if (FromStart) Stream->SetPosition(0);
  const int64_t Size = Stream->Size();
  if (Size <= 0) return {};
  std::unique_ptr<void, TFreeDeleter> Buffer(std::malloc(size_t(Size)));
  if (!Buffer) throw EOutOfMemory(SOutOfMemory);
  const int64_t Got = Stream->ReadUpTo(Buffer.get(), Size);
  return HashEncoded(Buffer.get(), size_t(Got), beBase64);
}

AnsiString KxHashFile(const AnsiString& FileName, TKxBinEncoding Encoding) {
  TFileStream File(FileName, fmOpenRead | fmShareDenyNone);
  const int64_t Size = File.Size();
  std::unique_ptr<void, TFreeDeleter> Buffer(std::malloc(Size > 0 ? size_t(Size) : 1));
  if (!Buffer) throw EOutOfMemory(SOutOfMemory);
  const int64_t Got = File.ReadUpTo(Buffer.get(), Size);
  if (!KnownEncoding(Encoding)) return {};
  return HashEncoded(Buffer.get(), size_t(Got), Encoding);
}

} // namespace kx

// SPDX-License-Identifier: MIT
// The shared codec instances: made on first request, freed when the unit shuts down.
#include <kx/encoding/KxNetEncoding.h>

#include "encoding/SharedNetEncodings.h"

#include <atomic>

namespace kx {

namespace {

std::atomic<TKxBase64Encoding*> SharedBase64{nullptr};
std::atomic<TKxBase64UrlEncoding*> SharedBase64Url{nullptr};
std::atomic<TKxHexEncoding*> SharedHex{nullptr};
std::atomic<TURLEncoding*> SharedURL{nullptr};

// Never replaced once set: a caller that loses a race on first use frees its own instance
// and takes the winner's.
template <class T>
T* Shared(std::atomic<T*>& Slot) {
  T* Current = Slot.load(std::memory_order_acquire);
  if (Current) return Current;
  T* Made = T::Create();
  if (Slot.compare_exchange_strong(Current, Made, std::memory_order_acq_rel)) return Made;
  Made->Free();
  return Current;
}

template <class T>
void FreeShared(std::atomic<T*>& Slot) {
  if (T* Obj = Slot.exchange(nullptr)) Obj->Free();
}

} // namespace

TKxBase64Encoding* TKxNetEncoding::Base64Ex() {
  return Shared(SharedBase64);
}

TKxBase64UrlEncoding* TKxNetEncoding::Base64Url() {
  return Shared(SharedBase64Url);
}

TKxHexEncoding* TKxNetEncoding::Hex() {
  return Shared(SharedHex);
}

TURLEncoding* TKxNetEncoding::URL() {
  return Shared(SharedURL);
}

TNetEncodingEx* TKxNetEncoding::GetEncoding(TKxBinEncoding Encoding) {
  switch (Encoding) {
  case beBase64:
    return Base64Ex();
  case beHexEncoded:
    return Hex();
  case beBase64Url:
    return Base64Url();
  }
  throw Exception(SNetEncodingNotSupported);
}

namespace detail {

void FreeSharedNetEncodings() {
  FreeShared(SharedURL);
  FreeShared(SharedHex);
  FreeShared(SharedBase64Url);
  FreeShared(SharedBase64);
}

} // namespace detail

} // namespace kx

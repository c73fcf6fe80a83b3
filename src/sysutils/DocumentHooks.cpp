// SPDX-License-Identifier: MIT
// The document hook slots of uKxSysUtils.
#include <kx/sysutils/DocumentHooks.h>

#include <atomic>

namespace kx {

namespace {

std::atomic<TKxCreateDocFunc> CreateJSONDoc{nullptr};
std::atomic<TKxCreateDocFunc> CreateXMLDoc{nullptr};

IPtr<IInterface> CallCreate(const std::atomic<TKxCreateDocFunc>& Slot, const AnsiString& S) {
  const TKxCreateDocFunc Func = Slot.load(std::memory_order_acquire);
  if (!Func) throw Exception(SQuillonRequired);
  return Func(S);
}

} // namespace

void SetCreateJSONDoc(TKxCreateDocFunc Func) {
  CreateJSONDoc.store(Func, std::memory_order_release);
}

void SetCreateXMLDoc(TKxCreateDocFunc Func) {
  CreateXMLDoc.store(Func, std::memory_order_release);
}

IPtr<IInterface> KxCreateJSONDoc(const AnsiString& S) {
  return CallCreate(CreateJSONDoc, S);
}

IPtr<IInterface> KxCreateXMLDoc(const AnsiString& S) {
  return CallCreate(CreateXMLDoc, S);
}

} // namespace kx

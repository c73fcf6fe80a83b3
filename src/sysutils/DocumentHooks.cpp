// SPDX-License-Identifier: MIT
// The document hook slots of uKxSysUtils.
#include <kx/sysutils/DocumentHooks.h>

#include <atomic>

namespace kx {

namespace {

std::atomic<TKxCreateDocFunc> CreateJSONDoc{nullptr};
std::atomic<TKxCreateDocFunc> CreateXMLDoc{nullptr};
std::atomic<TKxGetDocValueFunc> GetJSONDocValue{nullptr};
std::atomic<TKxGetDocValueFunc> GetXMLDocValue{nullptr};

// The slot's function; Exception "Quillon is required for this functionality!" when empty.
template <class F>
F Installed(const std::atomic<F>& Slot) {
  const F Func = Slot.load(std::memory_order_acquire);
  if (!Func) throw Exception(SQuillonRequired);
  return Func;
}

} // namespace

void SetCreateJSONDoc(TKxCreateDocFunc Func) {
  CreateJSONDoc.store(Func, std::memory_order_release);
}

void SetCreateXMLDoc(TKxCreateDocFunc Func) {
  CreateXMLDoc.store(Func, std::memory_order_release);
}

void SetGetJSONDocValue(TKxGetDocValueFunc Func) {
  GetJSONDocValue.store(Func, std::memory_order_release);
}

void SetGetXMLDocValue(TKxGetDocValueFunc Func) {
  GetXMLDocValue.store(Func, std::memory_order_release);
}

IPtr<IInterface> KxCreateJSONDoc(const AnsiString& S) {
  return Installed(CreateJSONDoc)(S);
}

IPtr<IInterface> KxCreateXMLDoc(const AnsiString& S) {
  return Installed(CreateXMLDoc)(S);
}

Variant KxGetJSONDocValue(const IPtr<IInterface>& Doc, const AnsiString& Path) {
  return Installed(GetJSONDocValue)(Doc, Path);
}

Variant KxGetXMLDocValue(const IPtr<IInterface>& Doc, const AnsiString& Path) {
  return Installed(GetXMLDocValue)(Doc, Path);
}

} // namespace kx

// SPDX-License-Identifier: MIT
// Resources of uKxWindows.
#include <kx/rtl/SysUtils.h>
#include <kx/windows/Resources.h>

#include "platform/Platform.h"

#include <mutex>
#include <vector>

namespace kx {

KX_IMPLEMENT_EXCEPTION(EResNotFound, Exception, "SysUtils")

namespace {

struct TRegistered {
  AnsiString Name;
  AnsiString ResType;
  const void* Data;
  uint32_t Size;
};

std::mutex RegistryLock;
// Made on the first registration, freed by the unit's shut-down step.
std::vector<TRegistered>* Registry = nullptr;

bool FindRegistered(const AnsiString& Name, const AnsiString& ResType, const void*& Data,
                    uint32_t& Size) {
  std::lock_guard<std::mutex> Guard(RegistryLock);
  if (!Registry) return false;
  for (const TRegistered& R : *Registry)
    if (SameText(R.Name, Name) && SameText(R.ResType, ResType)) {
      Data = R.Data;
      Size = R.Size;
      return true;
    }
  return false;
}

bool Lookup(const AnsiString& Name, const AnsiString& ResType, void* Module, const void*& Data,
            uint32_t& Size) {
  return platform::FindModuleResource(Module, Name, ResType, Data, Size) ||
         FindRegistered(Name, ResType, Data, Size);
}

} // namespace

void KxRegisterResource(const AnsiString& Name, const AnsiString& ResType, const void* Data,
                        uint32_t Size) {
  std::lock_guard<std::mutex> Guard(RegistryLock);
  if (!Registry) Registry = new std::vector<TRegistered>();
  for (TRegistered& R : *Registry)
    if (SameText(R.Name, Name) && SameText(R.ResType, ResType)) {
      R.Data = Data;
      R.Size = Size;
      return;
    }
  Registry->push_back({Name, ResType, Data, Size});
}

bool KxFindResource(const AnsiString& Name, const AnsiString& ResType, void* Module) {
  const void* Data;
  uint32_t Size;
  return Lookup(Name, ResType, Module, Data, Size);
}

TBytes KxGetResource(const AnsiString& Name, const AnsiString& ResType, void* Module) {
  const void* Data = nullptr;
  uint32_t Size = 0;
  if (!Lookup(Name, ResType, Module, Data, Size)) throw EResNotFound(SResNotFound, {Name});
  const auto* Bytes = static_cast<const uint8_t*>(Data);
  return TBytes(Bytes, Bytes + Size);
}

namespace detail {
void ClearRegisteredResources() {
  std::lock_guard<std::mutex> Guard(RegistryLock);
  delete Registry;
  Registry = nullptr;
}
} // namespace detail

} // namespace kx

// SPDX-License-Identifier: MIT
// KxNormalizeString and KxSimplifyString over the NormalizeString entry of normaliz.dll.
#include <kx/rtl/Exceptions.h>
#include <kx/types/Normalization.h>

#include "platform/Platform.h"

#include <atomic>

namespace kx {

namespace {

constexpr const char* SNormalizDll = "normaliz.dll";
constexpr const char* SNormalizeStringProc = "NormalizeString";
constexpr const char* SLoadNormalizFailed = "Failed to load normaliz.dll!";
constexpr const char* SNormalizeStringNotFound = "Failed to find the \"NormalizeString\" function!";
constexpr const char* SNormalizeFailed = "Failed to normalize the given value";

// Loaded on first use and never released. Two threads that arrive first at once may both
// load the module, which is harmless: the loader counts the references.
std::atomic<void*> NormalizModule{nullptr};
std::atomic<platform::TNormalizeStringProc> NormalizeStringProc{nullptr};

platform::TNormalizeStringProc NormalizeProc() {
  platform::TNormalizeStringProc Proc = NormalizeStringProc.load(std::memory_order_acquire);
  if (Proc) return Proc;
  void* Module = NormalizModule.load(std::memory_order_acquire);
  if (!Module) {
    Module = platform::LoadNormalizationModule(SNormalizDll);
    if (!Module) throw Exception(SLoadNormalizFailed);
    NormalizModule.store(Module, std::memory_order_release);
  }
  Proc = reinterpret_cast<platform::TNormalizeStringProc>(
      platform::GetNormalizationProc(Module, SNormalizeStringProc));
  if (!Proc) throw Exception(SNormalizeStringNotFound);
  NormalizeStringProc.store(Proc, std::memory_order_release);
  return Proc;
}

UnicodeString Normalize(const char16_t* S, int32_t Length, TNorm_Form Form) {
  platform::TNormalizeStringProc Proc = NormalizeProc();
  int32_t Needed = Proc(Form, S, Length, nullptr, 0);
  if (Needed < 1) throw Exception(SNormalizeFailed);
  UnicodeString Result(size_t(Needed), u'\0');
  // The first answer is an estimate: the second call gives the real length.
  int32_t Written = Proc(Form, S, Length, Result.data(), Needed);
  Result.resize(Written > 0 ? size_t(Written) : 0);
  return Result;
}

} // namespace

UnicodeString KxNormalizeString(const UnicodeString& S, TNorm_Form Form) {
  return Normalize(S.data(), int32_t(S.size()), Form);
}

UnicodeString KxSimplifyString(const UnicodeString& S) {
  UnicodeString Result;
  Result.reserve(S.size());
  for (char16_t C : S) {
    UnicodeString Decomposed = Normalize(&C, 1, NormalizationD);
    if (!Decomposed.empty()) Result += Decomposed[0];
  }
  return Result;
}

} // namespace kx

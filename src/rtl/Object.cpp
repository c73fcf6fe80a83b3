// SPDX-License-Identifier: MIT
// TObject, class references and the registry of classes findable by name.
#include <kx/rtl/Object.h>
#include <kx/rtl/SysUtils.h>

#include <algorithm>
#include <mutex>
#include <vector>

namespace kx {

bool TClassInfo::InheritsFrom(const TClassInfo* AClass) const {
  for (const TClassInfo* C = this; C; C = C->Parent)
    if (C == AClass) return true;
  return false;
}

TClass TObject::ClassInfo() {
  static const TClassInfo Info{"TObject", "System", nullptr,
                               [] { return static_cast<TObject*>(TObject::Create()); }, nullptr};
  return &Info;
}

TObject::~TObject() = default;

bool TObject::GetInterface(const TGUID&, void** Obj) {
  *Obj = nullptr;
  return false;
}

void TObject::Free() {
  BeforeDestruction();
  delete this;
}

void TObject::DestroyWithoutChecks() {
  delete this;
}

namespace {
struct TClassRegistry {
  std::mutex Lock;
  std::vector<TClass> Classes;
};
TClassRegistry& Registry() {
  static TClassRegistry R;
  return R;
}
} // namespace

void KxRegisterClass(TClass AClass) {
  auto& R = Registry();
  std::lock_guard Guard(R.Lock);
  if (std::find(R.Classes.begin(), R.Classes.end(), AClass) == R.Classes.end())
    R.Classes.push_back(AClass);
}

void KxUnregisterClass(TClass AClass) {
  auto& R = Registry();
  std::lock_guard Guard(R.Lock);
  std::erase(R.Classes, AClass);
}

TClass KxFindClass(std::string_view Name) {
  auto& R = Registry();
  std::lock_guard Guard(R.Lock);
  for (TClass C : R.Classes)
    if (SameText(AnsiString(C->Name), AnsiString(Name))) return C;
  return nullptr;
}

} // namespace kx

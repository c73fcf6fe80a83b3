// SPDX-License-Identifier: MIT
#pragma once
// Objects that can copy themselves from one another.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>

namespace kx {

inline constexpr const char* SAssignError = "Cannot assign a %s to a %s";

class KX_API TPersistent : public TObject {
  KX_CLASS(TPersistent, TObject)
public:
  TPersistent() = default;
  // Source->AssignTo(this); a null source cannot be assigned.
  virtual void Assign(TPersistent* Source);
  virtual AnsiString GetNamePath();

protected:
  virtual void AssignTo(TPersistent* Dest);
  virtual TPersistent* GetOwner() { return nullptr; }
  // Raises EConvertError "Cannot assign a <source class or nil> to a <this class>".
  [[noreturn]] void AssignError(TPersistent* Source);
};

} // namespace kx

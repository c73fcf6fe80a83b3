// SPDX-License-Identifier: MIT
// Assignment between persistent objects.
#include <kx/rtl/Persistent.h>

namespace kx {

KX_IMPLEMENT_CLASS(TPersistent, TObject, "Classes")

void TPersistent::Assign(TPersistent* Source) {
  if (Source)
    Source->AssignTo(this);
  else
    AssignError(nullptr);
}

void TPersistent::AssignTo(TPersistent* Dest) {
  Dest->AssignError(this);
}

void TPersistent::AssignError(TPersistent* Source) {
  AnsiString SourceName = Source ? Source->ClassName() : AnsiString("nil");
  throw EConvertError(Format(SAssignError, {SourceName, ClassName()}));
}

AnsiString TPersistent::GetNamePath() {
  return ClassName();
}

} // namespace kx

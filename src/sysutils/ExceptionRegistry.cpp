// SPDX-License-Identifier: MIT
// The error-code registry of exception classes.
#include <kx/rtl/Lists.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/sysutils/KxException.h>

#include <cstdlib>
#include <memory>

namespace kx {

KX_IMPLEMENT_CLASS(TExceptionClass, TObject, "uKxSysUtils")
KX_IMPLEMENT_EXCEPTION(EKxException, Exception, "uKxSysUtils")
KX_IMPLEMENT_EXCEPTION(EKxAbort, EAbort, "uKxSysUtils")

int32_t KxExceptionErrorCode(const Exception& E) {
  if (auto* K = dynamic_cast<const EKxException*>(&E)) return K->ErrorCode;
  if (auto* A = dynamic_cast<const EKxAbort*>(&E)) return A->ErrorCode;
  return 0;
}

namespace {

// Null until the first registration; not locked, registrations happen at start-up.
TObjectList* Registry = nullptr;

void Register(const AnsiString& Namespace, int32_t ErrorCode, ExceptClass AClass, int32_t Line) {
  if (!Registry) Registry = TObjectList::Create(true);
  ExceptClass Existing = KxGetExceptionClass(Namespace, ErrorCode);
  if (!Existing) {
    Registry->Add(TExceptionClass::Create(Namespace, AClass, ErrorCode));
    return;
  }
  if (Existing == AClass) return;
  if (KxAssertionsEnabled)
    KxAssertFailed(Format(SErrorCodeInUse, {ErrorCode, Existing->ClassName()}), SSysUtilsUnit,
                   Line);
}

} // namespace

void KxRegisterExceptionClass(const AnsiString& Namespace, int32_t ErrorCode,
                              ExceptClass ExceptionClass) {
  Register(Namespace, ErrorCode, ExceptionClass, 841);
}

void KxRegisterExceptionClass(const UnicodeString& Namespace, int32_t ErrorCode,
                              ExceptClass ExceptionClass) {
  Register(UnicodeToAnsi(Namespace), ErrorCode, ExceptionClass, 864);
}

ExceptClass KxGetExceptionClass(const AnsiString& Namespace, int32_t ErrorCode) {
  if (!Registry) return nullptr;
  for (int32_t I = 0; I < Registry->Count(); ++I) {
    auto* Entry = static_cast<TExceptionClass*>(Registry->Get(I));
    if (Entry->ErrorCode == ErrorCode && (Namespace.empty() || Entry->Namespace == Namespace))
      return Entry->ExceptionClass;
  }
  return nullptr;
}

ExceptClass KxGetExceptionClassByName(const AnsiString& Name, int32_t* ErrorCode) {
  if (ErrorCode) *ErrorCode = 0;
  if (!Registry) return nullptr;
  for (int32_t I = 0; I < Registry->Count(); ++I) {
    auto* Entry = static_cast<TExceptionClass*>(Registry->Get(I));
    if (SameText(Name, Entry->ClassName())) {
      if (ErrorCode) *ErrorCode = Entry->ErrorCode;
      return Entry->ExceptionClass;
    }
  }
  return nullptr;
}

bool KxGetExceptionNamespace(ExceptClass AClass, int32_t ErrorCode, AnsiString& Namespace) {
  Namespace.clear();
  if (!Registry) return false;
  for (int32_t I = 0; I < Registry->Count(); ++I) {
    auto* Entry = static_cast<TExceptionClass*>(Registry->Get(I));
    if (Entry->ErrorCode == ErrorCode && Entry->ExceptionClass == AClass) {
      Namespace = Entry->Namespace;
      return true;
    }
  }
  return false;
}

void KxRaiseException(ExceptClass AClass, const AnsiString& Msg, int32_t ErrorCode) {
  // Raise throws a copy of the dynamic type; the heap instance only carries it there.
  std::unique_ptr<Exception> E(AClass->CreateException(Msg, ErrorCode));
  E->Raise();
  std::abort(); // not reached: Raise always throws, but the compiler cannot see through virtuals
}

namespace detail {
void ClearExceptionRegistry() {
  FreeAndNil(Registry);
}
} // namespace detail

} // namespace kx

// SPDX-License-Identifier: MIT
// The error-information object, the exception mapping and the safe-call error handler.
#include <kx/com/COMErrorInfo.h>
#include <kx/rtl/Files.h>
#include <kx/rtl/SysUtils.h>
#include <kx/sysutils/ExceptionRegistry.h>

#include "package/Units.h"
#include "platform/ErrorInfo.h"

#include <atomic>
#include <memory>

namespace kx {

KX_IMPLEMENT_CLASS(TKxCOMErrorInfo, TKxInterfacedObject, "uKxCOMObj")
KX_IMPLEMENT_EXCEPTION(EKxSilentForInProcessServer, EKxAbort, "uKxCOMObj")

namespace {

thread_local TKxCOMErrorInfo* LastErrorInfo = nullptr;
thread_local int32_t SilentDisabled = 0;
std::atomic<bool> SilentEnabled{false};

HRESULT PutString(const UnicodeString& S, WideChar** Out) {
  if (!Out) return KX_E_POINTER;
  *Out = platform::AllocBSTR(S);
  return KX_S_OK;
}

bool IsCarriedWithItsCode(const Exception* E) {
  return E->InheritsFrom(EKxException::ClassInfo()) || E->InheritsFrom(EKxAbort::ClassInfo()) ||
         E->InheritsFrom(EOSError::ClassInfo()) || E->InheritsFrom(EInOutError::ClassInfo());
}

int32_t OwnErrorCode(const Exception* E) {
  if (auto* K = dynamic_cast<const EKxException*>(E)) return K->ErrorCode;
  if (auto* A = dynamic_cast<const EKxAbort*>(E)) return A->ErrorCode;
  if (auto* O = dynamic_cast<const EOSError*>(E)) return int32_t(O->ErrorCode);
  if (auto* I = dynamic_cast<const EInOutError*>(E)) return I->ErrorCode;
  return 0;
}

} // namespace

WideChar* KxAllocBSTR(const UnicodeString& S) {
  return platform::AllocBSTR(S);
}

void KxFreeBSTR(WideChar* S) {
  platform::FreeBSTR(S);
}

UnicodeString KxTakeBSTR(WideChar* S) {
  UnicodeString R = platform::BSTRToString(S);
  platform::FreeBSTR(S);
  return R;
}

// --- TKxCOMErrorInfo -------------------------------------------------------------------------

TKxCOMErrorInfo::TKxCOMErrorInfo(const TGUID& AGUID, const UnicodeString& AErrorGroup,
                                 const UnicodeString& ASource, const UnicodeString& ADescription,
                                 const UnicodeString& AHelpFile, int32_t AHelpContext)
    : FGUID(AGUID), FSource(ASource), FDescription(ADescription), FHelpFile(AHelpFile),
      FHelpContext(AHelpContext), FErrorGroup(AErrorGroup) {
  LastErrorInfo = this;
}

TKxCOMErrorInfo::~TKxCOMErrorInfo() {
  // Whichever object the slot holds: an error is raised from the latest one, which is gone.
  LastErrorInfo = nullptr;
}

TKxCOMErrorInfo* KxLastCOMErrorInfo() {
  return LastErrorInfo;
}

bool TKxCOMErrorInfo::GetInterface(const TGUID& IID, void** Obj) {
  if (IID == IIDOf<IKxCOMErrorInfo>() || IID == IIDOf<IErrorInfo>()) {
    IKxCOMErrorInfo* P = this;
    P->_AddRef();
    *Obj = P;
    return true;
  }
  return TKxInterfacedObject::GetInterface(IID, Obj);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetGUID(TGUID* Guid) {
  if (!Guid) return KX_E_POINTER;
  *Guid = FGUID;
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetSource(WideChar** Value) {
  return PutString(FSource, Value);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetDescription(WideChar** Value) {
  return PutString(FDescription, Value);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetHelpFile(WideChar** Value) {
  return PutString(FHelpFile, Value);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetHelpContext(uint32_t* Value) {
  if (!Value) return KX_E_POINTER;
  *Value = uint32_t(FHelpContext);
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetErrorCode(int32_t* Value) {
  if (!Value) return KX_E_POINTER;
  *Value = FErrorCode;
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetIsSilent(int16_t* Value) {
  if (!Value) return KX_E_POINTER;
  *Value = FIsSilent;
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetExceptionClassName(WideChar** Value) {
  return PutString(FExceptionClassName, Value);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::GetErrorGroup(WideChar** Value) {
  return PutString(FErrorGroup, Value);
}

HRESULT KX_STDCALL TKxCOMErrorInfo::SetErrorCode(int32_t Value) {
  FErrorCode = Value;
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::SetIsSilent(int16_t Value) {
  FIsSilent = Value;
  return KX_S_OK;
}

HRESULT KX_STDCALL TKxCOMErrorInfo::SetExceptionClassName(const WideChar* Value) {
  FExceptionClassName = Value ? UnicodeString(Value) : UnicodeString();
  return KX_S_OK;
}

bool TKxCOMErrorInfo::CanHandle(ExceptClass, const Exception* ExceptObject) {
  if (!ExceptObject) return false;
  if (ExceptObject->InheritsFrom(EKxException::ClassInfo()) ||
      ExceptObject->InheritsFrom(EKxAbort::ClassInfo()) ||
      SameText(ExceptObject->ClassName(), EAbort::ClassInfo()->ClassName()) ||
      ExceptObject->InheritsFrom(EOSError::ClassInfo()) ||
      ExceptObject->InheritsFrom(EInOutError::ClassInfo()))
    return true;
  // The by-name lookup compares with its entries' own class name, so a real exception
  // class name never matches here.
  int32_t Code = 0;
  return KxGetExceptionClassByName(ExceptObject->ClassName(), &Code) && Code != 0;
}

HRESULT TKxCOMErrorInfo::Populate(const Exception* ExceptObject) {
  if (auto* Silent = dynamic_cast<const EKxSilentForInProcessServer*>(ExceptObject))
    FExceptionClassName = AnsiToUnicode(Silent->ExceptionClassName);
  else
    FExceptionClassName = AnsiToUnicode(ExceptObject->ClassName());
  int32_t Code = 0;
  if (IsCarriedWithItsCode(ExceptObject)) {
    Code = OwnErrorCode(ExceptObject);
  } else {
    KxGetExceptionClassByName(ExceptObject->ClassName(), &Code);
    if (Code == 0) Code = 1;
  }
  FErrorCode = Code;
  FIsSilent = ExceptObject->InheritsFrom(EAbort::ClassInfo()) ? -1 : 0;
  return Code > 0 ? KX_E_UNEXPECTED : Code;
}

// --- the mapping -----------------------------------------------------------------------------

void KxDisableSilentServerExceptions() {
  ++SilentDisabled;
}

void KxEnableSilentServerExceptions() {
  --SilentDisabled;
}

void KxSetSilentServerExceptions(bool Enabled) {
  SilentEnabled.store(Enabled, std::memory_order_relaxed);
}

bool KxSilentServerExceptions() {
  return SilentEnabled.load(std::memory_order_relaxed);
}

ExceptClass KxGetExceptionClass(const AnsiString& ClassName, int32_t ErrorCode, bool NoSilent) {
  if (SilentDisabled < 1 && !NoSilent && KxSilentServerExceptions())
    return EKxSilentForInProcessServer::ClassInfo();
  return KxGetExceptionClass(ClassName, ErrorCode);
}

Exception* KxCreateException(const AnsiString& ClassName, int32_t ErrorCode,
                             const AnsiString& Message) {
  ExceptClass Cls = KxGetExceptionClass(ClassName, ErrorCode, false);
  if (!Cls) Cls = EKxException::ClassInfo();
  if (Cls->InheritsFrom(EKxException::ClassInfo())) return Cls->CreateException(Message, ErrorCode);
  if (Cls->InheritsFrom(EKxAbort::ClassInfo())) {
    Exception* E = Cls->CreateException(Message, ErrorCode);
    if (auto* Silent = dynamic_cast<EKxSilentForInProcessServer*>(E))
      if (ExceptClass StandsFor = KxGetExceptionClass(ClassName, ErrorCode, true))
        Silent->ExceptionClassName = StandsFor->ClassName();
    return E;
  }
  // Other classes take the message only; an OLE error keeps the code as its result.
  Exception* E = Cls->CreateException(Message, 0);
  if (auto* Ole = dynamic_cast<EOleSysError*>(E)) Ole->ErrorCode = ErrorCode;
  return E;
}

Exception* KxCreateException(const AnsiString& ClassName, int32_t ErrorCode, std::string_view Fmt,
                             TVarRecs Args) {
  return KxCreateException(ClassName, ErrorCode, Format(Fmt, Args));
}

HRESULT KxHandleSafeCallException(const Exception* E, const TGUID& IID,
                                  const UnicodeString& Source) {
  const UnicodeString Description = E ? AnsiToUnicode(E->Message()) : UnicodeString();
  AnsiString Group;
  if (E) KxGetExceptionNamespace(E->ClassType(), OwnErrorCode(E), Group);
  TKxCOMErrorInfo* Info = TKxCOMErrorInfo::Create(IID, AnsiToUnicode(Group), Source, Description,
                                                  UnicodeString(), E ? E->HelpContext() : 0);
  IPtr<IKxCOMErrorInfo> Ref(static_cast<IKxCOMErrorInfo*>(Info));
  HRESULT Result = KX_E_UNEXPECTED;
  if (TKxCOMErrorInfo::CanHandle(E ? E->ClassType() : nullptr, E))
    Result = Info->Populate(E);
  else if (auto* Ole = dynamic_cast<const EOleSysError*>(E))
    Result = Ole->ErrorCode;
  platform::SetErrorInfo(static_cast<IErrorInfo*>(Ref.Get()));
  return Result;
}

// --- the safe-call error handler -------------------------------------------------------------

namespace {

TSafeCallErrorProc PreviousErrorProc = nullptr;
std::atomic<int32_t> InitCount{0};

// A string getter's BSTR as text; a failed getter gives an empty text.
template <class Getter>
UnicodeString TakeString(Getter&& Get) {
  WideChar* S = nullptr;
  if (Get(&S) < 0) return UnicodeString();
  return KxTakeBSTR(S);
}

[[noreturn]] void RaiseOleError(HRESULT ErrorCode, const UnicodeString& Description) {
  throw EOleSysError(Description.empty() ? SysErrorMessage(uint32_t(ErrorCode))
                                         : UnicodeToAnsi(Description),
                     ErrorCode);
}

// Turns the failed result and the thread's error information back into an exception: the
// library's information recreates the class and code it carries; other information, or none,
// becomes an OLE error with the result.
void SafeCallErrorHandler(HRESULT ErrorCode, void* ErrorAddr) {
  IPtr<IInterface> Info = IPtr<IInterface>::Attach(platform::GetErrorInfo());
  if (IPtr<IKxCOMErrorInfo> Kx = Supports<IKxCOMErrorInfo>(Info)) {
    int32_t Code = 0;
    Kx->GetErrorCode(&Code);
    const UnicodeString ClassName =
        TakeString([&](WideChar** S) { return Kx->GetExceptionClassName(S); });
    const UnicodeString Group = TakeString([&](WideChar** S) { return Kx->GetErrorGroup(S); });
    const UnicodeString Description =
        TakeString([&](WideChar** S) { return Kx->GetDescription(S); });
    if (!ClassName.empty()) {
      std::unique_ptr<Exception> E(KxCreateException(
          UnicodeToAnsi(Group.empty() ? ClassName : Group), Code, UnicodeToAnsi(Description)));
      E->Raise();
    }
    RaiseOleError(ErrorCode, Description);
  }
  if (IPtr<IErrorInfo> Plain = Supports<IErrorInfo>(Info)) {
    RaiseOleError(ErrorCode, TakeString([&](WideChar** S) { return Plain->GetDescription(S); }));
  }
  if (PreviousErrorProc) PreviousErrorProc(ErrorCode, ErrorAddr);
  RaiseOleError(ErrorCode, UnicodeString());
}

} // namespace

namespace detail {

void uKxCOMObj_Initialize() {
  if (InitCount.fetch_add(1) == 0) PreviousErrorProc = SetSafeCallErrorProc(&SafeCallErrorHandler);
}

void uKxCOMObj_Finalize() {
  if (InitCount.fetch_sub(1) == 1) SetSafeCallErrorProc(PreviousErrorProc);
}

} // namespace detail

} // namespace kx

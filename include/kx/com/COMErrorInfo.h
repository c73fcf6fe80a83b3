// SPDX-License-Identifier: MIT
#pragma once
// COM error information: an object of the library exposed through COM reports an exception
// as a result code and the thread's error information; its caller turns that back into the
// same exception class and code through the safe-call error handler this unit installs.
//
// The mapping (CanHandle, Populate, KxGetExceptionClass, KxCreateException, the silent
// counter) is the same everywhere. Windows carries the error information through oleaut32;
// POSIX has no COM runtime and keeps the thread's error information in-process.

#include <kx/classes/Object.h>
#include <kx/rtl/SafeCall.h>
#include <kx/sysutils/KxException.h>

#include <string_view>

namespace kx {

// The platform's error-information interface (IErrorInfo): its identity and its layout. The
// strings it hands out are BSTRs; free them with KxFreeBSTR.
struct IErrorInfo : IInterface {
  virtual HRESULT KX_STDCALL GetGUID(TGUID* Guid) = 0;
  virtual HRESULT KX_STDCALL GetSource(WideChar** Source) = 0;
  virtual HRESULT KX_STDCALL GetDescription(WideChar** Description) = 0;
  virtual HRESULT KX_STDCALL GetHelpFile(WideChar** HelpFile) = 0;
  virtual HRESULT KX_STDCALL GetHelpContext(uint32_t* HelpContext) = 0;
};

// What the library's error information carries beyond the platform's.
struct IKxCOMErrorInfo : IErrorInfo {
  virtual HRESULT KX_STDCALL GetErrorCode(int32_t* Value) = 0;
  // -1 true, 0 false.
  virtual HRESULT KX_STDCALL GetIsSilent(int16_t* Value) = 0;
  virtual HRESULT KX_STDCALL GetExceptionClassName(WideChar** Value) = 0;
  virtual HRESULT KX_STDCALL GetErrorGroup(WideChar** Value) = 0;
  virtual HRESULT KX_STDCALL SetErrorCode(int32_t Value) = 0;
  virtual HRESULT KX_STDCALL SetIsSilent(int16_t Value) = 0;
  virtual HRESULT KX_STDCALL SetExceptionClassName(const WideChar* Value) = 0;
};

} // namespace kx

KX_INTERFACE_GUID(kx::IErrorInfo, "{1CF2B120-547D-101B-8E65-08002B2BD119}")
KX_INTERFACE_GUID(kx::IKxCOMErrorInfo, "{085A3BE7-71A9-44B5-9C63-40862A957FED}")

namespace kx {

// BSTRs as the error information hands them out.
KX_API WideChar* KxAllocBSTR(const UnicodeString& S);
KX_API void KxFreeBSTR(WideChar* S);
// The text of a BSTR and frees it; null is empty.
KX_API UnicodeString KxTakeBSTR(WideChar* S);

// The error-information object. Its interface getters follow the safe-call convention (a
// result code, the value through the pointer); the plain accessors are for C++ callers.
class KX_API TKxCOMErrorInfo : public TKxInterfacedObject, public IKxCOMErrorInfo {
  KX_CLASS(TKxCOMErrorInfo, TKxInterfacedObject)
public:
  // Also becomes the thread's most recent error-information object (KxLastCOMErrorInfo).
  TKxCOMErrorInfo(const TGUID& AGUID, const UnicodeString& AErrorGroup,
                  const UnicodeString& ASource, const UnicodeString& ADescription,
                  const UnicodeString& AHelpFile, int32_t AHelpContext);
  ~TKxCOMErrorInfo() override;
  KX_FORWARD_IINTERFACE(TKxInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;

  HRESULT KX_STDCALL GetGUID(TGUID* Guid) override;
  HRESULT KX_STDCALL GetSource(WideChar** Value) override;
  HRESULT KX_STDCALL GetDescription(WideChar** Value) override;
  HRESULT KX_STDCALL GetHelpFile(WideChar** Value) override;
  HRESULT KX_STDCALL GetHelpContext(uint32_t* Value) override;
  HRESULT KX_STDCALL GetErrorCode(int32_t* Value) override;
  HRESULT KX_STDCALL GetIsSilent(int16_t* Value) override;
  HRESULT KX_STDCALL GetExceptionClassName(WideChar** Value) override;
  HRESULT KX_STDCALL GetErrorGroup(WideChar** Value) override;
  HRESULT KX_STDCALL SetErrorCode(int32_t Value) override;
  HRESULT KX_STDCALL SetIsSilent(int16_t Value) override;
  HRESULT KX_STDCALL SetExceptionClassName(const WideChar* Value) override;

  const TGUID& Guid() const { return FGUID; }
  const UnicodeString& Source() const { return FSource; }
  const UnicodeString& Description() const { return FDescription; }
  const UnicodeString& HelpFile() const { return FHelpFile; }
  int32_t HelpContext() const { return FHelpContext; }
  int32_t ErrorCode() const { return FErrorCode; }
  int16_t IsSilent() const { return FIsSilent; }
  const UnicodeString& ExceptionClassName() const { return FExceptionClassName; }
  const UnicodeString& ErrorGroup() const { return FErrorGroup; }

  // Whether this mechanism carries the exception across COM: the library's exceptions, the
  // silent abort, OS and I/O errors, and classes the by-name lookup finds with a code.
  static bool CanHandle(ExceptClass AClass, const Exception* ExceptObject);
  // Fills ExceptionClassName, ErrorCode and IsSilent from the exception and returns the code
  // for the client: a code above 0 is returned as E_UNEXPECTED (0x8000FFFF).
  HRESULT Populate(const Exception* ExceptObject);

private:
  TGUID FGUID;
  UnicodeString FSource;
  UnicodeString FDescription;
  UnicodeString FHelpFile;
  int32_t FHelpContext = 0;
  int32_t FErrorCode = 0;
  int16_t FIsSilent = 0;
  UnicodeString FExceptionClassName;
  UnicodeString FErrorGroup;
};

// The calling thread's most recent error-information object, while it lives; null otherwise.
KX_API TKxCOMErrorInfo* KxLastCOMErrorInfo();

// Inside an in-process server, what a silent exception becomes: an abort that keeps the
// name of the class it stands for.
class KX_API EKxSilentForInProcessServer : public EKxAbort {
  KX_EXCEPTION_CLASS(EKxSilentForInProcessServer, EKxAbort)
public:
  AnsiString ExceptionClassName;
};

// With silent server exceptions enabled for the process and not disabled on this thread,
// EKxSilentForInProcessServer unless NoSilent; otherwise the class registered for
// (ClassName, ErrorCode) as namespace and code, or null.
KX_API ExceptClass KxGetExceptionClass(const AnsiString& ClassName, int32_t ErrorCode,
                                       bool NoSilent);
// A new exception (not raised) of the class KxGetExceptionClass finds, EKxException when it
// finds none; the caller owns it.
KX_API Exception* KxCreateException(const AnsiString& ClassName, int32_t ErrorCode,
                                    const AnsiString& Message);
KX_API Exception* KxCreateException(const AnsiString& ClassName, int32_t ErrorCode,
                                    std::string_view Fmt, TVarRecs Args);

// The calling thread's counter of requests to disable silent server exceptions.
KX_API void KxDisableSilentServerExceptions();
KX_API void KxEnableSilentServerExceptions();
// Process-wide, off until an in-process server turns it on (typically when it is loaded).
KX_API void KxSetSilentServerExceptions(bool Enabled);
KX_API bool KxSilentServerExceptions();

// The callee's side of a safe-call method that failed with E (null for an exception that is
// not the library's): sets the thread's error information for the caller and returns the
// result code. Exceptions CanHandle refuses are carried with their message only and return
// their OLE code, or E_UNEXPECTED.
KX_API HRESULT KxHandleSafeCallException(const Exception* E, const TGUID& IID,
                                         const UnicodeString& Source);

// Runs Body as a safe-call method body: S_OK, or the failure as KxHandleSafeCallException
// reports it.
template <class F>
HRESULT KxSafeCall(const TGUID& IID, const UnicodeString& Source, F&& Body) {
  try {
    Body();
    return KX_S_OK;
  } catch (const Exception& E) {
    return KxHandleSafeCallException(&E, IID, Source);
  } catch (...) {
    return KxHandleSafeCallException(nullptr, IID, Source);
  }
}

} // namespace kx

// SPDX-License-Identifier: MIT
// The runtime's exception classes, OS errors and assertions.
#include <kx/rtl/Exceptions.h>

#include "platform/Platform.h"

namespace kx {

namespace {
constexpr const char* SysUtilsUnit = "SysUtils";
}

Exception::Exception(std::string_view Fmt, TVarRecs Args) : FMessage(Format(Fmt, Args)) {}
Exception::~Exception() = default;

TClass Exception::ClassInfo() {
  static const TClassInfo Info{"Exception", SysUtilsUnit, nullptr, nullptr,
                               &detail::CreateException<Exception>};
  return &Info;
}

KX_IMPLEMENT_EXCEPTION(EAbort, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EConvertError, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EListError, Exception, "Classes")
KX_IMPLEMENT_EXCEPTION(EStreamError, Exception, "Classes")
KX_IMPLEMENT_EXCEPTION(EFileStreamError, EStreamError, "Classes")
KX_IMPLEMENT_EXCEPTION(EFOpenError, EFileStreamError, "Classes")
KX_IMPLEMENT_EXCEPTION(EFCreateError, EFileStreamError, "Classes")
KX_IMPLEMENT_EXCEPTION(EReadError, EStreamError, "Classes")
KX_IMPLEMENT_EXCEPTION(EWriteError, EStreamError, "Classes")
KX_IMPLEMENT_EXCEPTION(EZeroDivide, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EMathError, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EInvalidOp, EMathError, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EVariantError, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EInvalidOperation, Exception, "Classes")
KX_IMPLEMENT_EXCEPTION(EComponentError, Exception, "Classes")
KX_IMPLEMENT_EXCEPTION(EOutOfMemory, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EInvalidPointer, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EOSError, Exception, SysUtilsUnit)
KX_IMPLEMENT_EXCEPTION(EOleSysError, Exception, "ComObj")
KX_IMPLEMENT_EXCEPTION(EAssertionFailed, Exception, SysUtilsUnit)

EAssertionFailed::EAssertionFailed(const AnsiString& Msg, const AnsiString& FileName,
                                   int32_t LineNumber)
    : Exception(Format(SAssertError, {Msg, FileName, LineNumber})), FFileName(FileName),
      FLineNumber(LineNumber) {}

AnsiString SysErrorMessage(uint32_t ErrorCode) {
  return platform::ErrorMessage(ErrorCode);
}

uint32_t GetLastOSError() {
  return platform::LastError();
}

void RaiseLastOSError() {
  RaiseLastOSError(platform::LastError());
}

void RaiseLastOSError(uint32_t LastError) {
  if (LastError == 0) {
    EOSError E(SUnkOSError);
    throw E;
  }
  EOSError E(Format(SOSError, {LastError, SysErrorMessage(LastError)}));
  E.ErrorCode = LastError;
  throw E;
}

void KxAssertFailed(std::string_view Msg, std::string_view Unit, int32_t Line) {
  throw EAssertionFailed(AnsiString(Msg), AnsiString(Unit), Line);
}

} // namespace kx

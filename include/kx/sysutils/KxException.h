// SPDX-License-Identifier: MIT
#pragma once
// The library's exceptions: a message and a numeric error code, constructible through a
// class reference taken from the error-code registry.

#include <kx/rtl/Exceptions.h>

namespace kx {

class KX_API EKxException : public Exception {
  KX_EXCEPTION_CLASS(EKxException, Exception)
public:
  EKxException(const AnsiString& Msg, int32_t AErrorCode) : Exception(Msg), ErrorCode(AErrorCode) {}
  EKxException(std::string_view Msg, TVarRecs Args, int32_t AErrorCode)
      : Exception(Msg, Args), ErrorCode(AErrorCode) {}
  int32_t ErrorCode = 0;
};

// Unwinds silently like EAbort; not an EKxException, so handlers test for both.
class KX_API EKxAbort : public EAbort {
  KX_EXCEPTION_CLASS(EKxAbort, EAbort)
public:
  EKxAbort(const AnsiString& Msg, int32_t AErrorCode) : EAbort(Msg), ErrorCode(AErrorCode) {}
  EKxAbort(std::string_view Msg, TVarRecs Args, int32_t AErrorCode)
      : EAbort(Msg, Args), ErrorCode(AErrorCode) {}
  int32_t ErrorCode = 0;
};

// The error code an exception carries, or 0 for classes without one.
KX_API int32_t KxExceptionErrorCode(const Exception& E);

} // namespace kx

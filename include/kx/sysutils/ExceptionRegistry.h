// SPDX-License-Identifier: MIT
#pragma once
// The process-wide registry from (namespace, error code) to exception class, so that a
// receiver holding only a code (or a class name) can raise the matching class again.

#include <kx/rtl/Exceptions.h>
#include <kx/rtl/Object.h>
#include <kx/sysutils/SysUtilsConsts.h>

namespace kx {

inline constexpr const char* SErrorCodeInUse = "ErrorCode %d is already in use by %s!;";

// One registry entry; its own class name is what the by-name lookup compares with.
class KX_API TExceptionClass : public TObject {
  KX_CLASS(TExceptionClass, TObject)
public:
  TExceptionClass(const AnsiString& ANamespace, ExceptClass AExceptionClass, int32_t AErrorCode)
      : Namespace(ANamespace), ExceptionClass(AExceptionClass), ErrorCode(AErrorCode) {}
  AnsiString Namespace;
  ExceptClass ExceptionClass;
  int32_t ErrorCode;
};

// Adds the class unless the same one holds the pair already; another class holding it
// fails an assertion and keeps the first. An empty namespace collides with every namespace.
KX_API void KxRegisterExceptionClass(const AnsiString& Namespace, int32_t ErrorCode,
                                     ExceptClass ExceptionClass);
KX_API void KxRegisterExceptionClass(const UnicodeString& Namespace, int32_t ErrorCode,
                                     ExceptClass ExceptionClass);
// The first class registered for the code in the namespace (any namespace when empty;
// case-sensitive otherwise), or null.
KX_API ExceptClass KxGetExceptionClass(const AnsiString& Namespace, int32_t ErrorCode);
// Compares Name, ignoring case, with the entry class's own name "TExceptionClass" (not the
// registered exception's), so only that name ever matches: the first entry then answers.
KX_API ExceptClass KxGetExceptionClassByName(const AnsiString& Name, int32_t* ErrorCode);
// The namespace of the first entry holding exactly this class and code, for a sender that
// tells its receiver where to look the code up again; false (and empty) when there is none.
KX_API bool KxGetExceptionNamespace(ExceptClass AClass, int32_t ErrorCode, AnsiString& Namespace);
// Raises a registered class through its class reference.
[[noreturn]] KX_API void KxRaiseException(ExceptClass AClass, const AnsiString& Msg,
                                          int32_t ErrorCode);

namespace detail {
// The unit's shut-down step: clears and frees the registry.
KX_API void ClearExceptionRegistry();
} // namespace detail

} // namespace kx

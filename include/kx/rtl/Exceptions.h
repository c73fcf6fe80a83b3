// SPDX-License-Identifier: MIT
#pragma once
// The runtime's exception family and assertions. Exception classes have class references
// too, so a class can be found by name and constructed with (Msg, ErrorCode).

#include <kx/rtl/Format.h>
#include <kx/rtl/Object.h>

#include <exception>
#include <type_traits>

namespace kx {

class KX_API Exception : public std::exception {
public:
  explicit Exception(AnsiString Msg) : FMessage(std::move(Msg)) {}
  Exception(std::string_view Fmt, TVarRecs Args);
  ~Exception() override;

  static TClass ClassInfo();
  virtual TClass ClassType() const { return ClassInfo(); }
  AnsiString ClassName() const { return ClassType()->Name; }
  bool InheritsFrom(TClass AClass) const { return ClassType()->InheritsFrom(AClass); }

  const AnsiString& Message() const { return FMessage; }
  void SetMessage(AnsiString Value) { FMessage = std::move(Value); }
  int32_t HelpContext() const { return FHelpContext; }
  void SetHelpContext(int32_t Value) { FHelpContext = Value; }
  const char* what() const noexcept override { return FMessage.c_str(); }

  // A heap copy of the dynamic type, and a throw of the dynamic type: what lets code
  // that holds only a class reference or a base pointer raise the real class.
  virtual Exception* Clone() const { return new Exception(*this); }
  [[noreturn]] virtual void Raise() const { throw *this; }

private:
  AnsiString FMessage;
  int32_t FHelpContext = 0;
};
using ExceptClass = TClass;

namespace detail {
template <class E>
Exception* CreateException(const AnsiString& Msg, int32_t ErrorCode) {
  if constexpr (std::is_constructible_v<E, const AnsiString&, int32_t>)
    return new E(Msg, ErrorCode);
  else
    return (void)ErrorCode, new E(Msg);
}
} // namespace detail

#define KX_EXCEPTION_CLASS(Cls, Parent)                                                            \
public:                                                                                            \
  using Parent::Parent;                                                                            \
  static ::kx::TClass ClassInfo();                                                                 \
  ::kx::TClass ClassType() const override {                                                        \
    return Cls::ClassInfo();                                                                       \
  }                                                                                                \
  ::kx::Exception* Clone() const override {                                                        \
    return new Cls(*this);                                                                         \
  }                                                                                                \
  [[noreturn]] void Raise() const override {                                                       \
    throw *this;                                                                                   \
  }                                                                                                \
                                                                                                   \
private:

#define KX_IMPLEMENT_EXCEPTION(Cls, Parent, Unit)                                                  \
  ::kx::TClass Cls::ClassInfo() {                                                                  \
    static const ::kx::TClassInfo Info{#Cls, Unit, Parent::ClassInfo(), nullptr,                   \
                                       &::kx::detail::CreateException<Cls>};                       \
    return &Info;                                                                                  \
  }

// Declares a plain descendant that adds nothing.
#define KX_DECLARE_EXCEPTION(Cls, Parent)                                                          \
  class KX_API Cls : public Parent {                                                               \
    KX_EXCEPTION_CLASS(Cls, Parent)                                                                \
  };

// Unwinds without showing a message.
KX_DECLARE_EXCEPTION(EAbort, Exception)
KX_DECLARE_EXCEPTION(EConvertError, Exception)
KX_DECLARE_EXCEPTION(EListError, Exception)
KX_DECLARE_EXCEPTION(EStreamError, Exception)
KX_DECLARE_EXCEPTION(EFileStreamError, EStreamError)
KX_DECLARE_EXCEPTION(EFOpenError, EFileStreamError)
KX_DECLARE_EXCEPTION(EFCreateError, EFileStreamError)
KX_DECLARE_EXCEPTION(EReadError, EStreamError)
KX_DECLARE_EXCEPTION(EWriteError, EStreamError)
KX_DECLARE_EXCEPTION(EZeroDivide, Exception)
KX_DECLARE_EXCEPTION(EMathError, Exception)
KX_DECLARE_EXCEPTION(EInvalidOp, EMathError)
KX_DECLARE_EXCEPTION(EVariantError, Exception)
KX_DECLARE_EXCEPTION(EInvalidOperation, Exception)
KX_DECLARE_EXCEPTION(EComponentError, Exception)
KX_DECLARE_EXCEPTION(EOutOfMemory, Exception)
KX_DECLARE_EXCEPTION(EInvalidPointer, Exception)

// A platform call failed: the OS error code and the platform's text for it.
class KX_API EOSError : public Exception {
  KX_EXCEPTION_CLASS(EOSError, Exception)
public:
  uint32_t ErrorCode = 0;
};

// A COM call returned a failure result.
class KX_API EOleSysError : public Exception {
  KX_EXCEPTION_CLASS(EOleSysError, Exception)
public:
  EOleSysError(const AnsiString& Msg, int32_t ErrorCode) : Exception(Msg), ErrorCode(ErrorCode) {}
  int32_t ErrorCode = 0;
};

class KX_API EAssertionFailed : public Exception {
  KX_EXCEPTION_CLASS(EAssertionFailed, Exception)
public:
  EAssertionFailed(const AnsiString& Msg, const AnsiString& FileName, int32_t LineNumber);
  const AnsiString& FileName() const { return FFileName; }
  int32_t LineNumber() const { return FLineNumber; }

private:
  AnsiString FFileName;
  int32_t FLineNumber = 0;
};

inline constexpr const char* SOSError = "System Error.  Code: %d.\r\n%s";
inline constexpr const char* SUnkOSError = "A call to an OS function failed";
inline constexpr const char* SInvalidOp = "Invalid floating point operation";
inline constexpr const char* SAssertError = "%s (%s, line %d)";
// The message of an assertion that states only its condition.
inline constexpr const char* SAssertionFailed = "Assertion failed";

// The platform's text for an OS error code.
KX_API AnsiString SysErrorMessage(uint32_t ErrorCode);
// The calling thread's last OS error code.
KX_API uint32_t GetLastOSError();
[[noreturn]] KX_API void RaiseLastOSError();
[[noreturn]] KX_API void RaiseLastOSError(uint32_t LastError);

// Raises EAssertionFailed with "Msg (Unit, line Line)".
[[noreturn]] KX_API void KxAssertFailed(std::string_view Msg, std::string_view Unit, int32_t Line);

// Assertions compile out when the build turns KX_ASSERTIONS off.
inline void KxAssert(bool Condition, std::string_view Msg, std::string_view Unit, int32_t Line) {
#if defined(KX_ASSERTIONS)
  if (!Condition) KxAssertFailed(Msg, Unit, Line);
#else
  (void)Condition, (void)Msg, (void)Unit, (void)Line;
#endif
}

inline constexpr bool KxAssertionsEnabled =
#if defined(KX_ASSERTIONS)
    true;
#else
    false;
#endif

} // namespace kx

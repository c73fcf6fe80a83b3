// SPDX-License-Identifier: MIT
#pragma once
// TObject and class references: every library object knows its class, the class knows
// its name, unit, parent and how to construct an instance ("virtual constructors").

#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Strings.h>

#include <utility>

namespace kx {

class TObject;
class Exception;

struct KX_API TClassInfo {
  const char* Name;
  const char* UnitName;
  const TClassInfo* Parent;
  // Parameterless virtual constructor; null for classes that need arguments.
  TObject* (*CreateInstance)();
  // Exception classes: construct with (Msg, ErrorCode); classes without an error code
  // ignore it.
  Exception* (*CreateException)(const AnsiString& Msg, int32_t ErrorCode);

  AnsiString ClassName() const { return Name; }
  bool InheritsFrom(const TClassInfo* AClass) const;
};
using TClass = const TClassInfo*;

// Registers a class reference so that KxFindClass can find it by name.
KX_API void KxRegisterClass(TClass AClass);
KX_API void KxUnregisterClass(TClass AClass);
// Case-insensitive (a-z) lookup among the registered classes; null when unknown.
KX_API TClass KxFindClass(std::string_view Name);

namespace detail {
template <class T>
TObject* DefaultCreate() {
  if constexpr (std::is_default_constructible_v<T> && !std::is_abstract_v<T>)
    return T::Create();
  else
    return nullptr;
}
} // namespace detail

// Declares the class reference of a TObject descendant. Put it first in the class body.
#define KX_CLASS(Cls, Parent)                                                                      \
public:                                                                                            \
  using inherited = Parent;                                                                        \
  static ::kx::TClass ClassInfo();                                                                 \
  ::kx::TClass ClassType() const override {                                                        \
    return Cls::ClassInfo();                                                                       \
  }                                                                                                \
  template <class... A>                                                                            \
  static Cls* Create(A&&... Args) {                                                                \
    return ::kx::TObject::Construct<Cls>(std::forward<A>(Args)...);                                \
  }                                                                                                \
                                                                                                   \
private:

// Defines the class reference in one translation unit.
#define KX_IMPLEMENT_CLASS(Cls, Parent, Unit)                                                      \
  ::kx::TClass Cls::ClassInfo() {                                                                  \
    static const ::kx::TClassInfo Info{#Cls, Unit, Parent::ClassInfo(),                            \
                                       &::kx::detail::DefaultCreate<Cls>, nullptr};                \
    return &Info;                                                                                  \
  }

class KX_API TObject {
public:
  TObject(const TObject&) = delete;
  TObject& operator=(const TObject&) = delete;
  virtual ~TObject();

  static TClass ClassInfo();
  virtual TClass ClassType() const { return ClassInfo(); }
  AnsiString ClassName() const { return ClassType()->Name; }
  bool InheritsFrom(TClass AClass) const { return ClassType()->InheritsFrom(AClass); }

  // Runs BeforeDestruction, then destroys. An exception from BeforeDestruction
  // leaves the object alive.
  void Free();
  // The object's interface table: true and a counted reference in Obj when it
  // implements IID.
  virtual bool GetInterface(const TGUID& IID, void** Obj);
  virtual void AfterConstruction() {}
  virtual void BeforeDestruction() {}

  template <class... A>
  static TObject* Create(A&&... Args) {
    return Construct<TObject>(std::forward<A>(Args)...);
  }

  // Allocates, constructs and runs AfterConstruction; a failing AfterConstruction
  // destroys the half-made object and lets the exception through.
  template <class T, class... A>
  static T* Construct(A&&... Args) {
    T* Obj = new T(std::forward<A>(Args)...);
    try {
      Obj->AfterConstruction();
    } catch (...) {
      Obj->DestroyWithoutChecks();
      throw;
    }
    return Obj;
  }

protected:
  TObject() = default;

private:
  void DestroyWithoutChecks();
};

// Asks an object for an interface through its interface table.
template <class I>
IPtr<I> Supports(TObject* Obj) {
  void* P = nullptr;
  if (Obj && Obj->GetInterface(IIDOf<I>(), &P)) return IPtr<I>::Attach(static_cast<I*>(P));
  return nullptr;
}

// Frees the object and clears the reference.
template <class T>
void FreeAndNil(T*& Obj) {
  T* Temp = Obj;
  Obj = nullptr;
  if (Temp) Temp->Free();
}

} // namespace kx

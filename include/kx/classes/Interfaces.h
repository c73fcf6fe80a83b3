// SPDX-License-Identifier: MIT
#pragma once
// The interfaces of the library's root classes. Objects are asked for them by GUID.

#include <kx/rtl/Interfaces.h>
#include <kx/rtl/Object.h>

namespace kx {

enum TKxAutoDestroy : uint8_t {
  kadComputed, // not yet decided
  kadFalse,    // never destroy on the last release
  kadTrue      // destroy when the count drops to 0
};

enum TKxObjectOwnership : uint8_t {
  ooReference, // the adapter only refers to the object
  ooOwned      // the adapter destroys the object
};

struct IKxObject : IInterface {
  virtual TObject* KX_STDCALL Implementor() = 0;
};

struct IKxObjectFreeNotificationEvent : IKxObject {
  virtual void KX_STDCALL OnObjectDestroyed(TObject* AObject) = 0;
};

struct IKxObjectEx : IKxObject {
  virtual void KX_STDCALL RemoveNotification(TObject* AObject) = 0;
  virtual void KX_STDCALL FreeNotificationEx(IKxObjectFreeNotificationEvent* AEvent) = 0;
  virtual void KX_STDCALL RemoveFreeNotificationEx(IKxObject* AObject) = 0;
};

class TComponent;
struct IKxComponent : IInterface {
  virtual bool KX_STDCALL GetAutoDestroy() = 0;
  virtual void KX_STDCALL SetAutoDestroy(bool Value) = 0;
  virtual TComponent* KX_STDCALL _GetOwner() = 0;
};

struct IKxObjectAdapter : IInterface {
  virtual TObject* KX_STDCALL GetObject() = 0;
  virtual TKxObjectOwnership KX_STDCALL GetOwnership() = 0;
};

// Argument bags passed through interfaces; implemented by the modules that use them.
struct IKxArguments : IInterface {};

} // namespace kx

KX_INTERFACE_GUID(kx::IKxObject, "{0417F540-9CCC-4DE6-B2C4-1063D0508346}")
KX_INTERFACE_GUID(kx::IKxObjectFreeNotificationEvent, "{BBECB66F-1397-4FFA-AFE5-C7BD63A1EAC6}")
KX_INTERFACE_GUID(kx::IKxObjectEx, "{66D757F3-6274-47EC-95A9-39B144271EA9}")
KX_INTERFACE_GUID(kx::IKxComponent, "{9BA338F4-38EC-4174-9B8B-6D6B6A9BA328}")
KX_INTERFACE_GUID(kx::IKxObjectAdapter, "{6C25403A-FB3F-4F23-87AC-8DD56330109B}")
KX_INTERFACE_GUID(kx::IKxArguments, "{415EAA46-9BBE-4C5A-92B2-1B7FD14CE250}")

// SPDX-License-Identifier: MIT
#pragma once
// TKxObjectEx: a TKxObject with two-way free notifications and assignment.

#include <kx/classes/Object.h>
#include <kx/rtl/Lists.h>

namespace kx {

inline constexpr const char* SClassesUnit = "source\\ComponentSets\\Components\\common\\uKxClasses";

class KX_API TKxObjectEx : public TKxObject,
                           public IKxObjectEx,
                           public IKxObjectFreeNotificationEvent {
  KX_CLASS(TKxObjectEx, TKxObject)
public:
  TKxObjectEx() = default;
  ~TKxObjectEx() override;

  KX_FORWARD_IINTERFACE(TKxObject)
  TObject* KX_STDCALL Implementor() override { return this; }
  bool GetInterface(const TGUID& IID, void** Obj) override;

  // Tells every partner, last registered first, that this object goes; a partner's handler
  // may add or remove notifications, so the list is read again on every pass.
  void BeforeDestruction() override;

  void KX_STDCALL OnObjectDestroyed(TObject* AObject) override;
  virtual void AssignTo(TKxObjectEx* Dest);
  virtual void DefineProperties(TObject* Filer);
  virtual void Assign(TKxObjectEx* Source);
  virtual TKxObjectEx* GetOwner() { return nullptr; }
  virtual AnsiString GetNamePath();
  // Raises EConvertError with the cannot-assign message.
  [[noreturn]] void AssignError(TKxObjectEx* Source);

  // Both objects end up in each other's list exactly once.
  void FreeNotification(TKxObjectEx* AObject);
  void KX_STDCALL FreeNotificationEx(IKxObjectFreeNotificationEvent* AEvent) override;
  void KX_STDCALL RemoveNotification(TObject* AObject) override;
  void RemoveFreeNotification(TKxObjectEx* AObject);
  void KX_STDCALL RemoveFreeNotificationEx(IKxObject* AObject) override;

  // The partners, or null when there are none.
  TList* Notifications() const { return FNotifications; }

protected:
  TList* FNotifications = nullptr;
};

} // namespace kx

// SPDX-License-Identifier: MIT
#pragma once
// Components: an owner that frees what it owns, a unique name among its siblings, and
// two-way free notifications.

#include <kx/rtl/Lists.h>
#include <kx/rtl/Persistent.h>
#include <kx/rtl/Set.h>

namespace kx {

enum TOperation : uint8_t { opInsert, opRemove };
enum TComponentState : uint8_t {
  csLoading,
  csReading,
  csWriting,
  csDestroying,
  csDesigning,
  csAncestor,
  csUpdating,
  csFixups,
  csFreeNotification,
  csInline,
  csDesignInstance
};
using TComponentStates = TSet<TComponentState>;

inline constexpr const char* SDuplicateName = "A component named %s already exists";
inline constexpr const char* SInvalidName = "''%s'' is not a valid component name";

// The component implements IInterface without counting (-1), as the runtime's does;
// descendants that count override the three methods.
class KX_API TComponent : public TPersistent, public IInterface {
  KX_CLASS(TComponent, TPersistent)
public:
  explicit TComponent(TComponent* AOwner = nullptr);
  ~TComponent() override;
  void BeforeDestruction() override;

  HRESULT KX_STDCALL QueryInterface(const TGUID& IID, void** Obj) override;
  int32_t KX_STDCALL _AddRef() override { return -1; }
  int32_t KX_STDCALL _Release() override { return -1; }
  bool GetInterface(const TGUID& IID, void** Obj) override;

  TComponent* Owner() const { return FOwner; }
  const AnsiString& Name() const { return FName; }
  virtual void SetName(const AnsiString& NewName);
  int32_t ComponentCount() const { return FComponents ? FComponents->Count() : 0; }
  TComponent* Components(int32_t Index) const;
  int32_t ComponentIndex() const;
  // Case-insensitive search among the owned components; null when absent.
  TComponent* FindComponent(const AnsiString& AName) const;
  void InsertComponent(TComponent* AComponent);
  void RemoveComponent(TComponent* AComponent);
  void DestroyComponents();
  // Marks this component and those it owns as being destroyed.
  void Destroying();
  const TComponentStates& ComponentState() const { return FComponentState; }

  // Asks AComponent to tell this one (and this one to tell AComponent) when it is freed.
  void FreeNotification(TComponent* AComponent);
  void RemoveFreeNotification(TComponent* AComponent);
  AnsiString GetNamePath() override;

protected:
  virtual void Notification(TComponent* AComponent, TOperation Operation);
  // Raises when this component must not be destroyed now. Free asks the component and
  // everything it owns before anything is destroyed, so a refusal reaches Free's caller
  // with the whole tree untouched rather than escaping a destructor.
  virtual void ValidateDestruction() {}
  TPersistent* GetOwner() override { return FOwner; }
  TComponentStates FComponentState;

private:
  void Insert(TComponent* AComponent);
  void Remove(TComponent* AComponent);
  void ValidateTreeDestruction();
  void RemoveNotification(TComponent* AComponent);
  void ValidateRename(TComponent* AComponent, const AnsiString& CurName, const AnsiString& NewName);

  TComponent* FOwner = nullptr;
  AnsiString FName;
  TList* FComponents = nullptr;
  TList* FFreeNotifies = nullptr;
};

} // namespace kx

// SPDX-License-Identifier: MIT
#pragma once
// A manual-reset event usable through an interface.

#include <kx/rtl/InterfacedObject.h>
#include <kx/rtl/SyncObjs.h>

namespace kx {

struct IKxSimpleEvent : IInterface {
  virtual void KX_STDCALL SetEvent() = 0;
  virtual void KX_STDCALL ResetEvent() = 0;
  virtual TWaitResult KX_STDCALL WaitFor(uint32_t Timeout) = 0;
};

} // namespace kx

KX_INTERFACE_GUID(kx::IKxSimpleEvent, "{3E6C3974-3559-4114-A07F-60B03539C614}")

namespace kx {

// Created non-signalled.
class KX_API TKxSimpleEvent : public TInterfacedObject, public IKxSimpleEvent {
  KX_CLASS(TKxSimpleEvent, TInterfacedObject)
public:
  TKxSimpleEvent();
  ~TKxSimpleEvent() override;
  KX_FORWARD_IINTERFACE(TInterfacedObject)
  bool GetInterface(const TGUID& IID, void** Obj) override;

  void KX_STDCALL SetEvent() override;
  void KX_STDCALL ResetEvent() override;
  TWaitResult KX_STDCALL WaitFor(uint32_t Timeout) override;

private:
  TSimpleEvent* FEvent;
};

} // namespace kx

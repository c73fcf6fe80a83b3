// SPDX-License-Identifier: MIT
// The simple event behind IKxSimpleEvent.
#include <kx/threads/SimpleEvent.h>

namespace kx {

KX_IMPLEMENT_CLASS(TKxSimpleEvent, TInterfacedObject, "uKxThreads")

TKxSimpleEvent::TKxSimpleEvent() : FEvent(TSimpleEvent::Create()) {}

TKxSimpleEvent::~TKxSimpleEvent() {
  FEvent->Free();
}

bool TKxSimpleEvent::GetInterface(const TGUID& IID, void** Obj) {
  return detail::GetInterfaceAs<IKxSimpleEvent>(this, IID, Obj) ||
         TInterfacedObject::GetInterface(IID, Obj);
}

void KX_STDCALL TKxSimpleEvent::SetEvent() {
  FEvent->SetEvent();
}
void KX_STDCALL TKxSimpleEvent::ResetEvent() {
  FEvent->ResetEvent();
}
TWaitResult KX_STDCALL TKxSimpleEvent::WaitFor(uint32_t Timeout) {
  return FEvent->WaitFor(Timeout);
}

} // namespace kx

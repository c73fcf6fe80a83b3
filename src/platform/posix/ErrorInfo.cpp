// SPDX-License-Identifier: MIT
// The thread's error information and BSTRs without a COM runtime, with COM's contract.
#include "platform/ErrorInfo.h"

#include <cstdlib>
#include <cstring>
#include <new>

namespace kx::platform {

namespace {

// The thread's reference, released when the thread ends.
struct TErrorInfoSlot {
  IInterface* Info = nullptr;
  ~TErrorInfoSlot() {
    if (Info) Info->_Release();
  }
};
thread_local TErrorInfoSlot Slot;

} // namespace

void SetErrorInfo(IInterface* Info) {
  if (Info) Info->_AddRef();
  IInterface* Old = Slot.Info;
  Slot.Info = Info;
  if (Old) Old->_Release();
}

IInterface* GetErrorInfo() {
  IInterface* Info = Slot.Info;
  Slot.Info = nullptr;
  return Info;
}

WideChar* AllocBSTR(const UnicodeString& S) {
  const uint32_t Bytes = uint32_t(S.size() * sizeof(WideChar));
  auto* Block = static_cast<char*>(std::malloc(sizeof Bytes + Bytes + sizeof(WideChar)));
  if (!Block) throw std::bad_alloc();
  std::memcpy(Block, &Bytes, sizeof Bytes);
  auto* Text = reinterpret_cast<WideChar*>(Block + sizeof Bytes);
  if (Bytes) std::memcpy(Text, S.data(), Bytes);
  Text[S.size()] = 0;
  return Text;
}

void FreeBSTR(WideChar* S) {
  if (S) std::free(reinterpret_cast<char*>(S) - sizeof(uint32_t));
}

UnicodeString BSTRToString(const WideChar* S) {
  if (!S) return UnicodeString();
  uint32_t Bytes = 0;
  std::memcpy(&Bytes, reinterpret_cast<const char*>(S) - sizeof Bytes, sizeof Bytes);
  return UnicodeString(S, Bytes / sizeof(WideChar));
}

} // namespace kx::platform

// SPDX-License-Identifier: MIT
// Running processes of uKxWindows.
#include <kx/rtl/Exceptions.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/windows/Processes.h>

#include "platform/Environment.h"
#include "platform/Processes.h"

#include <vector>

namespace kx {

namespace {

std::vector<uint32_t> FindProcesses(const AnsiString& ExeName) {
  std::vector<uint32_t> Ids;
  if (!platform::FindProcesses(ExeName, Ids)) RaiseLastOSError();
  return Ids;
}

} // namespace

bool KxProcessExists(const AnsiString& ExeName) {
  return !FindProcesses(ExeName).empty();
}

uint32_t KxGetProcessID(const AnsiString& ExeName) {
  const std::vector<uint32_t> Ids = FindProcesses(ExeName);
  return Ids.empty() ? 0 : Ids.front();
}

bool KxCloseProcess(uint32_t ProcessID, uint32_t TimeoutMs) {
  bool Asked = false;
  if (!platform::AskProcessToEnd(ProcessID, Asked)) RaiseLastOSError();
  return Asked && platform::WaitProcessEnd(ProcessID, TimeoutMs);
}

bool KxKillProcess(uint32_t ProcessID, uint32_t GraceMs) {
  bool Ended = false;
  if (!platform::EndProcess(ProcessID, GraceMs, Ended)) RaiseLastOSError();
  return Ended;
}

int32_t KxKillRunningInstances(const AnsiString& ExeName) {
  const uint32_t Self = platform::CurrentProcessId();
  int32_t Count = 0;
  for (uint32_t Id : FindProcesses(ExeName.empty() ? platform::CurrentExeName() : ExeName)) {
    bool Ended = false;
    if (Id != Self && platform::EndProcess(Id, 2000, Ended) && Ended) ++Count;
  }
  return Count;
}

bool KxBringToFront(uint32_t ProcessID) {
  bool Found = false;
  if (platform::BringProcessToFront(ProcessID, Found)) return Found;
  if (platform::LastError() == platform::ERROR_NOT_SUPPORTED_)
    throw EKxNotSupported(SNotSupportedOnPlatform, {"KxBringToFront"});
  RaiseLastOSError();
}

} // namespace kx

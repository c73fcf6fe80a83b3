// SPDX-License-Identifier: MIT
// The standard streams as handles; WriteFile on them moves bytes unchanged.
#include "Tool.h"

#include <windows.h>

namespace kxtool {

kx::THandle StdHandle(int Which) {
  static const DWORD Ids[3] = {STD_INPUT_HANDLE, STD_OUTPUT_HANDLE, STD_ERROR_HANDLE};
  return kx::THandle(GetStdHandle(Ids[Which]));
}

bool StdErrIsTerminal() {
  DWORD Mode;
  return GetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), &Mode) != 0;
}

} // namespace kxtool

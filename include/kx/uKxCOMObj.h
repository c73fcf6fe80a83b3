// SPDX-License-Identifier: MIT
#pragma once
// uKxCOMObj: COM error information and the mapping of the library's exceptions to result
// codes and back.

#include <kx/com/COMErrorInfo.h>

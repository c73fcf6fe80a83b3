// SPDX-License-Identifier: MIT
#pragma once
// uKxSysUtils: the library's exceptions and their error-code registry, the everyday string and
// conversion functions, numeric-suffix increment, rounding and age, the document hooks, the
// language records and whole text files.

#include <kx/sysutils/DocumentHooks.h>
#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/sysutils/KxException.h>
#include <kx/sysutils/Languages.h>
#include <kx/sysutils/MimeTypes.h>
#include <kx/sysutils/Numbers.h>
#include <kx/sysutils/StringUtils.h>
#include <kx/sysutils/SysUtilsConsts.h>
#include <kx/sysutils/SystemInfo.h>
#include <kx/sysutils/TextFiles.h>

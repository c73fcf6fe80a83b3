#pragma once
// uKxSysUtils: the library's exceptions and their error-code registry, and the everyday string
// and conversion functions.

#include <kx/sysutils/DocumentHooks.h>
#include <kx/sysutils/ExceptionRegistry.h>
#include <kx/sysutils/KxException.h>
#include <kx/sysutils/StringUtils.h>
#include <kx/sysutils/SysUtilsConsts.h>
